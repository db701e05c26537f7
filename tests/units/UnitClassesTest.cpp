// The unit classes: the total order with its reversed factor rule, composites and aliases, the factory's
// shared objects, prefixes, and the name test.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitFactory.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

std::unique_ptr<Unit> plain(const std::wstring& name, const std::wstring& symbol, const ConversionFactor& f,
                            const std::wstring& expr = L"m") {
  return UnitFactory::createUnit(-10, name, expr, symbol, symbol, L"", f, L"", {}, {}, false,
                                 UnitFactory::getDefaultAbstractUnit());
}

int sign(int v) { return (v > 0) - (v < 0); }

TEST(UnitOrder, TextsThenReversedFactorThenExpr) {
  const ConversionFactor one = F::createConversionFactor(1, 1, 0), two = F::createConversionFactor(2, 1, 0);
  struct Case {
    std::unique_ptr<Unit> a, b;
    int expected;
  };
  Case cases[] = {
      {plain(L"a", L"x", one), plain(L"b", L"x", one), -1},
      {plain(L"a", L"y", one), plain(L"a", L"x", one), 1},
      {plain(L"a", L"x", one), plain(L"a", L"x", two), 1},  // kept: the lesser factor sorts after
      {plain(L"a", L"x", two), plain(L"a", L"x", one), -1},
      {plain(L"a", L"x", one, L"m"), plain(L"a", L"x", one, L"s"), -1},
      {plain(L"a", L"x", one), plain(L"a", L"x", one), 0},
      {plain(L"b", L"x", two), plain(L"a", L"x", one), 1},  // texts decide before factors
  };
  for (Case& c : cases) {
    EXPECT_EQ(sign(c.a->compare(*c.b)), c.expected) << ConvertUStringToStdString(c.a->getName());
    EXPECT_EQ(sign(c.b->compare(*c.a)), -c.expected);  // antisymmetric
    EXPECT_EQ(*c.a == *c.b, c.expected == 0);
    EXPECT_EQ(*c.a < *c.b, c.expected < 0);
  }
  // An abstract unit never differs from a unit by the template step.
  auto abstract = UnitFactory::createAbstractUnit(-10, L"a", L"m", L"", L"x", L"x");
  EXPECT_EQ(abstract->compareTemplate(*plain(L"a", L"x", one)), 0);
}

TEST(UnitOrder, SubUnitAndAbstractUnitDecideLast) {
  auto a = plain(L"a", L"x", ConversionFactor::unity), b = plain(L"a", L"x", ConversionFactor::unity);
  b->setSubUnit(L"z");
  EXPECT_LT(a->compare(*b), 0);
  auto c = UnitFactory::createUnit(-10, L"a", L"m", L"x", L"x", L"", ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDummyAbstractUnit());
  EXPECT_EQ(sign(a->compare(*c)),
            sign(UnitFactory::getDefaultAbstractUnit().compare(UnitFactory::getDummyAbstractUnit())));
}

TEST(UnitOrder, CompositeSortsAfterAUnitOfTheSameTexts) {
  auto kilo = UnitFactory::createUnitPrefix(L"k", L"k", L"k", L"", F::createConversionFactor(1, 1, 3), {});
  auto base = plain(L"m", L"m", ConversionFactor::unity);
  const CompositeUnit km(*kilo, *base);
  auto same = plain(L"km", L"km", km.getConversionFactor());
  EXPECT_EQ(km.getName(), L"km");
  EXPECT_GT(km.compare(*same), 0);
  EXPECT_LT(same->compare(km), 0);
  EXPECT_GT(km.compare(*plain(L"zzz", L"zzz", ConversionFactor::unity)), 0);
  // A prefix standing alone sorts after plain units, before prefixed ones.
  const CompositeUnit alone(*kilo, UnitFactory::getDummyUnit());
  EXPECT_TRUE(alone.isPrefixOnly());
  EXPECT_TRUE(alone.isPrefixedUnit());
  EXPECT_GT(alone.compare(*same), 0);
  EXPECT_LT(alone.compare(km), 0);
  EXPECT_EQ(alone.getName(), L"kunitless");
  EXPECT_EQ(alone.getInternalBaseConversionFactor(), F::createConversionFactor(1, 1, 3));
}

TEST(UnitFactory, SharedObjects) {
  const AbstractUnit& d = UnitFactory::getDefaultAbstractUnit();
  EXPECT_EQ(&d, &UnitFactory::getDefaultAbstractUnit());
  for (const std::wstring& t : {d.getName(), d.getSymbol(), d.getAsciiSymbol(), d.getDisplayName(), d.getExpr()})
    EXPECT_EQ(t, L"unitless");
  EXPECT_EQ(d.getId(), -10);
  const Unit& u = UnitFactory::getDefaultUnit();
  EXPECT_EQ(&u.getAbstractUnit(), &d);
  EXPECT_EQ(u.getSymbol(), L"unitless");
  EXPECT_EQ(u.getUnitType(), 3);
  EXPECT_EQ(UnitFactory::getDefaultUnitPrefix().getName(), L"");
  EXPECT_EQ(UnitFactory::getDummyAbstractUnit().getName(), L"prefix");
  EXPECT_EQ(UnitFactory::getDummyAbstractUnit().getExpr(), L"unitless");
  const Unit& dummy = UnitFactory::getDummyUnit();
  EXPECT_EQ(dummy.getName(), L"unitless");
  EXPECT_EQ(dummy.getSymbol(), L"");
  EXPECT_NE(dummy.compare(u), 0);
  EXPECT_EQ(UnitBase::getUniqueID(&u), "dummy Concrete Unit ID");
  EXPECT_EQ(UnitBase::getUniqueID(&d), "dummy Abstract Unit ID");
  EXPECT_TRUE(UnitBase::isUnitBase(1));
  EXPECT_FALSE(UnitBase::isUnitBase(d.getUnitType()));
}

TEST(UnitFactory, AliasInheritsEmptyAndEqualTexts) {
  auto target = plain(L"litre", L"L", F::createConversionFactor(1, 1, -3), L"m^3");
  auto a = UnitFactory::createUnitAlias(L"liter", L"", L"L", L"", *target, {});
  EXPECT_EQ(a->getSymbol(), L"L");
  EXPECT_FALSE(a->isNameInherited());
  EXPECT_TRUE(a->isSymbolInherited());
  EXPECT_TRUE(a->isAsciiSymbolInherited());  // equal to the target's
  EXPECT_EQ(a->getExpr(), L"m^3");
  EXPECT_EQ(a->getConversionFactor(), target->getConversionFactor());
  EXPECT_TRUE(a->isAliased());
  EXPECT_FALSE(a->isPrefixedUnit());
  std::unique_ptr<UnitBase> copy(a->clone());
  EXPECT_TRUE(copy->isAliased());
  EXPECT_EQ(copy->compare(*a), 0);

  auto kilo = UnitFactory::createUnitPrefix(L"kilo", L"k", L"k", L"kilo", F::createConversionFactor(1, 1, 3), {});
  auto pa = UnitFactory::createUnitPrefixAlias(L"", L"K", L"", L"", *kilo, {});
  EXPECT_EQ(pa->getName(), L"kilo");
  EXPECT_TRUE(pa->isNameInherited());
  EXPECT_FALSE(pa->isSymbolInherited());
  EXPECT_TRUE(pa->isAliased());
  EXPECT_TRUE(pa->equivalent(*kilo));
  EXPECT_NE(pa->compare(*kilo), 0);
  EXPECT_EQ(&pa->getAliasedPrefix(), kilo.get());
}

TEST(UnitPrefixOrder, ReversedFactorRule) {
  auto a = UnitFactory::createUnitPrefix(L"p", L"p", L"p", L"", F::createConversionFactor(1, 1, 3), {});
  auto b = UnitFactory::createUnitPrefix(L"p", L"p", L"p", L"", F::createConversionFactor(1, 1, 6), {});
  EXPECT_GT(a->compare(*b), 0);  // kept: the lesser factor sorts after
  EXPECT_LT(b->compare(*a), 0);
  EXPECT_FALSE(a->equivalent(*b));
  std::unique_ptr<UnitPrefix> c(a->clone());
  EXPECT_EQ(*c, *a);
}

TEST(UnitNames, LettersAndDigitsOfAnyScript) {
  struct Case {
    const wchar_t* text;
    bool valid;
  };
  for (const Case& c :
       {Case{L"", true}, Case{L"metre", true}, Case{L"m2", true}, Case{L"\u00C5ngstr\u00F6m", true},
        Case{L"\u03BCm", true}, Case{L"\u5343\u514B", true}, Case{L"m s", false}, Case{L"m_s", false},
        Case{L"m/s", false}, Case{L"m-1", false}, Case{L"a@b", false}, Case{L"m^2", false}, Case{L"(m)", false},
        Case{L"%", false}, Case{L"\xD800", false}, Case{L"\xD835\xDC00", true}, Case{L"\x1D400", false}})
    EXPECT_EQ(UnitBase::isValidStringForUnitName(c.text), c.valid) << std::wstring(c.text).size();
}

TEST(UnitPrint, ExprInQuotes) {
  std::ostringstream out;
  plain(L"n", L"s", ConversionFactor::unity, L"kg*m/s^2")->print(out);
  out << *plain(L"n", L"s", ConversionFactor::unity, std::wstring(L"m\xD800"));
  EXPECT_EQ(out.str(), "Unit : 'kg*m/s^2'\nUnit : 'm?'\n");
}

}  // namespace

namespace {

TEST(UnitChains, LongAliasAndCompositeChainsDoNotRecurse) {
  auto kilo = UnitFactory::createUnitPrefix(L"k", L"k", L"k", L"", F::createConversionFactor(1, 1, 3), {});
  auto base = plain(L"m", L"m", ConversionFactor::unity);
  base->setSubUnit(L"sub");
  base->addPrefix(*kilo);
  std::vector<std::unique_ptr<Unit>> chain;
  const Unit* last = base.get();
  for (int i = 0; i < 100000; ++i) {
    if (i % 2 == 0)
      chain.push_back(UnitFactory::createUnitAlias(L"a" + std::to_wstring(i), L"", L"", L"", *last, {}));
    else
      chain.push_back(std::make_unique<CompositeUnit>(UnitFactory::getDefaultUnitPrefix(), *last));
    last = chain.back().get();
  }
  EXPECT_EQ(&last->getFundamentalUnitsExprAST(), &base->getFundamentalUnitsExprAST());
  EXPECT_EQ(last->getSubUnit(), L"sub");
  EXPECT_TRUE(last->getUnitSystems().empty());
  EXPECT_NE(last->compare(*base), 0);
  auto aliasOfChain = UnitFactory::createUnitAlias(L"top", L"", L"", L"", *last, {});
  EXPECT_TRUE(aliasOfChain->isPrefixedUnit());
  EXPECT_FALSE(aliasOfChain->hasPrefix(*kilo));  // a composite admits no prefix
  EXPECT_EQ(&aliasOfChain->getFundamentalUnitsExprAST(), &base->getFundamentalUnitsExprAST());
  std::vector<std::unique_ptr<Unit>> aliases;
  last = base.get();
  for (int i = 0; i < 100000; ++i) {
    aliases.push_back(UnitFactory::createUnitAlias(L"b" + std::to_wstring(i), L"", L"", L"", *last, {}));
    last = aliases.back().get();
  }
  EXPECT_TRUE(last->hasPrefix(*kilo));
  EXPECT_EQ(last->getPrefixes().size(), 1u);
  EXPECT_FALSE(last->isPrefixedUnit());
  EXPECT_EQ(last->getInternalBaseConversionFactor(), ConversionFactor::unity);
}

}  // namespace
