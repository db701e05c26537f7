// Canonical forms: expressions to polynomials and back.
#include "ql_types/symbolic/internal/Normalizer.hpp"

#include <algorithm>
#include <climits>

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"
#include "ql_types/symbolic/internal/StructuralOrder.hpp"

namespace QL {
namespace internal {

// A term with its factors in the canonical order, for sorting and writing.
struct OrderedTerm {
  const Term* term;
  Monomial factors;
  unsigned long degree;
};

namespace {

OrderedTerm ordered(const SymbolicExprTable& table, const Term& t) {
  OrderedTerm o{&t, t.mono, 0};
  std::sort(o.factors.begin(), o.factors.end(),
            [&table](const auto& a, const auto& b) { return compareStructure(table, a.first, b.first) < 0; });
  for (const auto& f : o.factors) o.degree += f.second;
  return o;
}

// Higher degree first; then factor by factor, the earlier atom first and, for one atom, the higher power
// first. So "a*a+a*b+a+b+1": constants last, names in their order.
bool before(const SymbolicExprTable& table, const OrderedTerm& a, const OrderedTerm& b) {
  if (a.degree != b.degree) return a.degree > b.degree;
  const std::size_t n = std::min(a.factors.size(), b.factors.size());
  for (std::size_t k = 0; k < n; ++k) {
    if (a.factors[k].first != b.factors[k].first)
      return compareStructure(table, a.factors[k].first, b.factors[k].first) < 0;
    if (a.factors[k].second != b.factors[k].second) return a.factors[k].second > b.factors[k].second;
  }
  return a.factors.size() < b.factors.size();
}

bool fitsInt(std::int64_t v) { return v >= -INT_MAX && v <= INT_MAX; }

bool isOne(const Poly& p) {
  std::int64_t v;
  return isConstant(p, v) && v == 1;
}

}  // namespace

unsigned Normalizer::normalize(unsigned index) {
  auto it = canonical_.find(index);
  if (it != canonical_.end()) return it->second;
  const SymbolicExpr& e = table_.get(index);
  unsigned result = index;
  switch (e.getKind()) {
    case SymbolicExprKind::IntValue:
    case SymbolicExprKind::String:
      break;
    case SymbolicExprKind::ND:
    case SymbolicExprKind::Equal:
    case SymbolicExprKind::GreaterThan:
    case SymbolicExprKind::LessThan:
      result = keep(index);
      break;
    default: {
      Poly p;
      if (!polyOf(index, p) || !build(p, result)) result = keep(index);
      break;
    }
  }
  canonical_.emplace(index, result);
  return result;
}

unsigned Normalizer::keep(unsigned index) {
  const SymbolicExpr& e = table_.get(index);
  std::vector<unsigned> operands(e.getNumOperands());
  for (unsigned k = 0; k < operands.size(); ++k) operands[k] = normalize(e.getOperand(k));
  return enterLike(table_, e, operands);
}

bool Normalizer::polyOf(unsigned index, Poly& out) {
  auto it = polys_.find(index);
  if (it != polys_.end()) {
    out = it->second;
    return true;
  }
  if (failed_.count(index)) return false;
  Poly acc;
  if (!expand(index, 1, acc) || !internal::normalize(acc)) {
    failed_.insert(index);
    return false;
  }
  out = acc;
  polys_.emplace(index, std::move(acc));
  return true;
}

bool Normalizer::accumulate(unsigned index, std::int64_t sign, Poly& acc) {
  const SymbolicExprKind kind = table_.get(index).getKind();
  const bool additive =
      kind == SymbolicExprKind::Plus || kind == SymbolicExprKind::Minus || kind == SymbolicExprKind::UnaryMinus;
  // Sums are spread into the running sum without a polynomial of their own, so a long chain costs its
  // length; a sum met again (a shared part) is worth remembering, and is then taken whole.
  if (additive && !seen_.insert(index).second) {
    Poly p;
    return polyOf(index, p) && appendScaled(acc, p, sign);
  }
  return expand(index, sign, acc);
}

bool Normalizer::expand(unsigned index, std::int64_t sign, Poly& acc) {
  const SymbolicExpr& e = table_.get(index);
  switch (e.getKind()) {
    case SymbolicExprKind::IntValue:
      if (const int v = static_cast<const SymbolicIntValue&>(e).getValue()) acc.push_back(Term{{}, sign * v});
      return true;
    case SymbolicExprKind::String:
      return appendScaled(acc, atomPoly(index), sign);
    case SymbolicExprKind::Plus:
      return accumulate(e.getOperand(0), sign, acc) && accumulate(e.getOperand(1), sign, acc);
    case SymbolicExprKind::Minus:
      return accumulate(e.getOperand(0), sign, acc) && accumulate(e.getOperand(1), -sign, acc);
    case SymbolicExprKind::UnaryMinus:
      return accumulate(e.getOperand(0), -sign, acc);
    case SymbolicExprKind::Multiply: {
      Poly a, b, product;
      if (polyOf(e.getOperand(0), a) && polyOf(e.getOperand(1), b) && multiply(a, b, product))
        return appendScaled(acc, product, sign);
      break;
    }
    case SymbolicExprKind::Divide: {
      Poly q;
      if (quotient(index, q)) return appendScaled(acc, q, sign);
      break;
    }
    case SymbolicExprKind::Modulo: {
      Poly r;
      if (remainder(index, r)) return appendScaled(acc, r, sign);
      break;
    }
    default:
      return appendScaled(acc, atomPoly(normalize(index)), sign);
  }
  // Out of checked range: the node stays as it is and counts as an atom.
  return appendScaled(acc, atomPoly(keep(index)), sign);
}

bool Normalizer::quotient(unsigned index, Poly& out) {
  const SymbolicExpr& e = table_.get(index);
  Poly n, d;
  if (!polyOf(e.getOperand(0), n) || !polyOf(e.getOperand(1), d)) return false;
  if (d.empty()) return byZero(SymbolicExprKind::Divide, n, out);
  if (n.empty()) {
    out.clear();
    return true;
  }
  // trunc(g*n / (g*d)) = trunc(n / d) for any non-zero g, exact or not, so common factors always cancel;
  // and trunc(-x) = -trunc(x), so signs move out.
  std::int64_t sign = 1;
  if (!cancel(n, d, true, sign)) return false;
  if (isOne(d)) {
    out = std::move(n);
    return sign > 0 || negate(out);
  }
  if (n == d) {
    out = constantPoly(sign);
    return true;
  }
  unsigned ni, di;
  if (!build(n, ni) || !build(d, di)) return false;
  out = atomPoly(enterBinary(table_, SymbolicExprKind::Divide, ni, di));
  out[0].coef = sign;
  return true;
}

bool Normalizer::remainder(unsigned index, Poly& out) {
  const SymbolicExpr& e = table_.get(index);
  Poly n, d;
  if (!polyOf(e.getOperand(0), n) || !polyOf(e.getOperand(1), d)) return false;
  if (d.empty()) return byZero(SymbolicExprKind::Modulo, n, out);
  std::int64_t nv, dv;
  if (isConstant(n, nv) && isConstant(d, dv)) {
    out = constantPoly(dv == -1 ? 0 : nv % dv);  // x % -1 is 0, and INT64_MIN % -1 would trap
    return true;
  }
  if (n.empty()) {
    out.clear();
    return true;
  }
  // (g*n) % (g*d) = g * (n % d) for any non-zero g; n % -d = n % d; (-n) % d = -(n % d).
  const std::uint64_t g = content(n, d);
  const Monomial m = monomialGcd(n, d);
  divideExact(n, g, m);
  divideExact(d, g, m);
  if (leading(d).coef < 0 && !negate(d)) return false;
  std::int64_t sign = 1;
  if (leading(n).coef < 0) {
    if (!negate(n)) return false;
    sign = -1;
  }
  if (isOne(d) || n == d) {
    out.clear();
    return true;
  }
  if (g > static_cast<std::uint64_t>(INT64_MAX)) return false;
  unsigned ni, di;
  if (!build(n, ni) || !build(d, di)) return false;
  const unsigned atom = enterBinary(table_, SymbolicExprKind::Modulo, ni, di);
  out = Poly{Term{multiplyMonomials(m, Monomial{{atom, 1u}}), sign * static_cast<std::int64_t>(g)}};
  return true;
}

// Division or remainder by zero is left for whoever evaluates it; only the numerator's sign moves out,
// as for any other denominator.
bool Normalizer::byZero(SymbolicExprKind kind, Poly& n, Poly& out) {
  std::int64_t sign = 1;
  if (!n.empty() && leading(n).coef < 0) {
    if (!negate(n)) return false;
    sign = -1;
  }
  unsigned ni, zero;
  if (!build(n, ni) || !build(Poly{}, zero)) return false;
  out = atomPoly(enterBinary(table_, kind, ni, zero));
  out[0].coef = sign;
  return true;
}

bool Normalizer::cancel(Poly& n, Poly& d, bool pullSign, std::int64_t& sign) {
  const std::uint64_t g = content(n, d);
  if (g == 0) return true;
  const Monomial m = monomialGcd(n, d);
  divideExact(n, g, m);
  divideExact(d, g, m);
  if (!d.empty() && leading(d).coef < 0 && (!negate(d) || !negate(n))) return false;
  if (pullSign && !n.empty() && leading(n).coef < 0) {
    if (!negate(n)) return false;
    sign = -sign;
  }
  return true;
}

const Term& Normalizer::leading(const Poly& p) {
  const Term* best = &p[0];
  OrderedTerm bestOrdered = ordered(table_, p[0]);
  for (std::size_t i = 1; i < p.size(); ++i) {
    OrderedTerm o = ordered(table_, p[i]);
    if (before(table_, o, bestOrdered)) {
      best = &p[i];
      bestOrdered = std::move(o);
    }
  }
  return *best;
}

bool Normalizer::build(const Poly& p, unsigned& out) {
  if (p.empty()) {
    out = SymbolicIntValue(table_, 0).getId(table_);
    return true;
  }
  std::vector<OrderedTerm> terms;
  terms.reserve(p.size());
  for (const Term& t : p) {
    if (!fitsInt(t.coef)) return false;
    terms.push_back(ordered(table_, t));
  }
  std::sort(terms.begin(), terms.end(),
            [this](const OrderedTerm& a, const OrderedTerm& b) { return before(table_, a, b); });
  // Lead with the first term of positive coefficient, if any, so that "b-a" rather than "-a+b".
  std::size_t lead = 0;
  while (lead < terms.size() && terms[lead].term->coef < 0) ++lead;
  if (lead == terms.size()) lead = 0;
  unsigned sum;
  if (!buildTerm(terms[lead], true, sum)) return false;
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (i == lead) continue;
    unsigned t;
    if (!buildTerm(terms[i], false, t)) return false;
    sum = enterBinary(table_, terms[i].term->coef > 0 ? SymbolicExprKind::Plus : SymbolicExprKind::Minus, sum, t);
  }
  out = sum;
  return true;
}

// A term as "atom*atom*...*|c|". The leading term carries its own sign: a negative integer, or the first
// atom negated ("-a*2"); other terms are written with their magnitude after "+" or "-".
bool Normalizer::buildTerm(const OrderedTerm& o, bool lead, unsigned& out) {
  const std::int64_t c = o.term->coef;
  const bool negated = lead && c < 0;
  const std::int64_t magnitude = c < 0 ? -c : c;
  if (o.factors.empty()) {
    out = SymbolicIntValue(table_, static_cast<int>(negated ? c : magnitude)).getId(table_);
    return true;
  }
  bool first = true;
  unsigned product = 0;
  for (const auto& f : o.factors) {
    for (unsigned k = 0; k < f.second; ++k) {
      unsigned x = f.first;
      if (first && negated) x = SymbolicUnaryMinusExpr(table_, x).getId(table_);
      product = first ? x : enterBinary(table_, SymbolicExprKind::Multiply, product, x);
      first = false;
    }
  }
  if (magnitude != 1) {
    const unsigned k = SymbolicIntValue(table_, static_cast<int>(magnitude)).getId(table_);
    product = enterBinary(table_, SymbolicExprKind::Multiply, product, k);
  }
  out = product;
  return true;
}

}  // namespace internal
}  // namespace QL
