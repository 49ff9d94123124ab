// Where a client starts the topology library.
//
// Usage (examples/minimal_agent.cpp is a whole program)
//   auto root = Topology::Library::rootFactory("topolib");
//   auto state = Topology::Library::libStateFactory("state");
//   root->doStartLibSm("libSm", config, status, nullptr, brConfig, state, LibSmMode::createStatus,
//                      /*ignoreInternalVlan=*/true, /*deferProcessing=*/true, "LocalInterface")
//       ->ethIntfStatusDirIs(intfStatusDir);
//   Mox::activityManager()->run();          // or call dispatch() from a loop of your own, when nextDue() says so
//
// Rules
//   - A Root has one LibSm. Starting it again with the same arguments gives the same one; another `validIntfPtr` is
//     stored in it. Any other change makes a new one, and retires the old one, whoever holds it: two of them must not
//     write the same state.
//   - The inputs stay the client's; the library holds counted pointers to them. The LibState keeps its contents when the
//     LibSm ends. A used LibState may be handed to a new LibSm, which goes on with what it finds; what the old one left of
//     VLANs and ports that have gone since stays.
//   - Everything runs on the activity thread.

#pragma once

#include <cstdint>

#include "mox/Entity.h"
#include "mox/Public.h"
#include "topolib/LibSm.h"
#include "topolib/TopologyStatusLibSm.h"

namespace Topology::Library {

class MOX_PUBLIC Root : public Mox::NamedEntity {
 public:
  static constexpr Mox::ScalarAttribute libSmAttr{0, "libSm"};
  static constexpr Mox::ScalarAttribute topologyStatusLibSmAttr{1, "topologyStatusLibSm"};

  explicit Root(Mox::String name) noexcept;
  ~Root() override;

  /// The running state machine, or null.
  [[nodiscard]] const Mox::Ptr<LibSm>& libSm() const noexcept { return libSm_; }

  /// Starts the library. `status` and `statusInst` exclude each other; with `status` the library waits for
  /// `LibSm::ethIntfStatusDirIs`. `intfFilterType` "LocalInterface" restricts it to the interfaces of LocalIntfFilter, any
  /// other text to none. LibSm's constructor says what the other arguments mean, and which may be null.
  Mox::Ptr<LibSm> doStartLibSm(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
                               const Mox::Ptr<const Bridging::Topology::Status>& status,
                               const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                               const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState,
                               LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
                               const Mox::String& intfFilterType);

  /// The same with the address of a filter, or 0 for none. The filter must outlive its use.
  Mox::Ptr<LibSm> libSmIs(const Mox::String& name, const Mox::Ptr<const Bridging::Topology::Config>& config,
                          const Mox::Ptr<const Bridging::Topology::Status>& status,
                          const Mox::Ptr<Bridging::Topology::Inst::Status>& statusInst,
                          const Mox::Ptr<const Bridging::Config>& brConfig, const Mox::Ptr<LibState>& libState,
                          LibSmMode libSmMode, bool ignoreInternalVlan, bool deferProcessing,
                          const std::uint64_t& validIntfPtr);

  /// The running status publisher, or null.
  [[nodiscard]] const Mox::Ptr<TopologyStatusLibSm>& topologyStatusLibSm() const noexcept {
    return topologyStatusLibSm_;
  }
  /// Starts the status publisher, which writes `status`. The same four entities give the same one; others make a new
  /// one, and retire the old one.
  Mox::Ptr<TopologyStatusLibSm> topologyStatusLibSmIs(
      const Mox::Ptr<Bridging::Topology::Inst::Status>& status, const Mox::Ptr<const LibState>& libState,
      const Mox::Ptr<const Bridging::Topology::Config>& config,
      const Mox::Ptr<const Interface::EthIntfStatusDir>& ethIntfStatusDir);

 private:
  Mox::Ptr<LibSm> libSm_;
  Mox::Ptr<TopologyStatusLibSm> topologyStatusLibSm_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<Root> rootFactory(const Mox::String& name);

}  // namespace Topology::Library
