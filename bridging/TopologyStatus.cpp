#include "bridging/TopologyStatus.h"

namespace Bridging::Topology {

TopoStatus::TopoStatus(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
TopoStatus::~TopoStatus() = default;

Status::Status(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Status::~Status() = default;

Mox::Ptr<Status> statusFactory(const Mox::String& name) { return Mox::makePtr<Status>(name); }

}  // namespace Bridging::Topology
