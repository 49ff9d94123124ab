#include "kestrel/Kestrel.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "mox/Exception.h"
#include "mox/System.h"

namespace Kestrel {

namespace {

/// More than the longest message takes: 16 texts of 255 bytes.
constexpr std::size_t minBytes = 8192;
constexpr std::size_t maxBytes = std::size_t{1} << 30;

/// All call sites that have sent a message, by number. Never destroyed: static objects may log to the last.
std::vector<const MsgDesc*>& sites() {
  static auto& instance = *new std::vector<const MsgDesc*>;
  return instance;
}

[[nodiscard]] const MsgDesc& siteOf(std::uint64_t id) {
  static constexpr MsgDesc unknown("", 0, "(call site not registered for lack of memory)");
  return id == 0 ? unknown : *sites()[id - 1];
}

/// Owns what `traceFile` returns.
std::unique_ptr<TraceFile>& owner() {
  static auto& instance = *new std::unique_ptr<TraceFile>;
  return instance;
}

}  // namespace

constinit TraceFile* detail::traceFilePointer = nullptr;

void MsgDesc::registerOnce() noexcept {
  try {
    sites().push_back(this);
    id_ = static_cast<std::uint32_t>(sites().size());
  } catch (const std::bad_alloc&) {
    return;  // The next message tries again.
  }
}

void traceFileIs(std::size_t bytes) {
  if (bytes > maxBytes) Mox::throwRangeException("a log of " + std::to_string(bytes) + " bytes is too large");
  owner() = std::make_unique<TraceFile>(bytes);
  detail::traceFilePointer = owner().get();
}

void traceFileDel() noexcept {
  detail::traceFilePointer = nullptr;
  owner().reset();
}

TraceFile::TraceFile(std::size_t bytes)
    : ring_(std::bit_ceil(std::max(bytes, minBytes)) / sizeof(Word)), mask_(ring_.size() - 1) {}

TraceFile::~TraceFile() = default;

/// Reads one message.
class TraceFile::Reader {
 public:
  Reader(const TraceFile& file, Word position)
      : file_(file),
        header_(file.at(position)),
        time_(std::bit_cast<double>(file.at(position + 1))),
        kinds_(file.at(position + 2)),
        left_(header_ >> 48),
        position_(position + headerWords) {}

  [[nodiscard]] Message message(std::uint64_t number) {
    const MsgDesc& site = siteOf(header_ & 0xFFFF'FFFF);
    return {number, time_, site.file(), site.line(), text(site.format())};
  }

 private:
  /// The format with the arguments in place of {}; arguments that it has no place for follow behind.
  std::string text(std::string_view format) {
    std::string out;
    for (auto brace = format.find("{}"); brace != std::string_view::npos; brace = format.find("{}")) {
      out += format.substr(0, brace);
      out += left_ == 0 ? "{}" : argument();
      format.remove_prefix(brace + 2);
    }
    out += format;
    while (left_ != 0) out += ' ' + argument();
    return out;
  }

  std::string argument() {
    using Kind = detail::ArgumentKind;
    const auto kind = static_cast<Kind>(kinds_ & ((1U << kindBits) - 1));
    kinds_ >>= kindBits;
    --left_;
    const Word word = file_.at(position_++);
    switch (kind) {
      case Kind::boolean:
        return word != 0 ? "true" : "false";
      case Kind::unsignedInteger:
        return std::to_string(word);
      case Kind::signedInteger:
        return std::to_string(static_cast<std::int64_t>(word));
      case Kind::real:
        return format("%g", std::bit_cast<double>(word));
      case Kind::pointer:
        return format("0x%" PRIx64, word);
      case Kind::text:
        return text(word);
      case Kind::coded:
        return reinterpret_cast<detail::Decoder>(word)(file_.at(position_++));
    }
    return {};
  }

  std::string text(Word size) {
    std::string out(size, '\0');
    for (std::size_t i = 0; i < size; i += sizeof(Word)) {
      const Word word = file_.at(position_++);
      std::memcpy(out.data() + i, &word, std::min(size - i, sizeof word));
    }
    return out;
  }

  static std::string format(const char* how, auto value) {
    std::array<char, 32> text{};
    const int size = std::snprintf(text.data(), text.size(), how, value);
    return {text.data(), static_cast<std::size_t>(size)};
  }

  const TraceFile& file_;
  Word header_;
  double time_;
  Word kinds_;
  Word left_;
  Word position_;
};

std::vector<Message> TraceFile::messages() const {
  std::vector<Word> positions;
  for (Word p = oldest_; p != end_; p += lengthOf(at(p))) positions.push_back(p);
  std::vector<Message> result;
  result.reserve(positions.size());
  std::uint64_t number = appended_ - positions.size();
  for (const Word p : positions) result.push_back(Reader(*this, p).message(number++));
  return result;
}

}  // namespace Kestrel
