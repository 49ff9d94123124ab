#include "mox/AllocationTrack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mox/Entity.h"
#include "mox/StateMachine.h"
#include "mox/Type.h"

namespace Mox::AllocationTrackTest {

/// The count of a type, or one that is all zero.
template <class T>
[[nodiscard]] AllocationCount countOf() {
  const std::string name = typeName(typeid(T));
  for (auto& count : allocationCounts()) {
    if (count.type == name) return count;
  }
  return {name, 0, 0};
}

TEST(AllocationTrack, countsLivingAndMadeObjects) {
  class Counted : private AllocationTrack<Counted> {};
  const auto before = countOf<Counted>().made;
  {
    const Counted first;
    const auto second = std::make_unique<Counted>();
    EXPECT_EQ(countOf<Counted>().living, 2U);
    EXPECT_EQ(countOf<Counted>().made, before + 2);
  }
  EXPECT_EQ(countOf<Counted>().living, 0U);
  EXPECT_EQ(countOf<Counted>().made, before + 2);
}

TEST(AllocationTrack, countsCopies) {
  class Copied : private AllocationTrack<Copied> {};
  const auto before = countOf<Copied>().made;
  const Copied original;
  Copied copy(original);
  Copied moved(std::move(copy));
  EXPECT_EQ(countOf<Copied>().living, 3U);
  moved = original;
  EXPECT_EQ(countOf<Copied>().living, 3U);
  EXPECT_EQ(countOf<Copied>().made, before + 3);
}

TEST(AllocationTrack, countsObjectWhoseConstructionFails) {
  class Unfinished : private AllocationTrack<Unfinished> {
   public:
    Unfinished() { throw 4711; }
  };
  const auto before = countOf<Unfinished>().made;
  EXPECT_THROW(Unfinished(), int);
  EXPECT_EQ(countOf<Unfinished>().living, 0U);
  EXPECT_EQ(countOf<Unfinished>().made, before + 1);
}

TEST(AllocationTrack, costsNoSpaceInObject) {
  class Tracked : private AllocationTrack<Tracked> {
    int value_ = 0;

   public:
    [[nodiscard]] int value() const { return value_; }
  };
  EXPECT_EQ(sizeof(Tracked), sizeof(int));
}

TEST(AllocationTrack, namesTypesInOrder) {
  class Zebra : private AllocationTrack<Zebra> {};
  class Ant : private AllocationTrack<Ant> {};
  class Monkey : private AllocationTrack<Monkey> {};
  const Zebra zebra;
  const Ant ant;
  const Monkey monkey;
  std::vector<std::string> names;
  for (const auto& count : allocationCounts()) names.push_back(count.type);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "each type stands there once";
  EXPECT_NE(std::find(names.begin(), names.end(), typeName(typeid(Monkey))), names.end());
}

class LampSm : public StateMachine<LampSm> {
 public:
  explicit LampSm(const Ptr<const NamedEntity>& lamp) : lamp_(this, lamp) {}
  ~LampSm() override { moxDoZombieReactors(true); }

  class MoxLamp : public Reactor<MoxLamp, LampSm, NamedEntity> {
   public:
    using Reactor::Reactor;
    void onAttribute(AttributeId /*id*/, const void* /*key*/) override {}
  };

 private:
  friend StateMachine;
  void forEachReactor(const auto& act) { act(lamp_); }

  MoxLamp lamp_;
};

TEST(AllocationTrack, countsReactorsByTheirClass) {
  const auto before = countOf<LampSm::MoxLamp>().made;
  const auto lamp = makePtr<NamedEntity>("hall");
  {
    const auto first = makePtr<LampSm>(lamp);
    const auto second = makePtr<LampSm>(lamp);
    EXPECT_EQ(countOf<LampSm::MoxLamp>().living, 2U);
  }
  EXPECT_EQ(countOf<LampSm::MoxLamp>().living, 0U);
  EXPECT_EQ(countOf<LampSm::MoxLamp>().made, before + 2);
}

}  // namespace Mox::AllocationTrackTest
