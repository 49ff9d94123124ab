#include "topo/Agent.h"

#include "topo/ScenarioError.h"

namespace Topo {

using namespace Topology::Library;

/// The state machines go before the entities that they watch.
Agent::~Agent() {
  viewSm_ = nullptr;
  publisherRoot_ = nullptr;
  libraryRoot_ = nullptr;
}

void Agent::startLibrary(const LibraryStart& how) {
  using Watch = LibraryStart::Watch;
  if (!libraryRoot_) libraryRoot_ = rootFactory("library");
  const Mox::Ptr<LibSm> libSm =
      libraryRoot_->doStartLibSm(how.name, config, how.watch == Watch::status ? status : nullptr,
                                 how.watch == Watch::instance ? instance : nullptr, bridging, state, how.mode,
                                 how.ignoreInternal, how.isDeferred, how.filter);
  applySettings();
  if (how.hasInterfaces && libSm->ethIntfStatusDir() == nullptr) attachInterfaces();
}

void Agent::startPublisher() {
  if (!publisherRoot_) publisherRoot_ = rootFactory("publisher");
  publisherRoot_->topologyStatusLibSmIs(instance, state, config, interfaces);
}

void Agent::startView() {
  if (!viewSm_) viewSm_ = Vlan::vlanLibSmFactory(state, view);
}

void Agent::stopLibrary() {
  if (!libraryRoot_) throw ScenarioError("the library is not running");
  libraryRoot_ = nullptr;
}

void Agent::stopPublisher() {
  if (!publisherRoot_) throw ScenarioError("the publisher is not running");
  publisherRoot_ = nullptr;
}

void Agent::stopView() {
  if (!viewSm_) throw ScenarioError("the view is not running");
  viewSm_ = nullptr;
}

void Agent::attachInterfaces() {
  runningLibSm().ethIntfStatusDirIs(interfaces);
  applySettings();
}

void Agent::detachInterfaces() { runningLibSm().ethIntfStatusDirDel(); }

void Agent::settingsIs(const LibrarySettings& settings) {
  if (settings.threshold) settings_.threshold = settings.threshold;
  if (settings.quantum) settings_.quantum = settings.quantum;
  if (settings.yieldAfterOne) settings_.yieldAfterOne = settings.yieldAfterOne;
  applySettings();
}

LibSm& Agent::runningLibSm() const {
  if (!libraryRoot_) throw ScenarioError("the library is not running; start it first: start library");
  return *libraryRoot_->libSm();
}

void Agent::applySettings() {
  if (!libraryRoot_) return;
  LibSm& libSm = runningLibSm();
  if (settings_.threshold) libSm.dirtyVlanPortThresholdIs(*settings_.threshold);
  TopoLibCodef* const codef = libSm.topoLibCodef().get();
  if (codef == nullptr) return;
  if (settings_.quantum) codef->backlogQuantumIs(*settings_.quantum);
  if (settings_.yieldAfterOne) codef->yieldAfterOneIs(*settings_.yieldAfterOne);
}

}  // namespace Topo
