// A set of interfaces that notifies nobody: the backlog processor's record of the ports it has served and has yet to.
// Counted, so that it can be handed around, and not copied.

#pragma once

#include "mox/Collection.h"
#include "mox/Ptr.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Topology::Library {

class MOX_PUBLIC PortSet : public Mox::PtrInterface {
 public:
  PortSet() noexcept;
  ~PortSet() override;

  /// port[intf]: an interface is in the set while its key is present, whatever the value.
  [[nodiscard]] const auto& port() const noexcept { return port_; }
  [[nodiscard]] const bool* port(Quill::IntfId intf) const noexcept { return port_.find(intf); }
  void portIs(Quill::IntfId intf, bool v = true) { port_.insertOrAssign(intf, v); }
  void portDel(Quill::IntfId intf) { port_.erase(intf); }
  void portDelAll() { port_.clear(); }

 private:
  Mox::ValueCollection<Quill::IntfId, bool> port_;
};

}  // namespace Topology::Library
