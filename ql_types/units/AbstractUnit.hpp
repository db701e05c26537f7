// AbstractUnit: a physical quantity (length, force) that concrete units measure. It has no scale of its
// own: its factor is unity and conversions between abstract units are trivial.
#pragma once

#include "ql_types/units/UnitBase.hpp"

namespace QLTypeSys {

/// A named physical quantity.
class AbstractUnit : public UnitBase {
 public:
  AbstractUnit(int id, std::wstring name, std::wstring expr, std::wstring displayName, std::wstring symbol,
               std::wstring asciiSymbol);

  UnitType getUnitType() const override;
  AbstractUnit* clone() const override;
  bool isCompatibleWith(const UnitBase& other, ExponentUsage usage) const override;
  bool isReciprocalOf(const UnitBase& other) const override;
  UnitComparison equivalentTo(const UnitBase& other, ExponentUsage usage) const override;
  const std::wstring& getFundamentalSymbol(unsigned int index) const override;
  /// An abstract unit of the database by name or symbol, or a fundamental one; raises "AbstractUnitNotInDatabase".
  const UnitBase& lookupTerm(const std::wstring& name) const override;
  std::string uniqueId() const override;
  /// Nothing to check: an abstract unit is its own reference.
  void checkDimensionalConsistency(ExponentUsage usage) const override;
  UnitNumericInfoForConversions conversionInfoTo(const UnitBase& other, ExponentUsage usage, bool flag) const override;
};

}  // namespace QLTypeSys
