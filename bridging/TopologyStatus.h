// The plain topology status: which configured topologies, and which of their ports, exist in hardware.
//
//   auto status = Bridging::Topology::statusFactory("status");
//   status->topoStatusIs("A")->topoPortStatusIs("Ethernet1");

#pragma once

#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Bridging::Topology {

class MOX_PUBLIC TopoStatus : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> topoPortStatusAttr{0, "topoPortStatus"};

  explicit TopoStatus(Mox::String name) noexcept;
  ~TopoStatus() override;

  /// topoPortStatus[intf]: a set of the topology's ports.
  [[nodiscard]] const auto& topoPortStatus() const noexcept { return topoPortStatus_; }
  [[nodiscard]] bool topoPortStatus(Quill::IntfId intf) const noexcept { return topoPortStatus_.has(intf); }
  void topoPortStatusIs(Quill::IntfId intf) { valueIs(topoPortStatus_, topoPortStatusAttr, intf, {}); }
  void topoPortStatusDel(Quill::IntfId intf) { valueDel(topoPortStatus_, topoPortStatusAttr, intf); }
  void topoPortStatusDelAll();

 private:
  Mox::SetCollection<Quill::IntfId> topoPortStatus_;
};

class MOX_PUBLIC Status : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoStatusAttr{0, "topoStatus"};

  explicit Status(Mox::String name) noexcept;
  ~Status() override;

  /// topoStatus[name]
  [[nodiscard]] const auto& topoStatus() const noexcept { return topoStatus_; }
  [[nodiscard]] const TopoStatus* topoStatus(const Mox::String& name) const noexcept { return topoStatus_.find(name); }
  [[nodiscard]] TopoStatus* topoStatus(const Mox::String& name) noexcept { return topoStatus_.find(name); }
  Mox::Ptr<TopoStatus> topoStatusIs(const Mox::String& name);
  void topoStatusDel(const Mox::String& name);
  void topoStatusDelAll();

 private:
  Mox::EntityCollection<Mox::String, TopoStatus> topoStatus_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<Status> statusFactory(const Mox::String& name);

}  // namespace Bridging::Topology
