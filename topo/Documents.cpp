#include "topo/Documents.h"

#include <array>
#include <utility>

#include "topo/JsonWriter.h"
#include "topo/Loop.h"

namespace Topo {

namespace {

constexpr std::array<std::pair<Document, std::string_view>, 9> names{{
    {Document::state, "state"},
    {Document::view, "view"},
    {Document::instance, "instance"},
    {Document::status, "status"},
    {Document::config, "config"},
    {Document::bridging, "bridging"},
    {Document::interfaces, "interfaces"},
    {Document::backlog, "backlog"},
    {Document::mapping, "mapping"},
}};

/// What of the processor changes without notice.
class CodefJson {
 public:
  CodefJson(Json& out, const Library::TopoLibCodef& codef) : out_(out), codef_(codef) {}

  void write() {
    // The processor is the only one who arms the clock.
    append(out_, "timeMin", std::isinf(Loop::nextDue()) ? Json(nullptr) : Json(codef_.timeMin()));
    append(out_, "bookmark", codef_.bookmark().value());
    append(out_, "oldTopoName", keyText(codef_.oldTopoName()));
    append(out_, "updatesSeen", codef_.updatesSeen());
    append(out_, "updatesProcessed", codef_.updatesProcessed());
    append(out_, "timeUsed", codef_.timeUsed());
    append(out_, "dispatchCount", codef_.dispatchCount());
    append(out_, "yieldBeforeFinishingCount", codef_.yieldBeforeFinishingCount());
    append(out_, "delPendingPortSet", ports(codef_.delPendingPortSet()));
    append(out_, "deletedPortSet", ports(codef_.deletedPortSet()));
  }

 private:
  [[nodiscard]] static Json ports(const Mox::Ptr<Library::PortSet>& set) {
    Json array = Json::array();
    for (const Quill::IntfId intf : sortedKeys(set->port())) array.push_back(keyJson(intf));
    return array;
  }

  Json& out_;
  const Library::TopoLibCodef& codef_;
};

[[nodiscard]] Json backlog(const Agent& agent, const Part& part) {
  Json json = Json::object();
  const Library::TopoLibCodef* const codef = agent.codef();
  if (codef == nullptr) return json;
  JsonWriter writer(json, part);
  describe(writer, std::as_const(*codef->codefState()));
  CodefJson(json, *codef).write();
  describe(writer, std::as_const(*codef->dirtyVlanDir()));
  return json;
}

[[nodiscard]] Json mapping(const Agent& agent, const Part& part) {
  Json json = Json::object();
  const Library::LibSm* const libSm = agent.libSm();
  if (libSm == nullptr || !libSm->topoToVlanMap()) return json;
  JsonWriter writer(json, part);
  describe(writer, std::as_const(*libSm->topoToVlanMap()));
  describe(writer, *libSm);
  return json;
}

[[nodiscard]] Prune pruning(Document document, const Part& part) {
  if (document == Document::state && part.vlan) return Prune::withoutVlan;
  if (document == Document::view && part.topology) return Prune::withoutTopology;
  return Prune::nothing;
}

}  // namespace

const std::vector<Document>& documents() {
  static const auto& all = *new std::vector<Document>([] {
    std::vector<Document> list;
    list.reserve(std::size(names));
    for (const auto& [document, name] : names) list.push_back(document);
    return list;
  }());
  return all;
}

std::string_view nameOf(Document document) noexcept { return names[static_cast<std::size_t>(document)].second; }

std::optional<Document> documentOf(std::string_view name) noexcept {
  for (const auto& [document, documentName] : names) {
    if (documentName == name) return document;
  }
  return std::nullopt;
}

bool hasTopologies(Document document) noexcept {
  return document != Document::bridging && document != Document::interfaces && document != Document::backlog;
}

bool hasVlans(Document document) noexcept {
  return document != Document::instance && document != Document::status && document != Document::interfaces;
}

Json documentOf(const Agent& agent, Document document, const Part& part) {
  Json json = Json::object();
  JsonWriter writer(json, part, pruning(document, part));
  switch (document) {
    case Document::state:
      describe(writer, std::as_const(*agent.state));
      break;
    case Document::view:
      describe(writer, std::as_const(*agent.view));
      break;
    case Document::instance:
      describe(writer, std::as_const(*agent.instance));
      break;
    case Document::status:
      describe(writer, std::as_const(*agent.status));
      break;
    case Document::config:
      describe(writer, std::as_const(*agent.config));
      break;
    case Document::bridging:
      describe(writer, std::as_const(*agent.bridging));
      break;
    case Document::interfaces:
      describe(writer, std::as_const(*agent.interfaces));
      break;
    case Document::backlog:
      return backlog(agent, part);
    case Document::mapping:
      return mapping(agent, part);
  }
  return json;
}

std::string lineOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace Topo
