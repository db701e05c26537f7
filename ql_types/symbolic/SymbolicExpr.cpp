// The expression classes: identity (hash and fields), operand access and entering.
#include "ql_types/symbolic/SymbolicExpr.hpp"

#include <functional>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/symbolic/SymbolicExprCopy.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Hash.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"

namespace QL {

SymbolicExpr::~SymbolicExpr() = default;

unsigned SymbolicExpr::getId(SymbolicExprTable& table) const {
  if (table_ == &table) return index_ != npos ? index_ : table.enter(*this);
  // From another table: bring the operands over first, so that they merge with what table holds.
  SymbolicExprCopy copy(*table_, table);
  std::vector<unsigned> operands(getNumOperands());
  for (unsigned k = 0; k < operands.size(); ++k) operands[k] = copy(getOperand(k));
  return internal::enterLike(table, *this, operands);
}

unsigned SymbolicExpr::getNumDimensions() const { return 0; }

unsigned SymbolicExpr::getDimension(unsigned i) const {
  const unsigned n = getNumDimensions();
  if (i >= n) qlRaise(qlmsg::symbolic::SymbolicExprDimensionOutOfRange, i, n);
  return getOperand(i);
}

unsigned SymbolicExpr::getNumOperands() const { return 0; }

unsigned SymbolicExpr::getOperand(unsigned k) const {
  qlRaise(qlmsg::symbolic::SymbolicExprOperandOutOfRange, k, getNumOperands());
}

unsigned SymbolicExpr::checkedIndex(const SymbolicExprTable& table, unsigned index) {
  if (index >= table.size()) qlRaise(qlmsg::symbolic::SymbolicExprInvalidIndex, index, table.size());
  return index;
}

// Values and names.

std::unique_ptr<SymbolicExpr> SymbolicIntValue::clone() const { return std::make_unique<SymbolicIntValue>(*this); }
std::size_t SymbolicIntValue::hashFields() const {
  return internal::hashMix(0, static_cast<std::uint64_t>(static_cast<std::int64_t>(value_)));
}
bool SymbolicIntValue::sameFields(const SymbolicExpr& other) const {
  return value_ == static_cast<const SymbolicIntValue&>(other).value_;
}

std::unique_ptr<SymbolicExpr> SymbolicString::clone() const { return std::make_unique<SymbolicString>(*this); }
std::size_t SymbolicString::hashFields() const { return internal::hashMix(1, std::hash<std::string>()(name_)); }
bool SymbolicString::sameFields(const SymbolicExpr& other) const {
  return name_ == static_cast<const SymbolicString&>(other).name_;
}

// Multi-dimensional sizes.

SymbolicNDExpr::SymbolicNDExpr(SymbolicExprTable& table, std::vector<unsigned> dimensions)
    : SymbolicExpr(SymbolicExprKind::ND, table), dims_(std::move(dimensions)) {
  for (unsigned d : dims_) checkedIndex(table, d);
}
unsigned SymbolicNDExpr::getNumDimensions() const { return static_cast<unsigned>(dims_.size()); }
unsigned SymbolicNDExpr::getNumOperands() const { return static_cast<unsigned>(dims_.size()); }
unsigned SymbolicNDExpr::getOperand(unsigned k) const {
  if (k >= dims_.size()) return SymbolicExpr::getOperand(k);
  return dims_[k];
}
std::unique_ptr<SymbolicExpr> SymbolicNDExpr::clone() const { return std::make_unique<SymbolicNDExpr>(*this); }
std::size_t SymbolicNDExpr::hashFields() const {
  std::size_t h = internal::hashMix(2, dims_.size());
  for (unsigned d : dims_) h = internal::hashMix(h, d);
  return h;
}
bool SymbolicNDExpr::sameFields(const SymbolicExpr& other) const {
  return dims_ == static_cast<const SymbolicNDExpr&>(other).dims_;
}

// Negation.

SymbolicUnaryMinusExpr::SymbolicUnaryMinusExpr(SymbolicExprTable& table, const SymbolicExpr& operand)
    : SymbolicExpr(SymbolicExprKind::UnaryMinus, table), arg_(operand.getId(table)) {}
SymbolicUnaryMinusExpr::SymbolicUnaryMinusExpr(SymbolicExprTable& table, unsigned operand)
    : SymbolicExpr(SymbolicExprKind::UnaryMinus, table), arg_(checkedIndex(table, operand)) {}
unsigned SymbolicUnaryMinusExpr::getNumOperands() const { return 1; }
unsigned SymbolicUnaryMinusExpr::getOperand(unsigned k) const {
  if (k != 0) return SymbolicExpr::getOperand(k);
  return arg_;
}
std::unique_ptr<SymbolicExpr> SymbolicUnaryMinusExpr::clone() const {
  return std::make_unique<SymbolicUnaryMinusExpr>(*this);
}
std::size_t SymbolicUnaryMinusExpr::hashFields() const { return internal::hashMix(3, arg_); }
bool SymbolicUnaryMinusExpr::sameFields(const SymbolicExpr& other) const {
  return arg_ == static_cast<const SymbolicUnaryMinusExpr&>(other).arg_;
}

// Two operands.

SymbolicBinaryExpr::SymbolicBinaryExpr(SymbolicExprKind kind, SymbolicExprTable& table, const SymbolicExpr& lhs,
                                       const SymbolicExpr& rhs)
    : SymbolicExpr(kind, table), lhs_(lhs.getId(table)), rhs_(rhs.getId(table)) {}
SymbolicBinaryExpr::SymbolicBinaryExpr(SymbolicExprKind kind, SymbolicExprTable& table, unsigned lhs, unsigned rhs)
    : SymbolicExpr(kind, table), lhs_(checkedIndex(table, lhs)), rhs_(checkedIndex(table, rhs)) {}
unsigned SymbolicBinaryExpr::getNumOperands() const { return 2; }
unsigned SymbolicBinaryExpr::getOperand(unsigned k) const {
  if (k > 1) return SymbolicExpr::getOperand(k);
  return k == 0 ? lhs_ : rhs_;
}
std::size_t SymbolicBinaryExpr::hashFields() const { return internal::hashMix(internal::hashMix(4, lhs_), rhs_); }
bool SymbolicBinaryExpr::sameFields(const SymbolicExpr& other) const {
  const auto& o = static_cast<const SymbolicBinaryExpr&>(other);
  return lhs_ == o.lhs_ && rhs_ == o.rhs_;
}

std::unique_ptr<SymbolicExpr> SymbolicPlusExpr::clone() const { return std::make_unique<SymbolicPlusExpr>(*this); }
std::unique_ptr<SymbolicExpr> SymbolicMinusExpr::clone() const { return std::make_unique<SymbolicMinusExpr>(*this); }
std::unique_ptr<SymbolicExpr> SymbolicMultiplyExpr::clone() const {
  return std::make_unique<SymbolicMultiplyExpr>(*this);
}
std::unique_ptr<SymbolicExpr> SymbolicDivideExpr::clone() const { return std::make_unique<SymbolicDivideExpr>(*this); }
std::unique_ptr<SymbolicExpr> SymbolicModuloExpr::clone() const { return std::make_unique<SymbolicModuloExpr>(*this); }
std::unique_ptr<SymbolicExpr> SymbolicEqualExpr::clone() const { return std::make_unique<SymbolicEqualExpr>(*this); }
std::unique_ptr<SymbolicExpr> SymbolicGreaterThanExpr::clone() const {
  return std::make_unique<SymbolicGreaterThanExpr>(*this);
}
std::unique_ptr<SymbolicExpr> SymbolicLessThanExpr::clone() const {
  return std::make_unique<SymbolicLessThanExpr>(*this);
}

// The kind-to-class map.

unsigned internal::enterBinary(SymbolicExprTable& t, SymbolicExprKind kind, unsigned l, unsigned r) {
  switch (kind) {
    case SymbolicExprKind::Plus:
      return SymbolicPlusExpr(t, l, r).getId(t);
    case SymbolicExprKind::Minus:
      return SymbolicMinusExpr(t, l, r).getId(t);
    case SymbolicExprKind::Multiply:
      return SymbolicMultiplyExpr(t, l, r).getId(t);
    case SymbolicExprKind::Divide:
      return SymbolicDivideExpr(t, l, r).getId(t);
    case SymbolicExprKind::Modulo:
      return SymbolicModuloExpr(t, l, r).getId(t);
    case SymbolicExprKind::Equal:
      return SymbolicEqualExpr(t, l, r).getId(t);
    case SymbolicExprKind::GreaterThan:
      return SymbolicGreaterThanExpr(t, l, r).getId(t);
    case SymbolicExprKind::LessThan:
      return SymbolicLessThanExpr(t, l, r).getId(t);
    default:
      break;
  }
  return SymbolicExpr::npos;  // not reached: callers pass two-operand kinds only
}

unsigned internal::enterLike(SymbolicExprTable& t, const SymbolicExpr& like, const std::vector<unsigned>& ops) {
  switch (like.getKind()) {
    case SymbolicExprKind::IntValue:
      return SymbolicIntValue(t, static_cast<const SymbolicIntValue&>(like).getValue()).getId(t);
    case SymbolicExprKind::String:
      return SymbolicString(t, static_cast<const SymbolicString&>(like).getName()).getId(t);
    case SymbolicExprKind::ND:
      return SymbolicNDExpr(t, ops).getId(t);
    case SymbolicExprKind::UnaryMinus:
      return SymbolicUnaryMinusExpr(t, ops.at(0)).getId(t);
    default:
      return enterBinary(t, like.getKind(), ops.at(0), ops.at(1));
  }
}

}  // namespace QL
