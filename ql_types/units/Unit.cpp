// Unit, CompositeUnit and UnitAlias: construction, identity and the forwarding of a composite to its base
// unit and of an alias to the unit it names.
#include "ql_types/units/Unit.hpp"

#include <utility>

#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

// ---- Unit

Unit::Unit(int id, std::wstring name, std::wstring expr, std::wstring symbol, std::wstring asciiSymbol,
           std::wstring displayName, ConversionFactor factor, const UnitBase& abstractUnit)
    : UnitBase(id, std::move(name), std::move(symbol), std::move(asciiSymbol), std::move(displayName), std::move(expr),
               std::move(factor)),
      abstractUnit_(&abstractUnit) {}

UnitBase::UnitType Unit::getUnitType() const { return 3; }
Unit* Unit::clone() const { return new Unit(*this); }
const std::wstring& Unit::getFundamentalSymbol(unsigned int index) const {
  return UnitDatabase::getUnitDatabase()->getFundamentalUnitSymbol(index);
}
std::string Unit::uniqueId() const { return "dummy Concrete Unit ID"; }

int Unit::compareTemplate(const UnitBase& other) const {
  const auto* that = dynamic_cast<const Unit*>(&other);
  if (that == nullptr) return 0;
  if (int c = getSubUnit().compare(that->getSubUnit())) return c < 0 ? -1 : 1;
  return getAbstractUnit().compare(that->getAbstractUnit());
}

const UnitBase& Unit::getAbstractUnit() const { return *abstractUnit_; }
const std::vector<UnitSystem*>& Unit::getUnitSystems() const { return unitSystems_; }
const UnitPrefix::PrefixSet& Unit::getPrefixes() const { return prefixes_; }

void Unit::addPrefixByName(const std::wstring& name) {
  const UnitPrefix::PrefixSet found = UnitDatabase::getUnitDatabase()->getUnitPrefix(name);
  if (!found.empty()) addPrefix(*found.begin());
}

void Unit::addPrefix(const UnitPrefix& prefix) { prefixes_.insert(std::cref(prefix)); }
bool Unit::hasPrefix(const UnitPrefix& prefix) const { return prefixes_.count(std::cref(prefix)) != 0; }
const std::wstring& Unit::getSubUnit() const { return subUnit_; }
void Unit::setSubUnit(const std::wstring& subUnit) { subUnit_ = subUnit; }
void Unit::setUnitFlag(bool flag) { unitFlag_ = flag; }
bool Unit::getUnitFlag() const { return unitFlag_; }

// ---- CompositeUnit

namespace {

// A client may alias an alias, or prefix a composite, as often as it likes: these follow such chains
// in a loop, so the forwarding below never recurses deeper than one call.

// The first unit of the chain that is not an alias.
const Unit& throughAliases(const Unit& unit) {
  const Unit* at = &unit;
  while (const auto* alias = at->isAliased() ? dynamic_cast<const UnitAlias*>(at) : nullptr)
    at = &alias->getAliasedUnit();
  return *at;
}

// The first unit that is neither an alias nor a composite: the owner of the fundamental map, the
// sub-unit and the flag.
const Unit& throughAliasesAndComposites(const Unit& unit) {
  const Unit* at = &unit;
  for (;;) {
    if (const auto* alias = at->isAliased() ? dynamic_cast<const UnitAlias*>(at) : nullptr)
      at = &alias->getAliasedUnit();
    else if (const auto* composite = at->isPrefixedUnit() ? dynamic_cast<const CompositeUnit*>(at) : nullptr)
      at = &composite->getBaseUnit();
    else
      return *at;
  }
}

// The unit systems of a composite or an alias: a prefix standing alone gives its prefix's.
const std::vector<UnitSystem*>& systemsOf(const Unit& unit) {
  const Unit* at = &unit;
  for (;;) {
    if (const auto* alias = at->isAliased() ? dynamic_cast<const UnitAlias*>(at) : nullptr) {
      at = &alias->getAliasedUnit();
    } else if (const auto* composite = at->isPrefixedUnit() ? dynamic_cast<const CompositeUnit*>(at) : nullptr) {
      if (composite->isPrefixOnly()) return composite->getPrefix().getUnitSystems();
      at = &composite->getBaseUnit();
    } else {
      return at->getUnitSystems();
    }
  }
}

const UnitPrefix::PrefixSet& noPrefixes() {
  static const UnitPrefix::PrefixSet empty;
  return empty;
}

}  // namespace

CompositeUnit::CompositeUnit(const UnitPrefix& prefix, const Unit& baseUnit)
    : Unit(-10, prefix.getName() + baseUnit.getName(), baseUnit.getExpr(), prefix.getSymbol() + baseUnit.getSymbol(),
           prefix.getAsciiSymbol() + baseUnit.getAsciiSymbol(), prefix.getDisplayName() + baseUnit.getDisplayName(),
           prefix.getConversionFactor() * baseUnit.getConversionFactor(), baseUnit.getAbstractUnit()),
      prefix_(&prefix),
      baseUnit_(&baseUnit),
      prefixOnly_(baseUnit.compare(UnitFactory::getDummyUnit()) == 0) {
  updateBaseConversionFactor(prefix.getConversionFactor() * baseUnit.getInternalBaseConversionFactor(), Exponent::one);
}

CompositeUnit* CompositeUnit::clone() const { return new CompositeUnit(*this); }
bool CompositeUnit::isPrefixOnly() const { return prefixOnly_; }
bool CompositeUnit::isPrefixedUnit() const { return true; }
const UnitBase::ExprMap& CompositeUnit::getFundamentalUnitsExprAST() const {
  return throughAliasesAndComposites(*baseUnit_).getFundamentalUnitsExprAST();
}
const std::vector<UnitSystem*>& CompositeUnit::getUnitSystems() const { return systemsOf(*this); }
const UnitPrefix::PrefixSet& CompositeUnit::getPrefixes() const { return noPrefixes(); }
bool CompositeUnit::hasPrefix(const UnitPrefix& /*prefix*/) const { return false; }
const std::wstring& CompositeUnit::getSubUnit() const { return throughAliasesAndComposites(*baseUnit_).getSubUnit(); }
void CompositeUnit::setSubUnit(const std::wstring& /*subUnit*/) {}
void CompositeUnit::setUnitFlag(bool /*flag*/) {}
bool CompositeUnit::getUnitFlag() const { return throughAliasesAndComposites(*baseUnit_).getUnitFlag(); }

// ---- UnitAlias

UnitAlias::UnitAlias(std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
                     const Unit& aliasedUnit, bool nameInherited, bool symbolInherited, bool asciiSymbolInherited)
    : Unit(-10, std::move(name), aliasedUnit.getExpr(), std::move(symbol), std::move(asciiSymbol),
           std::move(displayName), aliasedUnit.getConversionFactor(), aliasedUnit.getAbstractUnit()),
      aliasedUnit_(&aliasedUnit),
      nameInherited_(nameInherited),
      symbolInherited_(symbolInherited),
      asciiSymbolInherited_(asciiSymbolInherited) {
  setId(0);
}

UnitAlias* UnitAlias::clone() const { return new UnitAlias(*this); }
bool UnitAlias::isPrefixOnly() const { return throughAliases(*aliasedUnit_).isPrefixOnly(); }
bool UnitAlias::isPrefixedUnit() const { return throughAliases(*aliasedUnit_).isPrefixedUnit(); }
bool UnitAlias::isAliased() const { return true; }
const ConversionFactor& UnitAlias::getInternalBaseConversionFactor() const {
  return throughAliases(*aliasedUnit_).getInternalBaseConversionFactor();
}
const UnitBase::ExprMap& UnitAlias::getFundamentalUnitsExprAST() const {
  return throughAliasesAndComposites(*aliasedUnit_).getFundamentalUnitsExprAST();
}
const std::vector<UnitSystem*>& UnitAlias::getUnitSystems() const { return systemsOf(*this); }
const UnitPrefix::PrefixSet& UnitAlias::getPrefixes() const { return throughAliases(*aliasedUnit_).getPrefixes(); }
bool UnitAlias::hasPrefix(const UnitPrefix& prefix) const { return throughAliases(*aliasedUnit_).hasPrefix(prefix); }
const std::wstring& UnitAlias::getSubUnit() const { return throughAliasesAndComposites(*aliasedUnit_).getSubUnit(); }
void UnitAlias::setSubUnit(const std::wstring& /*subUnit*/) {}
void UnitAlias::setUnitFlag(bool /*flag*/) {}
bool UnitAlias::getUnitFlag() const { return throughAliasesAndComposites(*aliasedUnit_).getUnitFlag(); }

}  // namespace QLTypeSys
