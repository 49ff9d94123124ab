#include "mox/Ptr.h"

#include "mox/Type.h"

namespace Mox {

std::atomic<bool> detail::threadSafePointersFlag{false};

void threadSafePointersIs(bool value) noexcept {
  detail::threadSafePointersFlag.store(value, std::memory_order_relaxed);
}

PtrInterface::~PtrInterface() = default;

NotifieeList* PtrInterface::notifieeList() const noexcept { return nullptr; }

void PtrInterface::hasNotificationActiveIs(bool active) { hasNotificationActive_ = active; }

void PtrInterface::zeroReferencesIs(bool zero) {
  if (zero) delete this;
}

const TypeDesc& PtrInterface::fwkType() const { return typeDescOf(typeid(*this)); }

void PtrInterface::moxDoZombieReactors(bool /*zombie*/) {}

void PtrInterface::handleZeroRef() const noexcept {
  references_.underDestructionIs();
  // A const reference shares the ownership, so the last one of them ends the object as well.
  const_cast<PtrInterface*>(this)->zeroReferencesIs(true);
}

}  // namespace Mox
