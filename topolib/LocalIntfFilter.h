// The filter that accepts the interfaces that are local to the switch.

#pragma once

#include "mox/Public.h"
#include "topolib/FilterIntf.h"

namespace Topology::Library {

/// Has no state: one instance serves any number of state machines.
class MOX_PUBLIC LocalIntfFilter : public FilterIntf {
 public:
  ~LocalIntfFilter() override;

  /// True for an Ethernet, port channel, CPU, VXLAN tunnel or MPLS trunk interface, and for no other; in particular not for
  /// a sub-interface.
  bool isValidIntf(Quill::IntfId intf) override;
};

}  // namespace Topology::Library
