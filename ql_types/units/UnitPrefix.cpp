// UnitPrefix and UnitPrefixAlias.
#include "ql_types/units/UnitPrefix.hpp"

#include <utility>

#include "ql_types/unitdb/UnitDatabase.hpp"

namespace QLTypeSys {

UnitPrefix::UnitPrefix(std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
                       ConversionFactor factor)
    : name_(std::move(name)),
      symbol_(std::move(symbol)),
      asciiSymbol_(std::move(asciiSymbol)),
      displayName_(std::move(displayName)),
      conversionFactor_(std::move(factor)) {}

UnitPrefix::~UnitPrefix() = default;
const std::vector<UnitSystem*>& UnitPrefix::getUnitSystems() const { return unitSystems_; }
UnitPrefix* UnitPrefix::clone() const { return new UnitPrefix(*this); }
bool UnitPrefix::isAliased() const { return false; }
void UnitPrefix::addOwnerUnitSystem(UnitSystem* system) { unitSystems_.push_back(system); }
void UnitPrefix::addOwnerUnitSystem(const std::wstring& systemName) {
  if (UnitSystem* system = UnitDatabase::getUnitDatabase()->getUnitSystem(systemName)) addOwnerUnitSystem(system);
}

int UnitPrefix::compare(const UnitPrefix& other) const {
  if (this == &other) return 0;
  if (int c = name_.compare(other.name_)) return c < 0 ? -1 : 1;
  if (int c = symbol_.compare(other.symbol_)) return c < 0 ? -1 : 1;
  if (int c = asciiSymbol_.compare(other.asciiSymbol_)) return c < 0 ? -1 : 1;
  // kept: reversed, as for units.
  if (conversionFactor_ != other.conversionFactor_) return conversionFactor_ < other.conversionFactor_ ? 1 : -1;
  return 0;
}

bool UnitPrefix::equivalent(const UnitPrefix& other) const { return conversionFactor_ == other.conversionFactor_; }

UnitPrefixAlias::UnitPrefixAlias(std::wstring name, std::wstring symbol, std::wstring asciiSymbol,
                                 std::wstring displayName, const UnitPrefix& aliasedPrefix, bool nameInherited,
                                 bool symbolInherited, bool asciiSymbolInherited)
    : UnitPrefix(std::move(name), std::move(symbol), std::move(asciiSymbol), std::move(displayName),
                 aliasedPrefix.getConversionFactor()),
      aliasedPrefix_(aliasedPrefix),
      nameInherited_(nameInherited),
      symbolInherited_(symbolInherited),
      asciiSymbolInherited_(asciiSymbolInherited) {}

UnitPrefixAlias* UnitPrefixAlias::clone() const { return new UnitPrefixAlias(*this); }
bool UnitPrefixAlias::isAliased() const { return true; }

}  // namespace QLTypeSys
