// The exponent of a term in a unit expression: a positive and a negative count kept apart.
//
// Metre over metre has counts (1, 1), which is not the same as no metre at all: the comparison of
// units tells the two apart (a quotient of like units is a ratio, not nothing). So nothing here ever
// cancels the two counts; only the net value subtracts them.
//
// Counts are plain 32-bit integers. The operators wrap in two's complement when a result leaves that
// range (they never trap); code that takes counts from a client uses the checked forms, which report
// overflow instead.
#pragma once

#include <iosfwd>

namespace QLTypeSys {

/// The positive and negative counts of a term; value type.
class Exponent {
 public:
  /// Counts (0, 0).
  Exponent() = default;
  /// v >= 0 gives counts (v, 0), v < 0 gives (0, -v); INT_MIN gives (0, INT_MIN), wrapped.
  Exponent(int v);  // NOLINT(google-explicit-constructor): an int is an exponent everywhere it is written
  /// The counts as given.
  Exponent(int positive, int negative) : positive_(positive), negative_(negative) {}

  /// The positive count.
  int getPositive() const { return positive_; }
  /// The negative count.
  int getNegative() const { return negative_; }
  /// Positive count minus negative count (wraps).
  int getNet() const;

  /// Componentwise sum (wraps).
  Exponent operator+(const Exponent& other) const;
  Exponent& operator+=(const Exponent& other);
  /// (a, b)·(c, d) = (ac + bd, ad + bc): a negative power swaps the counts (wraps).
  Exponent operator*(const Exponent& other) const;

  bool operator==(const Exponent& other) const { return positive_ == other.positive_ && negative_ == other.negative_; }
  bool operator!=(const Exponent& other) const { return !(*this == other); }
  /// Positive count first, then negative count: an order for maps, not a magnitude.
  bool operator<(const Exponent& other) const {
    return positive_ != other.positive_ ? positive_ < other.positive_ : negative_ < other.negative_;
  }

  /// The sum into out; false, and out unchanged, when a count leaves the 32-bit range.
  static bool checkedAdd(const Exponent& a, const Exponent& b, Exponent& out);
  /// The product into out; false, and out unchanged, when a count leaves the 32-bit range.
  static bool checkedMultiply(const Exponent& a, const Exponent& b, Exponent& out);
  /// The exponent of v into out; false for INT_MIN, whose negative count has no 32-bit form.
  static bool checkedFromInt(int v, Exponent& out);

  /// Counts (1, 0).
  static const Exponent one;
  /// Counts (0, 0).
  static const Exponent zero;

 private:
  int positive_ = 0;
  int negative_ = 0;
};

/// "(positive,negative)".
std::ostream& operator<<(std::ostream& os, const Exponent& e);

}  // namespace QLTypeSys
