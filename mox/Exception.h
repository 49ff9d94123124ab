// The exceptions of the framework, and the one way to raise each.
//
// They report what a caller asked for and cannot have; the operation that raises one has changed nothing. Broken
// invariants are not exceptions but assertions (mox/Assert.h). The framework catches none of them: an exception that a
// handler lets out reaches whoever caused the notification.

#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "mox/Public.h"

namespace Mox {

/// Base of the framework's exceptions.
class MOX_PUBLIC Exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~Exception() override;
};

/// A number or a text that is no value of its type: "VlanId::value < 1 or > 4094 not allowed".
class MOX_PUBLIC RangeException : public Exception {
 public:
  using Exception::Exception;
  ~RangeException() override;
};

/// A member exists under this key already and was built from other arguments.
class MOX_PUBLIC MutatorReinstantiatingException : public Exception {
 public:
  using Exception::Exception;
  ~MutatorReinstantiatingException() override;
};

/// A mutator was given a null entity where it needs one.
class MOX_PUBLIC MutatorArgNullPointerException : public Exception {
 public:
  using Exception::Exception;
  ~MutatorArgNullPointerException() override;
};

/// A factory was given arguments from which nothing can be made.
class MOX_PUBLIC NewEntityArgsException : public Exception {
 public:
  using Exception::Exception;
  ~NewEntityArgsException() override;
};

/// Raises a RangeException with exactly this text.
[[noreturn]] MOX_PUBLIC void throwRangeException(std::string_view text);

/// "topoConfigIs: a member of this key exists, made with other arguments"
[[noreturn]] MOX_PUBLIC void throwMutatorReinstantiating(std::string_view mutator);

/// "topoConfigSmIs: argument topoConfig must not be null"
[[noreturn]] MOX_PUBLIC void throwMutatorArgNullPointerException(std::string_view mutator, std::string_view argument);

/// "topoLibCodefFactory: unusable arguments: libSm is null"
[[noreturn]] MOX_PUBLIC void throwNewEntityArgsException(std::string_view factory, std::string_view reason);

}  // namespace Mox
