// Writes of a scalar attribute that is watched. The floor is a vector of handlers with a virtual call for each; the peer
// is a signal of Boost. All handlers do the same: they read the new value and keep it.

#include <algorithm>
#include <boost/signals2/signal.hpp>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/Allocations.h"
#include "bench/Lamp.h"
#include "bench/Suites.h"
#include "mox/StateMachine.h"

namespace Bench {

/// The base of the raw handlers.
class RawHandler {
 public:
  RawHandler() = default;
  RawHandler(const RawHandler&) = delete;
  RawHandler& operator=(const RawHandler&) = delete;
  virtual ~RawHandler() = default;
  virtual void onAttribute(Mox::AttributeId id, const void* key) = 0;
};

// With just one class of handlers in sight, the compiler puts a copy of its handler in the place of the virtual call. A
// program has many; so there is a second one of each kind, which other files might use as far as the compiler knows.

class OtherReactor : public Mox::PtrInterface::NotifieeConst {
 public:
  void onAttribute(Mox::AttributeId /*id*/, const void* /*key*/) override {}
};

class OtherHandler : public RawHandler {
 public:
  void onAttribute(Mox::AttributeId /*id*/, const void* /*key*/) override {}
};

namespace {

/// What all handlers act for.
class Display {
 public:
  void handleWatt(unsigned watt) noexcept { watt_ = watt; }

 private:
  unsigned watt_ = 0;
};

/// Our entity, watched by our reactors.
class Ours {
 public:
  using Subject = Lamp;

  explicit Ours(std::size_t handlers) {
    for (std::size_t i = 0; i < handlers; ++i) handlers_.push_back(Mox::makePtr<MoxLamp>(&display_, subject_));
  }
  [[nodiscard]] Subject* subject() const noexcept { return subject_.get(); }

 private:
  class MoxLamp : public Mox::Reactor<MoxLamp, Display, Lamp> {
   public:
    using Reactor::Reactor;
    void onAttribute(Mox::AttributeId id, const void* /*key*/) override {
      if (Lamp::wattAttr.is(id)) sm().handleWatt(notifier()->watt());
    }
  };

  Mox::Ptr<Subject> subject_ = Mox::makePtr<Subject>();
  Display display_;
  std::vector<Mox::Ptr<MoxLamp>> handlers_;
};

/// The floor: the same kind of object with a vector of handlers.
class Raw {
 public:
  class Subject : public Mox::Entity {
   public:
    [[nodiscard]] unsigned watt() const noexcept { return watt_; }
    void wattIs(unsigned v) {
      if (watt_ == v) return;
      watt_ = v;
      for (RawHandler* const handler : handlers_) handler->onAttribute(Lamp::wattAttr.id(), nullptr);
    }
    void handlerIs(RawHandler* handler) { handlers_.push_back(handler); }

   private:
    unsigned watt_ = 0;
    std::vector<RawHandler*> handlers_;
  };

  explicit Raw(std::size_t handlers) {
    for (std::size_t i = 0; i < handlers; ++i) {
      handlers_.push_back(std::make_unique<Handler>(display_, *subject_));
      subject_->handlerIs(handlers_.back().get());
    }
  }
  [[nodiscard]] Subject* subject() const noexcept { return subject_.get(); }

 private:
  class Handler : public RawHandler {
   public:
    Handler(Display& display, const Subject& subject) : display_(&display), subject_(&subject) {}
    void onAttribute(Mox::AttributeId id, const void* /*key*/) override {
      if (Lamp::wattAttr.is(id)) display_->handleWatt(subject_->watt());
    }

   private:
    Display* display_;
    const Subject* subject_;
  };

  Mox::Ptr<Subject> subject_ = Mox::makePtr<Subject>();
  Display display_;
  std::vector<std::unique_ptr<Handler>> handlers_;
};

/// The peer: the same kind of object with a signal.
class Signals {
 public:
  class Subject : public Mox::Entity {
   public:
    using Changed = boost::signals2::signal<void(Mox::AttributeId, const void*)>;

    [[nodiscard]] unsigned watt() const noexcept { return watt_; }
    void wattIs(unsigned v) {
      if (watt_ == v) return;
      watt_ = v;
      changed_(Lamp::wattAttr.id(), nullptr);
    }
    void slotIs(const Changed::slot_type& slot) { changed_.connect(slot); }

   private:
    unsigned watt_ = 0;
    Changed changed_;
  };

  explicit Signals(std::size_t handlers) {
    for (std::size_t i = 0; i < handlers; ++i) {
      subject_->slotIs([display = &display_, subject = subject()](Mox::AttributeId id, const void* /*key*/) {
        if (Lamp::wattAttr.is(id)) display->handleWatt(subject->watt());
      });
    }
  }
  [[nodiscard]] Subject* subject() const noexcept { return subject_.get(); }

 private:
  Mox::Ptr<Subject> subject_ = Mox::makePtr<Subject>();
  Display display_;
};

/// Many watched objects, and the order in which to write to them.
template <class Contender>
class Crowd {
 public:
  Crowd(std::size_t size, std::size_t handlers) {
    for (std::size_t i = 0; i < size; ++i) {
      all_.push_back(std::make_unique<Contender>(handlers));
      subjects_.push_back(all_.back()->subject());
    }
    std::shuffle(subjects_.begin(), subjects_.end(), std::mt19937(1));  // NOLINT(*-msc51-cpp): the same in every run
  }

  void writeAll(unsigned watt) {
    for (typename Contender::Subject* const subject : subjects_) subject->wattIs(watt);
    benchmark::ClobberMemory();
  }
  [[nodiscard]] std::size_t size() const noexcept { return subjects_.size(); }

 private:
  std::vector<std::unique_ptr<Contender>> all_;
  std::vector<typename Contender::Subject*> subjects_;
};

/// Few enough for the fastest cache.
constexpr std::size_t hotSize = 8;
/// More than the caches hold.
constexpr std::size_t coldSize = std::size_t{1} << 18;

std::string nameOf(const char* kind, std::size_t handlers, const char* contender) {
  return std::string("Notification/") + kind + '/' + std::to_string(handlers) + '/' + contender;
}

template <class Contender>
void addHot(const char* contender, std::size_t handlers) {
  add(nameOf("hot", handlers, contender), [handlers](benchmark::State& state) {
    Crowd<Contender> crowd(hotSize, handlers);
    unsigned watt = 0;
    for (auto _ : state) crowd.writeAll(++watt);
    itemsAre(state, crowd.size());
  });
}

template <class Contender>
void addCold(const char* contender) {
  // Made with the first repetition, since that takes a while.
  auto crowd = std::make_shared<std::unique_ptr<Crowd<Contender>>>();
  add(nameOf("cold", 1, contender), [crowd, watt = 0U](benchmark::State& state) mutable {
    if (!*crowd) *crowd = std::make_unique<Crowd<Contender>>(coldSize, 1);
    for (auto _ : state) (*crowd)->writeAll(++watt);
    itemsAre(state, (*crowd)->size());
  });
}

/// Counts the allocations of some rounds of writes.
void addAllocations(std::size_t handlers) {
  add(nameOf("allocations", handlers, "Mox"),
      [handlers](benchmark::State& state) {
        Crowd<Ours> crowd(hotSize, handlers);
        unsigned watt = 0;
        const Allocations allocations;
        for (auto _ : state) crowd.writeAll(++watt);
        amountIs(state, static_cast<double>(allocations.count()), "allocations");
      })
      ->Iterations(1000)
      ->Repetitions(1);
}

}  // namespace

void addNotifications(Targets& targets) {
  const char* const floor = "raw virtual loop";
  const char* const peer = "Boost.Signals2";
  for (const std::size_t handlers : {1UL, 8UL}) {
    addHot<Ours>("Mox", handlers);
    addHot<Raw>("raw", handlers);
    addHot<Signals>("Signals2", handlers);
    addAllocations(handlers);

    const std::string what = "write + " + std::to_string(handlers) + (handlers == 1 ? " reactor" : " reactors");
    const std::string ours = nameOf("hot", handlers, "Mox");
    targets.ratio(what, ours, nameOf("hot", handlers, "raw"), 1.3, floor);
    targets.ratio(what, ours, nameOf("hot", handlers, "Signals2"), handlers == 1 ? 0.10 : 0.15, peer);
    targets.amount(what + ", allocations in 8000 writes", nameOf("allocations", handlers, "Mox"), 0, "allocations");
  }
  addCold<Ours>("Mox");
  addCold<Raw>("raw");
  addCold<Signals>("Signals2");
  targets.compare("write + 1 reactor, cold objects", nameOf("cold", 1, "Mox"), nameOf("cold", 1, "raw"), floor);
  targets.compare("write + 1 reactor, cold objects", nameOf("cold", 1, "Mox"), nameOf("cold", 1, "Signals2"), peer);
}

}  // namespace Bench
