#include "kestrel/Kestrel.h"

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cstdio>

#include "mox/System.h"

namespace Kestrel {

namespace {

/// More than the longest message takes: 16 texts of 255 bytes.
constexpr std::size_t minBytes = 8192;

/// All call sites that have sent a message, by number. Never destroyed: static objects may log to the last.
std::vector<const MsgDesc*>& sites() {
  static auto& instance = *new std::vector<const MsgDesc*>;
  return instance;
}

/// Owns what `traceFile` returns.
std::unique_ptr<TraceFile>& owner() {
  static auto& instance = *new std::unique_ptr<TraceFile>;
  return instance;
}

}  // namespace

constinit TraceFile* detail::traceFilePointer = nullptr;

void MsgDesc::registerOnce() {
  sites().push_back(this);
  id_ = static_cast<std::uint32_t>(sites().size());
}

void traceFileIs(std::size_t bytes) {
  owner() = std::make_unique<TraceFile>(bytes);
  detail::traceFilePointer = owner().get();
}

void traceFileDel() noexcept {
  detail::traceFilePointer = nullptr;
  owner().reset();
}

TraceFile::TraceFile(std::size_t bytes)
    : ring_(std::make_unique<Word[]>(std::bit_ceil(std::max(bytes, minBytes)) / sizeof(Word))),
      mask_(std::bit_ceil(std::max(bytes, minBytes)) / sizeof(Word) - 1) {}

TraceFile::~TraceFile() = default;

void TraceFile::makeRoom(Word words) noexcept {
  while (write_ + words - oldest_ > mask_ + 1) oldest_ += lengthOf(at(oldest_));
}

void TraceFile::startMsg(MsgDesc& site) noexcept {
  site_ = site.id();
  kinds_ = 0;
  arguments_ = 0;
  write_ = end_;
  makeRoom(headerWords);
  write_ += headerWords;
}

bool TraceFile::addKind(Kind kind, Word words) noexcept {
  if (arguments_ == maxArguments) return false;
  makeRoom(words);
  kinds_ |= static_cast<Word>(kind) << (arguments_ * kindBits);
  ++arguments_;
  return true;
}

void TraceFile::arg(double value) noexcept { put(Kind::real, std::bit_cast<Word>(value)); }

void TraceFile::arg(std::string_view text) noexcept {
  text = text.substr(0, maxText);
  if (!addKind(Kind::text, 1 + (text.size() + sizeof(Word) - 1) / sizeof(Word))) return;
  putWord(text.size());
  while (!text.empty()) {
    Word word = 0;
    const std::size_t n = std::min(text.size(), sizeof word);
    std::memcpy(&word, text.data(), n);
    putWord(word);
    text.remove_prefix(n);
  }
}

void TraceFile::endMsg() noexcept {
  at(end_) = site_ | (write_ - end_) << 32 | arguments_ << 48;
  at(end_ + 1) = std::bit_cast<Word>(Mox::System::coarseTime());
  at(end_ + 2) = kinds_;
  end_ = write_;
  ++appended_;
}

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
    const MsgDesc& site = *sites()[(header_ & 0xFFFF'FFFF) - 1];
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
        return reinterpret_cast<Decoder>(word)(file_.at(position_++));
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
    char text[32];
    const int size = std::snprintf(text, sizeof text, how, value);
    return {text, static_cast<std::size_t>(size)};
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
