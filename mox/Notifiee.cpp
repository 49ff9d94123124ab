#include "mox/Notifiee.h"

#include <memory>

#include "mox/Assert.h"

namespace Mox {

NotifieeList::~NotifieeList() {
  if (word_ == 0) return;
  const auto leave = [](Notifiee& reactor) {
    reactor.isRegistered_ = false;
    // The notifier is under destruction; there is no reference left to give back.
    static_cast<void>(reactor.notifier_.release());
  };
  if ((word_ & isBlock) == 0) {
    leave(*asSole());
    return;
  }
  Block* const block = asBlock();
  block->empty(leave);
  if (block->visits == 0) {
    delete block;
  } else {
    block->isOrphan = true;
  }
}

void NotifieeList::deleteAll() noexcept {
  if (word_ == 0) return;
  if ((word_ & isBlock) == 0) {
    asSole()->isRegisteredNotifieeIs(false);
    return;
  }
  Block& block = *asBlock();
  const Visit visit(*this, block);  // keeps the places where they are
  for (const Block::Place place : block.places) {
    if (Notifiee* const reactor = Block::reactorAt(place)) reactor->isRegisteredNotifieeIs(false);
  }
}

std::size_t NotifieeList::size() const noexcept {
  if (word_ == 0) return 0;
  return (word_ & isBlock) == 0 ? 1 : asBlock()->present;
}

void NotifieeList::insert(Notifiee& notifiee) {
  if (word_ == 0) {
    word_ = reinterpret_cast<std::uintptr_t>(&notifiee);
    return;
  }
  if ((word_ & isBlock) == 0) {
    auto block = std::make_unique<Block>();
    block->append(*asSole());
    word_ = reinterpret_cast<std::uintptr_t>(block.release()) | isBlock;
  }
  asBlock()->append(notifiee);
}

void NotifieeList::remove(Notifiee& notifiee) noexcept {
  if ((word_ & isBlock) == 0) {
    word_ = 0;
    return;
  }
  Block* const block = asBlock();
  block->places[notifiee.position_] = Block::isSkipped;
  --block->present;
  // Closing gaps only when they are the half keeps a removal constant.
  if (block->present <= block->places.size() / 2) tidy();
}

void NotifieeList::update(Notifiee& notifiee) noexcept {
  if ((word_ & isBlock) != 0) asBlock()->places[notifiee.position_] = Block::placeOf(notifiee);
}

void NotifieeList::tidy() noexcept {
  Block* const block = asBlock();
  if (block->visits != 0 || !block->hasGaps()) return;
  std::uint32_t next = 0;
  for (const Block::Place place : block->places) {
    Notifiee* const reactor = Block::reactorAt(place);
    if (reactor == nullptr) continue;
    reactor->position_ = next;
    block->places[next++] = place;
  }
  block->places.resize(next);
  if (next <= 1) {
    word_ = next == 0 ? 0 : reinterpret_cast<std::uintptr_t>(Block::reactorAt(block->places.front()));
    delete block;
  }
}

PtrInterface::NotifieeConst::~NotifieeConst() { NotifieeConst::isRegisteredNotifieeIs(false); }

void PtrInterface::NotifieeConst::notifierIs(const PtrInterface* notifier) {
  if (notifier == notifier_.get()) return;
  MOX_ASSERT("mox/Notifiee.cpp", notifier == nullptr || notifier->notifieeList() != nullptr);
  isRegisteredNotifieeIs(false);
  // The old notifier may end here, and what that sets off may bind this reactor again: hand over first.
  const Ptr<const PtrInterface> old = std::exchange(notifier_, Ptr<const PtrInterface>(notifier));
  if (notifier != nullptr) isRegisteredNotifieeIs(true);
}

void PtrInterface::NotifieeConst::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  if (isRegistered_) notifier_->notifieeList()->update(*this);
}

void PtrInterface::NotifieeConst::isRegisteredNotifieeIs(bool registered) {
  if (registered == isRegistered_ || notifier_ == nullptr) return;
  if (registered) {
    notifier_->notifieeList()->insert(*this);
  } else {
    notifier_->notifieeList()->remove(*this);
  }
  isRegistered_ = registered;
}

}  // namespace Mox
