#include "topolib/TopoPortConfigSm.h"

#include "topolib/LibSm.h"
#include "topolib/TopoConfigSm.h"
#include "topolib/detail/Log.h"

namespace Topology::Library {

TopoPortConfigSm::TopoPortConfigSm(Mox::String name,
                                   const Mox::Ptr<const Bridging::Topology::TopoPortConfig>& topoPortConfig,
                                   TopoConfigSm* topoConfigSm)
    : name_(std::move(name)),
      intfId_(topoPortConfig->intfId()),
      topoPortConfig_(this, topoPortConfig),
      topoConfigSm_(topoConfigSm) {
  handleInitialized();
}

TopoPortConfigSm::~TopoPortConfigSm() { moxDoZombieReactors(true); }

LibSm* TopoPortConfigSm::libSm() const noexcept { return topoConfigSm_->libSm(); }

void TopoPortConfigSm::handleInitialized() {
  initializedIs(true);
  TOPOLIB_TRACE(8) << name_ << ": Initialize " << intfId_;
  doPublish();
}

void TopoPortConfigSm::handlePortState() {
  TOPOLIB_TRACE(8) << "handlePortState";
  if (!initialized()) return;
  TOPOLIB_TRACE(3) << name_ << ": Updating " << intfId_ << " state to " << topoPortConfig()->portState();
  topoConfigSm_->doPublish(*this);
}

void TopoPortConfigSm::handleFdbFlush() {
  TOPOLIB_TRACE(8) << "handleFdbFlush";
  if (!initialized()) return;
  TOPOLIB_TRACE(3) << name_ << ": Updating " << intfId_ << " fdbFlush to " << topoPortConfig()->fdbFlush();
  topoConfigSm_->doPublish(*this);
}

void TopoPortConfigSm::doPublish() {
  libSm()->doSyncTopoPort(intfId_, name_, topoPortConfig()->portState(), topoPortConfig()->fdbFlush(), true);
}

void TopoPortConfigSm::doCleanUp() {
  TOPOLIB_TRACE(8) << name_ << ": Cleanup " << intfId_;
  libSm()->doSyncTopoPort(intfId_, name_, {}, 0, false);
}

void TopoPortConfigSm::MoxTopoPortConfig::onChange(Mox::AttributeId id, const void* /*key*/) {
  using Bridging::Topology::TopoPortConfig;
  if (TopoPortConfig::portStateAttr.is(id)) sm().handlePortState();
  if (TopoPortConfig::fdbFlushAttr.is(id)) sm().handleFdbFlush();
}

}  // namespace Topology::Library
