// The table of fundamental units, built in table order. The temperature's symbol is the two code points
// U+00CE U+02DC exactly as the catalogue has always stored them (kept: lookups compare it exactly).
#include "ql_types/unitdb/internal/FundamentalUnits.hpp"

#include <stdexcept>

#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

/// The door through which the fundamental units enter themselves in their own term maps.
class FundamentalUnitsAccess {
 public:
  static void enter(UnitBase& holder, const UnitBase& term, Exponent e) {
    holder.unitsInfoRef()[std::cref(term)] = e;
    holder.fundamentalRef()[std::cref(term)] = e;
  }
};

namespace internal {

namespace {

struct Row {
  const wchar_t* abstractName;
  const wchar_t* abstractExpr;
  const wchar_t* abstractDisplay;
  const wchar_t* abstractSymbol;
  const wchar_t* abstractAscii;
  const wchar_t* unitName;
  const wchar_t* unitExpr;
  const wchar_t* unitSymbol;
  const wchar_t* unitAscii;
};

// clang-format off
const Row kRows[] = {
    {L"mass", L"Mass", L"mass", L"M", L"M", L"Kilogram", L"kg", L"kg", L"kg"},
    {L"length", L"Length", L"length", L"L", L"L", L"Metres", L"m", L"m", L"m"},
    {L"time", L"Time", L"time", L"T", L"T", L"Seconds", L"s", L"s", L"s"},
    {L"electric_current", L"Electric_Current", L"electric_current", L"I", L"I", L"Amperes", L"A", L"A", L"A"},
    {L"thermodynamic_temperature", L"Thermodynamic_Temperature", L"thermodynamic_temperature", L"\u00CE\u02DC",
     L"Temp", L"Kelvin", L"K", L"K", L"K"},
    {L"amount_of_substance", L"Amount_Of_Substance", L"amount_of_substance", L"N", L"N", L"Moles", L"mol", L"mol",
     L"mol"},
    {L"luminous_intensity", L"Luminous_Intensity", L"luminous_intensity", L"J", L"J", L"Candela", L"cd", L"cd", L"cd"},
    {L"memory", L"Memory", L"memory", L"memory", L"memory", L"bits", L"Bits", L"b", L"b"},
};
// clang-format on

template <class P>
P* checked(P* p) {
  if (p == nullptr) throw std::runtime_error("Null pointer in 'push_back()'");
  return p;
}

}  // namespace

FundamentalUnits::FundamentalUnits() {
  for (const Row& row : kRows) {
    abstractUnits_.emplace_back(
        checked(UnitFactory::createAbstractUnit(-10, row.abstractName, row.abstractExpr, row.abstractDisplay,
                                                row.abstractSymbol, row.abstractAscii)
                    .release()));
    UnitBase& abstract = *abstractUnits_.back();
    FundamentalUnitsAccess::enter(abstract, abstract, Exponent::one);
    abstractSet_.insert(std::cref(abstract));

    units_.emplace_back(checked(UnitFactory::createUnit(-10, row.unitName, row.unitExpr, row.unitSymbol, row.unitAscii,
                                                        L"", ConversionFactor::unity, L"", {}, {}, false, abstract)
                                    .release()));
    UnitBase& unit = *units_.back();
    FundamentalUnitsAccess::enter(unit, unit, Exponent::one);
    unitSet_.insert(std::cref(unit));
  }
  unitfree_.reset(checked(
      UnitFactory::createAbstractUnit(-10, L"unitfree", L"Unitfree", L"unitfree", L"unitfree", L"unitfree").release()));
  for (const UnitBase& abstract : abstractSet_) FundamentalUnitsAccess::enter(*unitfree_, abstract, Exponent::zero);
  extraAbstractSet_.insert(std::cref(*unitfree_));
}

FundamentalUnits::~FundamentalUnits() = default;

}  // namespace internal
}  // namespace QLTypeSys
