#include "topolib/vlan/detail/FewMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "mox/String.h"
#include "tests/support/Random.h"

namespace Topology::Library::Vlan::detail::FewMapTest {

using Map = FewMap<int, std::string>;
using Members = std::vector<std::pair<int, std::string>>;

/// Inserts or overwrites; the value that was there, if another one was.
std::optional<std::string> put(Map& map, int key, const std::string& value) {
  const bool wasThere = map.has(key);
  std::string given = value;
  if (!map.exchange(key, given)) return std::nullopt;
  return wasThere ? std::optional(given) : std::nullopt;
}

Members membersOf(const Map& map) {
  Members members;
  for (const auto& [key, value] : map) members.emplace_back(key, value);
  return members;
}

class Three : public Map {
 public:
  Three() {
    for (const int key : {20, 10, 30}) put(*this, key, std::to_string(key));
  }
};

TEST(FewMap, isMadeEmpty) {
  const Map map;
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0U);
  EXPECT_EQ(map.find(1), nullptr);
  EXPECT_FALSE(map.has(1));
  EXPECT_EQ(membersOf(map), Members());
  EXPECT_TRUE(map.begin() == map.end());
}

TEST(FewMap, goesInTheOrderOfTheKeys) {
  EXPECT_EQ(membersOf(Three()), (Members{{10, "10"}, {20, "20"}, {30, "30"}}));
  FewMap<Mox::String, int> names;
  std::vector<std::string> seen;
  for (const char* const name : {"b", "a", "longer than what fits into a word", "B"}) {
    int value = 0;
    names.exchange(name, value);
  }
  for (const auto& [name, value] : names) seen.emplace_back(name);
  EXPECT_EQ(seen, (std::vector<std::string>{"B", "a", "b", "longer than what fits into a word"}));
}

TEST(FewMap, findsItsMembersOnly) {
  const Three map;
  EXPECT_EQ(map.size(), 3U);
  ASSERT_NE(map.find(20), nullptr);
  EXPECT_EQ(*map.find(20), "20");
  for (const int key : {0, 15, 25, 35}) EXPECT_FALSE(map.has(key));
}

TEST(FewMap, tellsWhetherAnythingChanged) {
  Map map;
  std::string value = "a";
  EXPECT_TRUE(map.exchange(1, value));
  value = "a";
  EXPECT_FALSE(map.exchange(1, value)) << "equal";
  EXPECT_EQ(value, "a");
  value = "b";
  EXPECT_TRUE(map.exchange(1, value));
  EXPECT_EQ(value, "a") << "the old one is handed out";
  EXPECT_EQ(*map.find(1), "b");
  EXPECT_EQ(map.size(), 1U);
}

TEST(FewMap, handsOutWhatIsTaken) {
  Three map;
  EXPECT_EQ(map.take(15), std::nullopt);
  EXPECT_EQ(map.take(20), "20");
  EXPECT_EQ(map.take(20), std::nullopt);
  EXPECT_EQ(membersOf(map), (Members{{10, "10"}, {30, "30"}}));
  EXPECT_EQ(map.take(10), "10");
  EXPECT_EQ(map.take(30), "30");
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(put(map, 5, "again"), std::nullopt);
  EXPECT_EQ(membersOf(map), (Members{{5, "again"}}));
}

TEST(FewMap, destroysWhatItHolds) {
  const auto counted = std::make_shared<int>(0);
  {
    FewMap<int, std::shared_ptr<int>> map;
    for (const int key : {1, 2, 3}) {
      auto value = counted;
      map.exchange(key, value);
    }
    EXPECT_EQ(counted.use_count(), 4);
    map.take(2);
    EXPECT_EQ(counted.use_count(), 3);
  }
  EXPECT_EQ(counted.use_count(), 1);
}

// A pass goes on whatever changes under it.

TEST(FewMap, passGoesOnWhenItsMemberGoes) {
  Three map;
  std::vector<int> seen;
  for (auto i = map.begin(); i; i.advance()) {
    seen.push_back(i.key());
    map.take(i.key());
  }
  EXPECT_EQ(seen, (std::vector{10, 20, 30}));
  EXPECT_TRUE(map.empty());
}

TEST(FewMap, passSkipsWhatIsGoneAndSeesWhatComesAhead) {
  Three map;
  std::vector<int> seen;
  for (auto i = map.begin(); i; ++i) {
    seen.push_back(i.key());
    if (i.key() != 10) continue;
    map.take(20);
    put(map, 5, "behind");
    put(map, 25, "ahead");
  }
  EXPECT_EQ(seen, (std::vector{10, 25, 30}));
}

TEST(FewMap, passEndsWhenAllIsGone) {
  Three map;
  unsigned count = 0;
  for (auto i = map.begin(); i; i.advance()) {
    ++count;
    for (const int key : {10, 20, 30}) map.take(key);
  }
  EXPECT_EQ(count, 1U);
}

TEST(FewMap, passShowsTheValueThatIsThere) {
  Three map;
  const auto i = map.begin();
  put(map, 10, "new");
  EXPECT_EQ((*i).key, 10);
  EXPECT_EQ((*i).value, "new");
}

TEST(FewMap, isLikeAPlainMap) {
  SCOPED_TRACE(::Test::seedTrace());
  ::Test::Random random;
  for (unsigned round = 0; round < 50; ++round) {
    Map map;
    std::map<int, std::string> plain;
    for (unsigned n = 0; n < 200; ++n) {
      const int key = static_cast<int>(random.below(12));
      const std::string value = std::to_string(random.below(3));
      const auto at = plain.find(key);
      if (random.percent(60)) {
        std::string given = value;
        EXPECT_EQ(map.exchange(key, given), at == plain.end() || at->second != value);
        plain[key] = value;
      } else {
        EXPECT_EQ(map.take(key), at == plain.end() ? std::nullopt : std::optional(at->second));
        plain.erase(key);
      }
      ASSERT_EQ(membersOf(map), Members(plain.begin(), plain.end()));
      ASSERT_EQ(map.size(), plain.size());
    }
  }
}

TEST(FewMap, passSeesEveryMemberThatStaysOnceAndInOrder) {
  SCOPED_TRACE(::Test::seedTrace());
  ::Test::Random random;
  for (unsigned round = 0; round < 500; ++round) {
    Map map;
    for (unsigned n = 0; n < 8; ++n) put(map, static_cast<int>(random.below(20)), "");
    std::set<int> staying;
    for (const auto& [key, value] : map) staying.insert(key);
    std::vector<int> seen;
    for (auto i = map.begin(); i; i.advance()) {
      seen.push_back(i.key());
      const int key = static_cast<int>(random.below(20));
      if (random.percent(50)) {
        put(map, key, "new");
      } else {
        map.take(key);
        staying.erase(key);
      }
    }
    for (std::size_t n = 1; n < seen.size(); ++n) ASSERT_LT(seen[n - 1], seen[n]);
    for (const int key : staying) ASSERT_EQ(std::count(seen.begin(), seen.end(), key), 1) << key;
  }
}

}  // namespace Topology::Library::Vlan::detail::FewMapTest
