// How a line is read: words, comments, quotes, lists, ranges, numbers. A bad line changes nothing.

#include "tests/topo/Run.h"
#include "topo/Text.h"

namespace Topo::LanguageTest {

using Test::document;
using Test::errorOf;
using Test::Json;
using Test::keys;
using Test::Outcome;
using Test::runScenario;

std::vector<std::string> interfacesAfter(const std::string& scenario) {
  return keys(document(scenario, "interfaces")["intfStatus"]);
}

std::vector<std::string> vlansAfter(const std::string& scenario) {
  return keys(document(scenario, "bridging")["vlanConfig"]);
}

using Names = std::vector<std::string>;

TEST(Language, blanksSeparateWords) {
  EXPECT_EQ(runScenario("  echo \t one\ttwo   three \r\n").out, "one two three\n");
}

TEST(Language, emptyLinesAndCommentsDoNothing) {
  const Outcome outcome = runScenario("\n   \n# vlan 0\n  # vlan 0\necho a # b\necho c#d\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "a\nc\n");
}

TEST(Language, quotesHoldBlanksAndHashes) {
  EXPECT_EQ(runScenario("echo \"one  two # three\" four\n").out, "one  two # three four\n");
  EXPECT_EQ(runScenario("echo \"\"\n").out, "\n");
  EXPECT_EQ(interfacesAfter("interface \"my port\""), Names{"my port"});
}

TEST(Language, aBackslashInQuotesTakesAQuoteOrABackslash) {
  EXPECT_EQ(runScenario(R"(echo "a \"b\" \\ \n")").out, "a \"b\" \\ \\n\n");
}

TEST(Language, badQuotesAreErrors) {
  EXPECT_EQ(errorOf("echo \"one"), "-:1: error: the closing double quote is missing\n");
  EXPECT_EQ(errorOf("echo \"one\"two"), "-:1: error: a blank must follow the closing double quote\n");
  EXPECT_EQ(errorOf("echo one\"two\""),
            "-:1: error: a double quote inside the word one\"two\"; quote the whole word\n");
}

TEST(Language, aKeyWordMayStandInQuotes) { EXPECT_EQ(vlansAfter("\"vlan\" 10"), Names{"10"}); }

TEST(Language, aLineIsUtf8Text) {
  for (const std::string bad :
       {"\xFF", "\x80", "\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
    EXPECT_EQ(errorOf("echo " + bad), "-:1: error: the line is not UTF-8 text\n");
  }
  EXPECT_EQ(runScenario("echo \xC3\xBC \xE2\x82\xAC \xF0\x9F\x90\x9F\n").out,
            "\xC3\xBC \xE2\x82\xAC \xF0\x9F\x90\x9F\n");
}

TEST(Language, aByteOrderMarkIsNoPartOfTheFirstLine) {
  EXPECT_EQ(runScenario("\xEF\xBB\xBF"
                        "echo one\n")
                .out,
            "one\n");
  EXPECT_NE(errorOf("echo one\n\xEF\xBB\xBF"
                    "echo two"),
            "");
}

TEST(Language, anErrorIsOneLineOfBoundedLength) {
  EXPECT_EQ(errorOf("a\x01\x7F"), "-:1: error: unknown command 'a\\x01\\x7f'; help lists the commands\n");
  const std::string error = errorOf(std::string(5000, 'a'));
  EXPECT_LT(error.size(), 1100U);
  EXPECT_EQ(error.substr(error.size() - 4), "...\n");
  for (const std::string shift : {"", "a", "aa"}) {
    std::string word = shift;
    while (word.size() < 5000) word += "\xE2\x82\xAC";
    EXPECT_TRUE(isUtf8(errorOf(word))) << "cut within a character";
  }
}

TEST(Language, oneInterfaceIsNoRange) {
  EXPECT_EQ(errorOf("explain vlan 10 port Ethernet1-3"),
            "-:1: error: expected one interface, found the range Ethernet1-3\n");
  EXPECT_EQ(runScenario("explain vlan 10 port \"Ethernet1-3\"\n").status, 0);
  EXPECT_EQ(errorOf("interface Ethernet1-9999999999"),
            "-:1: error: the range Ethernet1-9999999999 has more than 65536 interfaces\n");
}

TEST(Language, keyWordsAreLowerCase) {
  EXPECT_EQ(errorOf("Vlan 10"), "-:1: error: unknown command 'Vlan'; help lists the commands\n");
  EXPECT_EQ(errorOf("interface Ethernet1 Link up"), "-:1: error: expected link or model, found 'Link'\n");
}

TEST(Language, theLastLineNeedsNoEnd) { EXPECT_EQ(runScenario("echo one").out, "one\n"); }

TEST(Language, aVlanListStandsForEachOfItsMembers) {
  EXPECT_EQ(vlansAfter("vlan 10,20,100-103,20"), (Names{"10", "20", "100", "101", "102", "103"}));
  EXPECT_EQ(vlansAfter("vlan 5-5"), Names{"5"});
  EXPECT_EQ(vlansAfter("vlan 1-4094").size(), 4094U);
  EXPECT_EQ(vlansAfter("vlan 1-10\nno vlan 2-8,10"), (Names{"1", "9"}));
}

TEST(Language, aVlanNumberOutOfRangeHasTheFrameworksText) {
  const std::string text = "-:1: error: VlanId::value < 1 or > 4094 not allowed\n";
  for (const char* const line :
       {"vlan 0", "vlan 4095", "vlan 99999999999999999999", "vlan 10,4095", "vlan 10-4095", "no vlan 0", "map 0 A",
        "no map 0", "vlan 0 port Ethernet1", "show state vlan 0", "explain vlan 0 port Ethernet1"}) {
    EXPECT_EQ(errorOf(line), text) << line;
  }
  EXPECT_EQ(errorOf("vlan 10 expand 4095"), "-:1: error: VlanIdOrNone::value > 4094 not allowed\n");
}

TEST(Language, whatIsNoVlanListIsAnError) {
  for (const char* const list : {"ten", "10,", ",10", "10--20", "10-", "-20", "1.5", "+1", "10;20"}) {
    EXPECT_EQ(
        errorOf(std::string("vlan ") + list),
        "-:1: error: expected a VLAN number or a list such as 10,20,100-199, found '" + std::string(list) + "'\n");
  }
  EXPECT_EQ(errorOf("vlan 20-10"), "-:1: error: the range 20-10 runs backwards\n");
  EXPECT_EQ(errorOf("vlan"),
            "-:1: error: expected a VLAN number or a list such as 10,20,100-199, found the end of the line\n");
}

TEST(Language, anInterfaceRangeStandsForEachOfItsMembers) {
  EXPECT_EQ(interfacesAfter("interface Ethernet9-11"), (Names{"Ethernet9", "Ethernet10", "Ethernet11"}));
  EXPECT_EQ(interfacesAfter("interface Ethernet3/1-2"), (Names{"Ethernet3/1", "Ethernet3/2"}));
  EXPECT_EQ(interfacesAfter("interface swp1-1"), Names{"swp1"});
  EXPECT_EQ(interfacesAfter("interface Ethernet1-4\nno interface Ethernet2-3"), (Names{"Ethernet1", "Ethernet4"}));
}

TEST(Language, whatDoesNotCountOnIsAName) {
  EXPECT_EQ(interfacesAfter("interface my-port"), Names{"my-port"});
  EXPECT_EQ(interfacesAfter("interface eth-1"), Names{"eth-1"});
  EXPECT_EQ(interfacesAfter("interface 1-4"), Names{"1-4"});
  EXPECT_EQ(interfacesAfter("interface eth01-04"), Names{"eth01-04"});
}

TEST(Language, aQuotedWordIsNoRange) { EXPECT_EQ(interfacesAfter("interface \"veth1-4\""), Names{"veth1-4"}); }

TEST(Language, badInterfaceRangesAreErrors) {
  EXPECT_EQ(errorOf("interface Ethernet4-1"), "-:1: error: the range Ethernet4-1 runs backwards\n");
  EXPECT_EQ(errorOf("interface Ethernet1-65537"),
            "-:1: error: the range Ethernet1-65537 has more than 65536 interfaces\n");
  EXPECT_EQ(errorOf("interface \"\""), "-:1: error: an interface name must not be empty\n");
}

TEST(Language, listsAndRangesMultiply) {
  const Json vlans = document("vlan 1-3\nvlan 1,3 port Ethernet1-2", "bridging")["vlanConfig"];
  EXPECT_EQ(keys(vlans["1"]["vlanPortConfig"]), (Names{"Ethernet1", "Ethernet2"}));
  EXPECT_EQ(keys(vlans["2"]["vlanPortConfig"]), Names{});
  EXPECT_EQ(keys(vlans["3"]["vlanPortConfig"]), (Names{"Ethernet1", "Ethernet2"}));
}

TEST(Language, numbersAreChecked) {
  const std::string end = ", a number from 0 to 4294967295, found ";
  EXPECT_EQ(errorOf("topology A number x"), "-:1: error: expected number" + end + "'x'\n");
  EXPECT_EQ(errorOf("topology A number -1"), "-:1: error: expected number" + end + "'-1'\n");
  EXPECT_EQ(errorOf("topology A number 4294967296"), "-:1: error: expected number" + end + "'4294967296'\n");
  EXPECT_EQ(errorOf("topology A number"), "-:1: error: expected number" + end + "the end of the line\n");
  EXPECT_EQ(errorOf("set threshold 65536"),
            "-:1: error: expected threshold, a number from 0 to 65535, found '65536'\n");
  for (const char* const seconds : {"x", "-1", "nan", "inf", "1e999", "1s", "+1"}) {
    EXPECT_EQ(errorOf(std::string("advance ") + seconds),
              "-:1: error: expected the time to advance by, a number of seconds such as 0.5, found '" +
                  std::string(seconds) + "'\n");
  }
}

TEST(Language, enumerationsAreChecked) {
  EXPECT_EQ(errorOf("interface Ethernet1 link sideways"),
            "-:1: error: expected unknown, down or up, found 'sideways'\n");
  EXPECT_EQ(errorOf("interface Ethernet1 model flying"),
            "-:1: error: expected unspecified, dropped, routed, mirrored, bridged or tunneled, found 'flying'\n");
  EXPECT_EQ(errorOf("topology A publish-state on"),
            "-:1: error: expected disabled, blocking, learning or forwarding, found 'on'\n");
  EXPECT_EQ(errorOf("vlan 10\nvlan 10 port Ethernet1 direction up"),
            "-:2: error: expected both, ingress, egress or none, found 'up'\n");
}

TEST(Language, leftOverWordsAreErrorsThatSayWhatWasExpected) {
  EXPECT_EQ(errorOf("map 10 A B"), "-:1: error: expected the end of the line, found 'B'\n");
  EXPECT_EQ(errorOf("no vlan 10 now"), "-:1: error: expected port or the end of the line, found 'now'\n");
  EXPECT_EQ(errorOf("no topology A now"), "-:1: error: expected port or the end of the line, found 'now'\n");
  EXPECT_EQ(errorOf("settle now"), "-:1: error: expected the end of the line, found 'now'\n");
  EXPECT_EQ(errorOf("status A up"), "-:1: error: expected port or the end of the line, found 'up'\n");
  EXPECT_EQ(
      errorOf("no"),
      "-:1: error: expected interface, vlan, topology, map, status, instance or force, found the end of the line\n");
  EXPECT_EQ(errorOf("no settle"),
            "-:1: error: expected interface, vlan, topology, map, status, instance or force, found 'settle'\n");
}

TEST(Language, anOptionIsGivenOnce) {
  EXPECT_EQ(errorOf("interface Ethernet1 link up link down"), "-:1: error: link is given twice\n");
  EXPECT_EQ(errorOf("vlan 10 internal external"), "-:1: error: internal or external is given twice\n");
}

/// The documents of the configuration, one a line, after a scenario whose last line is bad.
std::string configurationAround(const std::string& before, const std::string& badLine) {
  std::string shows;
  for (const char* const name : {"config", "bridging", "interfaces", "status", "instance", "view"}) {
    shows += std::string("show ") + name + " json\nwatch " + name + " on\n";
  }
  const Outcome outcome = runScenario(before + shows + badLine);
  EXPECT_EQ(outcome.status, 2) << badLine;
  std::string lines;
  // Anything that the bad line changes would follow as a line of a feed.
  for (const std::string& line : outcome.lines()) {
    if (line.find("\"op\"") != std::string::npos) lines += line + '\n';
  }
  return lines;
}

TEST(Language, aBadLineChangesNothing) {
  const std::string before =
      "vlan 10-20\nvlan 30 internal\ninterface Ethernet1-4 link up\ntopology A number 1\ninstance A number 1\nstatus "
      "A\n";
  for (const char* const line : {
           "vlan 40-50,4095",
           "vlan 40,30 external",
           "vlan 10-30 internal",
           "vlan 40 expand 5000",
           "vlan 10-21 port Ethernet1",
           "vlan 10-20 port Ethernet1 untagged pvid sideways",
           "no vlan 10-21 port Ethernet1",
           "no vlan 10 now",
           "interface Ethernet1-9 link down model flying",
           "interface Ethernet1 link down link up",
           "no interface Ethernet1 now",
           "topology A publish-ports on number 2",
           "topology A publish-ports on publish-state now",
           "topology B port Ethernet1",
           "topology A port Ethernet1 state forwarding flush -1",
           "no topology A port Ethernet1 now",
           "no topology A now",
           "instance A number 2",
           "instance A port Ethernet1 now",
           "instance B port Ethernet1",
           "status B port Ethernet1",
           "status A port Ethernet1-2 now",
           "map 10-20,5000 A",
           "map 10 A B",
           "force Ethernet1 perhaps",
           "force Ethernet1 on now",
       }) {
    EXPECT_EQ(configurationAround(before, line), "") << line;
  }
}

}  // namespace Topo::LanguageTest
