// Factoring divisions: every part becomes a fraction of two polynomials, combined by the rules of
// fractions, then cancelled once at the end. Parts are visited in order of index, never recursively, and
// a chain of sums or products is combined as a whole.
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Chains.hpp"
#include "ql_types/symbolic/internal/Normalizer.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"

namespace QL {

namespace {

using internal::Poly;

struct Fraction {
  Poly n, d;
};

using Fractions = std::unordered_map<unsigned, Fraction>;
using Chains = std::unordered_map<unsigned, internal::Leaves>;

// What a fraction costs: the space of its two polynomials.
std::size_t weightOf(const Fraction& f) { return internal::weight(f.n) + internal::weight(f.d); }

// A sum of fractions: numerators over one denominator are added first, then the groups are brought to a
// common denominator one by one.
bool sumOf(const internal::Leaves& leaves, const Fractions& fractions, Fraction& out) {
  std::map<Poly, Poly, bool (*)(const Poly&, const Poly&)> groups(internal::lessPoly);
  for (const auto& [leaf, m] : leaves) {
    const Fraction& f = fractions.at(leaf);
    if (!internal::appendScaled(groups[f.d], f.n, m)) return false;
  }
  out.n.clear();
  out.d = internal::constantPoly(1);
  bool first = true;
  for (auto& [d, n] : groups) {
    if (!internal::normalize(n, internal::kMaxSumTerms)) return false;
    if (first) {
      out.n = std::move(n);
      out.d = d;
      first = false;
      continue;
    }
    Poly x, y, sum, denominator;
    if (!internal::multiply(out.n, d, x) || !internal::multiply(n, out.d, y) || !internal::add(x, y, 1, sum) ||
        !internal::multiply(out.d, d, denominator))
      return false;
    out.n = std::move(sum);
    out.d = std::move(denominator);
  }
  return true;
}

bool productOf(const internal::Leaves& leaves, const Fractions& fractions, Fraction& out) {
  std::vector<std::pair<const Poly*, std::int64_t>> n, d;
  n.reserve(leaves.size());
  d.reserve(leaves.size());
  for (const auto& [leaf, m] : leaves) {
    const Fraction& f = fractions.at(leaf);
    n.emplace_back(&f.n, m);
    d.emplace_back(&f.d, m);
  }
  return internal::product(n, out.n) && internal::product(d, out.d);
}

// The fraction of the entry at index from those of its parts; false where it cannot be formed.
bool fractionOf(internal::Normalizer& norm, unsigned index, const Chains& chains, const Fractions& fractions,
                Fraction& out) {
  const SymbolicExpr& e = norm.table().get(index);
  auto chain = chains.find(index);
  if (chain != chains.end()) {
    return e.getKind() == SymbolicExprKind::Multiply ? productOf(chain->second, fractions, out)
                                                     : sumOf(chain->second, fractions, out);
  }
  if (SymbolicDivideExpr::isa(e)) {
    const Fraction& a = fractions.at(e.getOperand(0));
    const Fraction& b = fractions.at(e.getOperand(1));
    if (!b.n.empty()) return internal::multiply(a.n, b.d, out.n) && internal::multiply(a.d, b.n, out.d);
    // a division by zero stays where it is, as a part of its own
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
  // The entries whose fractions are needed, found with an explicit stack: the root, the leaves of each
  // chain of sums or products, and the operands of divisions.
  std::vector<unsigned> needed;
  Chains chains;
  std::unordered_set<unsigned> seen{index};
  std::vector<unsigned> stack{index};
  std::vector<unsigned> parts;
  bool division = false;
  internal::ChainWalker walker;
  while (!stack.empty()) {
    const unsigned i = stack.back();
    stack.pop_back();
    needed.push_back(i);
    const SymbolicExpr& e = table.get(i);
    parts.clear();
    internal::ChainKind kind;
    if (internal::chainKindOf(e.getKind(), kind)) {
      internal::Leaves leaves;
      if (!walker.leaves(table, i, kind, leaves)) return norm.normalize(index);
      for (const auto& leaf : leaves) parts.push_back(leaf.first);
      chains.emplace(i, std::move(leaves));
    } else if (SymbolicDivideExpr::isa(e)) {
      division = true;
      parts = {e.getOperand(0), e.getOperand(1)};
    }
    for (const unsigned p : parts)
      if (seen.insert(p).second) stack.push_back(p);
  }
  if (!division) return norm.normalize(index);  // nothing to bring up: the canonical form is the answer
  // Parts have lower indexes than what uses them, so ascending order has every part ready in time.
  std::sort(needed.begin(), needed.end());
  // Fractions of nested divisions can grow at every level: past a budget linear in the size of the
  // input, the factored form is given up for the simplified input.
  std::size_t budget = internal::kMaxSumTerms + 16 * needed.size();
  Fractions fractions;
  for (const unsigned i : needed) {
    Fraction f;
    if (!fractionOf(norm, i, chains, fractions, f)) return norm.normalize(index);
    const std::size_t w = weightOf(f);
    if (w > budget) return norm.normalize(index);
    budget -= w;
    fractions.emplace(i, std::move(f));
  }
  Fraction& f = fractions.at(index);
  std::int64_t sign = 1;
  std::int64_t one;
  unsigned n, d;
  if (f.d.empty() || !norm.cancel(f.n, f.d, false, sign)) return norm.normalize(index);
  if (f.n == f.d) f.n = f.d = internal::constantPoly(1);
  if (internal::isConstant(f.d, one) && one == 1) return norm.build(f.n, n) ? n : norm.normalize(index);
  if (!norm.build(f.n, n) || !norm.build(f.d, d)) return norm.normalize(index);
  return internal::enterBinary(table, SymbolicExprKind::Divide, n, d);
}

}  // namespace QL
