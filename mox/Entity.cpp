#include "mox/Entity.h"

#include "mox/Type.h"

namespace Mox {

Notifier::~Notifier() = default;

NotifieeList* Notifier::notifieeList() const noexcept { return &notifiees_; }

Entity::~Entity() = default;

String Entity::name() const { return {}; }

NamedEntity::~NamedEntity() = default;

String NamedEntity::name() const { return name_; }

std::ostream& operator<<(std::ostream& out, const Entity* entity) {
  if (entity == nullptr) return out << "null";
  out << entity->fwkType().name();
  const String name = entity->name();
  return name.empty() ? out : out << '(' << name << ')';
}

}  // namespace Mox
