#include "mox/String.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "mox/Exception.h"
#include "mox/Hash.h"

namespace Mox {

namespace {

std::uint64_t hashOf(std::string_view text) noexcept {
  std::uint64_t hash = text.size();
  while (!text.empty()) {
    std::uint64_t chunk = 0;
    const std::size_t n = std::min(text.size(), sizeof chunk);
    std::memcpy(&chunk, text.data(), n);
    hash = detail::mix(hash ^ chunk);
    text.remove_prefix(n);
  }
  return hash;
}

}  // namespace

String::String(Copy /*tag*/, std::string_view text) {
  if (text.empty()) return;
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
    throwRangeException("String::size > 4294967295 not allowed");
  }
  text_ = new (::operator new(sizeof(Text) + text.size() + 1)) Text;
  text_->size = static_cast<std::uint32_t>(text.size());
  text_->hash = hashOf(text);
  std::memcpy(text_->characters(), text.data(), text.size());
  text_->characters()[text.size()] = '\0';
}

void String::free() noexcept { ::operator delete(std::exchange(text_, nullptr)); }

}  // namespace Mox
