// A library whose backlog processor is under test.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/topolib/Agent.h"

namespace Test {

/// VLAN 10 of topology A, without members.
class CodefBase : public testing::Test {
 protected:
  explicit CodefBase(bool deferProcessing) : agent(Start{.deferProcessing = deferProcessing}) {
    agent.topoIs("A");
    agent.vlanIs(10, "A");
    agent.brConfig->vlanConfigIs(10);
    agent.startLibrary();
    agent.drain();
  }

  Topology::Library::TopoLibCodef& codef() { return *agent.libSm->topoLibCodef(); }
  const Topology::Library::DirtyVlan* dirtyVlan(unsigned vid) {
    return std::as_const(*agent.libSm->dirtyVlanDir()).dirtyVlan(vid);
  }
  void mark(unsigned vid, const std::string& intf) { agent.libSm->doOnVlanPortUpdate(vid, intf); }

  Agent agent;
};

}  // namespace Test
