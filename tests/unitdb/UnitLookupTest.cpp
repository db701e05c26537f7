// Lookups in the unit database: stored names and symbols, prefixed readings through the longest stored
// prefix (names with names, symbols with symbols), composites made once, and filtering by abstract unit.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;

// The names and symbols of a result, sorted, as "name|symbol" (a composite and a stored unit may share a name).
std::vector<std::wstring> readings(const UnitBase::UnitSet& set) {
  std::vector<std::wstring> out;
  for (const UnitBase& u : set) out.push_back(u.getName() + L"|" + u.getSymbol() + (u.isPrefixedUnit() ? L"*" : L""));
  std::sort(out.begin(), out.end());
  return out;
}

struct LookupCase {
  const wchar_t* text;
  std::vector<std::wstring> expected;  // "name|symbol", "*" marks a composite
};

class Lookups : public CatalogueTest, public ::testing::WithParamInterface<LookupCase> {};

TEST_P(Lookups, ReadingsOfText) {
  EXPECT_EQ(readings(db->getUnit(GetParam().text)), GetParam().expected) << std::wstring(GetParam().text).size();
}

INSTANTIATE_TEST_SUITE_P(
    Catalogue, Lookups,
    ::testing::Values(
        LookupCase{L"m", {L"metre|m"}},  // "m" is also milli, but all of it is the prefix: no reading
        LookupCase{L"metre", {L"metre|m"}}, LookupCase{L"km", {L"kilometre|km*"}},
        LookupCase{L"kilometre", {L"kilometre|km*"}}, LookupCase{L"kilom", {}},  // a prefix name with a unit symbol
        LookupCase{L"kmetre", {}},                                               // a prefix symbol with a unit name
        LookupCase{L"kg", {L"kilogram|kg", L"kilogram|kg*"}},                    // stored, and kilo applied to gram
        LookupCase{L"mg", {L"milligram|mg*"}}, LookupCase{L"um", {L"micrometre|\u00B5m*"}},
        LookupCase{L"\u00B5m", {L"micrometre|\u00B5m*"}}, LookupCase{L"\u03BCm", {L"micrometre|\u03BCm*"}},
        LookupCase{L"dam", {L"decametre|dam*"}}, LookupCase{L"dm", {L"decimetre|dm*"}},
        LookupCase{L"daa", {L"decaare|daa*"}}, LookupCase{L"ha", {L"hectoare|ha*"}},
        LookupCase{L"da", {}},  // all of it walked: no candidate is shorter than the text
        LookupCase{L"kh", {}}, LookupCase{L"mmin", {}}, LookupCase{L"kkg", {}},  // units that refuse the prefix
        LookupCase{L"ks", {}}, LookupCase{L"ms", {L"millisecond|ms*"}}, LookupCase{L"min", {L"minute|min"}},
        LookupCase{L"mL", {L"millilitre|mL*"}}, LookupCase{L"liter", {L"liter|L"}}, LookupCase{L"", {}},
        LookupCase{L"kN", {L"kilonewton|kN*"}}, LookupCase{L"Mm", {}}, LookupCase{L"Kilogram", {}},
        LookupCase{L"furlong", {}}, LookupCase{L"KM", {}}, LookupCase{L"k", {}}));

TEST_F(CatalogueTest, CompositeIsMadeOnceAndReturnedAsTheSameObject) {
  const UnitBase* first = nullptr;
  for (const UnitBase& u : db->getUnit(L"km")) first = &u;
  ASSERT_NE(first, nullptr);
  for (int i = 0; i < 3; ++i) {
    const UnitBase::UnitSet again = db->getUnit(i % 2 ? L"km" : L"kilometre");
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(&again.begin()->get(), first);
  }
  const auto& composite = dynamic_cast<const CompositeUnit&>(*first);
  EXPECT_EQ(composite.getBaseUnit().getName(), L"metre");
  EXPECT_EQ(composite.getPrefix().getName(), L"kilo");
  EXPECT_FALSE(composite.isPrefixOnly());
  EXPECT_EQ(composite.getExpr(), L"m");
  EXPECT_EQ(composite.getAbstractUnit().getName(), L"length");
  EXPECT_TRUE(composite.getPrefixes().empty());
  EXPECT_EQ(db->getNumUnits(), static_cast<unsigned>(db->getAllUnits().size()));  // composites are in no index
}

TEST_F(CatalogueTest, OnlyTheLongestStoredPrefixIsTried) {
  // A unit that only the shorter split "d" + "am" would find; the longer "da" + "m" wins alone.
  qltest::addUnit(L"testAm", L"am", L"am", L"m", ConversionFactor::unity, L"length", {L"d"});
  EXPECT_EQ(readings(db->getUnit(L"dam")), (std::vector<std::wstring>{L"decametre|dam*"}));
  EXPECT_EQ(readings(db->getUnit(L"dam", qltest::storedAbstract(L"time"))), std::vector<std::wstring>{});
}

TEST_F(CatalogueTest, FilterByAbstractUnit) {
  EXPECT_EQ(db->getUnit(L"kg", qltest::storedAbstract(L"mass")).size(), 2u);
  EXPECT_TRUE(db->getUnit(L"kg", qltest::storedAbstract(L"length")).empty());
  EXPECT_EQ(db->getUnit(L"kg", UnitFactory::getDefaultAbstractUnit()).size(), 2u);
}

TEST_F(CatalogueTest, AbstractUnitsAndPrefixesByNameAndSymbol) {
  EXPECT_EQ(db->getAbstractUnit(L"length").size(), 1u);
  EXPECT_EQ(db->getAbstractUnit(L"L").size(), 1u);
  EXPECT_TRUE(db->getAbstractUnit(L"km").empty());
  EXPECT_TRUE(db->getAbstractUnit(L"Length").empty());  // the fundamental ones are in no index
  EXPECT_EQ(db->getUnitPrefix(L"kilo").size(), 1u);
  EXPECT_EQ(db->getUnitPrefix(L"u").begin()->get().getName(), L"micro");
  const UnitPrefix::PrefixSet mu = db->getUnitPrefix(L"\u03BC");
  ASSERT_EQ(mu.size(), 1u);
  EXPECT_TRUE(mu.begin()->get().isAliased());
  EXPECT_EQ(mu.begin()->get().getName(), L"micro");  // inherited, so not entered by name
  EXPECT_EQ(db->getUnitPrefix(L"micro").size(), 1u);
  EXPECT_TRUE(db->getUnitPrefix(L"").empty());
}

TEST_F(CatalogueTest, AliasSharesItsTargetsResolution) {
  const UnitBase::UnitSet liter = db->getUnit(L"liter");
  ASSERT_EQ(liter.size(), 1u);
  const auto& alias = dynamic_cast<const UnitAlias&>(liter.begin()->get());
  EXPECT_TRUE(alias.isAliased());
  EXPECT_EQ(alias.getId(), 0);
  EXPECT_TRUE(alias.isSymbolInherited());
  EXPECT_FALSE(alias.isNameInherited());
  EXPECT_EQ(&alias.getFundamentalUnitsExprAST(), &alias.getAliasedUnit().getFundamentalUnitsExprAST());
  EXPECT_EQ(alias.getInternalBaseConversionFactor(), alias.getAliasedUnit().getInternalBaseConversionFactor());
  EXPECT_EQ(readings(db->getUnit(L"L")), std::vector<std::wstring>{L"litre|L"});  // the inherited symbol is litre's
  EXPECT_EQ(readings(db->getUnit(L"mliter")), std::vector<std::wstring>{});       // name prefix, aliased prefixes
  EXPECT_EQ(readings(db->getUnit(L"milliliter")), std::vector<std::wstring>{L"milliliter|mL*"});
}

TEST_F(CatalogueTest, LongTextsDoNotRecurse) {
  const std::wstring longText(200000, L'k');
  EXPECT_TRUE(db->getUnit(longText).empty());
  EXPECT_TRUE(db->getUnit(L"k" + std::wstring(100000, L'm')).empty());
}

}  // namespace
