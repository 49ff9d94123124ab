#include "interface/EthIntfStatus.h"

namespace Interface {

EthIntfStatus::EthIntfStatus(Quill::IntfId intf) noexcept : intfId_(intf) {}
EthIntfStatus::~EthIntfStatus() = default;

EthIntfStatusDir::EthIntfStatusDir(Mox::String name) noexcept : NamedEntity(std::move(name)) {}
EthIntfStatusDir::~EthIntfStatusDir() = default;

Mox::Ptr<EthIntfStatus> EthIntfStatusDir::intfStatusIs(Quill::IntfId intf) {
  return memberIs(intfStatus_, intfStatusAttr, intf);
}
void EthIntfStatusDir::intfStatusDel(Quill::IntfId intf) { memberDel(intfStatus_, intfStatusAttr, intf); }
void EthIntfStatusDir::intfStatusDelAll() { memberDelAll(intfStatus_, intfStatusAttr); }

Mox::Ptr<EthIntfStatusDir> ethIntfStatusDirFactory(const Mox::String& name) {
  return Mox::makePtr<EthIntfStatusDir>(name);
}

}  // namespace Interface
