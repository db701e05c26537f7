// UnitDatabase: provenances, the provenance relation, the whitelist, and the unit-system test of a unit.
#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/ordered_index.hpp>
#include <boost/multi_index_container.hpp>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/unitdb/internal/ProvenanceStore.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

namespace {

// kept: the text the tool's catalogue has always thrown for a missing "Unknown" provenance or pair count.
const char* const kMissingKey = "invalid unordered_map<K, T> key";

struct Weighted {
  std::wstring symbol;
  long long weight;
};

namespace mi = boost::multi_index;
// Unique on the symbol; ordered by weight, equal weights in order of entry (an ordered_non_unique index
// inserts an equal key after the ones already there).
using WeightedCollection = mi::multi_index_container<
    Weighted, mi::indexed_by<mi::hashed_unique<mi::member<Weighted, std::wstring, &Weighted::symbol>>,
                             mi::ordered_non_unique<mi::member<Weighted, long long, &Weighted::weight>>>>;

long long saturatingAdd(long long a, long long b) {
  long long sum = 0;
  if (__builtin_add_overflow(a, b, &sum))
    return b > 0 ? std::numeric_limits<long long>::max() : std::numeric_limits<long long>::min();
  return sum;
}

}  // namespace

void UnitDatabase::addUnitProvenance(UnitProvenance&& provenance) {
  std::wstring key = provenance.getProvenanceID();
  provenance_->provenances.try_emplace(std::move(key), std::move(provenance));
}

void UnitDatabase::addUnitProvenanceMapping(const std::wstring& unitSymbol, const std::wstring& provenanceID) {
  provenance_->relation.insert(internal::ProvenanceStore::Relation::value_type(unitSymbol, provenanceID));
}

UnitDatabase::ProvenanceList UnitDatabase::getUnitProvenance(const std::wstring& identifier) const {
  ProvenanceList result;
  auto it = provenance_->provenances.find(identifier);
  if (it != provenance_->provenances.end()) result.emplace_back(it->second);
  return result;
}

const std::unordered_map<std::wstring, UnitProvenance>& UnitDatabase::getAllUnitProvenances() const {
  return provenance_->provenances;
}

void UnitDatabase::appendProvenancesForUnit(const UnitBase& unit, ProvenanceList& out) const {
  const auto range = provenance_->relation.left.equal_range(unit.getSymbol());
  if (range.first == range.second) {
    auto it = provenance_->provenances.find(L"Unknown");
    if (it == provenance_->provenances.end()) throw std::out_of_range(kMissingKey);
    out.emplace_back(it->second);
    return;
  }
  // Built aside so that out only grows when everything was found.
  ProvenanceList found;
  for (auto it = range.first; it != range.second; ++it)
    for (const UnitProvenance& p : getUnitProvenance(it->second)) found.emplace_back(p);
  out.insert(out.end(), found.begin(), found.end());
}

void UnitDatabase::appendUnitsForProvenance(const UnitProvenance& provenance, UnitBase::UnitSet& out) const {
  const auto range = provenance_->relation.right.equal_range(provenance.getProvenanceID());
  if (range.first == range.second) {
    out.insert(std::cref<UnitBase>(UnitFactory::getDummyUnit()));
    return;
  }
  UnitBase::UnitSet found;
  for (auto it = range.first; it != range.second; ++it) {
    const UnitBase::UnitSet units = getUnit(it->second);
    if (!units.empty()) found.insert(*units.begin());
  }
  out.insert(found.begin(), found.end());
}

void UnitDatabase::addWhitelistedUnits(const UnitBase& unit) {
  const UnitBase::ExprMap& terms = unit.getFundamentalUnitsExprAST();
  if (terms.size() < 2) return;
  internal::ProvenanceStore& store = *provenance_;
  // Every entry is made (at zero) before any count moves, and entries this call made are taken out again
  // if memory runs out, so the tables change completely or not at all.
  std::vector<decltype(store.pairCounts)::iterator> counts;
  std::vector<std::pair<decltype(store.partners)::iterator, std::set<std::wstring>::iterator>> newPartners;
  std::vector<decltype(store.partners)::iterator> newOwners;
  std::vector<decltype(store.pairCounts)::iterator> newCounts;
  try {
    counts.reserve(terms.size() * (terms.size() - 1));
    for (const auto& a : terms) {
      const std::wstring& sa = a.first.get().getSymbol();
      for (const auto& b : terms) {
        const std::wstring& sb = b.first.get().getSymbol();
        if (sa == sb) continue;
        auto owner = store.partners.try_emplace(sa);
        if (owner.second) newOwners.push_back(owner.first);
        auto partner = owner.first->second.insert(sb);
        if (partner.second) newPartners.emplace_back(owner.first, partner.first);
        auto count = store.pairCounts.try_emplace(std::make_pair(sa, sb), 0);
        if (count.second) newCounts.push_back(count.first);
        counts.push_back(count.first);
      }
    }
  } catch (...) {
    for (auto it : newCounts) store.pairCounts.erase(it);
    for (auto& p : newPartners) p.first->second.erase(p.second);
    for (auto it : newOwners) store.partners.erase(it);
    throw;
  }
  for (auto it : counts) it->second = saturatingAdd(it->second, 1);
}

void UnitDatabase::getWhitelistedUnits(UnitList& out, const std::vector<std::wstring>& words) const {
  if (words.empty()) return;
  WeightedCollection collection;
  auto& bySymbol = collection.get<0>();
  for (const std::wstring& word : words) {
    auto owner = provenance_->partners.find(word);
    if (owner == provenance_->partners.end()) continue;
    for (const std::wstring& p : owner->second) {
      auto count = provenance_->pairCounts.find(std::make_pair(word, p));
      if (count == provenance_->pairCounts.end()) throw std::out_of_range(kMissingKey);
      long long weight = count->second;
      auto old = bySymbol.find(p);
      if (old != bySymbol.end()) {
        weight = saturatingAdd(weight, old->weight);
        bySymbol.erase(old);
      }
      collection.insert(Weighted{p, weight});
    }
  }
  UnitList found;
  for (const Weighted& w : collection.get<1>()) {
    const UnitBase::UnitSet units = getUnit(w.symbol);
    if (!units.empty()) found.push_back(*units.begin());
  }
  out.insert(out.end(), found.begin(), found.end());
}

namespace {

bool sharesSystem(const std::vector<UnitSystem*>& mine, const std::vector<UnitSystem*>& systems) {
  for (UnitSystem* s : mine)
    for (UnitSystem* t : systems)
      if (s == t) return true;
  return false;
}

}  // namespace

bool UnitBase::isUnitCompatibleWithUnitSystems(const std::vector<UnitSystem*>& systems) const {
  if (getUnitType() != 3) return true;
  const auto* self = dynamic_cast<const Unit*>(this);
  if (self == nullptr) return true;
  if (!UnitDatabase::getUnitDatabase()->getUnit(getName()).empty())
    return self->getUnitSystems().empty() || sharesSystem(self->getUnitSystems(), systems);
  for (const auto& term : getUnitsInfo()) {
    const UnitBase& t = term.first.get();
    if (t.getUnitType() != 3) continue;
    const auto* unit = dynamic_cast<const Unit*>(&t);
    if (unit == nullptr || unit->getUnitSystems().empty()) continue;
    if (!sharesSystem(unit->getUnitSystems(), systems)) return false;
  }
  return true;
}

}  // namespace QLTypeSys
