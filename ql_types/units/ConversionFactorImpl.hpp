// The numbers behind a conversion factor: an abstract ConversionFactorImpl and its concrete classes.
//
// A scale is held exactly (ScaledRational: a reduced 64-bit rational times a power of ten) for as long
// as the arithmetic allows; whatever cannot stay exact silently continues in double precision. Affine
// factors (scale and offset: temperature scales) and reciprocal factors (a constant over the value)
// combine with the others by fixed tables; a combination those tables leave undefined (affine with
// reciprocal, an affine factor raised to a net power other than 1) is a null pointer.
//
// Every arithmetic operation returns a new heap object that the caller owns; ConversionFactor (in
// ConversionFactor.hpp) is the handle that clients normally use. The order of the virtual operations is
// part of the interface, as is each table cell, including the asymmetric ones marked "kept".
#pragma once

#include <boost/rational.hpp>
#include <string>
#include <vector>

#include "ql_types/units/Exponent.hpp"

namespace QLTypeSys {

/// A factor's numbers; immutable once built. The arithmetic results are new heap objects, owned by the caller.
class ConversionFactorImpl {
 public:
  virtual ~ConversionFactorImpl();
  /// A new heap copy.
  virtual ConversionFactorImpl* clone() const = 0;
  /// The product this·other, or null where affine meets reciprocal.
  virtual ConversionFactorImpl* operator*(const ConversionFactorImpl& other) const = 0;
  /// This raised to the net value of e.
  virtual ConversionFactorImpl* operator^(Exponent e) const;
  /// This raised to n; null for an affine factor and n other than 1.
  virtual ConversionFactorImpl* operator^(int n) const = 0;
  /// The quotient this/other (always double arithmetic), or null where affine meets reciprocal.
  virtual ConversionFactorImpl* operator/(const ConversionFactorImpl& other) const = 0;
  /// The negation.
  virtual ConversionFactorImpl* operator-() const = 0;
  virtual bool operator==(const ConversionFactorImpl& other) const = 0;
  virtual bool operator!=(const ConversionFactorImpl& other) const;
  virtual bool operator<(const ConversionFactorImpl& other) const = 0;
  /// The scale as a double.
  virtual double toDouble() const = 0;
  /// The same as toDouble.
  virtual double operator()() const;
  /// The offset as a double; 0.0 for anything but an affine factor.
  virtual double getOffset() const;
  /// Whether the offset is non-zero (not whether the class is affine).
  virtual bool isAffine() const;
  virtual bool isReciprocal() const;

 protected:
  ConversionFactorImpl() = default;
  ConversionFactorImpl(const ConversionFactorImpl&) = default;
  ConversionFactorImpl& operator=(const ConversionFactorImpl&) = default;
};

/// numerator/denominator times ten to the exponent, exactly.
class ScaledRational : public ConversionFactorImpl {
 public:
  using Rational = boost::rational<long long>;

  /// num/den·10^exponent, reduced and decimal-normalised; den 0 throws boost::bad_rational.
  ScaledRational(long long num, long long den, int exponent);
  /// r·10^exponent, decimal-normalised.
  ScaledRational(const Rational& r, int exponent);
  /// From the fields numerator, denominator, exponent. Not decimal-normalised (kept: "10,1,0" stays 10/1
  /// until its first clone). A field that does not read gives 1/1·10^0; den 0 throws boost::bad_rational.
  explicit ScaledRational(const std::vector<std::string>& fields);
  /// A plain member copy; clone is the copy that also decimal-normalises.
  ScaledRational(const ScaledRational&) = default;
  ScaledRational& operator=(const ScaledRational&) = default;

  ConversionFactorImpl* clone() const override;
  ConversionFactorImpl* operator*(const ConversionFactorImpl& other) const override;
  using ConversionFactorImpl::operator^;
  /// Exact while numerator and denominator powers stay within 2^63 (as doubles), a double factor beyond.
  ConversionFactorImpl* operator^(int n) const override;
  ConversionFactorImpl* operator/(const ConversionFactorImpl& other) const override;
  /// Negates the numerator; LLONG_MIN, which has no negation, stays as it is.
  ConversionFactorImpl* operator-() const override;
  bool operator==(const ConversionFactorImpl& other) const override;
  bool operator<(const ConversionFactorImpl& other) const override;
  /// (double)num / (double)den, then times 10^exponent by repeated squaring, in that order.
  double toDouble() const override;

  const Rational& getRational() const { return rational_; }
  long long getNumerator() const { return rational_.numerator(); }
  long long getDenominator() const { return rational_.denominator(); }
  int getExponent() const { return exponent_; }
  /// "num/den*1e" exponent, e.g. "5/18*1e0".
  std::string toText() const;

  /// Moves factors of ten from numerator and denominator into the exponent (which wraps at 32 bits).
  void normalizeDecimal();

  /// A ScaledRational from double parts, or null with overflow set when a magnitude exceeds 2^63. The sign
  /// is +1 only when both parts are > 0 (kept: two negatives give a negative result). A magnitude of exactly
  /// 2^63 is not over the limit, but only the numerator -2^63 has a long long form: a numerator of +2^63 or a
  /// denominator of 2^63 also reports overflow.
  static ScaledRational* makeCheckedRational(double num, double den, int exponent, bool& overflow);

 private:
  Rational rational_;
  int exponent_ = 0;
};

/// A plain scale in double precision.
class DoubleConversionFactor : public ConversionFactorImpl {
 public:
  explicit DoubleConversionFactor(double value) : value_(value) {}
  /// From one field; a field that does not read (or is missing) gives 1.0.
  explicit DoubleConversionFactor(const std::vector<std::string>& fields);

  ConversionFactorImpl* clone() const override;
  ConversionFactorImpl* operator*(const ConversionFactorImpl& other) const override;
  using ConversionFactorImpl::operator^;
  ConversionFactorImpl* operator^(int n) const override;
  ConversionFactorImpl* operator/(const ConversionFactorImpl& other) const override;
  ConversionFactorImpl* operator-() const override;
  bool operator==(const ConversionFactorImpl& other) const override;
  bool operator<(const ConversionFactorImpl& other) const override;
  double toDouble() const override { return value_; }

 private:
  double value_;
};

/// A factor that relates a unit to the reciprocal of another (a constant over the value).
class ReciprocalConversionFactorImpl : public ConversionFactorImpl {
 public:
  bool isReciprocal() const override;
};

/// A reciprocal factor in double precision; its powers stay reciprocal.
class DoubleReciprocalConversionFactor : public ReciprocalConversionFactorImpl {
 public:
  explicit DoubleReciprocalConversionFactor(double value) : value_(value) {}
  /// From one field; a field that does not read (or is missing) gives 1.0.
  explicit DoubleReciprocalConversionFactor(const std::vector<std::string>& fields);

  ConversionFactorImpl* clone() const override;
  ConversionFactorImpl* operator*(const ConversionFactorImpl& other) const override;
  using ConversionFactorImpl::operator^;
  ConversionFactorImpl* operator^(int n) const override;
  ConversionFactorImpl* operator/(const ConversionFactorImpl& other) const override;
  ConversionFactorImpl* operator-() const override;
  /// Compares values whatever other's class is (kept: so it equals a ScaledRational of the same value,
  /// which a DoubleConversionFactor does not).
  bool operator==(const ConversionFactorImpl& other) const override;
  bool operator<(const ConversionFactorImpl& other) const override;
  double toDouble() const override { return value_; }

 private:
  double value_;
};

/// A scale and an offset: value_in_reference = scale·value + offset.
class AffineConversionFactorImpl : public ConversionFactorImpl {
 public:
  ConversionFactorImpl* operator*(const ConversionFactorImpl& other) const override;
  using ConversionFactorImpl::operator^;
  /// A clone for n == 1, null for any other n.
  ConversionFactorImpl* operator^(int n) const override;
  ConversionFactorImpl* operator/(const ConversionFactorImpl& other) const override;
  bool operator==(const ConversionFactorImpl& other) const override;
  bool operator<(const ConversionFactorImpl& other) const override;
  /// The scale sub-factor's value.
  double toDouble() const override;
  /// The offset sub-factor's value.
  double getOffset() const override;
  /// True exactly when the offset is not 0.0: an offset of zero makes this a plain scale to everyone.
  bool isAffine() const override;

  virtual const ConversionFactorImpl& getScaleFactor() const = 0;
  virtual const ConversionFactorImpl& getOffsetFactor() const = 0;
};

/// Scale and offset in double precision.
class DoubleAffineConversionFactor : public AffineConversionFactorImpl {
 public:
  DoubleAffineConversionFactor(double scale, double offset) : scale_(scale), offset_(offset) {}
  /// From the fields scale, offset; if either does not read (or is missing), both stay 1.0 and 0.0.
  explicit DoubleAffineConversionFactor(const std::vector<std::string>& fields);

  ConversionFactorImpl* clone() const override;
  ConversionFactorImpl* operator-() const override;
  const ConversionFactorImpl& getScaleFactor() const override { return scale_; }
  const ConversionFactorImpl& getOffsetFactor() const override { return offset_; }

 private:
  DoubleConversionFactor scale_;
  DoubleConversionFactor offset_;
};

/// Scale and offset held exactly.
class RationalAffineConversionFactor : public AffineConversionFactorImpl {
 public:
  RationalAffineConversionFactor(const ScaledRational& scale, const ScaledRational& offset)
      : scale_(scale), offset_(offset) {}
  /// From the fields scale numerator, scale denominator, offset numerator, offset denominator, both
  /// exponents 0. If any field does not read (or is missing), the defaults 1/1 and 0/1 stay for both;
  /// a zero denominator throws boost::bad_rational.
  explicit RationalAffineConversionFactor(const std::vector<std::string>& fields);

  ConversionFactorImpl* clone() const override;
  ConversionFactorImpl* operator-() const override;
  const ConversionFactorImpl& getScaleFactor() const override { return scale_; }
  const ConversionFactorImpl& getOffsetFactor() const override { return offset_; }
  const ScaledRational& getScale() const { return scale_; }
  const ScaledRational& getOffsetRational() const { return offset_; }

 private:
  ScaledRational scale_;
  ScaledRational offset_;
};

/// x to the integer n by repeated squaring; 1.0 / x^|n| for negative n. The one power rule of all factors.
double binaryPower(double x, int n);

}  // namespace QLTypeSys
