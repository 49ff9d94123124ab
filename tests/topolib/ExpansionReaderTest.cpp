// Readers of the published state that change the inputs while an expansion is applied or withdrawn, or a port is made.
//
// Each of these sequences was found at random.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/topolib/model/Sequence.h"

namespace Topology::Library::ExpansionReaderTest {

using Test::Action;
using Test::addPort;
using Test::deleteVlan;
using Test::dispatchOnce;
using Test::expandVlan;
using Test::makeTopo;
using Test::makeVlan;
using Test::mapVlan;
using Test::Play;
using Test::Sequence;
using Test::unmapVlan;
using Step = Sequence::Step;

constexpr auto none = std::nullopt;

/// A sequence that is written down step by step; topologies are there as soon as they are configured.
class Script {
 public:
  explicit Script(bool isItemByItem = false) {
    sequence_.arrangement.start.status = Test::Start::Status::instance;
    sequence_.arrangement.start.ignoreInternalVlan = false;
    sequence_.arrangement.start.deferProcessing = isItemByItem;
    sequence_.arrangement.yieldAfterOne = isItemByItem;
    add({.step = Step::start});
  }

  Script& does(const Action& action) { return add({.action = action}); }
  /// Inside a notification, one after the other.
  Script& does(Step step, const Action& action) { return add({.step = step, .action = action}); }
  Script& drains() { return add({.step = Step::drain}); }

  [[nodiscard]] std::optional<std::string> failure() const { return Play(sequence_).run(); }

 private:
  Script& add(const Sequence::Item& item) {
    sequence_.items.push_back(item);
    return *this;
  }

  Sequence sequence_;
};

TEST(ExpansionReader, ownEntryThatAReaderAddsToANewPortTakesPrecedence) {
  Script script;
  script.does(makeTopo("A")).does(makeTopo("B")).does(makeVlan(10)).does(makeVlan(30));
  script.does(mapVlan(10, "B")).does(mapVlan(30, "A")).does(addPort(10, "Cpu", 1));
  script.does(Step::inside, addPort(30, "Cpu", 3));
  script.does(expandVlan(30, 10));
  EXPECT_EQ(script.failure(), none);
}

TEST(ExpansionReader, newPortThatReadersFillAndEmptyIsMadeAgain) {
  Script script;
  script.does(makeTopo("B")).does(makeTopo("C")).does(makeVlan(10)).does(makeVlan(20)).does(makeVlan(30));
  script.does(mapVlan(10, "B")).does(mapVlan(20, "B")).does(mapVlan(30, "C")).does(addPort(30, "Ethernet2"));
  script.does(Step::inside, expandVlan(10, 30));
  script.does(Step::inside, expandVlan(10, 0));
  script.does(addPort(20, "Ethernet2", 2));
  EXPECT_EQ(script.failure(), none);
}

TEST(ExpansionReader, vlanThatTheBacklogComesToWhileItsExpansionIsWithdrawnKeepsItsOwnEntries) {
  Script script(true);
  script.does(makeTopo("C")).does(makeVlan(10)).does(addPort(10, "Ethernet1.5", 3)).does(mapVlan(40, "C"));
  script.does(mapVlan(10, "B")).does(makeTopo("B")).does(makeVlan(20)).does(makeVlan(40));
  script.does(addPort(40, "Ethernet1", 3)).does(addPort(10, "Cpu")).drains();
  script.does(Step::inside, addPort(20, "Ethernet2", 1));
  script.does(mapVlan(20, "C")).does(unmapVlan(10)).does(expandVlan(20, 40)).does(mapVlan(40, "A"));
  script.does(dispatchOnce()).does(dispatchOnce());
  script.does(Step::inside, dispatchOnce());
  script.does(expandVlan(20, 10));
  EXPECT_EQ(script.failure(), none);
}

TEST(ExpansionReader, vlanThatAReaderDeletesInheritsNothing) {
  Script script;
  script.does(makeTopo("A")).does(makeTopo("C")).does(makeVlan(30)).does(makeVlan(40));
  script.does(mapVlan(30, "A")).does(mapVlan(40, "C")).does(addPort(30, "Ethernet1", 2));
  script.does(Step::inside, deleteVlan(40));
  script.does(Step::inside, makeVlan(40));
  script.does(expandVlan(40, 30));
  EXPECT_EQ(script.failure(), none);
}

TEST(ExpansionReader, vlanThatAReaderMakesAnewKeepsNothingThatItInheritedBefore) {
  Script script;
  script.does(makeTopo("A")).does(makeTopo("C")).does(makeVlan(30)).does(makeVlan(40));
  script.does(mapVlan(30, "A")).does(mapVlan(40, "C")).does(addPort(30, "Cpu", 2)).does(addPort(30, "Ethernet1", 2));
  script.does(Step::inside, deleteVlan(40));
  script.does(Step::inside, makeVlan(40));
  script.does(expandVlan(40, 30));
  EXPECT_EQ(script.failure(), none);
}

}  // namespace Topology::Library::ExpansionReaderTest
