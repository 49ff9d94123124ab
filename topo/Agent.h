// The client agent that the program plays: it owns the inputs, and starts the library, the status publisher and the VLAN
// view over them.
//
// The entities bear the names of their documents (topo/Documents.h). Settings of the library are remembered: they reach
// the state machine when there is one, and every later one as well.

#pragma once

#include <cstdint>
#include <optional>

#include "topolib/TopoLib.h"
#include "topolib/vlan/TopoLibVlan.h"

namespace Topo {

/// How the library is started.
struct LibraryStart {
  enum class Watch : std::uint8_t { status, instance, none };

  Topology::Library::LibSmMode mode = Topology::Library::LibSmMode::createStatus;
  Watch watch = Watch::instance;
  bool ignoreInternal = false;
  bool isDeferred = true;
  Mox::String filter = "none";
  bool hasInterfaces = true;
  Mox::String name = "topoLib";
};

/// Settings of the library; what is not set stays as it is.
struct LibrarySettings {
  std::optional<std::uint16_t> threshold;
  std::optional<double> quantum;
  std::optional<bool> yieldAfterOne;
};

class Agent {
 public:
  Agent() = default;
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;
  ~Agent();

  // The inputs, and what the library, the publisher and the view write.
  const Mox::Ptr<Bridging::Topology::Config> config = Bridging::Topology::configFactory("config");
  const Mox::Ptr<Bridging::Config> bridging = Bridging::configFactory("bridging");
  const Mox::Ptr<Interface::EthIntfStatusDir> interfaces = Interface::ethIntfStatusDirFactory("interfaces");
  const Mox::Ptr<Bridging::Topology::Status> status = Bridging::Topology::statusFactory("status");
  const Mox::Ptr<Bridging::Topology::Inst::Status> instance = Bridging::Topology::Inst::statusFactory("instance");
  const Mox::Ptr<Topology::Library::LibState> state = Topology::Library::libStateFactory("state");
  const Mox::Ptr<Topology::Library::Vlan::LibVlanState> view = Topology::Library::Vlan::libVlanStateFactory("view");

  /// Starts the library, or starts it again through the same Root: on the same terms that changes nothing.
  void startLibrary(const LibraryStart& how);
  void startPublisher();
  void startView();
  // Stopping what does not run is an error.
  void stopLibrary();
  void stopPublisher();
  void stopView();

  void attachInterfaces();
  void detachInterfaces();

  void settingsIs(const LibrarySettings& settings);

  /// The running library, or null.
  [[nodiscard]] const Topology::Library::LibSm* libSm() const noexcept {
    return libraryRoot_ ? libraryRoot_->libSm().get() : nullptr;
  }
  /// The backlog processor of the running library, or null; it comes with the library's initialisation.
  [[nodiscard]] const Topology::Library::TopoLibCodef* codef() const noexcept {
    return libSm() == nullptr ? nullptr : libSm()->topoLibCodef().get();
  }
  /// The running status publisher, or null.
  [[nodiscard]] const Topology::Library::TopologyStatusLibSm* publisher() const noexcept {
    return publisherRoot_ ? publisherRoot_->topologyStatusLibSm().get() : nullptr;
  }
  [[nodiscard]] bool isViewing() const noexcept { return static_cast<bool>(viewSm_); }

 private:
  [[nodiscard]] Topology::Library::LibSm& runningLibSm() const;
  void applySettings();

  LibrarySettings settings_;
  // One each, since a Root ends with everything that it holds.
  Mox::Ptr<Topology::Library::Root> libraryRoot_;
  Mox::Ptr<Topology::Library::Root> publisherRoot_;
  Mox::Ptr<Topology::Library::Vlan::VlanLibSm> viewSm_;
};

}  // namespace Topo
