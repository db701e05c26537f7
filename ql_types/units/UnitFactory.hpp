// UnitFactory: makes every unit and prefix object, and keeps the few shared ones (the default unit that
// stands for "unitless", and the dummy unit a prefix standing alone is applied to).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ql_types/units/AbstractUnit.hpp"
#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitPrefix.hpp"

namespace QLTypeSys {

/// Creates units and prefixes; results are owned by the caller.
class UnitFactory {
 public:
  /// Only expr set, factor unity.
  static std::unique_ptr<AbstractUnit> createAbstractUnit(const std::wstring& expr);
  static std::unique_ptr<AbstractUnit> createAbstractUnit(int id, const std::wstring& name, const std::wstring& expr,
                                                          const std::wstring& displayName, const std::wstring& symbol,
                                                          const std::wstring& asciiSymbol);
  /// System names are looked up in the unit database (unknown ones dropped).
  static std::unique_ptr<Unit> createUnit(int id, const std::wstring& name, const std::wstring& expr,
                                          const std::wstring& symbol, const std::wstring& asciiSymbol,
                                          const std::wstring& displayName, const ConversionFactor& factor,
                                          const std::wstring& subUnit, const std::vector<std::wstring>& unitSystemNames,
                                          const std::vector<std::reference_wrapper<const UnitPrefix>>& prefixes,
                                          bool unitFlag, const UnitBase& abstractUnit);
  /// Empty texts take the aliased unit's; a text is inherited when empty or equal to the aliased unit's.
  static std::unique_ptr<UnitAlias> createUnitAlias(const std::wstring& name, const std::wstring& symbol,
                                                    const std::wstring& asciiSymbol, const std::wstring& displayName,
                                                    const Unit& unit, const std::vector<std::wstring>& unitSystemNames);
  static std::unique_ptr<UnitPrefix> createUnitPrefix(const std::wstring& name, const std::wstring& symbol,
                                                      const std::wstring& asciiSymbol, const std::wstring& displayName,
                                                      const ConversionFactor& factor,
                                                      const std::vector<std::wstring>& unitSystemNames);
  /// By the rule of createUnitAlias.
  static std::unique_ptr<UnitPrefixAlias> createUnitPrefixAlias(const std::wstring& name, const std::wstring& symbol,
                                                                const std::wstring& asciiSymbol,
                                                                const std::wstring& displayName,
                                                                const UnitPrefix& prefix,
                                                                const std::vector<std::wstring>& unitSystemNames);

  /// "unitless" in all five texts, id -10.
  static const AbstractUnit& getDefaultAbstractUnit();
  /// "unitless" in all five texts, of the default abstract unit.
  static const Unit& getDefaultUnit();
  /// Empty texts, factor unity.
  static const UnitPrefix& getDefaultUnitPrefix();
  /// Texts "prefix", expr "unitless".
  static const AbstractUnit& getDummyAbstractUnit();
  /// Name and expr "unitless", other texts empty: the base of a prefix that stands alone.
  static const Unit& getDummyUnit();
};

}  // namespace QLTypeSys
