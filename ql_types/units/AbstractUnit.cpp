// AbstractUnit: construction and identity; its comparisons are in UnitEquivalence.cpp and its resolution
// in UnitResolution.cpp, beside those of Unit.
#include "ql_types/units/AbstractUnit.hpp"

#include <utility>

#include "ql_types/unitdb/UnitDatabase.hpp"

namespace QLTypeSys {

AbstractUnit::AbstractUnit(int id, std::wstring name, std::wstring expr, std::wstring displayName, std::wstring symbol,
                           std::wstring asciiSymbol)
    : UnitBase(id, std::move(name), std::move(symbol), std::move(asciiSymbol), std::move(displayName), std::move(expr),
               ConversionFactor::unity) {}

UnitBase::UnitType AbstractUnit::getUnitType() const { return 2; }
AbstractUnit* AbstractUnit::clone() const { return new AbstractUnit(*this); }
const std::wstring& AbstractUnit::getFundamentalSymbol(unsigned int index) const {
  return UnitDatabase::getUnitDatabase()->getFundamentalAbstractUnitSymbol(index);
}
std::string AbstractUnit::uniqueId() const { return "dummy Abstract Unit ID"; }
void AbstractUnit::checkDimensionalConsistency(ExponentUsage /*usage*/) const {}

}  // namespace QLTypeSys
