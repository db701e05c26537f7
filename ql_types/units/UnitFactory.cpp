// UnitFactory: object creation and the shared units, made on first use and kept for the process.
#include "ql_types/units/UnitFactory.hpp"

#include "ql_types/unitdb/UnitDatabase.hpp"

namespace QLTypeSys {

namespace {

// Only a non-empty list asks the database: the fundamental units are made while the database is created.
template <class Add>
void resolveSystems(const std::vector<std::wstring>& names, Add add) {
  if (names.empty()) return;
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  for (const std::wstring& name : names)
    if (UnitSystem* system = db->getUnitSystem(name)) add(system);
}

// An empty text takes the aliased element's; a text is inherited when empty or equal to it.
struct InheritedText {
  std::wstring text;
  bool inherited;
  InheritedText(const std::wstring& given, const std::wstring& aliased)
      : text(given.empty() ? aliased : given), inherited(given.empty() || given == aliased) {}
};

}  // namespace

std::unique_ptr<AbstractUnit> UnitFactory::createAbstractUnit(const std::wstring& expr) {
  return std::make_unique<AbstractUnit>(-10, L"", expr, L"", L"", L"");
}

std::unique_ptr<AbstractUnit> UnitFactory::createAbstractUnit(int id, const std::wstring& name,
                                                              const std::wstring& expr, const std::wstring& displayName,
                                                              const std::wstring& symbol,
                                                              const std::wstring& asciiSymbol) {
  return std::make_unique<AbstractUnit>(id, name, expr, displayName, symbol, asciiSymbol);
}

std::unique_ptr<Unit> UnitFactory::createUnit(int id, const std::wstring& name, const std::wstring& expr,
                                              const std::wstring& symbol, const std::wstring& asciiSymbol,
                                              const std::wstring& displayName, const ConversionFactor& factor,
                                              const std::wstring& subUnit,
                                              const std::vector<std::wstring>& unitSystemNames,
                                              const std::vector<std::reference_wrapper<const UnitPrefix>>& prefixes,
                                              bool unitFlag, const UnitBase& abstractUnit) {
  auto unit = std::make_unique<Unit>(id, name, expr, symbol, asciiSymbol, displayName, factor, abstractUnit);
  resolveSystems(unitSystemNames, [&](UnitSystem* s) { unit->addUnitSystem(s); });
  for (const UnitPrefix& p : prefixes) unit->addPrefix(p);
  unit->setSubUnit(subUnit);
  unit->setUnitFlag(unitFlag);
  return unit;
}

std::unique_ptr<UnitAlias> UnitFactory::createUnitAlias(const std::wstring& name, const std::wstring& symbol,
                                                        const std::wstring& asciiSymbol,
                                                        const std::wstring& displayName, const Unit& unit,
                                                        const std::vector<std::wstring>& unitSystemNames) {
  const InheritedText n(name, unit.getName()), s(symbol, unit.getSymbol()), a(asciiSymbol, unit.getAsciiSymbol()),
      d(displayName, unit.getDisplayName());
  auto alias = std::make_unique<UnitAlias>(n.text, s.text, a.text, d.text, unit, n.inherited, s.inherited, a.inherited);
  resolveSystems(unitSystemNames, [&](UnitSystem* system) { alias->addUnitSystem(system); });
  return alias;
}

std::unique_ptr<UnitPrefix> UnitFactory::createUnitPrefix(const std::wstring& name, const std::wstring& symbol,
                                                          const std::wstring& asciiSymbol,
                                                          const std::wstring& displayName,
                                                          const ConversionFactor& factor,
                                                          const std::vector<std::wstring>& unitSystemNames) {
  auto prefix = std::make_unique<UnitPrefix>(name, symbol, asciiSymbol, displayName, factor);
  resolveSystems(unitSystemNames, [&](UnitSystem* s) { prefix->addOwnerUnitSystem(s); });
  return prefix;
}

std::unique_ptr<UnitPrefixAlias> UnitFactory::createUnitPrefixAlias(
    const std::wstring& name, const std::wstring& symbol, const std::wstring& asciiSymbol,
    const std::wstring& displayName, const UnitPrefix& prefix, const std::vector<std::wstring>& unitSystemNames) {
  const InheritedText n(name, prefix.getName()), s(symbol, prefix.getSymbol()), a(asciiSymbol, prefix.getAsciiSymbol()),
      d(displayName, prefix.getDisplayName());
  auto alias =
      std::make_unique<UnitPrefixAlias>(n.text, s.text, a.text, d.text, prefix, n.inherited, s.inherited, a.inherited);
  resolveSystems(unitSystemNames, [&](UnitSystem* system) { alias->addOwnerUnitSystem(system); });
  return alias;
}

const AbstractUnit& UnitFactory::getDefaultAbstractUnit() {
  static const AbstractUnit unit(-10, L"unitless", L"unitless", L"unitless", L"unitless", L"unitless");
  return unit;
}

const Unit& UnitFactory::getDefaultUnit() {
  static const Unit unit(-10, L"unitless", L"unitless", L"unitless", L"unitless", L"unitless", ConversionFactor::unity,
                         getDefaultAbstractUnit());
  return unit;
}

const UnitPrefix& UnitFactory::getDefaultUnitPrefix() {
  static const UnitPrefix prefix(L"", L"", L"", L"", ConversionFactor::unity);
  return prefix;
}

const AbstractUnit& UnitFactory::getDummyAbstractUnit() {
  static const AbstractUnit unit(-10, L"prefix", L"unitless", L"prefix", L"prefix", L"prefix");
  return unit;
}

const Unit& UnitFactory::getDummyUnit() {
  static const Unit unit(-10, L"unitless", L"unitless", L"", L"", L"", ConversionFactor::unity,
                         getDefaultAbstractUnit());
  return unit;
}

}  // namespace QLTypeSys
