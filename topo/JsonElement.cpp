#include "topo/JsonElement.h"

#include <algorithm>
#include <utility>

#include "topo/LinuxBridge.h"

namespace Topo {

namespace {

/// Accepts any JSON and keeps where the text ceases to be it. Parsing to values does not tell the place of every error.
class SyntaxCheck : public nlohmann::json_sax<ParsedJson> {
 public:
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }

  bool parse_error(std::size_t position, const std::string&, const ParsedJson::exception& error) override {
    place_ = position;
    what_ = error.what();
    return false;
  }

  [[nodiscard]] std::size_t place() const noexcept { return place_; }

  /// What the parser says, without the name of its exception and its own account of the place. What it read last is left
  /// out, too: that may be all of the text.
  [[nodiscard]] std::string what() const {
    std::string text = what_;
    if (const auto end = text.find("] "); end != std::string::npos) text.erase(0, end + 2);
    if (text.starts_with("parse error")) {
      if (const auto end = text.find(": "); end != std::string::npos) text.erase(0, end + 2);
    }
    if (const auto begin = text.find("; last read: "); begin != std::string::npos) {
      const auto end = text.rfind("; expected ");
      text.erase(begin, end == std::string::npos || end < begin ? end : end - begin);
    }
    return text;
  }

 private:
  std::size_t place_ = 0;
  std::string what_;
};

[[nodiscard]] const char* kindOf(const ParsedJson& value) noexcept {
  switch (value.type()) {
    case ParsedJson::value_t::null:
      return "null";
    case ParsedJson::value_t::boolean:
      return "a truth value";
    case ParsedJson::value_t::string:
      return "text";
    case ParsedJson::value_t::array:
      return "an array";
    case ParsedJson::value_t::object:
      return "an object";
    default:
      return "a number";
  }
}

}  // namespace

ParsedJson parseJson(const std::string& file, std::string_view text) {
  auto json = ParsedJson::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!json.is_discarded()) return json;
  SyntaxCheck check;
  ParsedJson::sax_parse(text, &check);
  const auto line = std::ranges::count(text.substr(0, check.place()), '\n') + 1;
  throw LinuxCaptureError(file + ':' + std::to_string(line) + ": error: byte " + std::to_string(check.place()) + ": " +
                          check.what());
}

JsonElement JsonElement::member(const char* key) const {
  auto found = find(key);
  if (!found) fail('"' + std::string(key) + "\" is missing");
  return *std::move(found);
}

std::optional<JsonElement> JsonElement::find(const char* key) const {
  expect(value_->is_object(), "an object");
  const auto found = value_->find(key);
  if (found == value_->end()) return std::nullopt;
  return JsonElement(*found, file_, pointer_ + '/' + key);
}

const std::string& JsonElement::text() const {
  expect(value_->is_string(), "text");
  return value_->get_ref<const std::string&>();
}

std::uint16_t JsonElement::number(std::uint16_t min, std::uint16_t max) const {
  expect(value_->is_number(), "a number");
  // A negative number or a fraction is out of range, too.
  if (value_->is_number_unsigned()) {
    const auto number = value_->get<std::uint64_t>();
    if (number >= min && number <= max) return static_cast<std::uint16_t>(number);
  }
  fail("expected a number from " + std::to_string(min) + " to " + std::to_string(max) + ", found " + value_->dump());
}

void JsonElement::fail(const std::string& what) const {
  // The pointer of the whole text is empty.
  const std::string place = pointer_.empty() ? "" : pointer_ + ": ";
  throw LinuxCaptureError(std::string(file_) + ": error: " + place + what);
}

void JsonElement::expect(bool holds, const char* kind) const {
  if (!holds) fail(std::string("expected ") + kind + ", found " + kindOf(*value_));
}

}  // namespace Topo
