// When counted objects end, and what their constructors and destructors may do.

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "mox/Ptr.h"
#include "mox/String.h"
#include "tests/support/Allocations.h"

namespace Mox::PtrLifetimeTest {

using Test::AllocationCount;

/// Counts its ends and, at its end, does what the test asks for.
class Probe : public PtrInterface {
 public:
  explicit Probe(int& ends, std::function<void()> atEnd = {}) : ends_(ends), atEnd_(std::move(atEnd)) {}
  ~Probe() override {
    ++ends_;
    if (atEnd_) atEnd_();
  }

 private:
  int& ends_;
  std::function<void()> atEnd_;
};

// A compiler may lay the end of a pointer out apart for the way that an exception takes. These two are compiled in one
// piece, so that this way is laid out here and not called.
[[gnu::noinline, gnu::flatten]] void holdWhile(Probe& probe, const std::function<void()>& action) {
  const Ptr<Probe> held(&probe);
  action();
}
[[gnu::noinline, gnu::flatten]] void holdTextWhile(const String& text, const std::function<void()>& action) {
  const String held(text);  // NOLINT(performance-unnecessary-copy-initialization)
  action();
}

/// Runs each test with plain and with atomic counts, and leaves the switch as it was.
class PtrLifetime : public testing::TestWithParam<bool> {
 public:
  PtrLifetime() { threadSafePointersIs(GetParam()); }
  ~PtrLifetime() override { threadSafePointersIs(before_); }

 protected:
  int& ends() { return ends_; }

 private:
  bool before_ = threadSafePointers();
  int ends_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Ptr, PtrLifetime, testing::Bool(), [](const testing::TestParamInfo<bool>& isThreadSafe) {
  return isThreadSafe.param ? "threadSafe" : "plain";
});

TEST_P(PtrLifetime, objectEndsOnceWithItsLastReference) {
  auto a = makePtr<Probe>(ends());
  auto b = a;
  auto c = std::move(a);
  b = nullptr;
  EXPECT_EQ(ends(), 0);
  c = nullptr;
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, lastConstPointerEndsObject) {
  Ptr<const Probe> constant = makePtr<Probe>(ends());
  constant = nullptr;
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, constructorMayMakeAndDropPointersToThis) {
  struct Selfish : Probe {
    explicit Selfish(int& ends) : Probe(ends) {
      for (int i = 0; i < 3; ++i) {
        const Ptr<Selfish> self(this);
        EXPECT_EQ(references(), 2U);
      }
    }
  };
  {
    const auto object = makePtr<Selfish>(ends());
    EXPECT_EQ(object->references(), 1U);
    EXPECT_EQ(ends(), 0);
  }
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, constructorMayLeavePointersToThisElsewhere) {
  struct Registered : Probe {
    Registered(int& ends, Ptr<PtrInterface>& registry) : Probe(ends) { registry = this; }
  };
  Ptr<PtrInterface> registry;
  EXPECT_EQ(makePtr<Registered>(ends(), registry)->references(), 2U);
  EXPECT_EQ(ends(), 0);
  registry = nullptr;
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, destructorMayMakeAndDropPointersToThis) {
  class Clinging : public PtrInterface {
   public:
    explicit Clinging(int& ends) : ends_(ends) {}
    ~Clinging() override {
      ++ends_;
      for (int i = 0; i < 3; ++i) {
        const Ptr<const Clinging> self(this);
        const auto copy = self;  // NOLINT(performance-unnecessary-copy-initialization)
      }
    }

   private:
    int& ends_;
  };
  makePtr<Clinging>(ends()) = nullptr;
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, constructorThatThrowsEndsNothingTwice) {
  struct Unfinished : Probe {
    explicit Unfinished(int& ends) : Probe(ends) {
      const Ptr<Unfinished> self(this);
      throw std::runtime_error("unfinished");
    }
  };
  EXPECT_THROW(static_cast<void>(makePtr<Unfinished>(ends())), std::runtime_error);
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, exceptionGivesReferenceBack) {
  const auto object = makePtr<Probe>(ends());
  holdWhile(*object, [] {});
  EXPECT_EQ(object->references(), 1U);
  EXPECT_THROW(holdWhile(*object, [] { throw std::runtime_error("thrown"); }), std::runtime_error);
  EXPECT_EQ(object->references(), 1U);
}

TEST_P(PtrLifetime, exceptionThatTakesLastReferenceEndsObject) {
  auto object = makePtr<Probe>(ends());
  const auto dropAndThrow = [&object] {
    object = nullptr;
    throw std::runtime_error("thrown");
  };
  EXPECT_THROW(holdWhile(*object, dropAndThrow), std::runtime_error);
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, exceptionGivesReferenceToTextBack) {
  const AllocationCount allocations;
  {
    const String text("a text that is shared");
    EXPECT_THROW(holdTextWhile(text, [] { throw 4711; }), int);
  }
  EXPECT_EQ(allocations.bytes(), 0U);
}

TEST_P(PtrLifetime, localObjectIsNotEndedByItsPointers) {
  {
    Probe local(ends());
    {
      const Ptr<Probe> pointer(&local);
      const Ptr<Probe> copy(pointer);  // NOLINT(performance-unnecessary-copy-initialization)
      EXPECT_EQ(local.references(), 3U);
    }
    EXPECT_EQ(ends(), 0);
    EXPECT_EQ(local.references(), 1U);
  }
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, memberObjectIsNotEndedByItsPointers) {
  struct Owner : PtrInterface {
    explicit Owner(int& ends) : member(ends) {}
    Probe member;
  };
  const auto owner = makePtr<Owner>(ends());
  Ptr<Probe> pointer(&owner->member);
  pointer = nullptr;
  EXPECT_EQ(ends(), 0);
}

TEST_P(PtrLifetime, endOfReplacedObjectSeesNewValue) {
  const auto next = makePtr<Probe>(ends());
  Ptr<Probe> pointer;
  std::vector<const Probe*> seen;
  const auto look = [&] { seen.push_back(pointer.get()); };

  pointer = makePtr<Probe>(ends(), look);
  pointer = next;
  pointer = makePtr<Probe>(ends(), look);
  Ptr<Probe> source = next;
  pointer = std::move(source);
  pointer = makePtr<Probe>(ends(), look);
  pointer = next.get();
  pointer = makePtr<Probe>(ends(), look);
  pointer = nullptr;

  EXPECT_EQ(seen, (std::vector<const Probe*>{next.get(), next.get(), next.get(), nullptr}));
}

TEST_P(PtrLifetime, endOfReplacedObjectMayAssignPointerAgain) {
  const auto first = makePtr<Probe>(ends());
  const auto second = makePtr<Probe>(ends());
  Ptr<Probe> pointer;
  pointer = makePtr<Probe>(ends(), [&] { pointer = second; });
  pointer = first;
  EXPECT_EQ(pointer, second);
  EXPECT_EQ(first->references(), 1U);
  EXPECT_EQ(second->references(), 2U);
}

TEST_P(PtrLifetime, pointerMayBeAssignedFromInsideOfObjectThatItEnds) {
  struct Link : Probe {
    Link(int& ends, Ptr<Link> behind) : Probe(ends), next(std::move(behind)) {}
    Ptr<Link> next;
  };
  auto chain = makePtr<Link>(ends(), makePtr<Link>(ends(), makePtr<Link>(ends(), nullptr)));
  chain = chain->next;
  EXPECT_EQ(ends(), 1);
  EXPECT_EQ(chain->references(), 1U);
  chain = std::move(chain->next);
  EXPECT_EQ(ends(), 2);
  EXPECT_EQ(chain->references(), 1U);
}

TEST_P(PtrLifetime, zeroReferencesIsDecidesHowObjectEnds) {
  struct Kept : Probe {
    using Probe::Probe;
    void zeroReferencesIs(bool zero) override { calls.push_back(zero); }
    std::vector<bool> calls;
  };
  auto object = makePtr<Kept>(ends());
  Kept* const kept = object.get();
  object = nullptr;
  EXPECT_EQ(kept->calls, std::vector<bool>{true});
  EXPECT_EQ(ends(), 0);
  delete kept;
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrLifetime, zeroReferencesIsFalseEndsNothing) {
  const auto object = makePtr<Probe>(ends());
  object->zeroReferencesIs(false);
  EXPECT_EQ(ends(), 0);
  EXPECT_EQ(object->references(), 1U);
}

}  // namespace Mox::PtrLifetimeTest
