// The change feed of one document: a line of JSON for every notification of its entities, in the order of delivery.
//
//   {"time":0.0,"document":"state","op":"replace","path":"/topo/A/port/Ethernet1/active","value":true}
//
// Applied in order to an earlier dump, in the manner of JSON Patch, the lines give the later dump.
//
// Rules
//   - `add` for a new member or key, `replace` for a changed value, `remove` for what is gone. The value is what the
//     document holds at that moment, after what earlier readers of the same change did.
//   - A member of an array has its name for a last token, and no value: such arrays are sets.
//   - Entities that come are watched from then on.
//   - A change that an earlier reader has undone by the time of its notification leaves nothing to tell.
//   - The documents of the library's inside, `backlog` and `mapping`, are replaced as a whole when the library is started
//     or stopped. What changes without notice, the counters of the backlog, is not in its feed.

#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "mox/Notifiee.h"
#include "topo/Documents.h"
#include "topolib/TopoLibCodef.h"

namespace Topo {

class Feed {
 public:
  class Node;

  /// Watches the document as it is now.
  Feed(const Agent& agent, Document document, std::ostream& out);
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;
  ~Feed();

  /// To be called when the library was started or stopped, or has initialised itself.
  void libraryMayHaveChanged();

  /// Writes a line; without a value for a null.
  void write(const char* op, const std::string& path, const nlohmann::ordered_json* value);

 private:
  void watch();
  [[nodiscard]] bool isOfLibrary() const noexcept;

  const Agent& agent_;
  Document document_;
  std::ostream& out_;
  std::vector<Mox::Ptr<Node>> roots_;
  // Whose inside is watched: held, so that no other one can have its address.
  Mox::Ptr<const Topology::Library::TopoLibCodef> codef_;
};

}  // namespace Topo
