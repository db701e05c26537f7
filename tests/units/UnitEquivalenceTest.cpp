// Equivalence and conversion: every UnitComparison value from a realistic pair, the weak net rule of
// exprMapsEqual, scale and offset between temperature scales, the reciprocal path, and conversions
// checked against an independent table of definitions.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "support/ExpectRaises.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;
using qltest::composeUnit;

struct PairCase {
  const wchar_t *a, *b;
  UnitComparison strict, net;
};

class Comparisons : public CatalogueTest, public ::testing::WithParamInterface<PairCase> {};

// Stored units where the text names one (their own abstract units apply), otherwise a composed expression.
std::unique_ptr<Unit> unitOf(const std::wstring& text) {
  const UnitBase::UnitSet found = UnitDatabase::getUnitDatabase()->getUnit(text);
  if (found.size() == 1) return std::unique_ptr<Unit>(static_cast<const Unit&>(found.begin()->get()).clone());
  return composeUnit(text);
}

TEST_P(Comparisons, StrictAndNet) {
  const PairCase& c = GetParam();
  auto a = unitOf(c.a), b = unitOf(c.b);
  EXPECT_EQ(UnitBase::equivalent(*a, *b, StrictExponents), c.strict);
  EXPECT_EQ(UnitBase::equivalent(*a, *b, NetExponents), c.net);
}

// Value 4, InheritInvolved, comes only from the unit table's equivalentUnits (the inherit id): not reachable here.
INSTANTIATE_TEST_SUITE_P(
    Catalogue, Comparisons,
    ::testing::Values(PairCase{L"km/h", L"km*h^-1", UnitsEquivalent, UnitsEquivalent},  // 0, exact factors agree
                      PairCase{L"m/s", L"m/s", UnitsEquivalent, UnitsEquivalent},
                      PairCase{L"liter", L"L", UnitsEquivalent, UnitsEquivalent},  // an alias and its unit
                      PairCase{L"m", L"s", UnitsIncompatible, UnitsIncompatible},  // 1: length against time
                      PairCase{L"km", L"s", UnitsIncompatible, UnitsIncompatible},
                      PairCase{L"km/h", L"m/s", ScalingFactorsDiffer, ScalingFactorsDiffer},  // 5
                      PairCase{L"km", L"m", ScalingFactorsDiffer, ScalingFactorsDiffer},      // prefixed vs base
                      PairCase{L"ft", L"in", ScalingFactorsDiffer, ScalingFactorsDiffer},
                      PairCase{L"degC", L"K", ScalingFactorsDiffer, ScalingFactorsDiffer},  // affine vs plain base
                      PairCase{L"degC", L"degF", ScalingFactorsDiffer, ScalingFactorsDiffer},
                      PairCase{L"%", L"m", DimensionsDiffer, DimensionsDiffer},  // 6: a ratio against a length
                      PairCase{L"m/s", L"m/s^2", DimensionsDiffer,
                               UnitsEquivalent},  // kept: net rule passes s^-1 vs s^-2
                      PairCase{L"m/s", L"s^2", DimensionsDiffer, DimensionsDiffer},
                      PairCase{L"m/s*m/m", L"m/s", DimensionsDiffer, UnitsEquivalent},  // counts (1, 1)
                      PairCase{L"kmpl", L"Lp100km", UnitsReciprocal, UnitsReciprocal},  // 8
                      PairCase{L"Lp100km", L"kmpl", UnitsReciprocal, UnitsReciprocal}));

TEST_F(CatalogueTest, UnitlessAndAbstractComparisons) {
  const Unit& unitless = UnitFactory::getDefaultUnit();
  auto m = composeUnit(L"m");
  EXPECT_EQ(UnitBase::equivalent(*m, unitless, StrictExponents), UnitlessInvolved);  // 3
  EXPECT_EQ(UnitBase::equivalent(unitless, *m, NetExponents), UnitlessInvolved);
  EXPECT_EQ(UnitBase::equivalent(*composeUnit(L"m/m"), unitless, NetExponents), UnitlessInvolved);
  const UnitBase& length = qltest::storedAbstract(L"length");
  const UnitBase& time = qltest::storedAbstract(L"time");
  EXPECT_EQ(UnitBase::equivalent(length, time, StrictExponents), AbstractUnitsDiffer);  // 2
  EXPECT_EQ(UnitBase::equivalent(length, length, StrictExponents), UnitsEquivalent);
  EXPECT_EQ(UnitBase::equivalent(length, UnitFactory::getDefaultAbstractUnit(), StrictExponents), UnitsEquivalent);
  EXPECT_EQ(UnitBase::equivalent(length, *m, StrictExponents), UnitsIncompatible);
  EXPECT_EQ(UnitBase::equivalent(qltest::storedAbstract(L"fuelEconomy"), qltest::storedUnit(L"litrePer100Kilometre"),
                                 StrictExponents),
            UnitsReciprocal);
  // Nameless abstract units fall back to their dimensions.
  auto speed = UnitFactory::createAbstractUnit(L"length/time");
  auto speed2 = UnitFactory::createAbstractUnit(L"velocity");
  auto accel = UnitFactory::createAbstractUnit(L"length/time^2");
  for (auto* a : {speed.get(), speed2.get(), accel.get()}) a->parseExpressionAndGenerateAST();
  EXPECT_EQ(UnitBase::equivalent(*speed, *speed2, StrictExponents), UnitsEquivalent);
  EXPECT_EQ(UnitBase::equivalent(*speed, *accel, StrictExponents), DimensionsDiffer);
  EXPECT_TRUE(UnitBase::compatible(*speed, length, StrictExponents));
  EXPECT_FALSE(UnitBase::compatible(*speed, *m, StrictExponents));
  EXPECT_TRUE(speed->getConversionInfo(*speed2, StrictExponents, false).isTrivial());
  EXPECT_RAISES(speed->getConversionInfo(*accel, StrictExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                {"", "", "", ""});
}

TEST_F(CatalogueTest, OffsetsDifferOnlyWhenTheBaseFactorsAgree) {
  // "degree centigrade", the old name of the Celsius scale, defined on it with factor 1: same base factor,
  // but its own factor has no offset.
  const UnitBase& temperature = qltest::storedAbstract(L"temperature");
  auto centigrade = UnitFactory::createUnit(-10, L"centigrade", L"degC", L"centigrade", L"centigrade", L"",
                                            ConversionFactor::unity, L"", {}, {}, false, temperature);
  centigrade->parseExpressionAndGenerateAST();
  const Unit& celsius = qltest::storedUnit(L"Celsius");
  EXPECT_EQ(centigrade->getInternalBaseConversionFactor(), celsius.getInternalBaseConversionFactor());
  EXPECT_EQ(UnitBase::equivalent(*centigrade, celsius, StrictExponents), OffsetsDiffer);  // 7
  EXPECT_EQ(UnitBase::equivalent(celsius, *centigrade, NetExponents), OffsetsDiffer);
}

TEST_F(CatalogueTest, WeakNetRuleOfExprMaps) {
  auto ms = composeUnit(L"m/s"), sm = composeUnit(L"s/m"), m2s = composeUnit(L"m^2/s"), mm = composeUnit(L"m/m*s");
  const auto& a = ms->getFundamentalUnitsExprAST();
  // kept: equal nets pass even for different units; the same unit with different nets passes too.
  EXPECT_TRUE(UnitBase::exprMapsEqual(a, sm->getFundamentalUnitsExprAST(), NetExponents));
  EXPECT_FALSE(UnitBase::exprMapsEqual(a, sm->getFundamentalUnitsExprAST(), StrictExponents));
  EXPECT_TRUE(UnitBase::exprMapsEqual(a, m2s->getFundamentalUnitsExprAST(), NetExponents));
  EXPECT_FALSE(UnitBase::exprMapsEqual(composeUnit(L"m")->getFundamentalUnitsExprAST(),
                                       composeUnit(L"s^2")->getFundamentalUnitsExprAST(), NetExponents));
  // Terms of net zero are skipped: "m/m*s" against "s".
  EXPECT_TRUE(UnitBase::exprMapsEqual(mm->getFundamentalUnitsExprAST(), composeUnit(L"s")->getFundamentalUnitsExprAST(),
                                      NetExponents));
  EXPECT_FALSE(UnitBase::exprMapsEqual(mm->getFundamentalUnitsExprAST(),
                                       composeUnit(L"s")->getFundamentalUnitsExprAST(), StrictExponents));
  UnitBase::ExprMap empty;
  EXPECT_TRUE(UnitBase::exprMapsEqual(empty, composeUnit(L"m/m")->getFundamentalUnitsExprAST(), NetExponents));
  EXPECT_FALSE(UnitBase::exprMapsEqual(empty, composeUnit(L"m/m")->getFundamentalUnitsExprAST(), StrictExponents));
}

// value_b = scale * value_a + offset, from an independent table of the definitions in SI base units.
struct Def {
  double scale, offset;
};
const std::map<std::wstring, Def>& reference() {
  static const std::map<std::wstring, Def> table = {{L"m", {1, 0}},
                                                    {L"km", {1000, 0}},
                                                    {L"in", {0.0254, 0}},
                                                    {L"ft", {0.3048, 0}},
                                                    {L"mi", {1609.344, 0}},
                                                    {L"km/h", {1 / 3.6, 0}},
                                                    {L"m/s", {1, 0}},
                                                    {L"mi/h", {0.44704, 0}},
                                                    {L"K", {1, 0}},
                                                    {L"degC", {1, 273.15}},
                                                    {L"degF", {5.0 / 9, 459.67 * 5 / 9}},
                                                    {L"mK", {0.001, 0}},
                                                    {L"L", {0.001, 0}},
                                                    {L"mL", {1e-6, 0}},
                                                    {L"g", {0.001, 0}},
                                                    {L"kg", {1, 0}}};
  return table;
}

TEST_F(CatalogueTest, ConversionsAgreeWithTheDefinitions) {
  for (const auto& [from, f] : reference()) {
    for (const auto& [to, t] : reference()) {
      auto a = composeUnit(from), b = composeUnit(to);
      if (!a->dimensionallyEquivalentWithUnit(*b, StrictExponents)) {
        EXPECT_RAISES(a->getConversionInfo(*b, StrictExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                      {ConvertUStringToStdString(from), ConvertUStringToStdString(to), ConvertUStringToStdString(from),
                       ConvertUStringToStdString(to)});
        continue;
      }
      const UnitNumericInfoForConversions info = a->getConversionInfo(*b, StrictExponents, false);
      // x in a is f.scale*x + f.offset in base units; in b that is (base - t.offset) / t.scale.
      const double scale = f.scale / t.scale, offset = (f.offset - t.offset) / t.scale;
      EXPECT_NEAR(info.getScalingFactor(), scale, 1e-12 * std::abs(scale))
          << ConvertUStringToStdString(from + L">" + to);
      EXPECT_NEAR(info.getOffset(), offset, 1e-9) << ConvertUStringToStdString(from + L">" + to);
      EXPECT_FALSE(info.isInverted());
      if (from == to) {
        EXPECT_TRUE(info.isTrivial());
      }
    }
  }
}

TEST_F(CatalogueTest, CelsiusToFahrenheit) {
  const UnitNumericInfoForConversions info =
      qltest::storedUnit(L"Celsius").getConversionInfo(qltest::storedUnit(L"Fahrenheit"), StrictExponents, false);
  EXPECT_NEAR(info.getScalingFactor(), 1.8, 1e-15);
  EXPECT_NEAR(info.getOffset(), 32.0, 1e-12);
  EXPECT_NEAR(info.getScalingFactor() * 100 + info.getOffset(), 212.0, 1e-12);
  EXPECT_FALSE(info.isTrivial());
}

TEST_F(CatalogueTest, ReciprocalConversion) {
  const Unit& kmpl = qltest::storedUnit(L"kilometrePerLitre");
  const Unit& lp100 = qltest::storedUnit(L"litrePer100Kilometre");
  const UnitNumericInfoForConversions there = kmpl.getConversionInfo(lp100, StrictExponents, false);
  const UnitNumericInfoForConversions back = lp100.getConversionInfo(kmpl, StrictExponents, false);
  EXPECT_TRUE(there.isInverted());
  EXPECT_FALSE(there.isTrivial());
  EXPECT_NEAR(there.getScalingFactor(), 100.0, 1e-12);  // 20 km/L is 100/20 = 5 L/100km
  EXPECT_NEAR(back.getScalingFactor(), 100.0, 1e-12);
  EXPECT_EQ(there.getOffset(), 0.0);
  EXPECT_TRUE(kmpl.isReciprocalOf(lp100));
  EXPECT_FALSE(kmpl.isReciprocalOf(kmpl));
  EXPECT_RAISES(kmpl.getConversionInfo(qltest::storedUnit(L"metre"), StrictExponents, false), "QuillonTypes:Unit",
                "UnitsNotConvertible", {"kmpl", "m", "kmpl", "m"});
}

TEST_F(CatalogueTest, TrivialConversions) {
  const Unit& metre = qltest::storedUnit(L"metre");
  EXPECT_TRUE(metre.getConversionInfo(metre, StrictExponents, false).isTrivial());
  EXPECT_TRUE(metre.getConversionInfo(UnitFactory::getDefaultUnit(), StrictExponents, false).isTrivial());
  EXPECT_TRUE(UnitFactory::getDefaultUnit().getConversionInfo(metre, StrictExponents, false).isTrivial());
  UnitNumericInfoForConversions none;
  EXPECT_TRUE(none.isTrivial());
  EXPECT_EQ(none.getScalingFactor(), 1.0);
  // Usage 0 against usage 1 on "m/m"-style terms.
  auto a = composeUnit(L"km*s/s"), b = composeUnit(L"m");
  EXPECT_RAISES(a->getConversionInfo(*b, StrictExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                {"km*s/s", "m", "km*s/s", "m"});
  EXPECT_EQ(a->getConversionInfo(*b, NetExponents, false).getScalingFactor(), 1000.0);
}

}  // namespace
