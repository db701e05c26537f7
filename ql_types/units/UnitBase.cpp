// UnitBase: fields, the total order of units, the name test and the text form.
#include "ql_types/units/UnitBase.hpp"

#include <boost/spirit/home/support/char_encoding/unicode/query.hpp>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "ql_types/units/UnitNumericInfoForConversions.hpp"
#include "ql_types/units/internal/CodePoints.hpp"
#include "ql_types/units/internal/PrintText.hpp"

namespace QLTypeSys {

UnitBase::UnitBase(int id, std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
                   std::wstring expr, ConversionFactor factor)
    : id_(id),
      name_(std::move(name)),
      symbol_(std::move(symbol)),
      asciiSymbol_(std::move(asciiSymbol)),
      displayName_(std::move(displayName)),
      expr_(std::move(expr)),
      conversionFactor_(std::move(factor)),
      internalBaseConversionFactor_(ConversionFactor::unity) {}

UnitBase::~UnitBase() = default;

UnitBase::UnitType UnitBase::getUnitType() const { return 1; }
void UnitBase::setId(int id) { id_ = id; }
int UnitBase::getId() const { return id_; }
bool UnitBase::isPrefixOnly() const { return false; }
bool UnitBase::isPrefixedUnit() const { return false; }
bool UnitBase::isAliased() const { return false; }
void UnitBase::print(std::ostream& out) const {
  out << "Unit : '" << internal::printableUtf8(expr_) << "'" << std::endl;
}
const ConversionFactor& UnitBase::getInternalBaseConversionFactor() const { return internalBaseConversionFactor_; }
const UnitBase::ExprMap& UnitBase::getFundamentalUnitsExprAST() const { return fundamentalUnitsExprAST_; }
int UnitBase::compareTemplate(const UnitBase& /*other*/) const { return 0; }

namespace {

int compareText(const std::wstring& a, const std::wstring& b) {
  const int c = a.compare(b);
  return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

}  // namespace

int UnitBase::compare(const UnitBase& other) const {
  if (this == &other) return 0;
  const bool prefixedHere = isPrefixedUnit() && !isPrefixOnly();
  const bool prefixedThere = other.isPrefixedUnit() && !other.isPrefixOnly();
  if (prefixedHere != prefixedThere) return prefixedHere ? 1 : -1;
  const bool onlyHere = isPrefixOnly();
  if (onlyHere != other.isPrefixOnly()) return onlyHere ? 1 : -1;
  if (int c = compareText(name_, other.name_)) return c;
  if (int c = compareText(symbol_, other.symbol_)) return c;
  if (int c = compareText(asciiSymbol_, other.asciiSymbol_)) return c;
  // kept: the lesser factor sorts after, the reverse of the texts; stored catalogues rely on this order.
  if (conversionFactor_ != other.conversionFactor_) return conversionFactor_ < other.conversionFactor_ ? 1 : -1;
  if (int c = compareText(expr_, other.expr_)) return c;
  return compareTemplate(other);
}

bool UnitBase::isValidStringForUnitName(const std::wstring& text) {
  internal::CodePoints cps;
  try {
    cps = internal::decodeUtf16(text);
  } catch (const std::out_of_range&) {
    return false;
  }
  for (std::uint32_t c : cps) {
    // The operators are never alphanumeric; tested by name so the rule reads whole.
    if (internal::isUnitExprOperator(c) || !boost::spirit::ucd::is_alphanumeric(c)) return false;
  }
  return true;
}

std::string UnitBase::getUniqueID(const UnitBase* unit) { return unit->uniqueId(); }

bool UnitBase::compatible(const UnitBase& a, const UnitBase& b, ExponentUsage usage) {
  return a.isCompatibleWith(b, usage);
}

UnitComparison UnitBase::equivalent(const UnitBase& a, const UnitBase& b, ExponentUsage usage) {
  return a.equivalentTo(b, usage);
}

UnitNumericInfoForConversions UnitBase::getConversionInfo(const UnitBase& other, ExponentUsage usage, bool flag) const {
  return conversionInfoTo(other, usage, flag);
}

std::ostream& operator<<(std::ostream& out, const UnitBase& unit) {
  unit.print(out);
  return out;
}

}  // namespace QLTypeSys
