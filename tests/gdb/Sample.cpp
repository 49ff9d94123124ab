// A program for the debugger: everything that the printers of tools/gdb show, at hand where `stop` is called.

#include <array>
#include <cstdint>
#include <sstream>
#include <string>

#include "bridging/Config.h"
#include "bridging/TopologyConfig.h"
#include "interface/EthIntfStatus.h"
#include "mox/StateMachine.h"
#include "topolib/LibState.h"
#include "topolib/VlanToVlanSet.h"
#include "topolib/vlan/LibVlanState.h"
#include "topolib/vlan/VlanPortMapping.h"

namespace Sample {

/// Where the debugger looks around.
[[gnu::noinline]] void stop() { __asm__ volatile(""); }

using Bridging::Topology::PortState;
using Topology::Library::LibState;
using Topology::Library::Topo;

template <class K, class V>
using Values = Mox::ValueCollection<K, V>;

/// A collection, and its keys in the order of a pass, as the program itself has it.
template <class C>
struct InOrder {
  C map;
  std::string text;
  const char* keys = nullptr;

  void passIs() {
    std::ostringstream out;
    for (const auto& member : map) out << member.key << ' ';
    text = out.str();
    keys = text.c_str();
  }
};

// --- texts ---

/// An id of each form, and others that are interned; then the names they were made of.
constexpr std::array names{"",
                           "Ethernet4294967295",
                           "Ethernet2/1",
                           "Ethernet4095/1023/0",
                           "Ethernet7.4094",
                           "eth0",
                           "swp12",
                           "swp1s3",
                           "PortChannel5.0",
                           "bond1",
                           "team2",
                           "Cpu",
                           "Cpu.8388606",
                           "VxlanTunnel1",
                           "vxlan42",
                           "MplsTrunk1",
                           "mpls3",
                           "Vlan100",
                           "Loopback0",
                           "enp3s0",
                           "Ethernet007",
                           "Ethernet70000/1",
                           "enp3s0.8388607",
                           "Management \"0\""};
std::array<Quill::IntfId, names.size()> ids;
std::size_t idCount = ids.size();
const char* const* allNames = names.data();
const Quill::IntfId* allIds = ids.data();

Mox::String noText;
Mox::String text;
Bridging::VlanIdOrNone noVlan;
Bridging::VlanIdOrNone someVlan;
PortState portState = PortState::blocking;

// --- maps ---

/// Values of a size and an alignment that differ from those of the others.
struct Triple {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
};

InOrder<Values<Bridging::VlanId, bool>> noVlans;
InOrder<Values<Bridging::VlanId, bool>> fewVlans;
InOrder<Values<Bridging::VlanId, bool>> manyVlans;
InOrder<Values<Bridging::VlanId, Mox::String>> manyNames;
InOrder<Mox::SetCollection<Bridging::VlanId>> vlanSet;
InOrder<Mox::SetCollection<Bridging::VlanId>> largeVlanSet;
Mox::IdMap<Bridging::VlanId, Triple> triples;
Mox::IdMap<Bridging::VlanId, Triple> manyTriples;
InOrder<Values<Quill::IntfId, unsigned>> noIntfs;
InOrder<Values<Quill::IntfId, unsigned>> oneIntf;
InOrder<Values<Quill::IntfId, unsigned>> manyIntfs;
InOrder<Mox::SetCollection<Quill::IntfId>> intfSet;
InOrder<Values<Mox::String, bool>> byText;
InOrder<Mox::SetCollection<Mox::String>> textSet;
Mox::HashMap<Mox::String, Triple> triplesByText;
InOrder<Topology::Library::VlanToExpVlanSetMap> seededVlans;

void fill() {
  noVlans.passIs();
  noIntfs.passIs();
  for (const unsigned vid : {4094U, 1U, 100U}) {
    fewVlans.map.insertOrAssign(vid, vid == 100);
    vlanSet.map.insertOrAssign(vid, {});
    triples.insert(vid, {vid, vid + 1, vid + 2});
    seededVlans.map.insert(vid, Topology::Library::vlanToVlanSetFactory(vid));
  }
  seededVlans.map.find(100)->someVlanIs(7);
  for (unsigned vid = 1; vid <= 1200; vid += vid % 64 == 0 ? 70 : 1) {
    manyVlans.map.insertOrAssign(vid, vid % 3 == 0);
    manyNames.map.insertOrAssign(vid, "vlan" + std::to_string(vid));
    largeVlanSet.map.insertOrAssign(vid, {});
    manyTriples.insert(vid, {vid, vid + 1, vid + 2});
  }
  oneIntf.map.insertOrAssign("Ethernet1", 1);
  for (unsigned n = 1; n <= 300; ++n) {
    const std::string name = (n % 10 == 0 ? "port-" : "Ethernet") + std::to_string(n);
    manyIntfs.map.insertOrAssign(name, n);
    byText.map.insertOrAssign(name, n % 2 == 0);
    if (n <= 20) intfSet.map.insertOrAssign(name, {});
    if (n <= 20) textSet.map.insertOrAssign(name, {});
  }
  triplesByText.insert("one", {1, 2, 3});
  fewVlans.passIs();
  manyVlans.passIs();
  manyNames.passIs();
  vlanSet.passIs();
  largeVlanSet.passIs();
  oneIntf.passIs();
  manyIntfs.passIs();
  intfSet.passIs();
  byText.passIs();
  textSet.passIs();
  seededVlans.passIs();
}

// --- objects ---

class Watch : public Mox::StateMachine<Watch> {
 public:
  explicit Watch(const Mox::Ptr<const Topo>& topo) : topo_(this, topo) { initializedIs(true); }
  ~Watch() override { moxDoZombieReactors(true); }

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(topo_); }

  class MoxTopo : public Mox::Reactor<MoxTopo, Watch, Topo> {
   public:
    using Reactor::Reactor;
    void onAttribute(Mox::AttributeId id, const void* key) override {
      if (Topo::portAttr.keyOf(id, key) != nullptr) sm().changes_++;
    }
  };

  MoxTopo topo_;
  unsigned changes_ = 0;
};

Mox::Ptr<LibState> state;
Mox::Ptr<Topo> noTopo;
Mox::Ptr<Topo> topo;
Mox::Ptr<const Topology::Library::Port> port;
Mox::Ptr<const Mox::Entity> entity;  // a Topo
Mox::Ptr<Watch> watch;
Mox::Ptr<Topology::Library::Vlan::TopoVlan> topoVlan;
Mox::Ptr<Bridging::Config> bridging;
Mox::Ptr<Bridging::Topology::Config> config;
Mox::Ptr<Interface::EthIntfStatusDir> interfaces;

void build() {
  config = Bridging::Topology::configFactory("config");
  config->vidToTopoMapIs(10, "msti1");
  config->topoConfigIs("msti1", 1)->topoPortConfigIs("Ethernet1", 7, PortState::learning);
  bridging = Bridging::configFactory("bridging");
  bridging->vlanConfigIs(10)->vlanPortConfigIs(
      "Ethernet1", Bridging::VlanPortConfig(Bridging::AllowedTrafficDirection::ingress, false, true));
  bridging->vlanConfigIs(11, true)->floodsetExpandedVlanIs(10);
  interfaces = Interface::ethIntfStatusDirFactory("interfaces");
  interfaces->intfStatusIs("Ethernet1")->linkStatusIs(Interface::LinkStatus::up);

  state = Topology::Library::libStateFactory("state");
  topo = state->topoIs("msti1");
  port = topo->portIs("Ethernet1");
  topo->portIs("Ethernet1")->vlanPortConfigIs(10, {});
  topo->portIs("Ethernet1")->stateIs(PortState::forwarding);
  topo->portIs("Ethernet1")->activeIs(true);
  entity = topo;
  watch = Mox::makePtr<Watch>(topo);
  topo->portIs("Ethernet2/1");

  topoVlan = Mox::makePtr<Topology::Library::Vlan::TopoVlan>(10);
  topoVlan->topoPortIs("Ethernet1")->topoIs("msti1", {});
  topoVlan->topoPortIs("Ethernet2")->topoIs("msti2", {});
  topoVlan->topoPortIs("Ethernet2")->topoIs("msti1", {});
  topoVlan->topoPortIs("Ethernet3")->blockedIs(true);
}

// --- what is no value ---

/// Bytes that the debugger takes for one thing or another.
alignas(16) std::array<unsigned char, 1024> garbage{};

}  // namespace Sample

int main() {
  Mox::hashSeed32Is(1);  // whatever it is at start: the expected output stays
  for (std::size_t i = 0; i < Sample::names.size(); ++i) Sample::ids[i] = Sample::names[i];
  Sample::text = "a \"text\" with\ttab";
  Sample::someVlan = 4094;
  Sample::fill();
  Sample::build();
  Sample::stop();
}
