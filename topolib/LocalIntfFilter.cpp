#include "topolib/LocalIntfFilter.h"

namespace Topology::Library {

LocalIntfFilter::~LocalIntfFilter() = default;

bool LocalIntfFilter::isValidIntf(Quill::IntfId intf) {
  return Quill::EthIntfId::isEthIntfId(intf) || Quill::PortChannelIntfId::isPortChannelIntfId(intf) ||
         Quill::CpuIntfId::isCpuIntfId(intf) || Quill::VxlanTunnelIntfId::isVxlanTunnelIntfId(intf) ||
         Quill::MplsTrunkIntfId::isMplsTrunkIntfId(intf);
}

}  // namespace Topology::Library
