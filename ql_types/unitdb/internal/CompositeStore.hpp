// CompositeStore: the composite units (a prefix applied to a unit) that lookups make on demand.
#pragma once

#include <map>
#include <utility>

#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitPrefix.hpp"

namespace QLTypeSys {
namespace internal {

/// The composite units made by lookups, by (prefix, unit), each made once. Keys are the addresses of the
/// stored prefix and unit: an index holds one element per place in the order of compare, so the address
/// names the element as well as compare does, at a fraction of the cost.
class CompositeStore {
 public:
  using Key = std::pair<const UnitPrefix*, const Unit*>;
  std::map<Key, CompositeUnit> map;
};

}  // namespace internal
}  // namespace QLTypeSys
