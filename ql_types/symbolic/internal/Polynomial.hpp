// Integer polynomials over atoms, the working form of simplification.
//
// An atom is the index of a canonical entry that is not a sum, difference, product, negation or integer:
// a name, a division, a remainder, a multi-dimensional size or a relation. A polynomial is a sorted list of
// terms, each a coefficient and a monomial, a sorted list of (atom, exponent). The sort here is by atom
// index, which is cheap but depends on insertion order; the canonical order used for output is applied
// only when a polynomial is turned back into an expression (see Normalizer).
//
// Coefficients and exponents are checked for overflow: an operation that would overflow, or would pass
// its bound on terms, answers false, and its output is then of no use. Sums are bounded by kMaxSumTerms,
// which is linear in the text and far above what a model writes; the expansion of a product of two sums
// by kMaxTerms, since it grows with the product of their lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace QL {
namespace internal {

/// (atom, exponent) pairs, sorted by atom, exponents above 0.
using Monomial = std::vector<std::pair<unsigned, unsigned>>;

/// One term: coefficient times monomial; an empty monomial is the constant term.
struct Term {
  Monomial mono;
  std::int64_t coef;
  bool operator==(const Term& o) const { return coef == o.coef && mono == o.mono; }
};

/// Sorted by monomial, monomials distinct, coefficients non-zero; the zero polynomial is empty.
using Poly = std::vector<Term>;

/// Expansion stops past this many terms, so products of long sums cannot blow up.
inline constexpr std::size_t kMaxTerms = 4096;
/// A sum, or a sum times a single term, may have up to this many terms.
inline constexpr std::size_t kMaxSumTerms = std::size_t{1} << 20;

/// The constant c.
Poly constantPoly(std::int64_t c);
/// The atom itself.
Poly atomPoly(unsigned atom);
/// Whether p is a constant (zero included), and which.
bool isConstant(const Poly& p, std::int64_t& value);

/// Sorts, merges equal monomials and drops zero terms; false past maxTerms terms.
bool normalize(Poly& p, std::size_t maxTerms = kMaxTerms);
/// Appends the terms of p times factor to acc, without normalising; false if acc would pass kMaxSumTerms.
bool appendScaled(Poly& acc, const Poly& p, std::int64_t factor);
/// a + sign * b, normalised; sign is 1 or -1.
bool add(const Poly& a, const Poly& b, std::int64_t sign, Poly& out);
/// a * b, normalised. Up to kMaxSumTerms terms when one side is a single term, else up to kMaxTerms.
bool multiply(const Poly& a, const Poly& b, Poly& out);
/// The product of factors, each (polynomial, exponent >= 1), with single terms gathered in one pass so
/// that a long product costs its length; false past the bounds or on overflow.
bool product(const std::vector<std::pair<const Poly*, std::int64_t>>& factors, Poly& out);
/// Sum over terms of 1 + the number of factors: the space a polynomial takes.
std::size_t weight(const Poly& p);
/// Lexicographic order on polynomials, for grouping by them.
bool lessPoly(const Poly& a, const Poly& b);
/// p * -1.
bool negate(Poly& p);

/// The greatest common divisor of all coefficients of a and b (0 when both are zero).
std::uint64_t content(const Poly& a, const Poly& b);
/// The greatest monomial dividing every term of a and of b.
Monomial monomialGcd(const Poly& a, const Poly& b);
/// Divides every term of p by g and by m, both of which divide it exactly.
void divideExact(Poly& p, std::uint64_t g, const Monomial& m);
/// The product of two monomials into out; false when an exponent overflows.
bool multiplyMonomials(const Monomial& a, const Monomial& b, Monomial& out);

}  // namespace internal
}  // namespace QL
