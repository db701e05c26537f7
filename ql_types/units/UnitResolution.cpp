// Resolution of a unit's expression: the terms as written, the same reduced to fundamental units, and the
// accumulated factor to those; the validity and consistency checks that read them.
//
// Every walk here is over the flat term list of the parser or over a term map, never recursive: a term's
// own maps were filled when that unit was resolved, and the fundamental units hold themselves.
#include <ostream>
#include <stdexcept>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/AbstractUnit.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"
#include "ql_types/units/internal/PrintText.hpp"

namespace QLTypeSys {

namespace {

// base times factor^e, with unity and the exponent zero leaving it alone. Counts (1, 1) are not the
// exponent zero: they raise to the net 0 (kept, so "m/m" multiplies by factor^0).
void multiplyInto(ConversionFactor& base, const ConversionFactor& factor, Exponent e) {
  if (factor == ConversionFactor::unity || e == Exponent::zero) return;
  if (e == Exponent::one)
    base *= factor;
  else
    base *= factor ^ e;
}

bool parses(const std::wstring& text, UnitExprAST& ast) {
  try {
    return parseUnitExpr(text, ast);
  } catch (const std::out_of_range&) {  // not UTF-16: no expression
    return false;
  }
}

}  // namespace

void UnitBase::updateBaseConversionFactor(const ConversionFactor& factor, Exponent e) {
  multiplyInto(internalBaseConversionFactor_, factor, e);
}

bool UnitBase::addToExprASTChecked(ExprMap& map, const UnitBase& unit, Exponent e) {
  auto it = map.find(std::cref(unit));
  if (it == map.end()) {
    map.emplace(std::cref(unit), e);
    return true;
  }
  Exponent sum;
  if (!Exponent::checkedAdd(it->second, e, sum)) return false;
  it->second = sum;
  return true;
}

void UnitBase::addToExprAST(ExprMap& map, const UnitBase& unit, Exponent e) {
  auto it = map.find(std::cref(unit));
  if (it == map.end())
    map.emplace(std::cref(unit), e);
  else
    it->second += e;
}

void UnitBase::parseExpressionAndGenerateAST() {
  UnitExprAST ast;
  // Text that is not UTF-16 throws std::out_of_range from the parser, as everywhere unit texts are read:
  // no diagnostic could carry it as an argument.
  if (!parseUnitExpr(expr_, ast)) qlRaise(qlmsg::unit::ParsingError, expr_);
  // Built aside and swapped in at the end, so a term that fails leaves the unit as it was.
  ExprMap terms;
  ExprMap fundamentals;
  ConversionFactor base(ConversionFactor::unity);
  const bool singleTerm = ast.names.size() == 1;
  for (std::size_t i = 0; i < ast.names.size(); ++i) {
    const Exponent e = ast.exponents[i];
    const UnitBase& term = lookupTerm(ast.names[i]);
    if (!addToExprASTChecked(terms, term, e)) qlRaise(qlmsg::unit::ParsingError, expr_);
    const ConversionFactor& termBase = term.getInternalBaseConversionFactor();
    if ((!termBase.isAffine() && !termBase.isReciprocal()) || (singleTerm && e == Exponent::one)) {
      for (const auto& [f, x] : term.getFundamentalUnitsExprAST()) {
        Exponent product;
        if (!Exponent::checkedMultiply(x, e, product) || !addToExprASTChecked(fundamentals, f, product))
          qlRaise(qlmsg::unit::ParsingError, expr_);
      }
      multiplyInto(base, termBase, e);
    } else {
      // A non-linear unit (an offset or a reciprocal) inside a compound: it stays a term of its own, its
      // scale joins as a plain double, and the result may not be used to convert.
      if (!addToExprASTChecked(fundamentals, term, e)) qlRaise(qlmsg::unit::ParsingError, expr_);
      multiplyInto(base, ConversionFactorFactory::createConversionFactor(termBase.toDouble()), e);
      base.setWellDefined(false);
    }
  }
  multiplyInto(base, conversionFactor_, Exponent::one);
  unitsInfo_.swap(terms);
  fundamentalUnitsExprAST_.swap(fundamentals);
  internalBaseConversionFactor_ = base;
}

const UnitBase& AbstractUnit::lookupTerm(const std::wstring& name) const {
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  UnitSet found = db->getAbstractUnit(name);
  db->addMatchingFundamentalAbstractUnitToList(name, found);
  if (found.empty()) qlRaise(qlmsg::unit::AbstractUnitNotInDatabase, name);
  return *found.begin();
}

const UnitBase& Unit::lookupTerm(const std::wstring& name) const {
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  UnitSet found = db->getUnit(name);
  db->addMatchingFundamentalUnitToList(name, found);
  if (found.empty()) qlRaise(qlmsg::unit::UnitNotInDatabase, name);
  return *found.begin();
}

void UnitBase::checkValidity(bool skipNameCheck, ExponentUsage usage) const {
  if (!skipNameCheck && !isValidStringForUnitName(name_)) qlRaise(qlmsg::unit::AlphaNumericStringOnlyForName, name_);
  checkDimensionalConsistency(usage);
}

void UnitBase::getDimensionalExpr(ExprMap& out) const {
  for (const auto& [term, e] : unitsInfo_) {
    for (const auto& [f, x] : term.get().getFundamentalUnitsExprAST()) {
      Exponent product;
      if (!Exponent::checkedMultiply(x, e, product) || !addToExprASTChecked(out, f, product))
        qlRaise(qlmsg::unit::ParsingError, expr_);
    }
  }
}

void Unit::checkDimensionalConsistency(ExponentUsage usage) const {
  const UnitBase& abstract = getAbstractUnit();
  if (abstract.compare(UnitFactory::getDefaultAbstractUnit()) == 0) return;
  ExprMap dims;
  getDimensionalExpr(dims);
  // This unit's dimensions, expressed through the abstract units of its fundamental terms.
  ExprMap viaAbstract;
  for (const auto& [f, x] : dims) {
    const auto* unit = dynamic_cast<const Unit*>(&f.get());
    if (unit == nullptr) continue;
    ExprMap fDims;
    unit->getAbstractUnit().getDimensionalExpr(fDims);
    for (const auto& [g, y] : fDims) {
      Exponent product;
      if (!Exponent::checkedMultiply(y, x, product) || !addToExprASTChecked(viaAbstract, g, product))
        qlRaise(qlmsg::unit::ParsingError, getExpr());
    }
  }
  ExprMap expected;
  abstract.getDimensionalExpr(expected);
  if (!exprMapsEqual(viaAbstract, expected, usage))
    qlRaise(qlmsg::unit::DimensionallyInconsistent, abstract.getName(), getName());
}

void UnitBase::displayCanonicalForm(std::ostream& out) const {
  for (const auto& [f, e] : getFundamentalUnitsExprAST())
    out << internal::printableUtf8(f.get().getSymbol()) << "^" << e.getNet() << std::endl;
}

bool UnitBase::isValidUnitName(const std::wstring& text) {
  return !UnitDatabase::getUnitDatabase()->getUnit(text).empty();
}

bool UnitBase::isValidUnitExpr(const std::wstring& text) {
  UnitExprAST ast;
  if (!parses(text, ast)) return false;
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  for (const std::wstring& name : ast.names)
    if (db->getUnit(name).empty()) return false;
  return true;
}

}  // namespace QLTypeSys
