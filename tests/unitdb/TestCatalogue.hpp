// The small catalogue the unit tests build in code until the package loader lands: SI prefixes, a few
// abstract units, units with prefix sets, an alias, temperature scales with offsets, and a reciprocal pair
// of abstract units. Values are the published definitions (SI brochure, NIST SP 811), exact where the
// definition is exact. CatalogueTest installs it as the loader and clears the singleton after each test.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace qltest {

using namespace QLTypeSys;

/// The stored abstract unit of that name.
inline const UnitBase& storedAbstract(const std::wstring& name) {
  for (const UnitBase& u : UnitDatabase::getUnitDatabase()->getAbstractUnit(name))
    if (u.getName() == name) return u;
  throw std::runtime_error("no abstract unit of that name");
}

/// The stored (not prefixed) unit of that name.
inline const Unit& storedUnit(const std::wstring& name) {
  for (const UnitBase& u : UnitDatabase::getUnitDatabase()->getAllUnits())
    if (u.getName() == name && !u.isPrefixedUnit()) return static_cast<const Unit&>(u);
  throw std::runtime_error("no unit of that name");
}

/// Resolves and checks an abstract unit, stores it and returns the stored one.
inline const UnitBase& addAbstract(const std::wstring& name, const std::wstring& symbol, const std::wstring& expr) {
  auto a = UnitFactory::createAbstractUnit(-10, name, expr, name, symbol, symbol);
  a->parseExpressionAndGenerateAST();
  a->checkValidity(true, StrictExponents);
  UnitDatabase::getUnitDatabase()->addUnit(*a);
  return storedAbstract(name);
}

/// Resolves and checks a unit, stores it and returns the stored one. Prefixes are given by symbol.
inline const Unit& addUnit(const std::wstring& name, const std::wstring& symbol, const std::wstring& asciiSymbol,
                           const std::wstring& expr, const ConversionFactor& factor, const std::wstring& abstractName,
                           const std::vector<std::wstring>& prefixSymbols = {},
                           const std::vector<std::wstring>& systems = {L"SI"}) {
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  std::vector<std::reference_wrapper<const UnitPrefix>> prefixes;
  for (const std::wstring& p : prefixSymbols) {
    for (const UnitPrefix& found : db->getUnitPrefix(p))
      if (found.getSymbol() == p) prefixes.emplace_back(found);
  }
  const UnitBase& abstract =
      abstractName.empty() ? UnitFactory::getDefaultAbstractUnit() : storedAbstract(abstractName);
  auto u = UnitFactory::createUnit(-10, name, expr, symbol, asciiSymbol, name, factor, L"", systems, prefixes, false,
                                   abstract);
  u->parseExpressionAndGenerateAST();
  u->checkValidity(false, StrictExponents);
  db->addUnit(*u);
  return storedUnit(name);
}

/// Fills the catalogue; the loader the fixtures install.
inline void buildTestCatalogue(UnitDatabase& db, const std::wstring& /*path*/) {
  using F = ConversionFactorFactory;
  db.addUnitSystem(UnitSystem(L"SI"));
  db.addUnitSystem(UnitSystem(L"USCustomary"));

  // SI prefixes (the micro sign U+00B5, ASCII "u"), and the Greek mu as a second symbol of micro.
  struct P {
    const wchar_t *name, *symbol, *ascii;
    int exponent;
  };
  for (const P& p : {P{L"mega", L"M", L"M", 6}, P{L"kilo", L"k", L"k", 3}, P{L"hecto", L"h", L"h", 2},
                     P{L"deca", L"da", L"da", 1}, P{L"deci", L"d", L"d", -1}, P{L"centi", L"c", L"c", -2},
                     P{L"milli", L"m", L"m", -3}, P{L"micro", L"\u00B5", L"u", -6}})
    db.addUnitPrefix(*UnitFactory::createUnitPrefix(p.name, p.symbol, p.ascii, p.name,
                                                    F::createConversionFactor(1, 1, p.exponent), {L"SI"}));
  const UnitPrefix& micro = *db.getUnitPrefix(L"micro").begin();
  db.addUnitPrefix(*UnitFactory::createUnitPrefixAlias(L"", L"\u03BC", L"", L"", micro, {L"SI"}));

  addAbstract(L"length", L"L", L"L");
  addAbstract(L"mass", L"M", L"M");
  addAbstract(L"time", L"T", L"T");
  addAbstract(L"temperature", L"Theta", L"Temp");
  addAbstract(L"velocity", L"V", L"length/time");
  addAbstract(L"volume", L"Vol", L"length^3");
  addAbstract(L"force", L"F", L"mass*length/time^2");
  addAbstract(L"fuelEconomy", L"FE", L"length/volume");
  addAbstract(L"fuelConsumption", L"FC", L"volume/length");
  // value in fuel consumption (area) = 1 / value in fuel economy (inverse area), in fundamental units.
  db.addReciprocalAbstractUnits(storedAbstract(L"fuelEconomy"), storedAbstract(L"fuelConsumption"),
                                F::createConversionFactor(L"1", DoubleReciprocalFactor));

  const ConversionFactor one = F::createConversionFactor(1, 1, 0);
  addUnit(L"metre", L"m", L"m", L"m", one, L"length", {L"k", L"c", L"m", L"\u00B5", L"\u03BC", L"d", L"da"});
  addUnit(L"second", L"s", L"s", L"s", one, L"time", {L"m", L"\u00B5"});
  addUnit(L"minute", L"min", L"min", L"s", F::createConversionFactor(60, 1, 0), L"time");
  addUnit(L"hour", L"h", L"h", L"s", F::createConversionFactor(3600, 1, 0), L"time");
  // The are (100 m^2) with the decare and hectare of agriculture.
  addAbstract(L"area", L"A", L"length^2");
  addUnit(L"are", L"a", L"a", L"m^2", F::createConversionFactor(1, 1, 2), L"area", {L"da", L"h"});
  addUnit(L"kilogram", L"kg", L"kg", L"kg", one, L"mass");
  addUnit(L"gram", L"g", L"g", L"kg", F::createConversionFactor(1, 1, -3), L"mass", {L"k", L"m", L"\u00B5"});
  // International inch, foot and mile (1959): 0.0254 m, 12 in, 5280 ft, all exact.
  addUnit(L"inch", L"in", L"in", L"m", F::createConversionFactor(254, 1, -4), L"length", {}, {L"USCustomary"});
  addUnit(L"foot", L"ft", L"ft", L"in", F::createConversionFactor(12, 1, 0), L"length", {}, {L"USCustomary"});
  addUnit(L"mile", L"mi", L"mi", L"ft", F::createConversionFactor(5280, 1, 0), L"length", {}, {L"USCustomary"});
  const Unit& litre = addUnit(L"litre", L"L", L"L", L"m^3", F::createConversionFactor(1, 1, -3), L"volume", {L"m"});
  db.addUnit(*UnitFactory::createUnitAlias(L"liter", L"", L"", L"", litre, {}));
  addUnit(L"newton", L"N", L"N", L"kg*m/s^2", one, L"force", {L"k"});
  // Temperatures: K = degC + 273.15 and K = 5/9 degF + 45967/180 (459.67 * 5/9), both exact.
  addUnit(L"kelvin", L"K", L"K", L"K", one, L"temperature", {L"m"});
  addUnit(L"Celsius", L"degC", L"degC", L"K", F::createConversionFactor(1, 1, 0, 27315, 100, 0), L"temperature");
  addUnit(L"Fahrenheit", L"degF", L"degF", L"K", F::createConversionFactor(5, 9, 0, 45967, 180, 0), L"temperature", {},
          {L"USCustomary"});
  addUnit(L"kilometrePerLitre", L"kmpl", L"kmpl", L"km/L", one, L"fuelEconomy");
  addUnit(L"litrePer100Kilometre", L"Lp100km", L"Lp100km", L"L/km", F::createConversionFactor(1, 100, 0),
          L"fuelConsumption");
  // A ratio with no abstract quantity.
  addUnit(L"percent", L"%", L"%", L"m/m", F::createConversionFactor(1, 100, 0), L"");
}

/// Installs the catalogue as the loader; clears the singleton afterwards so the next test starts afresh.
class CatalogueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    UnitDatabase::getUnitDatabase()->clearAll();
    previous_ = UnitDatabase::setLoader(buildTestCatalogue);
    db = UnitDatabase::getUnitDatabase();
  }
  // Leaves the singleton unloaded; the next getUnitDatabase loads whatever loader is then set.
  void TearDown() override {
    UnitDatabase::setLoader(previous_);
    UnitDatabase::getUnitDatabase()->clearAll();
  }
  UnitDatabase* db = nullptr;

 private:
  UnitDatabase::Loader previous_;
};

/// A unit composed from an expression, as a unit table composes one: all texts the expression, the
/// default abstract unit, resolved.
inline std::unique_ptr<Unit> composeUnit(const std::wstring& expr) {
  auto u = UnitFactory::createUnit(-10, expr, expr, expr, expr, expr, ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDefaultAbstractUnit());
  u->parseExpressionAndGenerateAST();
  return u;
}

}  // namespace qltest
