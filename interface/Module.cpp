// Registers the module's types when the library is loaded.

#include "interface/EthIntfStatus.h"
#include "mox/Enum.h"
#include "mox/Type.h"

namespace Interface {

namespace {

[[maybe_unused]] const bool registered = Mox::moxModuleIs(
    "Interface", {Mox::entityType<EthIntfStatusDir>(EthIntfStatusDir::intfStatusAttr),
                  Mox::entityType<EthIntfStatus>(EthIntfStatus::linkStatusAttr, EthIntfStatus::forwardingModelAttr),
                  Mox::enumerationType<LinkStatus>(), Mox::enumerationType<ForwardingModel>()});

}  // namespace

}  // namespace Interface
