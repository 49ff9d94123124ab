#include "bridging/TopologyStatus.h"

namespace Bridging::Topology {

TopoStatus::TopoStatus(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
TopoStatus::~TopoStatus() = default;

Status::Status(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Status::~Status() = default;

void TopoStatus::topoPortStatusDelAll() { valueDelAll(topoPortStatus_, topoPortStatusAttr); }
Mox::Ptr<TopoStatus> Status::topoStatusIs(const Mox::String& name) {
  return memberIs(topoStatus_, topoStatusAttr, name);
}
void Status::topoStatusDel(const Mox::String& name) { memberDel(topoStatus_, topoStatusAttr, name); }
void Status::topoStatusDelAll() { memberDelAll(topoStatus_, topoStatusAttr); }

Mox::Ptr<Status> statusFactory(const Mox::String& name) { return Mox::makePtr<Status>(name); }

}  // namespace Bridging::Topology
