// Simplification to a canonical form.
//
// What it guarantees, for integers with C's truncating / and %:
//  - Soundness: the result has the value of the input wherever the input is defined (no division or
//    remainder by zero), for all integer values of the names, negative ones included.
//  - Canonical form: expressions equal as integer polynomials over the same names, divisions and
//    remainders meet at one index. Integers fold under + - * %, and under / when the division is exact;
//    x+0, x*1, x*0, x-x, x/1, x%1 vanish; sums and products are flattened, ordered and collected (a+a is
//    a*2, b*a is a*b, (a*b)*c is a*b*c); integer and monomial factors common to both sides of a division
//    or remainder cancel ((a*4)/2 is a*2, (a*b)/(a*c) is b/c). A division that is not exact stays one.
//  - Determinism: the order of terms and factors depends on structure alone (kinds, then integers by
//    value, names by their bytes), never on addresses or on the order of entering, so indexes and texts
//    are reproducible.
//  - Termination: at most limit passes. One pass reaches the canonical form and a second confirms it, so
//    with a limit of 2 or more converged comes back true (barring the overflow rule below).
//
// Folding never overflows: sums and products are formed with checked 64-bit arithmetic, and where that
// would overflow, where a coefficient would not fit an int, where a power would pass 64 (N*N*...*N is
// written out up to N^64), or where expanding products would pass a few thousand terms, that node is
// left unfolded, with its parts simplified, and counts as an opaque part. For a sum or a product the
// parts are its terms or factors: a chain "a+b+c" that cannot fold stays as written.
//
// Length and depth: a sum or product of any length is taken as a whole (no call depth per term, time
// about n log n), and nothing recurses on the nesting of its input, so expressions of any depth built
// through the API simplify too.
#pragma once

#include <memory>

namespace QL {

class SymbolicExprTable;

namespace internal {
class Normalizer;
}

/// Simplifies entries of one table, entering their canonical forms. One object may serve many calls and
/// reuses what it has worked out.
class SymbolicExprSimplify {
 public:
  /// limit: the largest number of rewrite passes per call; 0 leaves every index as it is.
  SymbolicExprSimplify(SymbolicExprTable& table, unsigned limit);
  ~SymbolicExprSimplify();
  SymbolicExprSimplify(const SymbolicExprSimplify&) = delete;
  SymbolicExprSimplify& operator=(const SymbolicExprSimplify&) = delete;

  /// The index of the simplified form of the entry at index. converged tells whether the result was seen
  /// to be a fixed point (a pass left it unchanged) before the limit was reached.
  unsigned simplify(unsigned index, bool& converged);
  /// The same, when the caller does not ask whether it converged.
  unsigned simplify(unsigned index);

 private:
  std::unique_ptr<internal::Normalizer> normalizer_;
  unsigned limit_;
};

}  // namespace QL
