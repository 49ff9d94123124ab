// Virtual time for one test.

#pragma once

#include "mox/Ptr.h"
#include "mox/System.h"

namespace Test {

/// Puts a virtual time in the place of the process's time source; the end of the scope puts the old one back.
class VirtualTimeInUse {
 public:
  VirtualTimeInUse() { Mox::System::timeSourceIs(time_); }
  VirtualTimeInUse(const VirtualTimeInUse&) = delete;
  VirtualTimeInUse& operator=(const VirtualTimeInUse&) = delete;
  ~VirtualTimeInUse() { Mox::System::timeSourceIs(old_); }

  Mox::VirtualTime* operator->() const noexcept { return time_.get(); }
  Mox::VirtualTime& operator*() const noexcept { return *time_; }

 private:
  Mox::Ptr<Mox::TimeSource> old_{&Mox::System::timeSource()};
  Mox::Ptr<Mox::VirtualTime> time_ = Mox::makePtr<Mox::VirtualTime>();
};

}  // namespace Test
