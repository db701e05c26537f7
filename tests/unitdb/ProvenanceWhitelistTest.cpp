// Provenances and their relation to unit symbols, the whitelist's counts and weighted order (against a small
// reference model), and the unit-system test of a unit.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;

UnitProvenance provenance(const std::wstring& id, const std::wstring& title = L"t", int year = 2019) {
  return UnitProvenance(id, title, L"sub", L"BIPM", L"Bureau", {L"https://a/", L"https://b/"}, L"9", year);
}

std::vector<std::wstring> ids(const UnitDatabase::ProvenanceList& list) {
  std::vector<std::wstring> out;
  for (const UnitProvenance& p : list) out.push_back(p.getProvenanceID());
  return out;
}

std::vector<std::wstring> names(const UnitDatabase::UnitList& list) {
  std::vector<std::wstring> out;
  for (const UnitBase& u : list) out.push_back(u.getName());
  return out;
}

TEST(UnitProvenanceValue, FieldsInOrderAndCopies) {
  const UnitProvenance p(L"SI", L"The SI", L"Brochure", L"BIPM", L"Bureau International", {L"u1", L"u2"}, L"9th", 2019);
  EXPECT_EQ(p.getProvenanceID(), L"SI");
  EXPECT_EQ(p.getTitle(), L"The SI");
  EXPECT_EQ(p.getSubtitle(), L"Brochure");
  EXPECT_EQ(p.getOrganization(), L"BIPM");
  EXPECT_EQ(p.getOrganizationFullName(), L"Bureau International");
  EXPECT_EQ(p.getURLs(), (std::vector<std::wstring>{L"u1", L"u2"}));
  EXPECT_EQ(p.getEdition(), L"9th");
  EXPECT_EQ(p.getYear(), 2019);
  UnitProvenance q = p;
  EXPECT_EQ(q.getTitle(), p.getTitle());
}

class Provenances : public CatalogueTest {};

TEST_F(Provenances, AddedTwiceKeepsTheFirst) {
  db->addUnitProvenance(provenance(L"NIST", L"first"));
  db->addUnitProvenance(provenance(L"NIST", L"second"));
  ASSERT_EQ(db->getUnitProvenance(L"NIST").size(), 1u);
  EXPECT_EQ(db->getUnitProvenance(L"NIST")[0].get().getTitle(), L"first");
  EXPECT_TRUE(db->getUnitProvenance(L"nobody").empty());
  EXPECT_EQ(db->getAllUnitProvenances().size(), 1u);
}

TEST_F(Provenances, UnitWithoutPairsNeedsUnknown) {
  const UnitBase& metre = qltest::storedUnit(L"metre");
  UnitDatabase::ProvenanceList out;
  try {
    db->appendProvenancesForUnit(metre, out);
    FAIL() << "no throw";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "invalid unordered_map<K, T> key");
  }
  EXPECT_TRUE(out.empty());
  db->addUnitProvenance(provenance(L"Unknown"));
  db->appendProvenancesForUnit(metre, out);
  EXPECT_EQ(ids(out), std::vector<std::wstring>{L"Unknown"});
}

TEST_F(Provenances, RelationSearchedFromBothSides) {
  db->addUnitProvenance(provenance(L"SI"));
  db->addUnitProvenance(provenance(L"NIST"));
  db->addUnitProvenance(provenance(L"Unknown"));
  db->addUnitProvenanceMapping(L"m", L"SI");
  db->addUnitProvenanceMapping(L"m", L"NIST");
  db->addUnitProvenanceMapping(L"m", L"NIST");  // kept once
  db->addUnitProvenanceMapping(L"s", L"SI");
  db->addUnitProvenanceMapping(L"ghost", L"SI");  // a symbol of no unit

  UnitDatabase::ProvenanceList out;
  db->appendProvenancesForUnit(qltest::storedUnit(L"metre"), out);
  EXPECT_EQ(ids(out), (std::vector<std::wstring>{L"SI", L"NIST"}));  // in order of entry

  UnitBase::UnitSet units;
  db->appendUnitsForProvenance(db->getUnitProvenance(L"SI")[0], units);
  std::vector<std::wstring> found;
  for (const UnitBase& u : units) found.push_back(u.getName());
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, (std::vector<std::wstring>{L"metre", L"second"}));

  UnitBase::UnitSet none;
  db->appendUnitsForProvenance(db->getUnitProvenance(L"Unknown")[0], none);
  ASSERT_EQ(none.size(), 1u);
  EXPECT_EQ(&none.begin()->get(), static_cast<const UnitBase*>(&UnitFactory::getDummyUnit()));
}

TEST_F(Provenances, ClearAllEmptiesRelationAndProvenances) {
  db->addUnitProvenance(provenance(L"SI"));
  db->addUnitProvenanceMapping(L"m", L"SI");
  db->clearAll();
  db = UnitDatabase::getUnitDatabase();
  EXPECT_TRUE(db->getAllUnitProvenances().empty());
  db->addUnitProvenance(provenance(L"Unknown"));
  UnitDatabase::ProvenanceList out;
  db->appendProvenancesForUnit(qltest::storedUnit(L"metre"), out);
  EXPECT_EQ(ids(out), std::vector<std::wstring>{L"Unknown"});
}

class Whitelist : public CatalogueTest {
 protected:
  void add(const std::wstring& expr) { db->addWhitelistedUnits(*qltest::composeUnit(expr)); }
  std::vector<std::wstring> query(const std::vector<std::wstring>& words) {
    UnitDatabase::UnitList out;
    db->getWhitelistedUnits(out, words);
    return names(out);
  }
};

TEST_F(Whitelist, CountsBothOrdersAndOrdersByWeight) {
  add(L"m/s");
  add(L"kg*m/s^2");
  add(L"K/m");
  add(L"m^3");  // one fundamental term: nothing
  EXPECT_TRUE(query({}).empty());
  // Partners of m: K 1, kg 1, s 2; ties in order of entry (symbol order).
  EXPECT_EQ(query({L"m"}), (std::vector<std::wstring>{L"kelvin", L"kilogram", L"second"}));
  // s adds kg 1 (now 2, re-entered after s) and m 2.
  EXPECT_EQ(query({L"m", L"s"}), (std::vector<std::wstring>{L"kelvin", L"second", L"kilogram", L"metre"}));
  EXPECT_EQ(query({L"K"}), (std::vector<std::wstring>{L"metre"}));
  EXPECT_TRUE(query({L"cd"}).empty());
}

TEST_F(Whitelist, ClearAllEmptiesIt) {
  add(L"m/s");
  db->clearAll();
  db = UnitDatabase::getUnitDatabase();
  EXPECT_TRUE(query({L"m"}).empty());
}

// The reference: counts in a map, the collection a vector re-sorted stably by weight.
struct ReferenceWhitelist {
  std::map<std::pair<std::wstring, std::wstring>, long long> counts;
  std::map<std::wstring, std::vector<std::wstring>> partners;
  void add(const std::vector<std::wstring>& symbols) {
    for (const auto& a : symbols)
      for (const auto& b : symbols) {
        if (a == b) continue;
        if (counts[{a, b}]++ == 0) partners[a].push_back(b);
      }
  }
  std::vector<std::wstring> query(const std::vector<std::wstring>& words) const {
    std::vector<std::pair<std::wstring, long long>> c;
    for (const auto& w : words) {
      auto it = partners.find(w);
      if (it == partners.end()) continue;
      std::vector<std::wstring> ps = it->second;
      std::sort(ps.begin(), ps.end());
      for (const auto& p : ps) {
        long long weight = counts.at({w, p});
        auto old = std::find_if(c.begin(), c.end(), [&](const auto& e) { return e.first == p; });
        if (old != c.end()) {
          weight += old->second;
          c.erase(old);
        }
        c.emplace_back(p, weight);
      }
    }
    std::stable_sort(c.begin(), c.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    std::vector<std::wstring> out;
    for (const auto& e : c) out.push_back(e.first);
    return out;
  }
};

TEST_F(Whitelist, MatchesReferenceOnRandomUnits) {
  const std::vector<std::pair<std::wstring, std::vector<std::wstring>>> pool = {
      {L"m/s", {L"m", L"s"}}, {L"kg*m/s^2", {L"kg", L"m", L"s"}}, {L"K/m", {L"K", L"m"}}, {L"kg/s", {L"kg", L"s"}},
      {L"K*s", {L"K", L"s"}}, {L"m*K*kg", {L"K", L"kg", L"m"}},   {L"m^2", {L"m"}},       {L"s^-1", {L"s"}},
  };
  const std::vector<std::wstring> symbols = {L"m", L"s", L"kg", L"K"};
  const std::map<std::wstring, std::wstring> nameOf = {
      {L"m", L"metre"}, {L"s", L"second"}, {L"kg", L"kilogram"}, {L"K", L"kelvin"}};
  std::mt19937 rng(7);
  ReferenceWhitelist ref;
  for (int round = 0; round < 60; ++round) {
    const auto& pick = pool[rng() % pool.size()];
    add(pick.first);
    ref.add(pick.second);
    std::vector<std::wstring> words;
    for (std::size_t n = rng() % 4; n > 0; --n) words.push_back(symbols[rng() % symbols.size()]);
    std::vector<std::wstring> expected;
    for (const auto& s : ref.query(words)) expected.push_back(nameOf.at(s));
    ASSERT_EQ(query(words), expected) << "round " << round;
  }
}

class UnitSystemsCompatibility : public CatalogueTest {};

TEST_F(UnitSystemsCompatibility, CatalogueUnitsExpressionsAndAbstractUnits) {
  UnitSystem* si = db->getUnitSystem(L"SI");
  UnitSystem* us = db->getUnitSystem(L"USCustomary");
  const Unit& span = qltest::addUnit(L"span", L"span", L"span", L"m",
                                     ConversionFactorFactory::createConversionFactor(2286, 1, -4), L"length", {}, {});
  const std::vector<UnitSystem*> none, siOnly{si}, usOnly{us}, both{us, si};
  const UnitBase& metre = qltest::storedUnit(L"metre");
  EXPECT_TRUE(metre.isUnitCompatibleWithUnitSystems(siOnly));
  EXPECT_TRUE(metre.isUnitCompatibleWithUnitSystems(both));
  EXPECT_FALSE(metre.isUnitCompatibleWithUnitSystems(usOnly));
  EXPECT_FALSE(metre.isUnitCompatibleWithUnitSystems(none));
  EXPECT_TRUE(span.isUnitCompatibleWithUnitSystems(none));
  EXPECT_TRUE(span.isUnitCompatibleWithUnitSystems(usOnly));
  EXPECT_TRUE(qltest::storedAbstract(L"length").isUnitCompatibleWithUnitSystems(none));
  EXPECT_TRUE(qltest::composeUnit(L"m/s")->isUnitCompatibleWithUnitSystems(siOnly));
  // "s" resolves to the fundamental second, which has no systems; minute is SI.
  EXPECT_TRUE(qltest::composeUnit(L"ft/s")->isUnitCompatibleWithUnitSystems(usOnly));
  EXPECT_FALSE(qltest::composeUnit(L"ft/min")->isUnitCompatibleWithUnitSystems(usOnly));
  EXPECT_FALSE(qltest::composeUnit(L"ft/min")->isUnitCompatibleWithUnitSystems(siOnly));
  EXPECT_TRUE(qltest::composeUnit(L"ft/min")->isUnitCompatibleWithUnitSystems(both));
  EXPECT_TRUE(qltest::composeUnit(L"span/span")->isUnitCompatibleWithUnitSystems(none));
}

}  // namespace
