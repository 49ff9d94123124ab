#include "bridging/TopologyInstStatus.h"

namespace Bridging::Topology::Inst {

TopoStatus::TopoStatus(Mox::String name, unsigned topoNumber) noexcept
    : NamedEntity(std::move(name)), topoNumber_(topoNumber) {}
TopoStatus::~TopoStatus() = default;

Status::Status(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Status::~Status() = default;

Mox::Ptr<Status> statusFactory(const Mox::String& name) { return Mox::makePtr<Status>(name); }

}  // namespace Bridging::Topology::Inst
