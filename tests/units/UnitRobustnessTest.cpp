// Whatever text a client gives a unit, resolution either fills the maps or raises a diagnostic, and a
// raise leaves the unit as it was; validity answers agree with resolution. Random expressions from the
// catalogue's names, unknown names, operators and numbers.
#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;

std::wstring randomText(std::mt19937& rng) {
  static const std::vector<std::wstring> tokens = {
      L"m",  L"km", L"s",  L"h",  L"degC", L"degF", L"kmpl", L"Lp100km",     L"liter", L"\u03BCm", L"%",
      L"N",  L"kg", L"mK", L"xx", L"kilo", L"*",    L"/",    L"^",           L"(",     L")",       L"2",
      L"-3", L" ",  L"@",  L"+",  L"^(",   L"0",    L"1",    L"99999999999", L"\xD800"};
  std::uniform_int_distribution<std::size_t> pick(0, tokens.size() - 1), len(0, 12);
  std::wstring text;
  for (std::size_t n = len(rng); n > 0; --n) text += tokens[pick(rng)];
  return text;
}

TEST_F(CatalogueTest, RandomExpressionsResolveOrRaise) {
  std::mt19937 rng(20261123);
  int resolved = 0;
  for (int i = 0; i < 3000; ++i) {
    const std::wstring text = randomText(rng);
    auto u = UnitFactory::createUnit(-10, L"x", text, L"x", L"x", L"", ConversionFactor::unity, L"", {}, {}, false,
                                     UnitFactory::getDefaultAbstractUnit());
    bool ok = true;
    if (text.find(L'\xD800') != std::wstring::npos) {
      EXPECT_THROW(u->parseExpressionAndGenerateAST(), std::out_of_range);  // not UTF-16, as the parser says
      EXPECT_TRUE(u->getUnitsInfo().empty());
      EXPECT_FALSE(UnitBase::isValidUnitExpr(text));
      continue;
    }
    try {
      u->parseExpressionAndGenerateAST();
    } catch (const fl::except::IException& e) {
      ok = false;
      const std::string key = e.getDiagnostic()->getKey();
      EXPECT_TRUE(key == "ParsingError" || key == "UnitNotInDatabase") << key;
      EXPECT_TRUE(u->getUnitsInfo().empty());
      EXPECT_EQ(u->getInternalBaseConversionFactor(), ConversionFactor::unity);
    }
    EXPECT_EQ(UnitBase::isValidUnitExpr(text), ok) << i;
    if (!ok) continue;
    ++resolved;
    // Comparing and converting a resolved unit against the metre never fails other than by diagnostic.
    auto m = qltest::composeUnit(L"m");
    (void)UnitBase::equivalent(*u, *m, NetExponents);
    try {
      (void)u->getConversionInfo(*m, NetExponents, false);
    } catch (const fl::except::IException& e) {
      EXPECT_STREQ(e.getDiagnostic()->getKey().c_str(), "UnitsNotConvertible");
    }
  }
  EXPECT_GT(resolved, 100);
}

}  // namespace
