// The fundamental units: their table, their self-referencing maps, the matching functions, and that they
// outlive clearAll.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/Unit.hpp"

namespace {

using namespace QLTypeSys;

class Fundamentals : public ::testing::Test {
 protected:
  // An empty loader: the fundamental units alone, without the shipped package.
  void SetUp() override {
    previous_ = UnitDatabase::setLoader(nullptr);
    UnitDatabase::getUnitDatabase()->clearAll();
    db = UnitDatabase::getUnitDatabase();
  }
  void TearDown() override {
    db->clearAll();
    UnitDatabase::setLoader(previous_);
  }
  UnitDatabase* db = nullptr;

 private:
  UnitDatabase::Loader previous_;
};

const UnitBase& one(const UnitBase::UnitSet& set) {
  EXPECT_EQ(set.size(), 1u);
  return set.begin()->get();
}

struct Row {
  const wchar_t *abstractName, *abstractSymbol, *abstractAscii, *unitName, *unitSymbol;
};

TEST_F(Fundamentals, TableAndSelfMaps) {
  const Row rows[] = {{L"mass", L"M", L"M", L"Kilogram", L"kg"},
                      {L"length", L"L", L"L", L"Metres", L"m"},
                      {L"time", L"T", L"T", L"Seconds", L"s"},
                      {L"electric_current", L"I", L"I", L"Amperes", L"A"},
                      {L"thermodynamic_temperature", L"\u00CE\u02DC", L"Temp", L"Kelvin", L"K"},
                      {L"amount_of_substance", L"N", L"N", L"Moles", L"mol"},
                      {L"luminous_intensity", L"J", L"J", L"Candela", L"cd"},
                      {L"memory", L"memory", L"memory", L"bits", L"b"}};
  std::set<std::wstring> abstractSymbols, unitSymbols;
  for (const Row& r : rows) {
    UnitBase::UnitSet a, byAscii, u;
    db->addMatchingFundamentalAbstractUnitToList(r.abstractName, a);
    db->addMatchingFundamentalAbstractUnitToList(r.abstractAscii, byAscii);
    db->addMatchingFundamentalUnitToList(r.unitName, u);
    const UnitBase& abstract = one(a);
    EXPECT_EQ(&abstract, &one(byAscii));
    EXPECT_EQ(abstract.getSymbol(), r.abstractSymbol);
    EXPECT_EQ(abstract.getUnitType(), 2);
    EXPECT_EQ(abstract.getId(), -10);
    const auto& unit = dynamic_cast<const Unit&>(one(u));
    EXPECT_EQ(unit.getSymbol(), r.unitSymbol);
    EXPECT_EQ(&unit.getAbstractUnit(), &abstract);
    EXPECT_EQ(unit.getConversionFactor(), ConversionFactor::unity);
    EXPECT_TRUE(unit.getPrefixes().empty());
    for (const UnitBase* x : {&abstract, static_cast<const UnitBase*>(&unit)}) {
      ASSERT_EQ(x->getUnitsInfo().size(), 1u);
      EXPECT_EQ(&x->getUnitsInfo().begin()->first.get(), x);
      EXPECT_EQ(x->getUnitsInfo().begin()->second, Exponent::one);
      ASSERT_EQ(x->getFundamentalUnitsExprAST().size(), 1u);
      EXPECT_EQ(&x->getFundamentalUnitsExprAST().begin()->first.get(), x);
    }
    abstractSymbols.insert(r.abstractSymbol);
    unitSymbols.insert(r.unitSymbol);
  }
  // The i-th symbols follow the order of compare and cover the table; past the end is the empty text.
  std::set<std::wstring> seenA, seenU;
  for (unsigned i = 0; i < 8; ++i) {
    seenA.insert(db->getFundamentalAbstractUnitSymbol(i));
    seenU.insert(db->getFundamentalUnitSymbol(i));
  }
  EXPECT_EQ(seenA, abstractSymbols);
  EXPECT_EQ(seenU, unitSymbols);
  EXPECT_EQ(db->getFundamentalUnitSymbol(0), L"A");  // "Amperes" is the least name
  EXPECT_EQ(db->getFundamentalUnitSymbol(8), L"");
  EXPECT_EQ(db->getFundamentalAbstractUnitSymbol(1000), L"");
}

TEST_F(Fundamentals, UnitfreeHoldsEveryAbstractUnitAtZero) {
  UnitBase::UnitSet set;
  db->addMatchingFundamentalAbstractUnitToList(L"unitfree", set);
  const UnitBase& unitfree = one(set);
  EXPECT_EQ(unitfree.getExpr(), L"Unitfree");
  EXPECT_EQ(unitfree.getUnitsInfo().size(), 8u);
  for (const auto& entry : unitfree.getFundamentalUnitsExprAST()) EXPECT_EQ(entry.second, Exponent::zero);
  UnitBase::UnitSet none;
  db->addMatchingFundamentalUnitToList(L"unitfree", none);
  EXPECT_TRUE(none.empty());
}

TEST_F(Fundamentals, MatchingWithAnEmptyCatalogue) {
  EXPECT_TRUE(db->getUnit(L"kg").empty());
  UnitBase::UnitSet a, b, c;
  db->addMatchingFundamentalUnitToList(L"kg", a);
  db->addMatchingFundamentalUnitToList(L"Kilogram", b);
  db->addMatchingFundamentalUnitToList(L"kilogram", c);  // exact, case-sensitive
  EXPECT_EQ(&one(a), &one(b));
  EXPECT_TRUE(c.empty());
  const UnitBase* before = &one(a);
  db->clearAll();
  UnitBase::UnitSet after;
  UnitDatabase::getUnitDatabase()->addMatchingFundamentalUnitToList(L"kg", after);
  EXPECT_EQ(&one(after), before);
  EXPECT_EQ(one(after).getFundamentalSymbol(7), L"b");  // "bits" sorts after the capitalised names
}

}  // namespace
