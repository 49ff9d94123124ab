#include "mox/Notifiee.h"

#include <exception>
#include <vector>

#include "mox/Assert.h"

namespace Mox {

/// Several reactors, by order of registration. Leavers become gaps and joiners are appended, so that a visit can go by
/// position; gaps are closed while no visit is under way. The block outlives its list until the last visit is over.
struct NotifieeList::Block {
  std::vector<Notifiee*> reactors;
  std::size_t present = 0;
  std::uint32_t visits = 0;
  bool isOrphan = false;  // its list is gone
};

/// A visit under way.
class NotifieeList::Visit {
 public:
  Visit(NotifieeList& list, Block& block) noexcept : list_(list), block_(block) { ++block_.visits; }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;
  ~Visit() {
    if (--block_.visits != 0) return;
    if (block_.isOrphan) {
      delete &block_;
    } else {
      list_.tidy();
    }
  }

 private:
  NotifieeList& list_;
  Block& block_;
};

NotifieeList::~NotifieeList() {
  if (word_ == 0) return;
  if ((word_ & isBlock) == 0) {
    Notifiee* const sole = asSole();
    sole->isRegistered_ = false;
    // The notifier is under destruction; there is no reference left to give back.
    static_cast<void>(sole->notifier_.release());
    return;
  }
  Block* const block = asBlock();
  for (Notifiee*& reactor : block->reactors) {
    if (reactor == nullptr) continue;
    reactor->isRegistered_ = false;
    static_cast<void>(reactor->notifier_.release());
    reactor = nullptr;
  }
  block->present = 0;
  if (block->visits == 0) {
    delete block;
  } else {
    block->isOrphan = true;
  }
}

void NotifieeList::deleteAll() noexcept {
  if (word_ == 0) return;
  if ((word_ & isBlock) == 0) {
    asSole()->isRegistered_ = false;
    word_ = 0;
    return;
  }
  Block* const block = asBlock();
  for (Notifiee*& reactor : block->reactors) {
    if (reactor != nullptr) reactor->isRegistered_ = false;
    reactor = nullptr;
  }
  block->present = 0;
  tidy();
}

std::size_t NotifieeList::size() const noexcept {
  if (word_ == 0) return 0;
  return (word_ & isBlock) == 0 ? 1 : asBlock()->present;
}

void NotifieeList::insert(Notifiee& notifiee) {
  if (word_ == 0) {
    word_ = reinterpret_cast<std::uintptr_t>(&notifiee);
  } else {
    if ((word_ & isBlock) == 0) {
      auto* const block = new Block{{asSole()}, 1};
      block->reactors.front()->position_ = 0;
      word_ = reinterpret_cast<std::uintptr_t>(block) | isBlock;
    }
    Block* const block = asBlock();
    block->reactors.push_back(&notifiee);
    ++block->present;
    notifiee.position_ = static_cast<std::uint32_t>(block->reactors.size() - 1);
  }
}

void NotifieeList::remove(Notifiee& notifiee) noexcept {
  if ((word_ & isBlock) == 0) {
    word_ = 0;
    return;
  }
  Block* const block = asBlock();
  block->reactors[notifiee.position_] = nullptr;
  --block->present;
  // Closing gaps only when they are the half keeps a removal constant.
  if (block->present <= block->reactors.size() / 2) tidy();
}

void NotifieeList::visitBlock(AttributeId id, const void* key) {
  Block& block = *asBlock();
  const Visit visit(*this, block);
  const std::size_t registered = block.reactors.size();
  std::exception_ptr first;
  for (std::size_t i = 0; i < registered; ++i) {
    Notifiee* const reactor = block.reactors[i];
    if (reactor == nullptr || !reactor->hasNotificationActive()) continue;
    try {
      reactor->onAttribute(id, key);
    } catch (...) {
      if (!first) first = std::current_exception();
    }
  }
  if (first) std::rethrow_exception(first);
}

void NotifieeList::tidy() noexcept {
  Block* const block = asBlock();
  if (block->visits != 0 || block->present == block->reactors.size()) return;
  if (block->present <= 1) {
    Notifiee* sole = nullptr;
    for (Notifiee* reactor : block->reactors) sole = reactor != nullptr ? reactor : sole;
    word_ = reinterpret_cast<std::uintptr_t>(sole);
    delete block;
    return;
  }
  std::uint32_t next = 0;
  for (Notifiee* reactor : block->reactors) {
    if (reactor == nullptr) continue;
    reactor->position_ = next;
    block->reactors[next++] = reactor;
  }
  block->reactors.resize(next);
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

void PtrInterface::NotifieeConst::isRegisteredNotifieeIs(bool registered) {
  if (registered == isRegistered_ || notifier_ == nullptr) return;
  if (registered) {
    notifier_->notifieeList()->insert(*this);
  } else {
    notifier_->notifieeList()->remove(*this);
  }
  isRegistered_ = registered;
}

void PtrInterface::NotifieeConst::onAttribute(AttributeId /*id*/, const void* /*key*/) {}

}  // namespace Mox
