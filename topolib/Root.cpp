#include "topolib/Root.h"

#include <utility>

#include "topolib/LocalIntfFilter.h"

namespace Topology::Library {

namespace {

/// One for the whole process: it has no state, and its address may be in use for as long.
std::uint64_t localIntfFilter() {
  static LocalIntfFilter& filter = *new LocalIntfFilter;
  return reinterpret_cast<std::uintptr_t>(static_cast<FilterIntf*>(&filter));
}

}  // namespace

Root::Root(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
Root::~Root() = default;

Mox::Ptr<LibSm> Root::doStartLibSm(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
                                   const Mox::Ptr<const Bridging::Topology::Status>& status,
                                   const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                                   const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState,
                                   LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
                                   const Mox::String& intfFilterType) {
  return libSmIs(name, config, status, statusInst, brConfig, libState, libSmMode, ignoreInternalVlan, deferProcessing,
                 intfFilterType == "LocalInterface" ? localIntfFilter() : 0);
}

Mox::Ptr<LibSm> Root::libSmIs(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
                              const Mox::Ptr<const Bridging::Topology::Status>& status,
                              const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                              const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState,
                              LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
                              const std::uint64_t& validIntfPtr) {
  const Mox::Ptr<Root> self(this);
  if (libSm_) {
    const bool isSame = !libSm_->isRetired() && libSm_->name() == name && config == libSm_->config() &&
                        status == libSm_->status() && statusInst == libSm_->statusInst() &&
                        brConfig == libSm_->brConfig() && libState == libSm_->libState() &&
                        libSm_->libSmMode() == libSmMode && libSm_->ignoreInternalVlan() == ignoreInternalVlan &&
                        libSm_->deferProcessing() == deferProcessing;
    libSm_->validIntfPtrIs(validIntfPtr);
    if (isSame) return libSm_;
  }
  // Two of them must not write the same state, not even while the new one is being made.
  if (libSm_) libSm_->moxDoZombieReactors(true);
  Mox::Ptr<LibSm> made = LibSm::LibSmIs(name, config, status, statusInst, brConfig, libState, libSmMode,
                                        ignoreInternalVlan, deferProcessing, validIntfPtr);
  // A reader may have started another one meanwhile; this one is asked for last.
  if (libSm_) libSm_->moxDoZombieReactors(true);
  scalarIs(libSm_, made, libSmAttr);
  made->hasNotificationActiveIs(true);
  return made;
}

Mox::Ptr<TopologyStatusLibSm> Root::topologyStatusLibSmIs(
    const Mox::Ptr<Bridging::Topology::Inst::Status>& status, const Mox::Ptr<const LibState>& libState,
    const Mox::Ptr<const Bridging::Topology::Config>& config,
    const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir) {
  if (const TopologyStatusLibSm* const sm = topologyStatusLibSm_.get();
      sm != nullptr && !sm->isRetired() && sm->status() == status && libState == sm->libState() &&
      sm->config() == config && sm->ethIntfStatusDir() == ethIntfStatusDir) {
    return topologyStatusLibSm_;
  }
  const Mox::Ptr<Root> self(this);
  if (topologyStatusLibSm_) topologyStatusLibSm_->moxDoZombieReactors(true);
  Mox::Ptr<TopologyStatusLibSm> made =
      TopologyStatusLibSm::TopologyStatusLibSmIs(status, libState, config, ethIntfStatusDir);
  made->hasNotificationActiveIs(true);
  if (topologyStatusLibSm_) topologyStatusLibSm_->moxDoZombieReactors(true);
  scalarIs(topologyStatusLibSm_, made, topologyStatusLibSmAttr);
  return made;
}

Mox::Ptr<Root> rootFactory(const Mox::String& name) { return Mox::makePtr<Root>(name); }

}  // namespace Topology::Library
