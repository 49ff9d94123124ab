// What the arguments of a log message read as.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "bridging/PortState.h"
#include "bridging/VlanId.h"
#include "kestrel/Kestrel.h"
#include "mox/Entity.h"
#include "mox/String.h"
#include "quill/IntfId.h"

namespace Kestrel::KestrelArgumentTest {

using Bridging::VlanId;
using Bridging::VlanIdOrNone;
using Bridging::Topology::PortState;
using Quill::IntfId;

/// The text of a message of this format with these arguments.
template <class... Args>
std::string said(const char* format, const Args&... args) {
  // Sites live as long as the process.
  static std::deque<MsgDesc> sites;
  MsgDesc& site = sites.emplace_back("/src/Lights", 1U, format);
  TraceFile file(8192);
  append(file, site, args...);
  return file.messages().at(0).text;
}

/// The text of one argument.
template <class T>
std::string said(const T& value) requires(!std::is_convertible_v<const T&, const char*>) {
  return said("<{}>", value);
}

// ---- kinds of arguments

TEST(LogArgument, truthValues) {
  EXPECT_EQ(said(true), "<true>");
  EXPECT_EQ(said(false), "<false>");
}

TEST(LogArgument, unsignedIntegers) {
  EXPECT_EQ(said(0U), "<0>");
  EXPECT_EQ(said(std::uint8_t{255}), "<255>");
  EXPECT_EQ(said(std::uint16_t{65535}), "<65535>");
  EXPECT_EQ(said(std::numeric_limits<std::uint32_t>::max()), "<4294967295>");
  EXPECT_EQ(said(std::numeric_limits<std::uint64_t>::max()), "<18446744073709551615>");
  EXPECT_EQ(said(42ULL), "<42>");
}

TEST(LogArgument, signedIntegers) {
  EXPECT_EQ(said(-1), "<-1>");
  EXPECT_EQ(said(std::int8_t{-128}), "<-128>");
  EXPECT_EQ(said(std::int16_t{-32768}), "<-32768>");
  EXPECT_EQ(said(std::numeric_limits<std::int32_t>::min()), "<-2147483648>");
  EXPECT_EQ(said(std::numeric_limits<std::int64_t>::min()), "<-9223372036854775808>");
  EXPECT_EQ(said(std::numeric_limits<std::int64_t>::max()), "<9223372036854775807>");
  EXPECT_EQ(said(7LL), "<7>");
}

TEST(LogArgument, realNumbers) {
  EXPECT_EQ(said(0.0), "<0>");
  EXPECT_EQ(said(-2.5), "<-2.5>");
  EXPECT_EQ(said(0.5F), "<0.5>");
  EXPECT_EQ(said(1e300), "<1e+300>");
  EXPECT_EQ(said(std::numeric_limits<double>::lowest()), "<-1.79769e+308>");
  EXPECT_EQ(said(std::numeric_limits<double>::infinity()), "<inf>");
}

TEST(LogArgument, texts) {
  EXPECT_EQ(said("<{}>", "literal"), "<literal>");
  const char* const chars = "chars";
  EXPECT_EQ(said("<{}>", chars), "<chars>");
  EXPECT_EQ(said(Mox::String("string")), "<string>");
  EXPECT_EQ(said(Mox::String()), "<>");
  EXPECT_EQ(said(std::string_view("view of it").substr(0, 4)), "<view>");
  EXPECT_EQ(said("<{}>", ""), "<>");
  EXPECT_EQ(said(std::string("any string")), "<any string>");
}

TEST(LogArgument, absentTextReadsAsNull) {
  const char* const none = nullptr;
  EXPECT_EQ(said("<{}>", none), "<null>");
}

TEST(LogArgument, textsOfEveryLength) {
  std::string text;
  for (std::size_t size = 0; size <= MsgWriter::maxText; ++size) {
    ASSERT_EQ(said(std::string_view(text)), '<' + text + '>');
    text += static_cast<char>('a' + size % 26);
  }
}

TEST(LogArgument, longTextIsCut) {
  ASSERT_EQ(MsgWriter::maxText, 255U);
  const std::string text = std::string(254, 'x') + "yz and so on";
  EXPECT_EQ(said(std::string_view(text)), '<' + text.substr(0, 255) + '>');
  EXPECT_EQ(said("<{}>", text.c_str()), '<' + text.substr(0, 255) + '>');
  EXPECT_EQ(said(Mox::String(text)), '<' + text.substr(0, 255) + '>');
  EXPECT_EQ(said("{}|{}", std::string_view(text), 7U), text.substr(0, 255) + "|7");
}

TEST(LogArgument, textMayHoldAnyByte) {
  std::string text;
  for (int byte = 0; byte < 255; ++byte) text += static_cast<char>(byte);
  EXPECT_EQ(said(std::string_view(text)), '<' + text + '>');
}

TEST(LogArgument, textIsThatOfTheMoment) {
  std::string name = "before";
  static constinit MsgDesc site("/src/Lights", 1, "{}");
  TraceFile file(8192);
  append(file, site, name.c_str());
  name[0] = 'X';
  EXPECT_EQ(file.messages().at(0).text, "before");
}

TEST(LogArgument, pointers) {
  const void* const address = reinterpret_cast<const void*>(std::uintptr_t{0xDEAD'BEEF'1234});
  EXPECT_EQ(said(address), "<0xdeadbeef1234>");
  const auto* const none = static_cast<const int*>(nullptr);
  EXPECT_EQ(said(none), "<0x0>");
  const auto lamp = Mox::makePtr<Mox::NamedEntity>("hall");
  EXPECT_EQ(said(lamp.get()), said(static_cast<const void*>(lamp.get())));
}

TEST(LogArgument, registeredEnumerations) {
  EXPECT_EQ(said(PortState::disabled), "<disabled>");
  EXPECT_EQ(said(PortState::forwarding), "<forwarding>");
  EXPECT_EQ(said(static_cast<PortState>(77)), "<77>");
}

TEST(LogArgument, vlans) {
  EXPECT_EQ(said(VlanId(1)), "<1>");
  EXPECT_EQ(said(VlanId(4094)), "<4094>");
  EXPECT_EQ(said(VlanIdOrNone()), "<0>");
}

TEST(LogArgument, interfaces) {
  for (const char* const name : {"Ethernet1", "Ethernet3/2/1", "swp7s2", "PortChannel12.100", "Cpu", "an odd name"}) {
    EXPECT_EQ(said(IntfId(name)), '<' + std::string(name) + '>');
  }
  EXPECT_EQ(said(IntfId()), "<>");
}

// ---- formats

TEST(LogFormat, withoutPlacesIsLiteral) {
  EXPECT_EQ(said("lamp is lit"), "lamp is lit");
  EXPECT_EQ(said(""), "");
  EXPECT_EQ(said("%s %n {0} { } } {"), "%s %n {0} { } } {");
}

TEST(LogFormat, placesTakeTheArgumentsInOrder) {
  EXPECT_EQ(said("{} of {}: {}", 1U, "hall", true), "1 of hall: true");
  EXPECT_EQ(said("{}{}", 1U, 2U), "12");
  EXPECT_EQ(said("{{}}", 1U), "{1}");
  EXPECT_EQ(said("{}", "sole"), "sole");
}

TEST(LogFormat, furtherArgumentsFollowBehind) {
  EXPECT_EQ(said("lamp {}", 1U, "hall", true), "lamp 1 hall true");
  EXPECT_EQ(said("lamp", 1U, IntfId("Cpu")), "lamp 1 Cpu");
  EXPECT_EQ(said("", 1U), " 1");
}

TEST(LogFormat, placesWithoutAnArgumentStay) {
  EXPECT_EQ(said("{} of {}"), "{} of {}");
  EXPECT_EQ(said("{} of {}", 1U), "1 of {}");
}

TEST(LogFormat, bracesInArgumentsAreText) {
  EXPECT_EQ(said("<{}> <{}>", "{}", 7U), "<{}> <7>");
  EXPECT_EQ(said("<{}> <{}>", "{", "}"), "<{> <}>");
  EXPECT_EQ(said("<{}>", "{} {}", "{}"), "<{} {}> {}");
}

TEST(LogFormat, sixteenArgumentsOfMixedKinds) {
  EXPECT_EQ(said("{} {} {} {} {} {} {} {} {} {} {} {} {} {} {} {}", true, 1U, -1, 1.5, "a", IntfId("Cpu"), VlanId(4),
                 PortState::learning, false, 2U, -2, 2.5, "b", IntfId("odd name"), VlanIdOrNone(), PortState::blocking),
            "true 1 -1 1.5 a Cpu 4 learning false 2 -2 2.5 b odd name 0 blocking");
}

TEST(LogFormat, sixteenArgumentsThatTakeTheMostRoomBesidesText) {
  const IntfId cpu("Cpu");
  EXPECT_EQ(said("", cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu, cpu),
            " Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu Cpu");
}

TEST(LogFormat, argumentsBeyondSixteenAreIgnored) {
  ASSERT_EQ(MsgWriter::maxArguments, 16U);
  static constinit MsgDesc site("/src/Lights", 1, "");
  TraceFile file(8192);
  MsgWriter message = file.startMsg(site);
  for (unsigned i = 0; i < 16; ++i) message.arg(i);
  message.arg(std::string_view(std::string(255, 'x')));
  message.arg(IntfId("Cpu"));
  message.arg(1.5);
  message.endMsg();
  append(file, site, "next");
  const auto messages = file.messages();
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].text, " 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15");
  EXPECT_EQ(messages[1].text, " next");
}

}  // namespace Kestrel::KestrelArgumentTest
