// The canonical form of expressions, shared by simplification and by the factoring of divisions.
//
// One pass of normalize() turns an entry into its canonical form: sums, differences, products, negations
// and integers become one integer polynomial over canonical atoms (names, divisions, remainders,
// multi-dimensional sizes, relations), written back in the canonical order. Divisions and remainders
// first cancel the integer and monomial factors common to both sides. A chain of sums or of products is
// taken whole (see Chains.hpp), so its length costs time, not call depth.
//
// Where checked 64-bit arithmetic would overflow, a coefficient would not fit an int, a power would pass
// kMaxExponent, or an expansion would pass the bounds of Polynomial.hpp, the node is kept as it stands
// with its parts normalised and treated as an atom; for a chain the parts are its leaves.
//
// Nothing here recurses: work is a stack of (entry, what is wanted) tasks, each computed once its
// prerequisites are, and remembered. Prerequisites are parts of lower index, or the polynomial of the
// same entry for its canonical form, so the stack always drains.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/internal/Chains.hpp"
#include "ql_types/symbolic/internal/Polynomial.hpp"

namespace QL {

class SymbolicExprTable;

namespace internal {

struct OrderedTerm;

/// Powers above this are not written out as products: such a product is kept as it stands.
inline constexpr unsigned kMaxExponent = 64;

/// Canonicalises entries of one table; remembers what it computed, so one object serves many calls.
class Normalizer {
 public:
  explicit Normalizer(SymbolicExprTable& table) : table_(table) {}

  /// The canonical form of the entry at index.
  unsigned normalize(unsigned index);
  /// The polynomial of the entry at index over canonical atoms (a node out of checked range is an atom).
  bool polyOf(unsigned index, Poly& out);
  /// The canonical expression of p; false when a coefficient does not fit an int or a power passes
  /// kMaxExponent.
  bool build(const Poly& p, unsigned& out);
  /// Cancels the integer and monomial factors common to n and d and makes d's leading coefficient (in
  /// the canonical order) positive. With pullSign, n's is made positive too, and sign (1 or -1) receives
  /// the sign taken out; without it, any sign stays in n.
  bool cancel(Poly& n, Poly& d, bool pullSign, std::int64_t& sign);

  SymbolicExprTable& table() { return table_; }

 private:
  enum class Want : unsigned char { Poly, Canon };
  struct Task {
    unsigned index;
    Want want;
  };

  void run(unsigned index, Want want);
  bool done(const Task& t) const;
  /// Whether (index, want) is done; if not, pushes it onto todo.
  bool need(unsigned index, Want want, std::vector<Task>& todo);
  /// Computes t if its prerequisites are done and answers true; else pushes the missing ones.
  bool step(const Task& t, std::vector<Task>& todo);
  bool stepPoly(unsigned index, std::vector<Task>& todo);
  bool stepCanon(unsigned index, std::vector<Task>& todo);
  bool stepChainPoly(unsigned index, std::vector<Task>& todo);
  /// The entry at index rebuilt from the canonical forms of its operands, which must be done.
  unsigned keep(unsigned index);
  /// The chain at index rebuilt from the canonical forms of its leaves, which must be done.
  unsigned keepChain(unsigned index);
  /// Whether every leaf of the chain at index has its canonical form; pushes the missing ones.
  bool needChainLeaves(unsigned index, std::vector<Task>& todo);
  bool quotient(unsigned index, Poly& out);
  bool remainder(unsigned index, Poly& out);
  bool byZero(SymbolicExprKind kind, Poly& n, Poly& out);
  const Term& leading(const Poly& p);
  bool buildTerm(const OrderedTerm& o, bool lead, unsigned& out);

  SymbolicExprTable& table_;
  std::unordered_map<unsigned, unsigned> canonical_;
  std::unordered_map<unsigned, Poly> polys_;
  std::unordered_set<unsigned> opaque_;       // entries whose polynomial is out of checked range: atoms
  std::unordered_set<unsigned> unbuildable_;  // entries whose polynomial cannot be written back
  std::unordered_map<unsigned, Leaves> pendingLeaves_;
  ChainWalker walker_;  // chains waiting for their leaves' polynomials
};

}  // namespace internal
}  // namespace QL
