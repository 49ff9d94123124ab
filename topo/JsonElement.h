// An element of a JSON text that knows where it stands, so that whoever misses something in it can say where.
//
//   const ParsedJson json = parseJson("link.json", text);
//   const JsonElement link(json, "link.json");
//   link.forEach([](const JsonElement& each) { use(each.member("ifname").text()); });
//
// An element is a view: it must not outlive the ParsedJson. Elements that are not what the caller asks for raise
// LinuxCaptureError, `link.json: error: /3/ifname: expected text, found a number`; the place is a JSON Pointer.

#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Topo {

using ParsedJson = nlohmann::json;

/// Parses a text. One that is not JSON raises LinuxCaptureError, `link.json:1: error: byte 17: ...`.
[[nodiscard]] ParsedJson parseJson(const std::string& file, std::string_view text);

class JsonElement {
 public:
  JsonElement(const ParsedJson& root, std::string_view file) : value_(&root), file_(file) {}

  /// A member of this object; `find` gives nothing if there is none.
  [[nodiscard]] JsonElement member(const char* key) const;
  [[nodiscard]] std::optional<JsonElement> find(const char* key) const;

  /// Calls `visit` with each element of this array.
  template <class F>
  void forEach(const F& visit) const {
    expect(value_->is_array(), "an array");
    std::size_t i = 0;
    for (const ParsedJson& each : *value_) visit(JsonElement(each, file_, pointer_ + '/' + std::to_string(i++)));
  }

  [[nodiscard]] const std::string& text() const;
  /// A whole number in this range.
  [[nodiscard]] std::uint16_t number(std::uint16_t min, std::uint16_t max) const;

  /// Raises LinuxCaptureError with this place.
  [[noreturn]] void fail(const std::string& what) const;

 private:
  JsonElement(const ParsedJson& value, std::string_view file, std::string pointer)
      : value_(&value), file_(file), pointer_(std::move(pointer)) {}

  void expect(bool holds, const char* kind) const;

  const ParsedJson* value_;
  std::string_view file_;
  std::string pointer_;
};

}  // namespace Topo
