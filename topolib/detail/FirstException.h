// Lets a series of steps go on where readers throw, so that none is left out, and reports the first exception at the end.

#pragma once

#include <exception>

namespace Topology::Library::detail {

class FirstException {
 public:
  void collect(auto&& step) {
    try {
      step();
    } catch (...) {
      if (!first_) first_ = std::current_exception();
    }
  }
  void rethrow() const {
    if (first_) std::rethrow_exception(first_);
  }

 private:
  std::exception_ptr first_;
};

}  // namespace Topology::Library::detail
