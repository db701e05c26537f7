// Resolution of unit expressions against the test catalogue: every unit's fundamental map and exact base
// factor against a hand computation, the non-linear rule, the validity checks and their diagnostics, and
// expressions too long or too deep for any recursive walker.
#include <gtest/gtest.h>

#include <boost/rational.hpp>
#include <map>
#include <sstream>
#include <string>
#include <typeinfo>

#include "support/ExpectRaises.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;
using qltest::composeUnit;
using Q = boost::rational<long long>;

// The fundamental map as symbol -> net exponent.
std::map<std::wstring, int> nets(const UnitBase& u) {
  std::map<std::wstring, int> out;
  for (const auto& [f, e] : u.getFundamentalUnitsExprAST()) out[f.get().getSymbol()] = e.getNet();
  return out;
}

// An exact factor as one plain fraction (num/den·10^exp), or nothing when it is not a ScaledRational.
bool exactValue(const ConversionFactor& f, Q& out) {
  const auto* r = dynamic_cast<const ScaledRational*>(&f.getFactor());
  if (r == nullptr) return false;
  out = r->getRational();
  for (int e = r->getExponent(); e > 0; --e) out *= 10;
  for (int e = r->getExponent(); e < 0; ++e) out /= 10;
  return true;
}

struct ResolveCase {
  const wchar_t* expr;
  std::map<std::wstring, int> dims;
  Q factor;  // exact base factor to fundamental units
};

class Resolves : public CatalogueTest, public ::testing::WithParamInterface<ResolveCase> {};

TEST_P(Resolves, ToFundamentalUnitsWithExactFactor) {
  const ResolveCase& c = GetParam();
  auto u = composeUnit(c.expr);
  EXPECT_EQ(nets(*u), c.dims);
  Q value;
  ASSERT_TRUE(exactValue(u->getInternalBaseConversionFactor(), value))
      << typeid(u->getInternalBaseConversionFactor().getFactor()).name();
  EXPECT_EQ(value, c.factor);
  EXPECT_TRUE(u->getInternalBaseConversionFactor().isWellDefined());
}

// Hand computations from the definitions: in = 0.0254 m, ft = 12 in, mi = 5280 ft, h = 3600 s, L = 10^-3 m^3.
INSTANTIATE_TEST_SUITE_P(
    Catalogue, Resolves,
    ::testing::Values(
        ResolveCase{L"m", {{L"m", 1}}, Q(1)}, ResolveCase{L"km/h", {{L"m", 1}, {L"s", -1}}, Q(5, 18)},
        ResolveCase{L"m/s", {{L"m", 1}, {L"s", -1}}, Q(1)},
        ResolveCase{L"mi/h", {{L"m", 1}, {L"s", -1}}, Q(1609344, 3600000)},
        ResolveCase{L"in", {{L"m", 1}}, Q(254, 10000)}, ResolveCase{L"ft", {{L"m", 1}}, Q(3048, 10000)},
        ResolveCase{L"mi", {{L"m", 1}}, Q(1609344, 1000)}, ResolveCase{L"ft^2", {{L"m", 2}}, Q(3048 * 3048, 100000000)},
        ResolveCase{L"g", {{L"kg", 1}}, Q(1, 1000)}, ResolveCase{L"mg", {{L"kg", 1}}, Q(1, 1000000)},
        ResolveCase{L"kg", {{L"kg", 1}}, Q(1)}, ResolveCase{L"N", {{L"kg", 1}, {L"m", 1}, {L"s", -2}}, Q(1)},
        ResolveCase{L"kN", {{L"kg", 1}, {L"m", 1}, {L"s", -2}}, Q(1000)},
        ResolveCase{L"kN*m", {{L"kg", 1}, {L"m", 2}, {L"s", -2}}, Q(1000)}, ResolveCase{L"L", {{L"m", 3}}, Q(1, 1000)},
        ResolveCase{L"mL", {{L"m", 3}}, Q(1, 1000000)}, ResolveCase{L"liter/min", {{L"m", 3}, {L"s", -1}}, Q(1, 60000)},
        ResolveCase{L"kmpl", {{L"m", -2}}, Q(1000000)}, ResolveCase{L"Lp100km", {{L"m", 2}}, Q(1, 100000000)},
        ResolveCase{L"ha", {{L"m", 2}}, Q(10000)}, ResolveCase{L"\u00B5m/ms", {{L"m", 1}, {L"s", -1}}, Q(1, 1000)},
        ResolveCase{L"%", {{L"m", 0}}, Q(1, 100)}, ResolveCase{L"K", {{L"K", 1}}, Q(1)},
        ResolveCase{L"mK/s", {{L"K", 1}, {L"s", -1}}, Q(1, 1000)},
        ResolveCase{L"(m/s)^2/(m^2)", {{L"m", 0}, {L"s", -2}}, Q(1)}, ResolveCase{L"h^0", {}, Q(1)},
        ResolveCase{L"m^-1*km", {{L"m", 0}}, Q(1000)}));

TEST_F(CatalogueTest, KmPerHourIsExactlyFiveEighteenths) {
  auto u = composeUnit(L"km/h");
  const auto& r = dynamic_cast<const ScaledRational&>(u->getInternalBaseConversionFactor().getFactor());
  Q value;
  ASSERT_TRUE(exactValue(u->getInternalBaseConversionFactor(), value));
  EXPECT_EQ(value, Q(5, 18)) << r.toText();
  // The terms as written stay keys even where the fundamental map merges them.
  auto mm = composeUnit(L"km*m/m");
  EXPECT_EQ(mm->getUnitsInfo().size(), 2u);
  EXPECT_EQ(nets(*mm), (std::map<std::wstring, int>{{L"m", 1}}));
}

TEST_F(CatalogueTest, QuotientOfLikeUnitsKeepsBothCounts) {
  auto u = composeUnit(L"m/m");
  ASSERT_EQ(u->getUnitsInfo().size(), 1u);
  EXPECT_EQ(u->getUnitsInfo().begin()->second, Exponent(1, 1));
  EXPECT_EQ(u->getInternalBaseConversionFactor(), ConversionFactor::unity);
  auto k = composeUnit(L"km/km");
  EXPECT_EQ(k->getFundamentalUnitsExprAST().begin()->second, Exponent(1, 1));
  Q value;
  ASSERT_TRUE(exactValue(k->getInternalBaseConversionFactor(), value));
  EXPECT_EQ(value, Q(1));  // raised to the net 0
}

TEST_F(CatalogueTest, TemperatureAloneKeepsItsOffset) {
  auto c = composeUnit(L"degC");
  EXPECT_TRUE(c->getInternalBaseConversionFactor().isAffine());
  EXPECT_TRUE(c->getInternalBaseConversionFactor().isWellDefined());
  EXPECT_DOUBLE_EQ(c->getInternalBaseConversionFactor().getOffset(), 273.15);  // 27315·10^-2 in double steps
  EXPECT_EQ(nets(*c), (std::map<std::wstring, int>{{L"K", 1}}));
}

class NonLinear : public CatalogueTest, public ::testing::WithParamInterface<const wchar_t*> {};

TEST_P(NonLinear, TemperatureInACompoundLosesTheFlag) {
  auto u = composeUnit(GetParam());
  const ConversionFactor& base = u->getInternalBaseConversionFactor();
  EXPECT_FALSE(base.isWellDefined());
  EXPECT_FALSE(base.isAffine());
  // The temperature unit itself stays a term of the fundamental map.
  bool hasFahrenheit = false;
  for (const auto& [f, e] : u->getFundamentalUnitsExprAST()) hasFahrenheit |= f.get().getSymbol() == L"degF";
  EXPECT_TRUE(hasFahrenheit);
  auto kelvin = composeUnit(L"K");
  EXPECT_RAISES(u->getConversionInfo(*kelvin, NetExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                {ConvertUStringToStdString(GetParam()), "K", ConvertUStringToStdString(GetParam()), "K"});
  EXPECT_RAISES(kelvin->getConversionInfo(*u, NetExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                {"K", ConvertUStringToStdString(GetParam()), "K", ConvertUStringToStdString(GetParam())});
}

TEST_F(CatalogueTest, EqualDimensionsStillRefuseAnUndefinedFactor) {
  // degF^2 against K^2: the maps pass the net comparison, so the flag alone refuses.
  auto f2 = composeUnit(L"degF^2");
  auto k2 = composeUnit(L"K^2");
  EXPECT_TRUE(f2->dimensionallyEquivalentWithUnit(*k2, NetExponents));
  EXPECT_RAISES(f2->getConversionInfo(*k2, NetExponents, false), "QuillonTypes:Unit", "UnitsNotConvertible",
                {"degF^2", "K^2", "degF^2", "K^2"});
  EXPECT_TRUE(k2->getConversionInfo(*composeUnit(L"K*K"), StrictExponents, false).isTrivial());
}

INSTANTIATE_TEST_SUITE_P(Catalogue, NonLinear,
                         ::testing::Values(L"degF^2", L"degF/s", L"m*degF", L"degF^-1", L"degF*degF"));

struct BadCase {
  const wchar_t* expr;
  const char* key;
  const char* arg;
};

class BadExpressions : public CatalogueTest, public ::testing::WithParamInterface<BadCase> {};

TEST_P(BadExpressions, RaiseAndLeaveTheUnitAsItWas) {
  const BadCase& c = GetParam();
  auto u = UnitFactory::createUnit(-10, L"x", c.expr, L"x", L"x", L"", ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDefaultAbstractUnit());
  EXPECT_RAISES(u->parseExpressionAndGenerateAST(), "QuillonTypes:Unit", c.key, {c.arg});
  EXPECT_TRUE(u->getUnitsInfo().empty());
  EXPECT_TRUE(u->getFundamentalUnitsExprAST().empty());
  EXPECT_EQ(u->getInternalBaseConversionFactor(), ConversionFactor::unity);
  EXPECT_FALSE(UnitBase::isValidUnitExpr(c.expr));
}

INSTANTIATE_TEST_SUITE_P(Catalogue, BadExpressions,
                         ::testing::Values(BadCase{L"furlong", "UnitNotInDatabase", "furlong"},
                                           BadCase{L"m/furlong", "UnitNotInDatabase", "furlong"},
                                           BadCase{L"kmin", "UnitNotInDatabase", "kmin"},
                                           BadCase{L"m//s", "ParsingError", "m//s"}, BadCase{L"", "ParsingError", ""},
                                           BadCase{L"(m", "ParsingError", "(m"}, BadCase{L"m^", "ParsingError", "m^"},
                                           BadCase{L"m^99999999999", "ParsingError", "m^99999999999"},
                                           BadCase{L"m^2147483647*m", "ParsingError", "m^2147483647*m"}));

TEST_F(CatalogueTest, ExponentOverflowAcrossLevelsIsReported) {
  // N holds s^-2: a power of N doubles the count of s, which is checked, not wrapped.
  auto u = UnitFactory::createUnit(-10, L"x", L"N^2147483647*N^2147483647", L"x", L"x", L"", ConversionFactor::unity,
                                   L"", {}, {}, false, UnitFactory::getDefaultAbstractUnit());
  EXPECT_RAISES(u->parseExpressionAndGenerateAST(), "QuillonTypes:Unit", "ParsingError", {"N^2147483647*N^2147483647"});
  auto v = composeUnit(L"N^1073741823");
  EXPECT_EQ(nets(*v).at(L"s"), -2147483646);
  auto w = UnitFactory::createUnit(-10, L"x", L"N^1073741824", L"x", L"x", L"", ConversionFactor::unity, L"", {}, {},
                                   false, UnitFactory::getDefaultAbstractUnit());
  EXPECT_RAISES(w->parseExpressionAndGenerateAST(), "QuillonTypes:Unit", "ParsingError", {"N^1073741824"});
}

TEST_F(CatalogueTest, AbstractUnitsResolveThroughAbstractTerms) {
  auto a = UnitFactory::createAbstractUnit(L"force/length");
  a->parseExpressionAndGenerateAST();
  std::map<std::wstring, int> dims;
  for (const auto& [f, e] : a->getFundamentalUnitsExprAST()) dims[f.get().getName()] = e.getNet();
  EXPECT_EQ(dims, (std::map<std::wstring, int>{{L"length", 0}, {L"mass", 1}, {L"time", -2}}));
  auto bad = UnitFactory::createAbstractUnit(L"length/metre");
  EXPECT_RAISES(bad->parseExpressionAndGenerateAST(), "QuillonTypes:Unit", "AbstractUnitNotInDatabase", {"metre"});
  auto unitfree = UnitFactory::createAbstractUnit(L"unitfree");
  unitfree->parseExpressionAndGenerateAST();
  EXPECT_EQ(unitfree->getFundamentalUnitsExprAST().size(), 8u);
}

TEST_F(CatalogueTest, ValidityChecks) {
  auto speed = UnitFactory::createUnit(-10, L"knotish", L"km/h", L"kh", L"kh", L"", ConversionFactor::unity, L"", {},
                                       {}, false, qltest::storedAbstract(L"velocity"));
  speed->parseExpressionAndGenerateAST();
  speed->checkValidity(false, StrictExponents);
  auto wrong = UnitFactory::createUnit(-10, L"notASpeed", L"km*h", L"kh", L"kh", L"", ConversionFactor::unity, L"", {},
                                       {}, false, qltest::storedAbstract(L"velocity"));
  wrong->parseExpressionAndGenerateAST();
  EXPECT_RAISES(wrong->checkValidity(false, StrictExponents), "QuillonTypes:Unit", "DimensionallyInconsistent",
                {"velocity", "notASpeed"});
  auto badName = UnitFactory::createUnit(-10, L"km/h", L"km/h", L"kh", L"kh", L"", ConversionFactor::unity, L"", {}, {},
                                         false, qltest::storedAbstract(L"velocity"));
  badName->parseExpressionAndGenerateAST();
  EXPECT_RAISES(badName->checkValidity(false, StrictExponents), "QuillonTypes:Unit", "AlphaNumericStringOnlyForName",
                {"km/h"});
  badName->checkValidity(true, StrictExponents);
  // A unit with an extra m/m term: inconsistent under strict usage only.
  auto extra = UnitFactory::createUnit(-10, L"speedRatio", L"km/h*m/m", L"kh", L"kh", L"", ConversionFactor::unity, L"",
                                       {}, {}, false, qltest::storedAbstract(L"velocity"));
  extra->parseExpressionAndGenerateAST();
  EXPECT_RAISES(extra->checkValidity(false, StrictExponents), "QuillonTypes:Unit", "DimensionallyInconsistent",
                {"velocity", "speedRatio"});
  extra->checkValidity(false, NetExponents);
}

TEST_F(CatalogueTest, NamesAndExpressions) {
  for (const wchar_t* t : {L"m", L"km", L"kg", L"liter", L"\u03BCm", L"metre"})
    EXPECT_TRUE(UnitBase::isValidUnitName(t));
  for (const wchar_t* t : {L"", L"kilom", L"furlong", L"Metres", L"m/s"}) EXPECT_FALSE(UnitBase::isValidUnitName(t));
  for (const wchar_t* t : {L"m/s", L"km/h", L"kg*m^2/s^2", L"(m/s)^2", L"m/ s", L"mi/degC"})
    EXPECT_TRUE(UnitBase::isValidUnitExpr(t));
  for (const wchar_t* t : {L"m/", L"s^x", L"m*furlong", L"kg@mass", L"\xDC00"})
    EXPECT_FALSE(UnitBase::isValidUnitExpr(t));
}

TEST_F(CatalogueTest, CanonicalForm) {
  std::ostringstream out;
  composeUnit(L"kN/ms")->displayCanonicalForm(out);
  EXPECT_EQ(out.str(), "kg^1\nm^1\ns^-3\n");
}

TEST_F(CatalogueTest, LongAndDeepExpressions) {
  std::wstring longExpr = L"m";
  for (int i = 0; i < 5000; ++i) longExpr += (i % 3 == 0 ? L"*km" : i % 3 == 1 ? L"/s" : L"*N");
  auto u = composeUnit(longExpr);
  EXPECT_EQ(u->getUnitsInfo().size(), 4u);
  EXPECT_FALSE(u->getFundamentalUnitsExprAST().empty());
  std::wstring deep = std::wstring(64, L'(') + L"m/s" + std::wstring(64, L')');
  EXPECT_EQ(nets(*composeUnit(deep)), (std::map<std::wstring, int>{{L"m", 1}, {L"s", -1}}));
  std::wstring tooDeep = std::wstring(100000, L'(') + L"m" + std::wstring(100000, L')');
  auto t = UnitFactory::createUnit(-10, L"x", tooDeep, L"x", L"x", L"", ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDefaultAbstractUnit());
  EXPECT_THROW(t->parseExpressionAndGenerateAST(), fl::except::IException);
  EXPECT_FALSE(UnitBase::isValidUnitExpr(tooDeep));
}

}  // namespace
