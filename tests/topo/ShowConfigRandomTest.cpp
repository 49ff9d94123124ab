// `show config` over random configurations: run again, it makes the same configuration.

#include <algorithm>
#include <sstream>

#include "mox/Exception.h"
#include "tests/support/Effort.h"
#include "tests/topo/RandomLines.h"
#include "tests/topo/Run.h"
#include "topo/ScenarioError.h"
#include "topo/Session.h"

namespace Topo::ShowConfigRandomTest {

using Test::Outcome;
using Test::Random;
using Test::RandomLines;
using Test::runScenario;
using Test::seedTrace;
using Test::sequences;

const std::vector<std::string> topologies{"A", "B", "\"my topo\"", "x/y~z", "\"1-2\"", R"("a\"b\\c")", "port", "\"#\""};
const std::vector<std::string> intfs{
    "Ethernet1", "Ethernet1-4", "Ethernet3-10", "Ethernet1/2", "Ethernet1/1-3", "PortChannel7",
    "Cpu",       "Ethernet1.5", "\"veth1-2\"",  "veth1-2",     "\"my port\"",   R"("a\"b")",
    "eth01",     "a-b-1-2",     "link",         "7",           "\"#\"",         "x\\y"};

/// The good ones of a number of random lines.
std::string goodLines(Random& random, std::size_t count) {
  std::ostringstream nowhere;
  Session session({.out = &nowhere, .err = &nowhere});
  RandomLines lines(random, topologies, intfs);
  std::string good;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string line = lines.next();
    try {
      session.execute(line);
      good += line + '\n';
    } catch (const ScenarioError&) {
    } catch (const Mox::Exception&) {
    }
  }
  return good;
}

const std::string showDocuments =
    "echo ==\n"
    "show config json\n"
    "show bridging json\n"
    "show interfaces json\n"
    "show status json\n"
    "show instance json\n"
    "show view json\n"  // for the forced ports
    "echo ==\n"
    "show config\n";

/// What the program prints of the configuration that a scenario makes: the documents, and the commands.
std::string printedAfter(const std::string& scenario) {
  const Outcome outcome = runScenario(scenario + showDocuments);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

TEST(ShowConfigRandom, makesTheSameConfigurationAgain) {
  SCOPED_TRACE(seedTrace());
  Random random;
  std::size_t commands = 0;
  const std::size_t count = sequences(250);
  for (std::size_t n = 0; n < count; ++n) {
    const std::string scenario = goodLines(random, 10 + random.below(100));
    const std::string printed = printedAfter(scenario);
    const std::string config = printed.substr(printed.rfind("==\n") + 3);
    commands += static_cast<std::size_t>(std::count(config.begin(), config.end(), '\n'));
    ASSERT_EQ(printedAfter(config), printed) << "configuration " << n << ":\n" << scenario;
  }
  EXPECT_GT(commands, 20 * count);
}

}  // namespace Topo::ShowConfigRandomTest
