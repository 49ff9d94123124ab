// Building the published state and releasing it: one topology with 256 ports, each of which carries all 4094 VLANs. VLAN
// by VLAN, as configuration arrives; every entry goes the whole way from the topology's name. Nobody is notified.

#include <array>
#include <bitset>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "bench/Allocations.h"
#include "bench/Peers.h"
#include "bench/Suites.h"
#include "topolib/LibState.h"

namespace Bench {
namespace {

using Bridging::VlanId;
using Bridging::VlanPortConfig;

constexpr std::size_t portCount = 256;
constexpr std::size_t members = portCount * VlanId::max;

constexpr const char* topoName = "spanningTree0";

/// The library's own.
class Ours {
 public:
  using Port = Quill::IntfId;

  void configIs(Port port, VlanId vid, const VlanPortConfig& config) {
    state_->topoIs(topo_)->portIs(port)->vlanPortConfigIs(vid, config);
  }

 private:
  Mox::String topo_ = topoName;
  Mox::Ptr<Topology::Library::LibState> state_ = Topology::Library::libStateFactory("state");
};

/// Maps of maps.
template <template <class...> class Map>
class Nested {
 public:
  using Port = std::uint64_t;

  void configIs(Port port, VlanId vid, const VlanPortConfig& config) {
    state_[topo_][port].insert_or_assign(vid.value(), config);
  }

 private:
  std::string topo_ = topoName;
  Map<std::string, Map<std::uint64_t, Map<std::uint16_t, VlanPortConfig>>> state_;
};

/// What a program would hold that knows how many of everything there are, and numbers topologies and ports.
class Arrays {
 public:
  using Port = std::size_t;

  void configIs(Port port, VlanId vid, const VlanPortConfig& config) {
    std::unique_ptr<Vlans>& vlanConfigs = state_[topo_][port];
    if (!vlanConfigs) vlanConfigs = std::make_unique<Vlans>();
    vlanConfigs->isPresent.set(vid.value());
    vlanConfigs->config[vid.value()] = config;
  }

 private:
  struct Vlans {
    std::bitset<4096> isPresent;
    std::array<VlanPortConfig, 4096> config;
  };

  std::size_t topo_ = 0;
  std::vector<std::array<std::unique_ptr<Vlans>, portCount>> state_{1};
};

template <class Port>
std::vector<Port> portsFor() {
  std::vector<Port> result;
  for (std::size_t i = 1; i <= portCount; ++i) {
    if constexpr (std::is_same_v<Port, std::size_t>) {
      result.push_back(i - 1);
    } else {
      const Quill::IntfId intf("Ethernet" + std::to_string(i));
      if constexpr (std::is_same_v<Port, Quill::IntfId>) {
        result.push_back(intf);
      } else {
        result.push_back(intf.bits());
      }
    }
  }
  return result;
}

/// Fills a state with all members.
template <class Contender>
void build(Contender& contender, const std::vector<typename Contender::Port>& ports) {
  for (std::uint16_t vid = VlanId::min; vid <= VlanId::max; ++vid) {
    for (const auto& port : ports) contender.configIs(port, vid, VlanPortConfig());
  }
}

template <class Contender>
void buildAndRelease(benchmark::State& state) {
  const auto ports = portsFor<typename Contender::Port>();
  for (auto _ : state) {
    Contender contender;
    build(contender, ports);
  }
  itemsAre(state, members);
}

/// All that the state allocates: entities, collections and values.
void bytesPerMember(benchmark::State& state) {
  const auto ports = portsFor<Ours::Port>();
  double bytes = 0;
  for (auto _ : state) {
    const Allocations allocations;
    Ours ours;
    build(ours, ports);
    bytes = static_cast<double>(allocations.bytes());
  }
  amountIs(state, bytes / static_cast<double>(members), "bytes");
}

template <class Contender>
void addBuild(const char* contender) {
  add(std::string("BuildState/") + contender, buildAndRelease<Contender>)->Iterations(1);
}

}  // namespace

void addBuildStates(Targets& targets) {
  addBuild<Ours>("Mox");
  addBuild<Arrays>("direct arrays");
  addBuild<Nested<boost::unordered_flat_map>>(boostFlat);
  addBuild<Nested<absl::flat_hash_map>>(abslFlat);
  addBuild<Nested<std::unordered_map>>(stdUnordered);
  add("BuildState/bytes/Mox", bytesPerMember)->Iterations(1)->Repetitions(1);

  const std::string what = "build and release state, an entry";
  for (const char* peer : {"direct arrays", boostFlat, abslFlat, stdUnordered}) {
    targets.compare(what, "BuildState/Mox", std::string("BuildState/") + peer, peer);
  }
  targets.amount("published state, bytes a member", "BuildState/bytes/Mox", 16.5, "bytes");
}

}  // namespace Bench
