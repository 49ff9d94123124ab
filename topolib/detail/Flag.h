// A flag that is up during a block.

#pragma once

namespace Topology::Library::detail {

class Flag {
 public:
  explicit Flag(bool& flag) noexcept : flag_(flag) { flag = true; }
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;
  ~Flag() { flag_ = false; }

 private:
  bool& flag_;
};

}  // namespace Topology::Library::detail
