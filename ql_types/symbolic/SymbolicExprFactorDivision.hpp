// Bringing divisions to the top of an expression: n / d with no division left in n or d.
//
// a/2 + b becomes (a+b*2)/2, (a/2)*3 becomes (a*3)/2, a/(b/c) becomes (a*c)/b. Sums, differences,
// products, negations and divisions are combined as fractions; n and d come out simplified, with their
// common integer and monomial factors cancelled and d's leading coefficient positive.
//
// The result equals the input wherever every division in the input is exact, as divisions of sizes are;
// with truncation in between the two may differ ((1/2)*2 is 0, (1*2)/2 is 1). Divisions inside a
// remainder, a multi-dimensional size or a relation are left where they are, and so are divisions by
// zero. Where the fractions would overflow or grow past the simplifier's bounds, the result is the
// simplified input.
#pragma once

#include <memory>

namespace QL {

class SymbolicExprTable;

namespace internal {
class Normalizer;
}

/// Factors divisions of entries of one table to the top.
class SymbolicExprFactorDivision {
 public:
  explicit SymbolicExprFactorDivision(SymbolicExprTable& table);
  ~SymbolicExprFactorDivision();
  SymbolicExprFactorDivision(const SymbolicExprFactorDivision&) = delete;
  SymbolicExprFactorDivision& operator=(const SymbolicExprFactorDivision&) = delete;

  /// The index of an expression equal to the entry at index in which any division stands at the top.
  unsigned factorDivision(unsigned index);
  /// Same as factorDivision(index).
  unsigned operator()(unsigned index) { return factorDivision(index); }

 private:
  std::unique_ptr<internal::Normalizer> normalizer_;
};

}  // namespace QL
