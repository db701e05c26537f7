// The unit database section of the demo: a small catalogue built in code (until the package loader
// lands), "km/h" resolved to fundamental units with its exact factor, how realistic pairs of units
// compare, and the scale and offset from degrees Celsius to degrees Fahrenheit.
#include <boost/rational.hpp>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitFactory.hpp"

void showUnitDatabase();

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

std::string utf8(const std::wstring& w) { return ConvertUStringToStdString(w); }

const UnitBase& abstractNamed(const std::wstring& name) {
  return *UnitDatabase::getUnitDatabase()->getAbstractUnit(name).begin();
}

void addAbstract(UnitDatabase& db, const std::wstring& name, const std::wstring& symbol, const std::wstring& expr) {
  auto a = UnitFactory::createAbstractUnit(-10, name, expr, name, symbol, symbol);
  a->parseExpressionAndGenerateAST();
  db.addUnit(*a);
}

void addUnit(UnitDatabase& db, const std::wstring& name, const std::wstring& symbol, const std::wstring& expr,
             const ConversionFactor& factor, const std::wstring& abstract, const std::vector<std::wstring>& prefixes) {
  std::vector<std::reference_wrapper<const UnitPrefix>> admitted;
  for (const std::wstring& p : prefixes) admitted.emplace_back(*db.getUnitPrefix(p).begin());
  const UnitBase& a = abstract.empty() ? UnitFactory::getDefaultAbstractUnit() : abstractNamed(abstract);
  auto u = UnitFactory::createUnit(-10, name, expr, symbol, symbol, name, factor, L"", {L"SI"}, admitted, false, a);
  u->parseExpressionAndGenerateAST();
  u->checkValidity(false, StrictExponents);
  db.addUnit(*u);
}

// SI brochure and NIST SP 811 definitions; exact where the definition is exact.
void demoCatalogue(UnitDatabase& db, const std::wstring& /*path*/) {
  db.addUnitSystem(UnitSystem(L"SI"));
  db.addUnitPrefix(
      *UnitFactory::createUnitPrefix(L"kilo", L"k", L"k", L"kilo", F::createConversionFactor(1, 1, 3), {}));
  db.addUnitPrefix(
      *UnitFactory::createUnitPrefix(L"milli", L"m", L"m", L"milli", F::createConversionFactor(1, 1, -3), {}));
  addAbstract(db, L"length", L"L", L"L");
  addAbstract(db, L"time", L"T", L"T");
  addAbstract(db, L"temperature", L"Theta", L"Temp");
  addAbstract(db, L"volume", L"Vol", L"length^3");
  addAbstract(db, L"fuelEconomy", L"FE", L"length/volume");
  addAbstract(db, L"fuelConsumption", L"FC", L"volume/length");
  db.addReciprocalAbstractUnits(abstractNamed(L"fuelEconomy"), abstractNamed(L"fuelConsumption"),
                                F::createConversionFactor(L"1", DoubleReciprocalFactor));
  const ConversionFactor one = F::createConversionFactor(1, 1, 0);
  addUnit(db, L"metre", L"m", L"m", one, L"length", {L"k", L"m"});
  addUnit(db, L"second", L"s", L"s", one, L"time", {L"m"});
  addUnit(db, L"hour", L"h", L"s", F::createConversionFactor(3600, 1, 0), L"time", {});
  addUnit(db, L"litre", L"L", L"m^3", F::createConversionFactor(1, 1, -3), L"volume", {L"m"});
  addUnit(db, L"kelvin", L"K", L"K", one, L"temperature", {L"m"});
  // K = degC + 273.15 and K = 5/9 degF + 45967/180, exact.
  addUnit(db, L"Celsius", L"degC", L"K", F::createConversionFactor(1, 1, 0, 27315, 100, 0), L"temperature", {});
  addUnit(db, L"Fahrenheit", L"degF", L"K", F::createConversionFactor(5, 9, 0, 45967, 180, 0), L"temperature", {});
  addUnit(db, L"centigrade", L"centigrade", L"degC", one, L"temperature", {});
  addUnit(db, L"kilometrePerLitre", L"kmpl", L"km/L", one, L"fuelEconomy", {});
  addUnit(db, L"litrePer100Kilometre", L"Lp100km", L"L/km", F::createConversionFactor(1, 100, 0), L"fuelConsumption",
          {});
  addUnit(db, L"percent", L"%", L"m/m", F::createConversionFactor(1, 100, 0), L"", {});
}

// A unit as a unit table composes one from an expression.
std::unique_ptr<Unit> compose(const std::wstring& expr) {
  auto u = UnitFactory::createUnit(-10, expr, expr, expr, expr, expr, ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDefaultAbstractUnit());
  u->parseExpressionAndGenerateAST();
  return u;
}

const UnitBase& stored(const std::wstring& symbol) { return *UnitDatabase::getUnitDatabase()->getUnit(symbol).begin(); }

const char* comparisonName(UnitComparison c) {
  static const char* names[] = {"UnitsEquivalent",  "UnitsIncompatible", "AbstractUnitsDiffer",
                                "UnitlessInvolved", "InheritInvolved",   "ScalingFactorsDiffer",
                                "DimensionsDiffer", "OffsetsDiffer",     "UnitsReciprocal"};
  return names[c];
}

}  // namespace

void showUnitDatabase() {
  std::cout << "\n=== The unit database, with a catalogue built in code ===\n";
  auto previous = UnitDatabase::setLoader(demoCatalogue);
  UnitDatabase::getUnitDatabase()->clearAll();
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  std::cout << "  " << db->getNumUnits() << " units, " << db->getNumAbstractUnits() << " abstract units, "
            << db->getNumPrefixes() << " prefixes\n";
  std::cout << "  readings of \"km\":";
  for (const UnitBase& u : db->getUnit(L"km"))
    std::cout << ' ' << utf8(u.getName()) << (u.isPrefixedUnit() ? " (made on demand)" : "");
  std::cout << "\n  readings of \"mm\":";
  for (const UnitBase& u : db->getUnit(L"mm")) std::cout << ' ' << utf8(u.getName());
  std::cout << "; of \"mh\" (hour admits no prefix): " << db->getUnit(L"mh").size() << '\n';

  auto kmh = compose(L"km/h");
  const auto& exact = dynamic_cast<const ScaledRational&>(kmh->getInternalBaseConversionFactor().getFactor());
  std::cout << "  \"km/h\" in fundamental units:";
  for (const auto& [f, e] : kmh->getFundamentalUnitsExprAST())
    std::cout << ' ' << utf8(f.get().getSymbol()) << '^' << e.getNet();
  boost::rational<long long> plain = exact.getRational();
  for (int e = exact.getExponent(); e > 0; --e) plain *= 10;
  for (int e = exact.getExponent(); e < 0; ++e) plain /= 10;
  std::cout << ", exact factor " << exact.toText() << " = " << plain << " (" << std::setprecision(17)
            << exact.toDouble() << std::setprecision(6) << ")\n";
  auto ms = compose(L"m/s");
  std::cout << "  \"km/h\" against \"m/s\": " << comparisonName(UnitBase::equivalent(*kmh, *ms, StrictExponents))
            << ", 1 km/h = " << kmh->getConversionInfo(*ms, StrictExponents, false).getScalingFactor() << " m/s\n";

  std::cout << "  comparisons of realistic pairs:\n";
  struct Pair {
    std::unique_ptr<UnitBase> a, b;
    const char* label;
  };
  std::vector<Pair> pairs;
  pairs.push_back({compose(L"km/h"), compose(L"km*h^-1"), "km/h against km*h^-1"});
  pairs.push_back({std::unique_ptr<UnitBase>(stored(L"m").clone()), std::unique_ptr<UnitBase>(stored(L"s").clone()),
                   "metre against second"});
  pairs.push_back({std::unique_ptr<UnitBase>(abstractNamed(L"length").clone()),
                   std::unique_ptr<UnitBase>(abstractNamed(L"time").clone()), "length against time"});
  pairs.push_back(
      {compose(L"m"), std::unique_ptr<UnitBase>(UnitFactory::getDefaultUnit().clone()), "m against unitless"});
  pairs.push_back({compose(L"km/h"), compose(L"m/s"), "km/h against m/s"});
  pairs.push_back({compose(L"%"), compose(L"m"), "percent against m"});
  pairs.push_back({std::unique_ptr<UnitBase>(stored(L"centigrade").clone()),
                   std::unique_ptr<UnitBase>(stored(L"degC").clone()), "centigrade against degC"});
  pairs.push_back({std::unique_ptr<UnitBase>(stored(L"kmpl").clone()),
                   std::unique_ptr<UnitBase>(stored(L"Lp100km").clone()), "km/L against L/100km"});
  for (const Pair& p : pairs) {
    const UnitComparison c = UnitBase::equivalent(*p.a, *p.b, StrictExponents);
    std::cout << "    " << std::left << std::setw(26) << p.label << std::right << c << ' ' << comparisonName(c) << '\n';
  }
  std::cout << "    (4 InheritInvolved arises only in a unit table, from the inherit id)\n";

  const UnitNumericInfoForConversions fuel =
      stored(L"kmpl").getConversionInfo(stored(L"Lp100km"), StrictExponents, false);
  std::cout << "  km/L to L/100km is reciprocal (" << std::boolalpha << fuel.isInverted() << std::noboolalpha
            << "): 20 km/L = " << fuel.getScalingFactor() / 20 << " L/100km\n";

  const UnitNumericInfoForConversions t = stored(L"degC").getConversionInfo(stored(L"degF"), StrictExponents, false);
  std::cout << "  degC to degF: scale " << t.getScalingFactor() << ", offset " << t.getOffset() << ":";
  for (double c : {-40.0, 0.0, 37.0, 100.0})
    std::cout << "  " << c << " degC = " << t.getScalingFactor() * c + t.getOffset() << " degF";
  std::cout << '\n';
  try {
    compose(L"degC^2")->getConversionInfo(*compose(L"K^2"), NetExponents, false);
  } catch (const fl::except::IException& e) {
    std::cout << "  a temperature squared refuses to convert: " << e.what() << '\n';
  }
  UnitDatabase::setLoader(previous);
  db->clearAll();
}
