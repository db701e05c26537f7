// The canonical form of expressions, shared by simplification and by the factoring of divisions.
//
// One pass of normalize() turns an entry into its canonical form: sums, differences, products, negations
// and integers become one integer polynomial over canonical atoms (names, divisions, remainders,
// multi-dimensional sizes, relations), written back in the canonical order. Divisions and remainders
// first cancel the integer and monomial factors common to both sides. Where checked 64-bit arithmetic
// would overflow, a coefficient would not fit an int, or an expansion would pass kMaxTerms, the node is
// kept as it stands, with its operands normalised, and treated as an atom.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>

#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/internal/Polynomial.hpp"

namespace QL {

class SymbolicExprTable;

namespace internal {

struct OrderedTerm;

/// Canonicalises entries of one table; remembers what it computed, so one object serves many calls.
class Normalizer {
 public:
  explicit Normalizer(SymbolicExprTable& table) : table_(table) {}

  /// The canonical form of the entry at index.
  unsigned normalize(unsigned index);
  /// The polynomial of the entry at index over canonical atoms; false where it cannot be formed.
  bool polyOf(unsigned index, Poly& out);
  /// The canonical expression of p; false when a coefficient does not fit an int.
  bool build(const Poly& p, unsigned& out);
  /// Cancels the integer and monomial factors common to n and d and makes d's leading coefficient (in
  /// the canonical order) positive. With pullSign, n's is made positive too, and sign (1 or -1) receives
  /// the sign taken out; without it, any sign stays in n.
  bool cancel(Poly& n, Poly& d, bool pullSign, std::int64_t& sign);

  SymbolicExprTable& table() { return table_; }

 private:
  bool expand(unsigned index, std::int64_t sign, Poly& acc);
  bool accumulate(unsigned index, std::int64_t sign, Poly& acc);
  bool quotient(unsigned index, Poly& out);
  bool remainder(unsigned index, Poly& out);
  bool byZero(SymbolicExprKind kind, Poly& n, Poly& out);
  unsigned keep(unsigned index);
  const Term& leading(const Poly& p);
  bool buildTerm(const OrderedTerm& o, bool lead, unsigned& out);

  SymbolicExprTable& table_;
  std::unordered_map<unsigned, unsigned> canonical_;
  std::unordered_map<unsigned, Poly> polys_;
  std::unordered_set<unsigned> failed_;  // entries whose polynomial is out of checked range
  std::unordered_set<unsigned> seen_;    // sums met once already: a second meeting stores their polynomial
};

}  // namespace internal
}  // namespace QL
