// Keeps a piece of work on one key from starting inside itself.
//
// Work that publishes may be asked for again by those who read what it publishes, while it is half done. The inner
// request is then remembered and served by the outer one when it has finished, on the inputs as they are then.

#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "topolib/detail/FirstException.h"

namespace Topology::Library::detail {

template <class Key>
class OneAtATime {
 public:
  /// Does `work`, and then `again` for as long as requests came meanwhile. `isOver` says whether to leave it at that. If
  /// work on the key is under way this is one of those requests.
  void run(const Key& key, auto&& work, auto&& again, auto&& isOver) {
    if (ask(key)) return;
    const Entry entry(*this, key);
    FirstException thrown;
    thrown.collect(work);
    while (std::exchange(underWay_.back().isAskedAgain, false) && !isOver()) thrown.collect(again);
    thrown.rethrow();
  }

  /// Leaves a request for work under way on the key; returns false if there is none.
  bool ask(const Key& key) {
    const auto at = std::find(underWay_.begin(), underWay_.end(), key);
    if (at == underWay_.end()) return false;
    at->isAskedAgain = true;
    return true;
  }

 private:
  struct Work {
    Key key;
    bool isAskedAgain = false;
    [[nodiscard]] friend bool operator==(const Work& work, const Key& other) { return work.key == other; }
  };

  /// Work starts and ends like a stack: what starts inside ends inside.
  class Entry {
   public:
    Entry(OneAtATime& owner, const Key& key) : owner_(owner) { owner_.underWay_.push_back({key}); }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { owner_.underWay_.pop_back(); }

   private:
    OneAtATime& owner_;
  };

  std::vector<Work> underWay_;
};

}  // namespace Topology::Library::detail
