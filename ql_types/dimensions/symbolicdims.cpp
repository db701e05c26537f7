// Symbolic dimension values: arithmetic, dimensions and text forms on the expressions of a table.
#include "ql_types/dimensions/symbolicdims.hpp"

#include <ostream>
#include <stdexcept>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QLTypeSys {

namespace {

constexpr unsigned kSimplifyLimit = 10;

SymbolicDimsTable& checked(SymbolicDimsTable* table) {
  if (table == nullptr) throw std::invalid_argument("SymbolicDims: no table");
  return *table;
}

unsigned idx(int id) { return SymbolicDimsTable::symbDimsId2TableIdx(id); }
int idOf(unsigned index) { return SymbolicDimsTable::tableIdx2SymbDimsId(index); }

unsigned simplified(QL::SymbolicExprTable& t, unsigned index) {
  return QL::SymbolicExprSimplify(t, kSimplifyLimit).simplify(index);
}

// The two-operand forms: both operands are read in the left operand's table, and the result is simplified.
template <class Expr>
SymbolicDims binary(SymbolicDimsTable& table, int lhs, int rhs) {
  QL::SymbolicExprTable& t = table.exprTbl();
  const unsigned index = Expr(t, t.get(idx(lhs)), t.get(idx(rhs))).getId(t);
  return SymbolicDims(table, idOf(simplified(t, index)));
}

int intId(SymbolicDimsTable& table, int value) {
  QL::SymbolicExprTable& t = table.exprTbl();
  return idOf(QL::SymbolicIntValue(t, value).getId(t));
}

int stringId(SymbolicDimsTable& table, std::string const& name) {
  QL::SymbolicExprTable& t = table.exprTbl();
  return idOf(QL::SymbolicString(t, name).getId(t));
}

int ndId(SymbolicDimsTable& table, std::vector<int> const& ids) {
  QL::SymbolicExprTable& t = table.exprTbl();
  std::vector<unsigned> dims;
  dims.reserve(ids.size());
  for (const int id : ids) dims.push_back(idx(id));
  return idOf(QL::SymbolicNDExpr(t, std::move(dims)).getId(t));
}

}  // namespace

SymbolicDimsTable& SymbolicDims::table() const { return checked(table_); }

QL::SymbolicExprTable& SymbolicDims::exprs() const { return table().exprTbl(); }

SymbolicDims SymbolicDims::operator+(SymbolicDims const& other) const {
  return binary<QL::SymbolicPlusExpr>(table(), id_, other.id_);
}
SymbolicDims SymbolicDims::operator-(SymbolicDims const& other) const {
  return binary<QL::SymbolicMinusExpr>(table(), id_, other.id_);
}
SymbolicDims SymbolicDims::operator*(SymbolicDims const& other) const {
  return binary<QL::SymbolicMultiplyExpr>(table(), id_, other.id_);
}
SymbolicDims SymbolicDims::operator/(SymbolicDims const& other) const {
  return binary<QL::SymbolicDivideExpr>(table(), id_, other.id_);
}
SymbolicDims SymbolicDims::operator%(SymbolicDims const& other) const {
  return binary<QL::SymbolicModuloExpr>(table(), id_, other.id_);
}

SymbolicDims SymbolicDims::operator-() const {
  QL::SymbolicExprTable& t = exprs();
  // deliberate: unsimplified, unlike the two-operand forms; callers see the negation as it was written
  return SymbolicDims(table_, idOf(QL::SymbolicUnaryMinusExpr(t, t.get(idx(id_))).getId(t)));
}

unsigned int SymbolicDims::getNumDimensions() const { return exprs().get(idx(id_)).getNumDimensions(); }

SymbolicDims SymbolicDims::getDimension(unsigned int i) const {
  const QL::SymbolicExpr& e = exprs().get(idx(id_));
  if (e.getNumDimensions() == 0) return *this;
  return SymbolicDims(table_, idOf(e.getDimension(i)));
}

SymbolicDims SymbolicDims::getSize(unsigned int n) const {
  QL::SymbolicExprTable& t = exprs();
  const QL::SymbolicExpr& e = t.get(idx(id_));
  if (e.getNumDimensions() == 0) return *this;
  // The running products stay unsimplified; only the final one is simplified, also for n of 0 or 1.
  unsigned product = e.getDimension(0);
  for (unsigned i = 1; i < n; ++i) product = QL::SymbolicMultiplyExpr(t, product, e.getDimension(i)).getId(t);
  return SymbolicDims(table_, idOf(simplified(t, product)));
}

SymbolicDims SymbolicDims::getSize() const {
  unsigned count = getNumDimensions();
  if (count == 0) count = 1;
  if (count == 1) return *this;  // deliberate: as it is, unsimplified; a one-dimensional size keeps its own id
  return getSize(count);
}

std::string SymbolicDims::getExpr() const { return toString(); }

std::string SymbolicDims::getExprWithEmptyInherit() const {
  if (id_ == -1 || id_ == 0) return std::string();
  return toString();
}

std::string SymbolicDims::toString() const { return toString(QL::SymbolicExprPrinter::Predicate::instance()); }

std::string SymbolicDims::toString(QL::SymbolicExprPrinterPredicate const& predicate) const {
  return QL::SymbolicExprPrinter()(exprs().get(idx(id_)), predicate);
}

void SymbolicDims::print(std::ostream& os) const { os << "SymbolicDims : '" << toString() << "'\n"; }

SymbolicDimsIntValue::SymbolicDimsIntValue(SymbolicDimsTable& table, int value)
    : SymbolicDims(table, intId(table, value)) {}
SymbolicDimsIntValue::SymbolicDimsIntValue(SymbolicDimsTable* const table, int value)
    : SymbolicDims(table, intId(checked(table), value)) {}

SymbolicDimsString::SymbolicDimsString(SymbolicDimsTable& table, std::string const& name)
    : SymbolicDims(table, stringId(table, name)) {}
SymbolicDimsString::SymbolicDimsString(SymbolicDimsTable* const table, std::string const& name)
    : SymbolicDims(table, stringId(checked(table), name)) {}

SymbolicDimsND::SymbolicDimsND(SymbolicDimsTable& table, std::vector<int> const& ids)
    : SymbolicDims(table, ndId(table, ids)) {}
SymbolicDimsND::SymbolicDimsND(SymbolicDimsTable* const table, std::vector<int> const& ids)
    : SymbolicDims(table, ndId(checked(table), ids)) {}

}  // namespace QLTypeSys
