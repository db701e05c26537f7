// Canonical forms: expressions to polynomials and back.
#include "ql_types/symbolic/internal/Normalizer.hpp"

#include <algorithm>
#include <climits>
#include <stdexcept>

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Chains.hpp"
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
  run(index, Want::Canon);
  return canonical_.at(index);
}

bool Normalizer::polyOf(unsigned index, Poly& out) {
  run(index, Want::Poly);
  out = polys_.at(index);
  return true;
}

void Normalizer::run(unsigned index, Want want) {
  std::vector<Task> todo{{index, want}};
  while (!todo.empty()) {
    const Task t = todo.back();
    if (done(t)) {
      todo.pop_back();
      continue;
    }
    const std::size_t size = todo.size();
    if (step(t, todo))
      todo.pop_back();  // a step that computes pushes nothing, so t is still on top
    else if (todo.size() == size)
      throw std::logic_error("Normalizer: a task waits on nothing");  // not reached
  }
}

bool Normalizer::done(const Task& t) const {
  return t.want == Want::Poly ? polys_.count(t.index) != 0 : canonical_.count(t.index) != 0;
}

bool Normalizer::need(unsigned index, Want want, std::vector<Task>& todo) {
  const Task t{index, want};
  if (done(t)) return true;
  // Integers and names need nothing: done at once, without a round through the stack.
  const SymbolicExprKind kind = table_.get(index).getKind();
  if (kind == SymbolicExprKind::IntValue || kind == SymbolicExprKind::String) return step(t, todo);
  todo.push_back(t);
  return false;
}

bool Normalizer::step(const Task& t, std::vector<Task>& todo) {
  return t.want == Want::Poly ? stepPoly(t.index, todo) : stepCanon(t.index, todo);
}

bool Normalizer::stepPoly(unsigned index, std::vector<Task>& todo) {
  const SymbolicExpr& e = table_.get(index);
  switch (e.getKind()) {
    case SymbolicExprKind::IntValue:
      polys_.emplace(index, constantPoly(static_cast<const SymbolicIntValue&>(e).getValue()));
      return true;
    case SymbolicExprKind::String:
      polys_.emplace(index, atomPoly(index));
      return true;
    case SymbolicExprKind::Plus:
    case SymbolicExprKind::Minus:
    case SymbolicExprKind::UnaryMinus:
    case SymbolicExprKind::Multiply:
      return stepChainPoly(index, todo);
    case SymbolicExprKind::Divide:
    case SymbolicExprKind::Modulo: {
      const unsigned l = e.getOperand(0);
      const unsigned r = e.getOperand(1);
      if (!opaque_.count(index)) {
        const bool haveL = need(l, Want::Poly, todo);
        const bool haveR = need(r, Want::Poly, todo);
        if (!haveL || !haveR) return false;
        Poly q;
        const bool ok = e.getKind() == SymbolicExprKind::Divide ? quotient(index, q) : remainder(index, q);
        if (ok && q.size() <= kMaxTerms) {
          polys_.emplace(index, std::move(q));
          return true;
        }
        opaque_.insert(index);
      }
      // Out of checked range: the node stays as it is and counts as an atom.
      const bool haveL = need(l, Want::Canon, todo);
      const bool haveR = need(r, Want::Canon, todo);
      if (!haveL || !haveR) return false;
      polys_.emplace(index, atomPoly(keep(index)));
      return true;
    }
    default:  // multi-dimensional sizes and relations are atoms in their canonical form
      if (!need(index, Want::Canon, todo)) return false;
      polys_.emplace(index, atomPoly(canonical_.at(index)));
      return true;
  }
}

bool Normalizer::stepChainPoly(unsigned index, std::vector<Task>& todo) {
  ChainKind chain = ChainKind::Sum;
  chainKindOf(table_.get(index).getKind(), chain);
  if (!opaque_.count(index)) {
    // The leaves found on the first visit are kept for the second, once their polynomials are done.
    auto found = pendingLeaves_.find(index);
    Leaves leaves;
    bool counted = true;
    if (found != pendingLeaves_.end()) {
      leaves = std::move(found->second);
      pendingLeaves_.erase(found);
    } else {
      counted = walker_.leaves(table_, index, chain, leaves);
    }
    if (counted) {
      bool ready = true;
      for (const auto& leaf : leaves) ready = need(leaf.first, Want::Poly, todo) && ready;
      if (!ready) {
        pendingLeaves_.emplace(index, std::move(leaves));
        return false;
      }
      // A sum may have more than kMaxTerms terms, but no more than it has parts, and a product more only
      // where one long factor is multiplied by single terms. So no polynomial is longer than the text it
      // comes from, and a nest of n levels costs at most n times kMaxTerms.
      Poly p;
      bool ok = true;
      if (chain == ChainKind::Sum) {
        for (const auto& [leaf, m] : leaves) ok = ok && appendScaled(p, polys_.at(leaf), m);
        ok = ok && internal::normalize(p, std::max(kMaxTerms, leaves.size()));
      } else {
        std::vector<std::pair<const Poly*, std::int64_t>> factors;
        factors.reserve(leaves.size());
        for (const auto& [leaf, m] : leaves) factors.emplace_back(&polys_.at(leaf), m);
        ok = product(factors, p);
      }
      if (ok) {
        polys_.emplace(index, std::move(p));
        return true;
      }
    }
    opaque_.insert(index);
  }
  // Out of checked range: the chain stays as it is, with its leaves normalised, and counts as an atom.
  if (!needChainLeaves(index, todo)) return false;
  polys_.emplace(index, atomPoly(keepChain(index)));
  return true;
}

bool Normalizer::stepCanon(unsigned index, std::vector<Task>& todo) {
  const SymbolicExpr& e = table_.get(index);
  switch (e.getKind()) {
    case SymbolicExprKind::IntValue:
    case SymbolicExprKind::String:
      canonical_.emplace(index, index);
      return true;
    case SymbolicExprKind::ND:
    case SymbolicExprKind::Equal:
    case SymbolicExprKind::GreaterThan:
    case SymbolicExprKind::LessThan: {
      bool ready = true;
      for (unsigned k = 0, n = e.getNumOperands(); k < n; ++k)
        ready = need(e.getOperand(k), Want::Canon, todo) && ready;
      if (!ready) return false;
      canonical_.emplace(index, keep(index));
      return true;
    }
    default:
      break;
  }
  if (!need(index, Want::Poly, todo)) return false;
  if (!unbuildable_.count(index)) {
    unsigned out;
    if (build(polys_.at(index), out)) {
      canonical_.emplace(index, out);
      return true;
    }
    unbuildable_.insert(index);
  }
  ChainKind chain;
  if (chainKindOf(e.getKind(), chain)) {
    if (!needChainLeaves(index, todo)) return false;
    canonical_.emplace(index, keepChain(index));
    return true;
  }
  const bool haveL = need(e.getOperand(0), Want::Canon, todo);
  const bool haveR = need(e.getOperand(1), Want::Canon, todo);
  if (!haveL || !haveR) return false;
  canonical_.emplace(index, keep(index));
  return true;
}

unsigned Normalizer::keep(unsigned index) {
  const SymbolicExpr& e = table_.get(index);
  std::vector<unsigned> operands(e.getNumOperands());
  for (unsigned k = 0; k < operands.size(); ++k) operands[k] = canonical_.at(e.getOperand(k));
  return enterLike(table_, e, operands);
}

bool Normalizer::needChainLeaves(unsigned index, std::vector<Task>& todo) {
  ChainKind chain = ChainKind::Sum;
  chainKindOf(table_.get(index).getKind(), chain);
  std::vector<unsigned> nodes, leaves;
  walker_.nodes(table_, index, chain, nodes, leaves);
  bool ready = true;
  for (const unsigned leaf : leaves) ready = need(leaf, Want::Canon, todo) && ready;
  return ready;
}

unsigned Normalizer::keepChain(unsigned index) {
  ChainKind chain = ChainKind::Sum;
  chainKindOf(table_.get(index).getKind(), chain);
  std::vector<unsigned> nodes, leaves;
  walker_.nodes(table_, index, chain, nodes, leaves);
  // Operands come before their users, so one ascending sweep rebuilds the chain.
  std::unordered_map<unsigned, unsigned> rebuilt;
  rebuilt.reserve(nodes.size());
  std::vector<unsigned> operands;
  for (const unsigned i : nodes) {
    const SymbolicExpr& e = table_.get(i);
    operands.resize(e.getNumOperands());
    for (unsigned k = 0; k < operands.size(); ++k) {
      const unsigned op = e.getOperand(k);
      auto it = rebuilt.find(op);
      operands[k] = it != rebuilt.end() ? it->second : canonical_.at(op);
    }
    rebuilt[i] = enterLike(table_, e, operands);
  }
  return rebuilt.at(index);
}

bool Normalizer::quotient(unsigned index, Poly& out) {
  const SymbolicExpr& e = table_.get(index);
  const Poly& pn = polys_.at(e.getOperand(0));
  const Poly& pd = polys_.at(e.getOperand(1));
  // A division of long sums stays as it is: cancelling would cost their length at every level.
  if (pn.size() > kMaxTerms || pd.size() > kMaxTerms) return false;
  Poly n = pn, d = pd;
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
  const Poly& pn = polys_.at(e.getOperand(0));
  const Poly& pd = polys_.at(e.getOperand(1));
  if (pn.size() > kMaxTerms || pd.size() > kMaxTerms) return false;
  Poly n = pn, d = pd;
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
  out = Poly{Term{{}, sign * static_cast<std::int64_t>(g)}};
  return multiplyMonomials(m, Monomial{{atom, 1u}}, out[0].mono);
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
  // What cannot be written is found before anything is sorted or entered.
  for (const Term& t : p) {
    if (!fitsInt(t.coef)) return false;
    for (const auto& f : t.mono)
      if (f.second > kMaxExponent) return false;
  }
  std::vector<OrderedTerm> terms;
  terms.reserve(p.size());
  for (const Term& t : p) terms.push_back(ordered(table_, t));
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
