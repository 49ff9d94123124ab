// The ring-buffer message log: what happened lately, kept in memory at almost no cost.
//
// Overview
//   A process has at most one log, a ring of preallocated memory. Appending a message stores a few words: the number of
//   the call site, the time, the arguments as they are. When the ring is full the oldest messages are overwritten.
//   Text is made only when somebody reads the log. Without a log a message costs a load and a branch.
//
// Usage
//   Kestrel::traceFileIs(1 << 20);                                       // a log of a mebibyte
//   KESTREL_MSG("/src/Lights", "lamp {} now has {} watt", lamp->name(), 40u);
//   for (const auto& m : Kestrel::traceFile()->messages()) std::cout << m.text << '\n';
//   Kestrel::traceFileDel();
//
// The format is a literal text in which each {} stands for the next argument; further arguments follow behind it. The
// macro registers its call site with the first message; `MsgDesc`, `startMsg`, `arg` and `endMsg` are the same in steps.
//
// Arguments: bool, integers, double, text (up to 255 bytes; a longer one is cut), pointers, registered enumerations, and
// types that give their value as a number (`value()`) or as bits (`bits()`, `fromBits`, `stringValue()`). Nothing of
// these is formatted before somebody reads the log.
//
// Rules: appending never fails and allocates nothing, except for the first message of a call site. Further arguments than
// 16 are ignored. The time is `Mox::System::coarseTime()`. Everything runs on the activity thread.

#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "mox/Enum.h"
#include "mox/Public.h"
#include "mox/String.h"
#include "mox/System.h"

namespace Kestrel {

class TraceFile;

/// A call site: source file, line and format. A static object, registered with its first message.
class MOX_PUBLIC MsgDesc {
 public:
  constexpr MsgDesc(const char* file, unsigned line, const char* format) noexcept
      : file_(file), format_(format), line_(line) {}
  MsgDesc(const MsgDesc&) = delete;
  MsgDesc& operator=(const MsgDesc&) = delete;
  ~MsgDesc() = default;

  [[nodiscard]] const char* file() const noexcept { return file_; }
  [[nodiscard]] unsigned line() const noexcept { return line_; }
  [[nodiscard]] const char* format() const noexcept { return format_; }
  /// The number of the call site, from 1 on; 0 while there is no memory to register it.
  [[nodiscard]] std::uint32_t id() noexcept {
    if (id_ == 0) [[unlikely]]
      registerOnce();
    return id_;
  }

 private:
  void registerOnce() noexcept;

  const char* file_;
  const char* format_;
  unsigned line_;
  std::uint32_t id_ = 0;
};

/// A message, decoded.
struct Message {
  std::uint64_t number;  // of all messages of this log, from 0 on
  double time;           // seconds
  const char* file;
  unsigned line;
  std::string text;
};

namespace detail {

using Word = std::uint64_t;
using Decoder = std::string (*)(Word);
enum class ArgumentKind : std::uint8_t { boolean, unsignedInteger, signedInteger, real, text, pointer, coded };

}  // namespace detail

class MsgWriter;

/// The log: a ring of words.
class MOX_PUBLIC TraceFile {
 public:
  explicit TraceFile(std::size_t bytes);
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;
  ~TraceFile();

  /// Begins a message. It becomes part of the log with `MsgWriter::endMsg`; one message at a time.
  [[nodiscard]] MsgWriter startMsg(MsgDesc& site) noexcept;

  /// The messages that the ring still holds, oldest first, as text.
  [[nodiscard]] std::vector<Message> messages() const;
  /// How many messages were appended, overwritten ones included.
  [[nodiscard]] std::uint64_t appended() const noexcept { return appended_; }

 private:
  friend MsgWriter;
  using Word = detail::Word;

  // A message is: a word with the call site, its own length and the number of arguments; the time; the kinds of the
  // arguments, four bits each; the arguments: a word each, of text the length and then the bytes, of a coded value the
  // function that decodes it and its bits.
  static constexpr Word headerWords = 3;
  static constexpr unsigned kindBits = 4;

  class Reader;

  [[nodiscard]] static Word lengthOf(Word header) noexcept { return header >> 32 & 0xFFFF; }
  [[nodiscard]] Word& at(Word position) noexcept { return ring_[position & mask_]; }
  [[nodiscard]] Word at(Word position) const noexcept { return ring_[position & mask_]; }
  /// Overwrites the oldest messages until the ring has room up to this position.
  void makeRoom(Word end) noexcept {
    while (end - oldest_ > mask_ + 1) oldest_ += lengthOf(at(oldest_));
  }

  // Positions count words from the start of the log and are reduced to the ring by the mask. The log is [oldest_, end_).
  std::vector<Word> ring_;
  Word mask_;
  Word oldest_ = 0;
  Word end_ = 0;
  std::uint64_t appended_ = 0;
};

/// A message under way. It lives in registers while the compiler sees all of it.
class MsgWriter {
  using Word = detail::Word;
  using Kind = detail::ArgumentKind;

 public:
  static constexpr std::size_t maxArguments = 16;
  static constexpr std::size_t maxText = 255;

  void arg(bool value) noexcept { put(Kind::boolean, value ? 1 : 0); }
  template <std::unsigned_integral T>
  void arg(T value) noexcept {
    put(Kind::unsignedInteger, value);
  }
  template <std::signed_integral T>
  void arg(T value) noexcept {
    put(Kind::signedInteger, static_cast<Word>(static_cast<std::int64_t>(value)));
  }
  void arg(double value) noexcept { put(Kind::real, std::bit_cast<Word>(value)); }
  void arg(std::string_view text) noexcept;
  void arg(const char* text) noexcept { arg(std::string_view(text == nullptr ? "null" : text)); }
  void arg(const std::string& text) noexcept { arg(std::string_view(text)); }
  void arg(const Mox::String& text) noexcept { arg(text.view()); }
  void arg(const void* pointer) noexcept { put(Kind::pointer, reinterpret_cast<std::uintptr_t>(pointer)); }
  /// A number with a unit of its own, such as a VLAN id.
  template <class T>
  requires requires(const T& value) {
    { value.value() } -> std::unsigned_integral;
  }
  void arg(const T& value) noexcept { arg(value.value()); }
  /// A value of up to 64 bits that can be made of them again and be printed, such as an interface id.
  template <class T>
  requires requires(const T& value) { T::fromBits(value.bits()).stringValue(); }
  void arg(const T& value) noexcept {
    putCoded([](Word bits) { return std::string(T::fromBits(bits).stringValue().view()); }, value.bits());
  }
  template <Mox::RegisteredEnum E>
  void arg(E value) noexcept {
    putCoded([](Word bits) { return Mox::EnumType<E>::valueToStrep(static_cast<E>(bits)); }, static_cast<Word>(value));
  }

  /// Makes the message part of the log.
  void endMsg() noexcept {
    file_.at(file_.end_) = site_ | (write_ - file_.end_) << 32 | arguments_ << 48;
    file_.at(file_.end_ + 1) = std::bit_cast<Word>(Mox::System::coarseTime());
    file_.at(file_.end_ + 2) = kinds_;
    file_.end_ = write_;
    ++file_.appended_;
  }

 private:
  friend TraceFile;
  /// Room for all arguments, as long as none of them is text.
  static constexpr Word usualWords = TraceFile::headerWords + 2 * maxArguments;

  MsgWriter(TraceFile& file, Word site) noexcept
      : file_(file), site_(site), write_(file.end_ + TraceFile::headerWords), limit_(file.end_ + usualWords) {
    file_.makeRoom(limit_);
  }

  [[nodiscard]] bool addKind(Kind kind) noexcept {
    if (arguments_ == maxArguments) return false;
    kinds_ |= static_cast<Word>(kind) << (arguments_ * TraceFile::kindBits);
    ++arguments_;
    return true;
  }
  void put(Kind kind, Word value) noexcept {
    if (addKind(kind)) putWord(value);
  }
  void putCoded(detail::Decoder decoder, Word bits) noexcept {
    if (!addKind(Kind::coded)) return;
    putWord(reinterpret_cast<std::uintptr_t>(decoder));
    putWord(bits);
  }
  void putWord(Word word) noexcept { file_.at(write_++) = word; }

  TraceFile& file_;
  Word site_;
  Word write_;
  Word limit_;
  Word kinds_ = 0;
  Word arguments_ = 0;
};

inline MsgWriter TraceFile::startMsg(MsgDesc& site) noexcept { return {*this, site.id()}; }

inline void MsgWriter::arg(std::string_view text) noexcept {
  if (!addKind(Kind::text)) return;
  text = text.substr(0, maxText);
  limit_ += text.size() / sizeof(Word);  // Beyond the two words that every argument may use.
  file_.makeRoom(limit_);
  putWord(text.size());
  while (!text.empty()) {
    Word word = 0;
    const std::size_t n = std::min(text.size(), sizeof word);
    std::memcpy(&word, text.data(), n);
    putWord(word);
    text.remove_prefix(n);
  }
}

namespace detail {
MOX_PUBLIC extern TraceFile* traceFilePointer;
}

/// The log, or null when there is none.
[[nodiscard]] inline TraceFile* traceFile() noexcept { return detail::traceFilePointer; }

/// Makes a new, empty log of at least 8192 bytes, rounded up to a power of two. An old one is released. More than a
/// gibibyte raises RangeException, and the old one stays.
MOX_PUBLIC void traceFileIs(std::size_t bytes);
/// Releases the log; messages are skipped from now on.
MOX_PUBLIC void traceFileDel() noexcept;

/// Appends a message.
template <class... Args>
requires(sizeof...(Args) <= MsgWriter::maxArguments) void append(TraceFile& file, MsgDesc& site,
                                                                 const Args&... args) noexcept {
  MsgWriter message = file.startMsg(site);
  (message.arg(args), ...);
  message.endMsg();
}

}  // namespace Kestrel

#define KESTREL_MSG(file, format, ...)                                             \
  do {                                                                             \
    if (::Kestrel::TraceFile* const kestrelFile = ::Kestrel::traceFile()) {        \
      static constinit ::Kestrel::MsgDesc kestrelSite((file), __LINE__, (format)); \
      ::Kestrel::append(*kestrelFile, kestrelSite __VA_OPT__(, ) __VA_ARGS__);     \
    }                                                                              \
  } while (false)
