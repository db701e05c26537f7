// Factoring divisions: every operand becomes a fraction of two polynomials, combined by the rules of
// fractions, then cancelled once at the end.
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Normalizer.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"

namespace QL {

namespace {

using internal::Poly;

struct Fraction {
  Poly n, d;
};

// The fraction of the entry at index; false where it cannot be formed (overflow, size, zero denominator).
bool fraction(internal::Normalizer& norm, unsigned index, Fraction& out) {
  const SymbolicExpr& e = norm.table().get(index);
  const SymbolicExprKind kind = e.getKind();
  switch (kind) {
    case SymbolicExprKind::Plus:
    case SymbolicExprKind::Minus: {
      Fraction a, b;
      if (!fraction(norm, e.getOperand(0), a) || !fraction(norm, e.getOperand(1), b)) return false;
      const std::int64_t sign = kind == SymbolicExprKind::Plus ? 1 : -1;
      if (a.d == b.d) {
        out.d = std::move(a.d);
        return internal::add(a.n, b.n, sign, out.n);
      }
      Poly x, y;
      return internal::multiply(a.n, b.d, x) && internal::multiply(b.n, a.d, y) && internal::add(x, y, sign, out.n) &&
             internal::multiply(a.d, b.d, out.d);
    }
    case SymbolicExprKind::Multiply: {
      Fraction a, b;
      return fraction(norm, e.getOperand(0), a) && fraction(norm, e.getOperand(1), b) &&
             internal::multiply(a.n, b.n, out.n) && internal::multiply(a.d, b.d, out.d);
    }
    case SymbolicExprKind::Divide: {
      Fraction a, b;
      if (!fraction(norm, e.getOperand(0), a) || !fraction(norm, e.getOperand(1), b)) return false;
      if (!b.n.empty()) return internal::multiply(a.n, b.d, out.n) && internal::multiply(a.d, b.n, out.d);
      break;  // a division by zero stays where it is, as a part of its own
    }
    case SymbolicExprKind::UnaryMinus:
      return fraction(norm, e.getOperand(0), out) && internal::negate(out.n);
    default:
      break;
  }
  out.d = internal::constantPoly(1);
  return norm.polyOf(index, out.n);
}

}  // namespace

SymbolicExprFactorDivision::SymbolicExprFactorDivision(SymbolicExprTable& table)
    : normalizer_(std::make_unique<internal::Normalizer>(table)) {}

SymbolicExprFactorDivision::~SymbolicExprFactorDivision() = default;

unsigned SymbolicExprFactorDivision::factorDivision(unsigned index) {
  internal::Normalizer& norm = *normalizer_;
  SymbolicExprTable& table = norm.table();
  table.get(index);  // raises for a bad index
  Fraction f;
  std::int64_t sign = 1;
  std::int64_t one;
  unsigned n, d;
  if (!fraction(norm, index, f) || f.d.empty() || !norm.cancel(f.n, f.d, false, sign)) return norm.normalize(index);
  if (f.n == f.d) f.n = f.d = internal::constantPoly(1);
  if (internal::isConstant(f.d, one) && one == 1) return norm.build(f.n, n) ? n : norm.normalize(index);
  if (!norm.build(f.n, n) || !norm.build(f.d, d)) return norm.normalize(index);
  return internal::enterBinary(table, SymbolicExprKind::Divide, n, d);
}

}  // namespace QL
