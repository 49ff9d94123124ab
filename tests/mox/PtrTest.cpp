#include "mox/Ptr.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "mox/Type.h"

namespace Mox::PtrTest {

/// Counts its ends.
class Probe : public PtrInterface {
 public:
  explicit Probe(int& ends) : ends_(ends) {}
  ~Probe() override { ++ends_; }

 private:
  int& ends_;
};

class DerivedProbe : public Probe {
 public:
  using Probe::Probe;
};

/// Runs each test with plain and with atomic counts, and leaves the switch as it was.
class PtrWithSwitch : public testing::TestWithParam<bool> {
 public:
  PtrWithSwitch() { threadSafePointersIs(GetParam()); }
  ~PtrWithSwitch() override { threadSafePointersIs(before_); }

 protected:
  int& ends() { return ends_; }

 private:
  bool before_ = threadSafePointers();
  int ends_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Ptr, PtrWithSwitch, testing::Bool(), [](const testing::TestParamInfo<bool>& isThreadSafe) {
  return isThreadSafe.param ? "threadSafe" : "plain";
});

TEST_P(PtrWithSwitch, makePtrReturnsOnlyReference) {
  const auto object = makePtr<Probe>(ends());
  EXPECT_EQ(object->references(), 1U);
}

TEST_P(PtrWithSwitch, copyRaisesCountAndItsEndLowersIt) {
  const auto object = makePtr<Probe>(ends());
  {
    const Ptr<Probe> copy(object);  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy, object);
    EXPECT_EQ(object->references(), 2U);
  }
  EXPECT_EQ(object->references(), 1U);
}

TEST_P(PtrWithSwitch, moveHandsReferenceOver) {
  auto source = makePtr<Probe>(ends());
  Probe* const object = source.get();
  const Ptr<Probe> target(std::move(source));
  EXPECT_EQ(source, nullptr);
  EXPECT_EQ(target.get(), object);
  EXPECT_EQ(object->references(), 1U);
}

TEST_P(PtrWithSwitch, convertingCopyRaisesCount) {
  const auto derived = makePtr<DerivedProbe>(ends());
  const Ptr<Probe> base(derived);
  const Ptr<const PtrInterface> constant(derived);
  EXPECT_EQ(base.get(), derived.get());
  EXPECT_EQ(constant.get(), derived.get());
  EXPECT_EQ(derived->references(), 3U);
}

TEST_P(PtrWithSwitch, convertingMoveHandsReferenceOver) {
  auto derived = makePtr<DerivedProbe>(ends());
  const Ptr<const Probe> constant(std::move(derived));
  EXPECT_EQ(derived, nullptr);
  EXPECT_EQ(constant->references(), 1U);
}

TEST_P(PtrWithSwitch, pointerFromRawPointerIsFurtherReference) {
  auto maker = makePtr<Probe>(ends());
  Probe* const borrowed = maker.get();
  const Ptr<Probe> again(borrowed);
  EXPECT_EQ(borrowed->references(), 2U);
  maker = nullptr;
  EXPECT_EQ(ends(), 0);
  EXPECT_EQ(again->references(), 1U);
}

TEST_P(PtrWithSwitch, adoptTakesReferenceThatCountsAlready) {
  const auto object = Ptr<Probe>::adopt(new Probe(ends()));
  EXPECT_EQ(object->references(), 1U);
}

TEST_P(PtrWithSwitch, releaseGivesReferenceUpWithoutLoweringCount) {
  auto object = makePtr<Probe>(ends());
  Probe* const released = object.release();
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(ends(), 0);
  EXPECT_EQ(released->references(), 1U);
  EXPECT_EQ(Ptr<Probe>::adopt(released)->references(), 1U);
  EXPECT_EQ(ends(), 1);
}

TEST_P(PtrWithSwitch, swapExchangesObjectsAndKeepsCounts) {
  auto a = makePtr<Probe>(ends());
  auto b = makePtr<Probe>(ends());
  const Ptr<Probe> second(b);
  const Probe* const first = a.get();
  a.swap(b);
  EXPECT_EQ(a, second);
  EXPECT_EQ(b.get(), first);
  EXPECT_EQ(a->references(), 2U);
  EXPECT_EQ(b->references(), 1U);
}

TEST_P(PtrWithSwitch, copyAssignmentEndsOldObject) {
  auto a = makePtr<Probe>(ends());
  const auto b = makePtr<Probe>(ends());
  a = b;
  EXPECT_EQ(ends(), 1);
  EXPECT_EQ(a, b);
  EXPECT_EQ(b->references(), 2U);
}

TEST_P(PtrWithSwitch, moveAssignmentEndsOldObject) {
  auto a = makePtr<Probe>(ends());
  auto b = makePtr<Probe>(ends());
  a = std::move(b);
  EXPECT_EQ(ends(), 1);
  EXPECT_EQ(b, nullptr);
  EXPECT_EQ(a->references(), 1U);
}

TEST_P(PtrWithSwitch, assignmentToItselfChangesNothing) {
  auto object = makePtr<Probe>(ends());
  auto& same = object;
  object = same;
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->references(), 1U);
  object = std::move(same);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->references(), 1U);
  EXPECT_EQ(ends(), 0);
}

TEST_P(PtrWithSwitch, assigningPresentObjectAgainChangesNothing) {
  auto object = makePtr<Probe>(ends());
  object = object.get();
  EXPECT_EQ(object->references(), 1U);
  EXPECT_EQ(ends(), 0);
}

TEST_P(PtrWithSwitch, referencesIncAndDecAreOnePointersShare) {
  const auto object = makePtr<Probe>(ends());
  object->referencesInc();
  EXPECT_EQ(object->references(), 2U);
  object->referencesDec();
  EXPECT_EQ(object->references(), 1U);
  EXPECT_EQ(ends(), 0);
}

TEST_P(PtrWithSwitch, countStartsAtOneAndTellsItsEnd) {
  ReferenceCount count;
  EXPECT_EQ(count.value(), 1U);
  count.increment();
  EXPECT_EQ(count.value(), 2U);
  EXPECT_FALSE(count.decrement());
  EXPECT_TRUE(count.decrement());
}

TEST(Ptr, nullHoldsNothing) {
  const Ptr<Probe> null;
  const Ptr<Probe> copy(null);  // NOLINT(performance-unnecessary-copy-initialization)
  const Ptr<Probe> fromRaw(static_cast<Probe*>(nullptr));
  const Ptr<const PtrInterface> converted(null);
  EXPECT_EQ(null.get(), nullptr);
  EXPECT_EQ(null, nullptr);
  EXPECT_FALSE(null);
  EXPECT_EQ(copy, null);
  EXPECT_EQ(fromRaw, nullptr);
  EXPECT_EQ(converted, nullptr);
}

TEST(Ptr, equalMeansSameObject) {
  int ends = 0;
  const auto a = makePtr<DerivedProbe>(ends);
  const auto b = makePtr<DerivedProbe>(ends);
  const Ptr<const PtrInterface> again(a);
  EXPECT_TRUE(a == again);
  EXPECT_TRUE(a == a.get());
  EXPECT_TRUE(a.get() == a);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(a != nullptr);
  EXPECT_TRUE(static_cast<bool>(a));
}

TEST(Ptr, orderIsThatOfAddresses) {
  int ends = 0;
  std::array<Probe, 2> probes = {Probe(ends), Probe(ends)};
  const Ptr<Probe> low(probes.data());
  const Ptr<Probe> high(probes.data() + 1);
  EXPECT_TRUE(low < high);
  EXPECT_TRUE(high > low);
  EXPECT_TRUE(low <= low);
  EXPECT_TRUE(Ptr<Probe>() < low);
}

TEST(Ptr, hashFindsPointerInUnorderedSet) {
  int ends = 0;
  const auto a = makePtr<Probe>(ends);
  const auto b = makePtr<Probe>(ends);
  const std::unordered_set<Ptr<Probe>> set{a};
  EXPECT_TRUE(set.contains(Ptr<Probe>(a.get())));
  EXPECT_FALSE(set.contains(b));
}

TEST(Ptr, dereferencesToItsObject) {
  int ends = 0;
  const auto object = makePtr<Probe>(ends);
  EXPECT_EQ(&*object, object.get());
  EXPECT_EQ(object.operator->(), object.get());
}

TEST(Ptr, typeAllowsWhatItsPointerAllows) {
  static_assert(sizeof(Ptr<Probe>) == sizeof(void*));
  static_assert(std::is_convertible_v<Ptr<DerivedProbe>, Ptr<Probe>>);
  static_assert(std::is_convertible_v<Ptr<Probe>, Ptr<const Probe>>);
  static_assert(!std::is_convertible_v<Ptr<Probe>, Ptr<DerivedProbe>>);
  static_assert(!std::is_convertible_v<Ptr<const Probe>, Ptr<Probe>>);
  static_assert(!std::is_convertible_v<Ptr<Probe>, bool>);
  static_assert(std::is_nothrow_move_constructible_v<Ptr<Probe>>);
  static_assert(!std::is_copy_constructible_v<PtrInterface>);
  static_assert(!std::is_copy_assignable_v<PtrInterface>);
}

TEST(Ptr, switchIsOffAtStartAndCanBeReadBack) {
  EXPECT_FALSE(threadSafePointers());
  threadSafePointersIs(true);
  EXPECT_TRUE(threadSafePointers());
  threadSafePointersIs(false);
  EXPECT_FALSE(threadSafePointers());
}

TEST(PtrInterface, plainObjectNotifiesNobody) {
  int ends = 0;
  Probe object(ends);
  EXPECT_EQ(object.notifieeList(), nullptr);
  EXPECT_FALSE(object.hasNotificationActive());
  object.hasNotificationActiveIs(true);
  EXPECT_TRUE(object.hasNotificationActive());
  object.moxDoZombieReactors(true);
  EXPECT_TRUE(object.hasNotificationActive());
}

TEST(PtrInterface, fwkTypeTellsDynamicType) {
  int ends = 0;
  const auto object = makePtr<DerivedProbe>(ends);
  const PtrInterface& base = *object;
  EXPECT_EQ(&base.fwkType(), &typeDescOf(typeid(DerivedProbe)));
  EXPECT_EQ(base.fwkType().name(), typeName(typeid(DerivedProbe)));
}

}  // namespace Mox::PtrTest
