// Interface status: link and forwarding model of each Ethernet interface.
//
//   auto dir = Interface::ethIntfStatusDirFactory("interfaces");
//   auto intf = dir->intfStatusIs("Ethernet1");
//   intf->linkStatusIs(Interface::LinkStatus::up);
//   intf->forwardingModelIs(Interface::ForwardingModel::bridged);

#pragma once

#include <array>
#include <cstdint>

#include "mox/Entity.h"
#include "mox/Enum.h"
#include "mox/Public.h"
#include "quill/IntfId.h"

namespace Interface {

/// Whether the interface can pass frames: the operational state of the MAC (IEEE 802.1AC, MAC_Operational).
enum class LinkStatus : std::uint32_t { unknown = 0, down = 1, up = 2 };

constexpr auto moxEnumValues(LinkStatus) {
  return std::array{Mox::enumValue(LinkStatus::unknown, "unknown"), Mox::enumValue(LinkStatus::down, "down"),
                    Mox::enumValue(LinkStatus::up, "up")};
}
using LinkStatusInstance = Mox::EnumInstance<LinkStatus>;

/// What the switch does with the frames of the interface.
enum class ForwardingModel : std::uint32_t {
  unspecified = 0,
  dropped = 1,
  routed = 2,
  mirrored = 3,
  bridged = 4,
  tunneled = 5
};

constexpr auto moxEnumValues(ForwardingModel) {
  return std::array{Mox::enumValue(ForwardingModel::unspecified, "unspecified"),
                    Mox::enumValue(ForwardingModel::dropped, "dropped"),
                    Mox::enumValue(ForwardingModel::routed, "routed"),
                    Mox::enumValue(ForwardingModel::mirrored, "mirrored"),
                    Mox::enumValue(ForwardingModel::bridged, "bridged"),
                    Mox::enumValue(ForwardingModel::tunneled, "tunneled")};
}
using ForwardingModelInstance = Mox::EnumInstance<ForwardingModel>;

using Mox::operator<<;
using Mox::stringValue;
using Mox::valueToStrep;

/// One interface.
class MOX_PUBLIC EthIntfStatus : public Mox::Entity {
 public:
  static constexpr Mox::ScalarAttribute linkStatusAttr{0, "linkStatus"};
  static constexpr Mox::ScalarAttribute forwardingModelAttr{1, "forwardingModel"};

  explicit EthIntfStatus(Quill::IntfId intf) noexcept;
  ~EthIntfStatus() override;

  [[nodiscard]] Quill::IntfId intfId() const noexcept { return intfId_; }

  [[nodiscard]] LinkStatus linkStatus() const noexcept { return linkStatus_; }
  void linkStatusIs(LinkStatus v) { scalarIs(linkStatus_, v, linkStatusAttr); }

  [[nodiscard]] ForwardingModel forwardingModel() const noexcept { return forwardingModel_; }
  void forwardingModelIs(ForwardingModel v) { scalarIs(forwardingModel_, v, forwardingModelAttr); }

 private:
  Quill::IntfId intfId_;
  LinkStatus linkStatus_ = LinkStatus::unknown;
  ForwardingModel forwardingModel_ = ForwardingModel::unspecified;
};

/// All interfaces that have a status.
class MOX_PUBLIC EthIntfStatusDir : public Mox::NamedEntity {
 public:
  static constexpr Mox::CollectionAttribute<Quill::IntfId> intfStatusAttr{0, "intfStatus"};

  explicit EthIntfStatusDir(Mox::String name) noexcept;
  ~EthIntfStatusDir() override;

  /// intfStatus[intf]
  [[nodiscard]] const auto& intfStatus() const noexcept { return intfStatus_; }
  [[nodiscard]] const EthIntfStatus* intfStatus(Quill::IntfId intf) const noexcept { return intfStatus_.find(intf); }
  [[nodiscard]] EthIntfStatus* intfStatus(Quill::IntfId intf) noexcept { return intfStatus_.find(intf); }
  Mox::Ptr<EthIntfStatus> intfStatusIs(Quill::IntfId intf);
  void intfStatusDel(Quill::IntfId intf);
  void intfStatusDelAll();

 private:
  Mox::EntityCollection<Quill::IntfId, EthIntfStatus> intfStatus_;
};

[[nodiscard]] MOX_PUBLIC Mox::Ptr<EthIntfStatusDir> ethIntfStatusDirFactory(const Mox::String& name);

}  // namespace Interface
