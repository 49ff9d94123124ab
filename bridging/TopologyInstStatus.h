// The instance status: the topologies in service and, per topology, the ports that are up.
//
//   auto status = Bridging::Topology::Inst::statusFactory("instance");
//   status->topoStatusIs("A", 1)->topoPortStatusIs("Ethernet1", 0);

#pragma once

#include "mox/Entity.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Bridging::Topology::Inst {

class MOX_PUBLIC TopoStatus : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> topoPortStatusAttr{0, "topoPortStatus"};

  TopoStatus(Mox::String name, unsigned topoNumber) noexcept;
  ~TopoStatus() override;

  /// The number of the configuration that this status belongs to. Fixed when it is made.
  [[nodiscard]] unsigned topoNumber() const noexcept { return topoNumber_; }

  /// topoPortStatus[intf]: the ports that are up, each with a number for the use of its writer.
  [[nodiscard]] const auto& topoPortStatus() const noexcept { return topoPortStatus_; }
  [[nodiscard]] const unsigned* topoPortStatus(Quill::IntfId intf) const noexcept { return topoPortStatus_.find(intf); }
  void topoPortStatusIs(Quill::IntfId intf, unsigned number) {
    valueIs(topoPortStatus_, topoPortStatusAttr, intf, number);
  }
  void topoPortStatusDel(Quill::IntfId intf) { valueDel(topoPortStatus_, topoPortStatusAttr, intf); }
  void topoPortStatusDelAll();

  [[nodiscard]] bool isBuiltFrom(unsigned topoNumber) const noexcept { return topoNumber == topoNumber_; }

 private:
  unsigned topoNumber_;
  Mox::ValueCollection<Quill::IntfId, unsigned> topoPortStatus_;
};

class MOX_PUBLIC Status : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Mox::String> topoStatusAttr{0, "topoStatus"};

  explicit Status(Mox::String name) noexcept;
  ~Status() override;

  /// topoStatus[name]. Making one that exists with another number raises MutatorReinstantiatingException.
  [[nodiscard]] const auto& topoStatus() const noexcept { return topoStatus_; }
  [[nodiscard]] const TopoStatus* topoStatus(const Mox::String& name) const noexcept { return topoStatus_.find(name); }
  [[nodiscard]] TopoStatus* topoStatus(const Mox::String& name) noexcept { return topoStatus_.find(name); }
  Mox::Ptr<TopoStatus> topoStatusIs(const Mox::String& name, unsigned topoNumber);
  void topoStatusDel(const Mox::String& name);
  void topoStatusDelAll();

 private:
  Mox::EntityCollection<Mox::String, TopoStatus> topoStatus_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<Status> statusFactory(const Mox::String& name);

}  // namespace Bridging::Topology::Inst
