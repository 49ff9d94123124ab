// Which interfaces the topology library is to take into account.
//
// A client that wants a choice of its own derives from FilterIntf and passes the address of its filter to
// `Root::libSmIs`; the filter must outlive the state machines that use it. Each VLAN takes the filter when it comes into
// service (topolib/VlanConfigSm.h).

#pragma once

#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Topology::Library {

class MOX_PUBLIC FilterIntf {
 public:
  FilterIntf() = default;
  FilterIntf(const FilterIntf&) = delete;
  FilterIntf& operator=(const FilterIntf&) = delete;

  /// True when the interface is to be taken into account. Must give the same answer for the same interface every time.
  virtual bool isValidIntf(Quill::IntfId intf) = 0;

  virtual ~FilterIntf();
};

}  // namespace Topology::Library
