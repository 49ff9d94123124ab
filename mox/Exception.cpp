#include "mox/Exception.h"

namespace Mox {

// Destructors stand here so that each type's identity lives in this library alone.
Exception::~Exception() = default;
RangeException::~RangeException() = default;
MutatorReinstantiatingException::~MutatorReinstantiatingException() = default;
MutatorArgNullPointerException::~MutatorArgNullPointerException() = default;
NewEntityArgsException::~NewEntityArgsException() = default;

void throwRangeException(std::string_view text) { throw RangeException(std::string(text)); }

void throwMutatorReinstantiating(std::string_view mutator) {
  throw MutatorReinstantiatingException(std::string(mutator) +
                                        ": a member of this key exists, made with other arguments");
}

void throwMutatorArgNullPointerException(std::string_view mutator, std::string_view argument) {
  throw MutatorArgNullPointerException(std::string(mutator) + ": argument " + std::string(argument) +
                                       " must not be null");
}

void throwNewEntityArgsException(std::string_view factory, std::string_view reason) {
  throw NewEntityArgsException(std::string(factory) + ": unusable arguments: " + std::string(reason));
}

}  // namespace Mox
