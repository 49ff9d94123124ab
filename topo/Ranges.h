// Lists of VLANs and of interfaces, written short: as the scenario language takes them.

#pragma once

#include <string>
#include <vector>

#include "bridging/VlanId.h"
#include "quill/IntfId.h"

namespace Topo {

/// 10,20,100-199. The VLANs in ascending order.
[[nodiscard]] std::string vlanText(const std::vector<Bridging::VlanId>& vlans);

/// Words of the language, each one interface or a range: Ethernet1-48, "my port". Interfaces that follow one another in a
/// range stand next to each other.
[[nodiscard]] std::vector<std::string> intfWords(const std::vector<Quill::IntfId>& intfs);

/// The same in one text, for a person.
[[nodiscard]] std::string intfText(const std::vector<Quill::IntfId>& intfs);

}  // namespace Topo
