// The unit table: the road of one request, built-ins, registration and its failures (the table and the
// whitelist exactly as before, also when memory runs out at any allocation), text forms, comparison by id,
// resetToBuiltin and robustness against client ids and texts.
#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitTable.hpp"
#include "support/AllocationFailure.hpp"
#include "support/ExpectRaises.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;

// Everything a client can observe of a table and of the catalogue's whitelist.
std::wstring snapshot(const UnitTable& t) {
  std::wostringstream out;
  out << t.getNumUnits() << L"|";
  for (int id = -2; id < 40; ++id) {
    if (!t.isUnitIdValid(id)) continue;
    out << id << L":" << t.getUserSpecifiedUnitExpr(id) << L":" << t.getUnitNameExpr(id) << L":"
        << t.getUnitSymbolExpr(id) << L";";
  }
  UnitDatabase::UnitList white;
  UnitDatabase::getUnitDatabase()->getWhitelistedUnits(white, {L"m", L"s", L"kg", L"K"});
  for (const UnitBase& u : white) out << u.getName() << L",";
  return out.str();
}

class UnitTableTest : public CatalogueTest {};

TEST_F(UnitTableTest, NewTableHasItsBuiltIns) {
  UnitTable t;
  EXPECT_EQ(t.getNumUnits(), 2);
  EXPECT_EQ(t.getUnitId(L"inherit"), -1);
  EXPECT_EQ(t.getUnitId(L"unitless"), 0);
  EXPECT_EQ(t.getUnitId(L"m"), -10);
  EXPECT_EQ(UnitTable::getNumBaseUnits(), 1);
  EXPECT_EQ(t.getUnit(-1)->getName(), L"inherit");
  EXPECT_EQ(t.getUnit(-1)->getAsciiSymbol(), L"");
  EXPECT_EQ(t.getUnit(0)->getName(), L"unitless");
  EXPECT_EQ(t.registerUnit(L"m"), 1);
  EXPECT_TRUE(t.isUnitIdValid_NotInherit(0));
  EXPECT_FALSE(t.isUnitIdValid_NotInherit(-1));
  EXPECT_EQ(t.registerUnit(L"inherit"), -1);
  EXPECT_EQ(t.registerUnit(L"unitless"), 0);
}

TEST_F(UnitTableTest, RoadOfOneRequest) {
  UnitTable t;
  // Step 1: the split.
  std::wstring unitText, abstractText;
  EXPECT_TRUE(splitUnitExpr(L"km/h", unitText, abstractText));
  EXPECT_EQ(unitText, L"km/h");
  EXPECT_EQ(abstractText, L"");
  // Step 2: the terms are known; "km" is a prefixed reading made on demand.
  EXPECT_TRUE(UnitBase::isValidUnitExpr(L"km/h"));
  const UnitBase::UnitSet km = db->getUnit(L"km");
  ASSERT_EQ(km.size(), 1u);
  EXPECT_TRUE(km.begin()->get().isPrefixedUnit());
  // Step 3: the whole text is no catalogue unit, so it is composed with its four text forms.
  EXPECT_TRUE(db->getUnit(L"km/h").empty());
  EXPECT_EQ(UnitTable::composeUnitTexts(L"km/h", UnitTable::NameText), L"kilometre/hour");
  const int id = t.registerUnit(L"km/h");
  EXPECT_EQ(id, 1);
  const UnitBase& u = *t.getUnit(id);
  EXPECT_EQ(u.getExpr(), L"km/h");
  EXPECT_EQ(t.getUnitNameExpr(id), L"kilometre/hour");
  EXPECT_EQ(t.getUnitSymbolExpr(id), L"km/h");
  EXPECT_EQ(t.getUnitAsciiSymbolExpr(id), L"km/h");
  EXPECT_EQ(t.getUnitDispExpr(id), L"kilometre/hour");
  // Step 4: resolved to fundamental units with the exact factor 1000/3600.
  EXPECT_EQ(u.getFundamentalUnitsExprAST().size(), 2u);
  EXPECT_DOUBLE_EQ(u.getInternalBaseConversionFactor().toDouble(), 1000.0 / 3600.0);
  // Step 5: the whitelist saw metre and second together.
  UnitDatabase::UnitList white;
  db->getWhitelistedUnits(white, {L"m"});
  ASSERT_EQ(white.size(), 1u);
  EXPECT_EQ(white[0].get().getName(), L"second");
  EXPECT_EQ(t.getUserSpecifiedUnitExpr(id), L"km/h");
  // Step 6: compared with m/s, and converted.
  const int ms = t.registerUnit(L"m/s");
  EXPECT_EQ(t.equivalentUnits(id, ms), ScalingFactorsDiffer);
  EXPECT_NE(UnitTable::errorCause(t.equivalentUnits(id, ms)), nullptr);
  const UnitNumericInfoForConversions info = t.getConversionInfo(id, ms);
  EXPECT_DOUBLE_EQ(info.getScalingFactor(), 1.0 / 3.6);
  EXPECT_EQ(info.getOffset(), 0.0);
  EXPECT_EQ(t.equivalentUnits(ms, t.registerUnit(L"s^-1*m")), UnitsEquivalent);
}

TEST_F(UnitTableTest, CatalogueUnitsAreClonedAnnotatedOnesMarked) {
  UnitTable t;
  const int m = t.registerUnit(L"m");
  EXPECT_EQ(t.getUnit(m)->getName(), L"metre");
  EXPECT_NE(t.getUnit(m), static_cast<const UnitBase*>(&qltest::storedUnit(L"metre")));
  const int ml = t.registerUnit(L"m@length");
  EXPECT_NE(ml, m);
  EXPECT_EQ(t.getUnitNameExpr(ml), L"metre@length");
  EXPECT_EQ(t.getUnitSymbolExpr(ml), L"m@L");
  EXPECT_EQ(t.getUnitNameExpr(m), L"metre");
  const int fe = t.registerUnit(L"kmpl@fuelEconomy");
  EXPECT_EQ(t.getUnitDispExpr(fe), L"kilometrePerLitre<fuelEconomy>");
  // The abstract text "unitless" passes though no such abstract unit exists.
  EXPECT_GT(t.registerUnit(L"m@unitless"), 0);
  // White space: the unit text stops there, the whole text is the key.
  const int spaced = t.registerUnit(L"m s");
  EXPECT_EQ(t.getUserSpecifiedUnitExpr(spaced), L"m s");
  EXPECT_EQ(t.getUnit(spaced)->getName(), L"metre");
}

TEST_F(UnitTableTest, UnderscoresInAbstractDisplayAreEscaped) {
  qltest::addAbstract(L"fuel_rate", L"FR", L"volume/time");
  UnitTable t;
  const int id = t.registerUnit(L"L/s@fuel_rate");
  EXPECT_EQ(t.getUnitDispExpr(id), L"litre/second<fuel\\_rate>");
}

struct Failure {
  const wchar_t* expr;
  const char* key;
  std::vector<std::string> args;
};

class RegisterFailures : public CatalogueTest, public ::testing::WithParamInterface<Failure> {};

TEST_P(RegisterFailures, RaiseAndLeaveTableAndWhitelistAsBefore) {
  UnitTable t;
  t.registerUnit(L"km/h");
  t.registerUnit(L"m@length");
  const std::wstring before = snapshot(t);
  EXPECT_RAISES(t.registerUnit(GetParam().expr), "QuillonTypes:Unit", GetParam().key, GetParam().args);
  EXPECT_EQ(snapshot(t), before);
  EXPECT_EQ(t.registerUnit(L"N"), 3);  // the next id did not move
  int id = 77;
  qlsvDiagnostic d = UnitTable::RegisterUnit(&t, "blk/Gain", GetParam().expr, &id);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(id, 77);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RegisterFailures,
    ::testing::Values(Failure{L"", "InvalidUnitExpression", {""}}, Failure{L"m/", "InvalidUnitExpression", {"m/"}},
                      Failure{L"furlong", "InvalidUnitExpression", {"furlong"}},
                      Failure{L"m@nothing", "AbstractUnitNotInDatabase", {"nothing"}},
                      Failure{L"m*s@length", "DimensionallyInconsistent", {"length", "metre*second"}},
                      Failure{L"((((m", "InvalidUnitExpression", {"((((m"}}));

TEST_F(UnitTableTest, RegisterUnitJoinsBlockText) {
  UnitTable t;
  int id = 5;
  qlsvDiagnostic d = UnitTable::RegisterUnit(&t, "model/Gain", L"zz", &id);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(id, 5);
  EXPECT_EQ(UnitTable::RegisterUnit(&t, "", L"m", &id), nullptr);
  EXPECT_EQ(id, 1);
}

TEST_F(UnitTableTest, AllocationFailureAnywhereLeavesTableAsBefore) {
  UnitTable t;
  t.registerUnit(L"m@length");
  const std::wstring before = snapshot(t);
  int id = 0;
  const int allocations = qltest::forEveryAllocationFailure([&] { id = t.registerUnit(L"kg*km/h^2"); },
                                                            [&] { EXPECT_EQ(snapshot(t), before); });
  EXPECT_GT(allocations, 0);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(t.getNumUnits(), 4);
}

TEST_F(UnitTableTest, RepeatsShareOneIdAndResetRestartsIds) {
  UnitTable t;
  EXPECT_EQ(t.registerUnit(L"km/h"), 1);
  EXPECT_EQ(t.registerUnit(L"km/h"), 1);
  EXPECT_EQ(t.registerUnit("m/s"), 2);
  EXPECT_EQ(t.getNumUnits(), 4);
  const int annotated = t.registerUnit(L"m@length");
  t.resetToBuiltin();
  EXPECT_EQ(t.getNumUnits(), 2);
  EXPECT_EQ(t.getUnitId(L"km/h"), -10);
  EXPECT_EQ(t.getUnitId(L"unitless"), 0);
  EXPECT_EQ(t.registerUnit(L"km/h"), 1);
  EXPECT_EQ(t.registerUnit(L"s"), 2);
  // kept: an id that repeats an annotated one inherits the mark.
  EXPECT_EQ(t.registerUnit(L"m"), annotated);
  EXPECT_EQ(t.getUnitNameExpr(annotated), L"metre@length");
}

TEST_F(UnitTableTest, EquivalentUnitsByIdRules) {
  UnitTable t;
  const int m = t.registerUnit(L"m");
  const int ft = t.registerUnit(L"ft");
  const int s = t.registerUnit(L"s");
  EXPECT_EQ(t.equivalentUnits(-1, 5), InheritInvolved);
  EXPECT_EQ(t.equivalentUnits(0, -1), UnitlessInvolved);
  EXPECT_EQ(t.equivalentUnits(3, 3), UnitsEquivalent);
  EXPECT_EQ(t.equivalentUnits(1234, 1234), UnitsEquivalent);
  EXPECT_EQ(t.equivalentUnits(m, ft), ScalingFactorsDiffer);
  EXPECT_EQ(t.equivalentUnits(m, s), UnitsIncompatible);  // length against time
  EXPECT_EQ(t.equivalentUnits(t.registerUnit(L"m*s"), t.registerUnit(L"m/s")), DimensionsDiffer);
  EXPECT_RAISES(t.equivalentUnits(m, 99), "QuillonTypes:Unit", "InvalidUnitId", {"99"});
  EXPECT_DOUBLE_EQ(t.getConversionInfo(ft, m).getScalingFactor(), 0.3048);
  const int c = t.registerUnit(L"degC");
  const int k = t.registerUnit(L"K");
  EXPECT_DOUBLE_EQ(t.getConversionInfo(c, k).getOffset(), 273.15);
  EXPECT_RAISES(t.getConversionInfo(m, s), "QuillonTypes:Unit", "UnitsNotConvertible", {"m", "s", "m", "s"});
}

TEST(UnitTableStatics, ErrorCauseAndFixedAnswers) {
  const std::vector<std::pair<UnitComparison, const char*>> keys = {
      {UnitsIncompatible, "IncompatibleUnits"},
      {UnitlessInvolved, "UnitlessComparison"},
      {ScalingFactorsDiffer, "CanonicalScalingFactorDifference"},
      {DimensionsDiffer, "DimensionallyInequivalent"},
      {OffsetsDiffer, "DifferentOffsets"},
      {UnitsReciprocal, "ReciprocalUnits"}};
  for (const auto& k : keys) {
    qlsvDiagnostic d = UnitTable::errorCause(k.first);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->getKey(), k.second);
  }
  for (UnitComparison c : {UnitsEquivalent, AbstractUnitsDiffer, InheritInvolved})
    EXPECT_EQ(UnitTable::errorCause(c), nullptr);
  EXPECT_FALSE(UnitTable::isPredefinedUnit(0));
  EXPECT_FALSE(UnitTable::exprOfBaseUnit(L"m"));
  EXPECT_EQ(UnitTable::getBaseUnit(L"m"), -10);
  EXPECT_EQ(UnitTable::getExprOfBaseUnit(1), L"");
}

TEST_F(UnitTableTest, ValidityChecks) {
  EXPECT_TRUE(UnitTable::isAValidUnit(L"unitless"));
  EXPECT_FALSE(UnitTable::isAValidUnit(L"inherit"));
  EXPECT_TRUE(UnitTable::isAValidUnit(L"km/h"));
  EXPECT_RAISES(UnitTable::validateUnitExpr(L"qq"), "QuillonTypes:Unit", "InvalidUnitExpression", {"qq"});
  UnitTable t;
  EXPECT_RAISES(t.checkUnitId(INT_MAX), "QuillonTypes:Unit", "InvalidUnitId", {"2147483647"});
  t.checkUnitId(0);
}

TEST_F(UnitTableTest, ComposeKeepsNumbersAndUnknownPieces) {
  EXPECT_EQ(UnitTable::composeUnitTexts(L"(km*h)^2/zz", UnitTable::NameText), L"(kilometre*hour)^2/zz");
  EXPECT_EQ(UnitTable::composeUnitTexts(L"m^-1", UnitTable::AsciiText), L"m^-1");
  EXPECT_EQ(UnitTable::composeUnitTexts(L"\u00B5m", UnitTable::AsciiText), L"um");
  EXPECT_EQ(UnitTable::composeUnitTexts(L"", UnitTable::DisplayText), L"");
}

TEST_F(UnitTableTest, ClientIdsAndPointersCannotHurt) {
  UnitTable t;
  for (int id : {INT_MIN, -11, -10, 2, INT_MAX}) {
    EXPECT_EQ(t.getUnit(id), nullptr);
    EXPECT_FALSE(t.isUnitIdValid(id));
    EXPECT_EQ(t.getUserSpecifiedUnitExpr(id), L"");
    EXPECT_RAISES(t.getUnitNameExpr(id), "QuillonTypes:Unit", "InvalidUnitId", {std::to_string(id)});
  }
  t.removeUnit(nullptr);
  t.removeUnit(&qltest::storedUnit(L"metre"));  // not the table's: ignored
  EXPECT_EQ(t.getNumUnits(), 2);
  const int m = t.registerUnit(L"m@length");
  t.removeUnit(t.getUnit(m));
  EXPECT_EQ(t.getNumUnits(), 2);
  EXPECT_EQ(t.getUnitId(L"m@length"), -10);
  // A unit at the top of the id range: the next registration has no id left.
  auto top = UnitFactory::createUnit(INT_MAX, L"top", L"m", L"top", L"top", L"", ConversionFactor::unity, L"", {}, {},
                                     false, UnitFactory::getDefaultAbstractUnit());
  t.addUnit(L"top", top.release());
  EXPECT_RAISES(t.registerUnit(L"s"), "QuillonTypes:Unit", "InvalidUnitId", {"2147483648"});
  EXPECT_EQ(t.getNumUnits(), 3);
  auto dup = UnitFactory::createUnit(INT_MAX, L"dup", L"m", L"dup", L"dup", L"", ConversionFactor::unity, L"", {}, {},
                                     false, UnitFactory::getDefaultAbstractUnit());
  EXPECT_RAISES(t.addUnit(L"dup", dup.release()), "QuillonTypes:Unit", "InvalidUnitId", {"2147483647"});
  EXPECT_EQ(t.getUnitId(L"dup"), -10);
}

TEST_F(UnitTableTest, OddTexts) {
  UnitTable t;
  // A NUL ends the unit text as white space does; the whole text is the key.
  const int nul = t.registerUnit(std::wstring(L"m\0s", 3));
  EXPECT_EQ(t.getUserSpecifiedUnitExpr(nul), std::wstring(L"m\0s", 3));
  EXPECT_EQ(t.getUnit(nul)->getName(), L"metre");
  EXPECT_THROW(t.registerUnit(std::wstring(1, static_cast<wchar_t>(0xD800))), std::out_of_range);
  EXPECT_RAISES(t.registerUnit(std::wstring(5000, L'(') + L"m" + std::wstring(5000, L')')), "QuillonTypes:Unit",
                "InvalidUnitExpression", {std::string(5000, '(') + "m" + std::string(5000, ')')});
  std::wstring longProduct = L"m";
  for (int i = 0; i < 2000; ++i) longProduct += L"*m";
  const int id = t.registerUnit(longProduct);
  EXPECT_EQ(t.getUnit(id)->getFundamentalUnitsExprAST().begin()->second.getNet(), 2001);
  EXPECT_RAISES(t.registerUnit(static_cast<const char*>(nullptr)), "QuillonTypes:Unit", "InvalidUnitExpression", {""});
  EXPECT_EQ(t.getNumUnits(), 4);
}

TEST_F(UnitTableTest, PrintListsUnits) {
  UnitTable t;
  t.registerUnit(L"km/h");
  std::ostringstream out;
  t.print(out);
  EXPECT_EQ(out.str(), "UnitTable\nNumber of Units : 3\n\nUnit : 'inherit'\nUnit : 'unitless'\nUnit : 'km/h'\n\n");
}

}  // namespace
