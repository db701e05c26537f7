// UnitDatabase lookups: the readings of a text (stored and prefixed), composites made on demand,
// reciprocal pairs and the fundamental units.
#include <iterator>

#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/unitdb/internal/CompositeStore.hpp"
#include "ql_types/unitdb/internal/FundamentalUnits.hpp"
#include "ql_types/unitdb/internal/UnitIndex.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

UnitBase::UnitSet UnitDatabase::getUnit(const std::wstring& text) const {
  UnitBase::UnitSet result;
  units_->findByNameInto(text, result);
  units_->findBySymbolInto(text, result);
  addPrefixedReadings(text, true, result);
  addPrefixedReadings(text, false, result);
  return result;
}

// Only the longest stored prefix of text is tried (a shorter one that would also read is not), and a
// reading never mixes a prefix name with a unit symbol or the reverse.
void UnitDatabase::addPrefixedReadings(const std::wstring& text, bool byName, UnitBase::UnitSet& result) const {
  const internal::UnitTrie& trie = byName ? prefixes_->nameTrie() : prefixes_->symbolTrie();
  std::size_t consumed = 0;
  if (!trie.walk(text, prefixes_->prefixMatching(), consumed)) return;
  // All of text consumed: every candidate below the node is at least as long as text, so none reads.
  if (consumed >= text.size()) return;
  const std::wstring head = text.substr(0, consumed);
  const std::wstring rest = text.substr(consumed);
  UnitPrefix::PrefixSet prefixes;
  UnitBase::UnitSet units;
  if (byName) {
    prefixes_->findByNameInto(head, prefixes);
    units_->findByNameInto(rest, units);
  } else {
    prefixes_->findBySymbolInto(head, prefixes);
    units_->findBySymbolInto(rest, units);
  }
  for (const UnitPrefix& prefix : prefixes) {
    for (const UnitBase& candidate : units) {
      const auto* unit = dynamic_cast<const Unit*>(&candidate);
      if (unit != nullptr && unit->hasPrefix(prefix)) result.insert(std::cref(getCompositeUnit(prefix, *unit)));
    }
  }
}

const UnitBase& UnitDatabase::getCompositeUnit(const UnitPrefix& prefix, const Unit& unit) const {
  auto& map = composites_->map;
  const internal::CompositeStore::Key key(&prefix, &unit);
  auto it = map.find(key);
  if (it == map.end()) it = map.emplace(key, CompositeUnit(prefix, unit)).first;
  return it->second;
}

UnitBase::UnitSet UnitDatabase::getUnit(const std::wstring& text, const UnitBase& abstractUnit) const {
  UnitBase::UnitSet all = getUnit(text);
  if (abstractUnit.compare(UnitFactory::getDefaultAbstractUnit()) == 0) return all;
  UnitBase::UnitSet kept;
  for (const UnitBase& u : all) {
    const auto* unit = dynamic_cast<const Unit*>(&u);
    if (unit != nullptr && unit->getAbstractUnit().compare(abstractUnit) == 0) kept.insert(std::cref(u));
  }
  return kept;
}

UnitBase::UnitSet UnitDatabase::getAbstractUnit(const std::wstring& text) const {
  UnitBase::UnitSet result;
  abstractUnits_->findByNameInto(text, result);
  abstractUnits_->findBySymbolInto(text, result);
  return result;
}

UnitPrefix::PrefixSet UnitDatabase::getUnitPrefix(const std::wstring& text) const {
  UnitPrefix::PrefixSet result;
  prefixes_->findByNameInto(text, result);
  prefixes_->findBySymbolInto(text, result);
  return result;
}

UnitSystem* UnitDatabase::getUnitSystem(const std::wstring& name) const {
  for (UnitSystem* system : unitSystems_)
    if (system->getName() == name) return system;
  return nullptr;
}

UnitBase::UnitSet UnitDatabase::getAllUnits() const {
  UnitBase::UnitSet result;
  units_->allInto(result);
  return result;
}

UnitBase::UnitSet UnitDatabase::getAllAbstractUnits() const {
  UnitBase::UnitSet result;
  abstractUnits_->allInto(result);
  return result;
}

UnitPrefix::PrefixSet UnitDatabase::getAllPrefixes() const {
  UnitPrefix::PrefixSet result;
  prefixes_->allInto(result);
  return result;
}

bool UnitDatabase::orderedAbstractPair(const UnitBase& a, const UnitBase& b, std::pair<UnitRef, UnitRef>& out) const {
  const UnitBase* x = &a;
  const UnitBase* y = &b;
  if (a.getUnitType() == 3 && b.getUnitType() == 3) {
    const auto* ua = dynamic_cast<const Unit*>(&a);
    const auto* ub = dynamic_cast<const Unit*>(&b);
    if (ua == nullptr || ub == nullptr) return false;
    x = &ua->getAbstractUnit();
    y = &ub->getAbstractUnit();
  } else if (a.getUnitType() != 2 || b.getUnitType() != 2) {
    return false;  // a mixed pair is never reciprocal
  }
  // The lesser first; a tie leaves the second argument first.
  if (x->compare(*y) < 0)
    out = {std::cref(*x), std::cref(*y)};
  else
    out = {std::cref(*y), std::cref(*x)};
  return true;
}

bool UnitDatabase::areUnitsReciprocals(const UnitBase& a, const UnitBase& b) const {
  std::pair<UnitRef, UnitRef> key(std::cref(a), std::cref(b));
  return orderedAbstractPair(a, b, key) && reciprocals_.count(key) != 0;
}

boost::optional<ConversionFactor> UnitDatabase::getReciprocalConversionFactor(const UnitBase& a,
                                                                              const UnitBase& b) const {
  std::pair<UnitRef, UnitRef> key(std::cref(a), std::cref(b));
  if (!orderedAbstractPair(a, b, key)) return boost::none;
  auto it = reciprocals_.find(key);
  if (it == reciprocals_.end()) return boost::none;
  return it->second;
}

namespace {

// Past the end answers the empty text rather than reading beyond the set.
const std::wstring& symbolAt(const UnitBase::UnitSet& set, unsigned int index) {
  static const std::wstring none;
  if (index >= set.size()) return none;
  return std::next(set.begin(), index)->get().getSymbol();
}

void addMatching(const UnitBase::UnitSet& from, const std::wstring& text, UnitBase::UnitSet& set) {
  for (const UnitBase& u : from)
    if (u.getSymbol() == text || u.getAsciiSymbol() == text || u.getName() == text) set.insert(std::cref(u));
}

}  // namespace

const std::wstring& UnitDatabase::getFundamentalAbstractUnitSymbol(unsigned int index) const {
  return symbolAt(fundamentals_->abstractSet(), index);
}

const std::wstring& UnitDatabase::getFundamentalUnitSymbol(unsigned int index) const {
  return symbolAt(fundamentals_->unitSet(), index);
}

void UnitDatabase::addMatchingFundamentalAbstractUnitToList(const std::wstring& text, UnitBase::UnitSet& set) const {
  addMatching(fundamentals_->abstractSet(), text, set);
  addMatching(fundamentals_->extraAbstractSet(), text, set);
}

void UnitDatabase::addMatchingFundamentalUnitToList(const std::wstring& text, UnitBase::UnitSet& set) const {
  addMatching(fundamentals_->unitSet(), text, set);
}

}  // namespace QLTypeSys
