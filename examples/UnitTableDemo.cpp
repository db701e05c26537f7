// The unit table section of the demo: the road of one request. "km/h" is registered in a model's table
// with each step's result shown, compared with "m/s" and converted, shown in its four text forms; an
// annotated registration; the whitelist; and a unit announced by the physical-modelling side, translated
// both ways.
#include <iostream>
#include <string>
#include <vector>

#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/PhysModUnitsObserver.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"
#include "ql_types/units/UnitTable.hpp"

void showUnitTable();

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

std::string utf8(const std::wstring& w) { return ConvertUStringToStdString(w); }

const UnitBase& abstractNamed(UnitDatabase& db, const std::wstring& name) { return *db.getAbstractUnit(name).begin(); }

// SI brochure definitions; exact.
void tableCatalogue(UnitDatabase& db, const std::wstring& /*path*/) {
  db.addUnitSystem(UnitSystem(L"SI"));
  db.addUnitPrefix(
      *UnitFactory::createUnitPrefix(L"kilo", L"k", L"k", L"kilo", F::createConversionFactor(1, 1, 3), {}));
  for (const auto& [name, symbol] : {std::pair{L"length", L"L"}, std::pair{L"time", L"T"}}) {
    auto a = UnitFactory::createAbstractUnit(-10, name, symbol, name, symbol, symbol);
    a->parseExpressionAndGenerateAST();
    db.addUnit(*a);
  }
  struct Row {
    const wchar_t *name, *symbol, *expr, *abstract;
    ConversionFactor factor;
    bool kilo;
  };
  for (const Row& r : {Row{L"metre", L"m", L"m", L"length", F::createConversionFactor(1, 1, 0), true},
                       Row{L"second", L"s", L"s", L"time", F::createConversionFactor(1, 1, 0), false},
                       Row{L"hour", L"h", L"s", L"time", F::createConversionFactor(3600, 1, 0), false}}) {
    std::vector<std::reference_wrapper<const UnitPrefix>> prefixes;
    if (r.kilo) prefixes.emplace_back(*db.getUnitPrefix(L"k").begin());
    auto u = UnitFactory::createUnit(-10, r.name, r.expr, r.symbol, r.symbol, r.name, r.factor, L"", {L"SI"}, prefixes,
                                     false, abstractNamed(db, r.abstract));
    u->parseExpressionAndGenerateAST();
    u->checkValidity(false, StrictExponents);
    db.addWhitelistedUnits(*u);
    db.addUnit(*u);
  }
}

}  // namespace

void showUnitTable() {
  std::cout << "\n=== A unit table: the road of one request ===\n";
  auto previous = UnitDatabase::setLoader(tableCatalogue);
  UnitDatabase::getUnitDatabase()->clearAll();
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  UnitTable table;
  std::cout << "  a new table holds " << table.getNumUnits() << " units: inherit " << table.getUnitId(L"inherit")
            << ", unitless " << table.getUnitId(L"unitless") << '\n';

  std::wstring unitText, abstractText;
  splitUnitExpr(L"km/h", unitText, abstractText);
  std::cout << "  1 split \"km/h\": unit text \"" << utf8(unitText) << "\", abstract text \"" << utf8(abstractText)
            << "\"\n";
  std::cout << "  2 valid expression: " << std::boolalpha << UnitBase::isValidUnitExpr(unitText) << "; \"km\" reads as "
            << utf8(db->getUnit(L"km").begin()->get().getName()) << " (prefixed "
            << db->getUnit(L"km").begin()->get().isPrefixedUnit() << ")\n";
  std::cout << "  3 the whole text in the catalogue: " << db->getUnit(unitText).size()
            << " units, so it is composed; name form \""
            << utf8(UnitTable::composeUnitTexts(unitText, UnitTable::NameText)) << "\"\n";
  const int kmh = table.registerUnit(L"km/h");
  const UnitBase& u = *table.getUnit(kmh);
  std::cout << "  4 resolved:";
  for (const auto& [f, e] : u.getFundamentalUnitsExprAST())
    std::cout << ' ' << utf8(f.get().getSymbol()) << '^' << e.getNet();
  std::cout << ", base factor " << u.getInternalBaseConversionFactor().toDouble() << '\n';
  UnitDatabase::UnitList partners;
  db->getWhitelistedUnits(partners, {L"m"});
  std::cout << "  5 id " << kmh << "; units seen with metre in the whitelist:";
  for (const UnitBase& p : partners) std::cout << ' ' << utf8(p.getName());
  std::cout << "\n    registering \"km/h\" again gives id " << table.registerUnit(L"km/h") << '\n';

  const int ms = table.registerUnit(L"m/s");
  const UnitComparison c = table.equivalentUnits(kmh, ms);
  std::cout << "  6 \"km/h\" against \"m/s\" (id " << ms << "): " << c;
  if (qlsvDiagnostic why = UnitTable::errorCause(c)) std::cout << " (" << why->getMessage() << ")";
  const UnitNumericInfoForConversions info = table.getConversionInfo(kmh, ms);
  std::cout << "\n    90 km/h = " << 90 * info.getScalingFactor() + info.getOffset() << " m/s\n";
  std::cout << "  text forms of id " << kmh << ": name \"" << utf8(table.getUnitNameExpr(kmh)) << "\", symbol \""
            << utf8(table.getUnitSymbolExpr(kmh)) << "\", ascii \"" << utf8(table.getUnitAsciiSymbolExpr(kmh))
            << "\", display \"" << utf8(table.getUnitDispExpr(kmh)) << "\"\n";
  const int annotated = table.registerUnit(L"m@length");
  std::cout << "  \"m@length\" gets id " << annotated << ": name \"" << utf8(table.getUnitNameExpr(annotated))
            << "\", symbol \"" << utf8(table.getUnitSymbolExpr(annotated)) << "\", display \""
            << utf8(table.getUnitDispExpr(annotated)) << "\"\n";
  int id = -10;
  if (qlsvDiagnostic d = UnitTable::RegisterUnit(&table, "model/Gain", L"m*s@length", &id))
    std::cout << "  a dimensionally inconsistent registration, as a diagnostic:\n" << d->getReport();
  std::cout << "  the table still holds " << table.getNumUnits() << " units\n";

  PhysModUnitsObserverInterface announce;
  announce("kph", "m/s", 1.0 / 3.6, 0.0);  // a name the catalogue does not know
  announce("km", "m", 1000.0, 0.0);
  announce("h", "s", 3600.0, 0.0);
  const int fromPhysMod = table.getQuillonUnitForPhysModUnit(L"km/h");
  std::cout << "  physical-modelling \"km/h\" becomes \"" << utf8(table.getUserSpecifiedUnitExpr(fromPhysMod))
            << "\" (id " << fromPhysMod << "), equivalent to id " << kmh << ": "
            << (table.equivalentUnits(fromPhysMod, kmh) == UnitsEquivalent) << "; back: \""
            << utf8(table.getPhysModUnitForQuillonUnit(kmh)) << "\"\n";
  try {
    table.getQuillonUnitForPhysModUnit(L"kph");
  } catch (const fl::except::IException& e) {
    std::cout << "  \"kph\" is refused: " << e.what() << '\n';
  }
  std::cout << std::noboolalpha;
  table.resetToBuiltin();
  std::cout << "  after resetToBuiltin: " << table.getNumUnits() << " units\n";
  UnitDatabase::setLoader(previous);
  db->clearAll();
}
