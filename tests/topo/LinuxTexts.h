// Texts as the bridge tools of Linux print them, cut down to what the import reads.

#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "topo/LinuxBridge.h"

namespace Test {

/// The elements as a JSON array.
[[nodiscard]] inline std::string jsonList(std::initializer_list<std::string_view> elements) {
  std::string list;
  for (const auto element : elements) list.append(list.empty() ? "[" : ",").append(element);
  return list.empty() ? "[]" : list + ']';
}

[[nodiscard]] inline std::string bridgeLink(const std::string& name, bool isVlanAware = true) {
  return R"({"ifname":")" + name + R"(","flags":["UP","LOWER_UP"],"operstate":"UP","linkinfo":{"info_kind":"bridge",)" +
         R"("info_data":{"vlan_filtering":)" + (isVlanAware ? "1" : "0") + "}}}";
}

/// A port. `flags` is a JSON array.
[[nodiscard]] inline std::string portLink(const std::string& name, const std::string& state = "forwarding",
                                          const std::string& operstate = "UP",
                                          const std::string& flags = R"(["UP","LOWER_UP"])",
                                          const std::string& master = "br0") {
  return R"({"ifname":")" + name + R"(","flags":)" + flags + R"(,"master":")" + master + R"(","operstate":")" +
         operstate + R"(","linkinfo":{"info_kind":"veth","info_slave_kind":"bridge","info_slave_data":{"state":")" +
         state + R"("}}})";
}

/// What `bridge vlan show` and `bridge vlan global show` print of a port or bridge. `vlans` are the elements of an array.
[[nodiscard]] inline std::string vlansOf(const std::string& name, const std::string& vlans) {
  return R"({"ifname":")" + name + R"(","vlans":[)" + vlans + "]}";
}

/// What `bridge mst show` prints of a port. `states` are the elements of an array.
[[nodiscard]] inline std::string mstOf(const std::string& name, const std::string& states) {
  return R"({"ifname":")" + name + R"(","mst":[)" + states + "]}";
}

/// A capture without MST.
[[nodiscard]] inline Topo::LinuxCapture capture(const std::string& link, const std::string& vlan) {
  return {{"link.json", link}, {"vlan.json", vlan}, {}, {}};
}

[[nodiscard]] inline Topo::LinuxCapture capture(const std::string& link, const std::string& vlan,
                                                const std::string& mst, const std::string& vlanGlobal) {
  return {{"link.json", link},
          {"vlan.json", vlan},
          Topo::LinuxCapture::File{"mst.json", mst},
          Topo::LinuxCapture::File{"vlan-global.json", vlanGlobal}};
}

/// What is wrong with this capture, or "" if nothing is.
[[nodiscard]] inline std::string errorOf(const Topo::LinuxCapture& capture,
                                         const std::optional<std::string>& bridge = {}) {
  try {
    static_cast<void>(Topo::readLinuxBridge(capture, bridge));
    return "";
  } catch (const Topo::LinuxCaptureError& error) {
    return error.what();
  }
}

}  // namespace Test
