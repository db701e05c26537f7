// The arithmetic of conversion factors: each class answers for itself as the left operand and asks the
// right operand only for its kind (affine first, then reciprocal) and its values. All mixed arithmetic is
// double arithmetic; only ScaledRational times ScaledRational and ScaledRational powers stay exact.
#include "ql_types/units/ConversionFactorImpl.hpp"

#include <boost/lexical_cast.hpp>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

namespace QLTypeSys {

namespace {

const ScaledRational* asScaledRational(const ConversionFactorImpl& f) {
  return dynamic_cast<const ScaledRational*>(&f);
}
const AffineConversionFactorImpl* asAffine(const ConversionFactorImpl& f) {
  return dynamic_cast<const AffineConversionFactorImpl*>(&f);
}

// The scale of an affine operand; only called when isAffine() is true, so the class is an affine one.
double scaleOf(const ConversionFactorImpl& f) { return asAffine(f)->getScaleFactor().toDouble(); }

const std::string& field(const std::vector<std::string>& fields, std::size_t i) {
  // A missing field reads like a bad one: the caller keeps its defaults.
  if (i >= fields.size()) throw boost::bad_lexical_cast();
  return fields[i];
}

long long wrapMul(long long a, long long b) {
  long long r = 0;
  __builtin_mul_overflow(a, b, &r);  // kept: the product wraps in two's complement, unreported
  return r;
}

int wrapAdd(int a, int b) {
  int r = 0;
  __builtin_add_overflow(a, b, &r);
  return r;
}

}  // namespace

double binaryPower(double x, int n) {
  std::uint32_t m = n < 0 ? 0u - static_cast<std::uint32_t>(n) : static_cast<std::uint32_t>(n);
  double result = 1.0;
  while (m != 0) {
    if (m & 1u) result *= x;
    m >>= 1;
    if (m != 0) x *= x;
  }
  return n < 0 ? 1.0 / result : result;
}

// ---------------------------------------------------------------------------------------------------------
// ConversionFactorImpl

ConversionFactorImpl::~ConversionFactorImpl() = default;
ConversionFactorImpl* ConversionFactorImpl::operator^(Exponent e) const { return (*this) ^ e.getNet(); }
bool ConversionFactorImpl::operator!=(const ConversionFactorImpl& other) const { return !(*this == other); }
double ConversionFactorImpl::operator()() const { return toDouble(); }
double ConversionFactorImpl::getOffset() const { return 0.0; }
bool ConversionFactorImpl::isAffine() const { return false; }
bool ConversionFactorImpl::isReciprocal() const { return false; }

// ---------------------------------------------------------------------------------------------------------
// ScaledRational

ScaledRational::ScaledRational(long long num, long long den, int exponent) : rational_(num, den), exponent_(exponent) {
  normalizeDecimal();
}

ScaledRational::ScaledRational(const Rational& r, int exponent) : rational_(r), exponent_(exponent) {
  normalizeDecimal();
}

ScaledRational::ScaledRational(const std::vector<std::string>& fields) : rational_(1, 1), exponent_(0) {
  long long num = 1, den = 1;
  int exponent = 0;
  try {
    num = boost::lexical_cast<long long>(field(fields, 0));
    den = boost::lexical_cast<long long>(field(fields, 1));
    exponent = boost::lexical_cast<int>(field(fields, 2));
  } catch (const boost::bad_lexical_cast&) {
    return;
  }
  rational_ = Rational(num, den);  // a zero denominator escapes as boost::bad_rational
  exponent_ = exponent;
}

void ScaledRational::normalizeDecimal() {
  if (rational_.numerator() == 0) return;
  while (rational_.numerator() % 10 == 0) {
    rational_ /= 10;
    exponent_ = wrapAdd(exponent_, 1);
  }
  while (rational_.denominator() % 10 == 0) {
    rational_ *= 10;
    exponent_ = wrapAdd(exponent_, -1);
  }
}

ConversionFactorImpl* ScaledRational::clone() const {
  auto* copy = new ScaledRational(*this);
  copy->normalizeDecimal();
  return copy;
}

ScaledRational* ScaledRational::makeCheckedRational(double num, double den, int exponent, bool& overflow) {
  overflow = false;
  const double sign = (num > 0.0 && den > 0.0) ? 1.0 : -1.0;  // kept: two negatives give a negative result
  const double limit = static_cast<double>(std::numeric_limits<long long>::max());  // 2^63 once rounded
  const double n = std::fabs(num), d = std::fabs(den);
  // A magnitude equal to the limit is not over it, but 2^63 has a long long form only as a negative
  // numerator; a positive numerator or a denominator of 2^63 continues in double like one over the limit.
  const bool unrepresentable = (n == limit && sign > 0.0) || d == limit;
  if (n > limit || d > limit || unrepresentable || std::isnan(n) || std::isnan(d)) {
    overflow = true;
    return nullptr;
  }
  return new ScaledRational(static_cast<long long>(sign * n), static_cast<long long>(d), exponent);
}

ConversionFactorImpl* ScaledRational::operator*(const ConversionFactorImpl& b) const {
  // kept: the offset of plain times affine stays unscaled.
  if (b.isAffine()) return new DoubleAffineConversionFactor(scaleOf(b) * toDouble(), b.getOffset());
  if (b.isReciprocal()) return new DoubleReciprocalConversionFactor(b.toDouble() * toDouble());
  const ScaledRational* r = asScaledRational(b);
  if (r == nullptr) return new DoubleConversionFactor(b.toDouble() * toDouble());
  const long long num = wrapMul(getNumerator(), r->getNumerator());
  const long long den = wrapMul(getDenominator(), r->getDenominator());
  bool overflow = false;
  ScaledRational* exact = makeCheckedRational(static_cast<double>(num), static_cast<double>(den),
                                              wrapAdd(exponent_, r->exponent_), overflow);
  if (overflow) return new DoubleConversionFactor(b.toDouble() * toDouble());
  return exact;
}

ConversionFactorImpl* ScaledRational::operator^(int n) const {
  const double num = static_cast<double>(getNumerator()), den = static_cast<double>(getDenominator());
  double powNum, powDen;
  if (n > 0) {
    powNum = std::pow(num, n);
    powDen = std::pow(den, n);
  } else {
    const double m = -static_cast<double>(n);  // exact for every int, INT_MIN included
    powNum = std::pow(den, m);
    powDen = std::pow(num, m);
  }
  int exponent = 0;
  __builtin_mul_overflow(exponent_, n, &exponent);  // the 32-bit product, wrapping
  bool overflow = false;
  ScaledRational* exact = makeCheckedRational(powNum, powDen, exponent, overflow);
  if (overflow) return new DoubleConversionFactor(binaryPower(toDouble(), n));
  return exact;
}

ConversionFactorImpl* ScaledRational::operator/(const ConversionFactorImpl& b) const {
  // Deliberately no rational quotient: division is double arithmetic.
  if (b.isAffine()) return new DoubleAffineConversionFactor(toDouble() / scaleOf(b), -(b.getOffset() / scaleOf(b)));
  if (b.isReciprocal()) return new DoubleReciprocalConversionFactor(b.toDouble() / toDouble());
  return new DoubleConversionFactor(toDouble() / b.toDouble());
}

ConversionFactorImpl* ScaledRational::operator-() const {
  const long long num = getNumerator();
  const long long negated = num == std::numeric_limits<long long>::min() ? num : -num;
  return new ScaledRational(Rational(negated, getDenominator()), exponent_);
}

bool ScaledRational::operator==(const ConversionFactorImpl& b) const {
  if (b.isAffine()) return false;
  if (const ScaledRational* r = asScaledRational(b))
    return getNumerator() == r->getNumerator() && getDenominator() == r->getDenominator() && exponent_ == r->exponent_;
  return toDouble() == b.toDouble();
}

bool ScaledRational::operator<(const ConversionFactorImpl& b) const { return toDouble() < b.toDouble(); }

double ScaledRational::toDouble() const {
  // kept: this order of roundings; factors are compared exactly elsewhere.
  const double quotient = static_cast<double>(getNumerator()) / static_cast<double>(getDenominator());
  return quotient * binaryPower(10.0, exponent_);
}

std::string ScaledRational::toText() const {
  return std::to_string(getNumerator()) + "/" + std::to_string(getDenominator()) + "*1e" + std::to_string(exponent_);
}

// ---------------------------------------------------------------------------------------------------------
// DoubleConversionFactor

DoubleConversionFactor::DoubleConversionFactor(const std::vector<std::string>& fields) : value_(1.0) {
  try {
    value_ = boost::lexical_cast<double>(field(fields, 0));
  } catch (const boost::bad_lexical_cast&) {
    value_ = 1.0;
  }
}

ConversionFactorImpl* DoubleConversionFactor::clone() const { return new DoubleConversionFactor(*this); }

ConversionFactorImpl* DoubleConversionFactor::operator*(const ConversionFactorImpl& b) const {
  // kept: the offset of plain times affine stays unscaled.
  if (b.isAffine()) return new DoubleAffineConversionFactor(scaleOf(b) * value_, b.getOffset());
  if (b.isReciprocal()) return new DoubleReciprocalConversionFactor(b.toDouble() * value_);
  return new DoubleConversionFactor(b.toDouble() * value_);
}

ConversionFactorImpl* DoubleConversionFactor::operator^(int n) const {
  return new DoubleConversionFactor(binaryPower(value_, n));
}

ConversionFactorImpl* DoubleConversionFactor::operator/(const ConversionFactorImpl& b) const {
  if (b.isAffine()) return new DoubleAffineConversionFactor(value_ / scaleOf(b), -(b.getOffset() / scaleOf(b)));
  if (b.isReciprocal()) return new DoubleReciprocalConversionFactor(b.toDouble() / value_);
  return new DoubleConversionFactor(value_ / b.toDouble());
}

ConversionFactorImpl* DoubleConversionFactor::operator-() const { return new DoubleConversionFactor(-value_); }

bool DoubleConversionFactor::operator==(const ConversionFactorImpl& b) const {
  if (b.isAffine() || b.isReciprocal()) return false;
  return value_ == b.toDouble();
}

bool DoubleConversionFactor::operator<(const ConversionFactorImpl& b) const { return value_ < b.toDouble(); }

// ---------------------------------------------------------------------------------------------------------
// Reciprocal factors

bool ReciprocalConversionFactorImpl::isReciprocal() const { return true; }

DoubleReciprocalConversionFactor::DoubleReciprocalConversionFactor(const std::vector<std::string>& fields)
    : value_(1.0) {
  try {
    value_ = boost::lexical_cast<double>(field(fields, 0));
  } catch (const boost::bad_lexical_cast&) {
    value_ = 1.0;
  }
}

ConversionFactorImpl* DoubleReciprocalConversionFactor::clone() const {
  return new DoubleReciprocalConversionFactor(*this);
}

ConversionFactorImpl* DoubleReciprocalConversionFactor::operator*(const ConversionFactorImpl& b) const {
  if (b.isAffine()) return nullptr;
  // kept: multiplying a reciprocal divides its constant.
  if (b.isReciprocal()) return new DoubleConversionFactor(value_ / b.toDouble());
  return new DoubleReciprocalConversionFactor(value_ / b.toDouble());
}

ConversionFactorImpl* DoubleReciprocalConversionFactor::operator^(int n) const {
  return new DoubleReciprocalConversionFactor(binaryPower(value_, n));
}

ConversionFactorImpl* DoubleReciprocalConversionFactor::operator/(const ConversionFactorImpl& b) const {
  if (b.isAffine()) return nullptr;
  if (b.isReciprocal()) return new DoubleConversionFactor(b.toDouble() / value_);
  return new DoubleReciprocalConversionFactor(value_ / b.toDouble());
}

ConversionFactorImpl* DoubleReciprocalConversionFactor::operator-() const {
  return new DoubleReciprocalConversionFactor(-value_);
}

bool DoubleReciprocalConversionFactor::operator==(const ConversionFactorImpl& b) const {
  return value_ == b.toDouble();  // kept: whatever b's kind
}

bool DoubleReciprocalConversionFactor::operator<(const ConversionFactorImpl& b) const { return value_ < b.toDouble(); }

// ---------------------------------------------------------------------------------------------------------
// Affine factors

ConversionFactorImpl* AffineConversionFactorImpl::operator*(const ConversionFactorImpl& b) const {
  const double sa = getScaleFactor().toDouble(), oa = getOffset();
  if (b.isAffine()) return new DoubleAffineConversionFactor(scaleOf(b) * sa, oa + b.getOffset() * sa);
  if (b.isReciprocal()) return nullptr;
  return new DoubleAffineConversionFactor(sa * b.toDouble(), oa);
}

ConversionFactorImpl* AffineConversionFactorImpl::operator^(int n) const { return n == 1 ? clone() : nullptr; }

ConversionFactorImpl* AffineConversionFactorImpl::operator/(const ConversionFactorImpl& b) const {
  const double sa = getScaleFactor().toDouble(), oa = getOffset();
  if (b.isAffine()) return new DoubleAffineConversionFactor(sa / scaleOf(b), (oa - b.getOffset()) / scaleOf(b));
  if (b.isReciprocal()) return nullptr;
  return new DoubleAffineConversionFactor(sa / b.toDouble(), oa / b.toDouble());
}

bool AffineConversionFactorImpl::operator==(const ConversionFactorImpl& b) const {
  if (isAffine() != b.isAffine()) return false;
  if (isAffine()) {
    const AffineConversionFactorImpl* other = asAffine(b);
    return getScaleFactor() == other->getScaleFactor() && getOffsetFactor() == other->getOffsetFactor();
  }
  return getScaleFactor() == b;
}

bool AffineConversionFactorImpl::operator<(const ConversionFactorImpl& b) const {
  if (b.isAffine()) {
    const AffineConversionFactorImpl* other = asAffine(b);
    if (getScaleFactor() == other->getScaleFactor()) return getOffsetFactor() < other->getOffsetFactor();
    return getScaleFactor() < other->getScaleFactor();
  }
  if (getScaleFactor() == b) return getOffset() < 0.0;
  return getScaleFactor() < b;
}

double AffineConversionFactorImpl::toDouble() const { return getScaleFactor().toDouble(); }
double AffineConversionFactorImpl::getOffset() const { return getOffsetFactor().toDouble(); }
bool AffineConversionFactorImpl::isAffine() const { return getOffset() != 0.0; }

DoubleAffineConversionFactor::DoubleAffineConversionFactor(const std::vector<std::string>& fields)
    : scale_(1.0), offset_(0.0) {
  double scale = 1.0, offset = 0.0;
  try {
    scale = boost::lexical_cast<double>(field(fields, 0));
    offset = boost::lexical_cast<double>(field(fields, 1));
  } catch (const boost::bad_lexical_cast&) {
    return;
  }
  scale_ = DoubleConversionFactor(scale);
  offset_ = DoubleConversionFactor(offset);
}

ConversionFactorImpl* DoubleAffineConversionFactor::clone() const { return new DoubleAffineConversionFactor(*this); }

ConversionFactorImpl* DoubleAffineConversionFactor::operator-() const {
  return new DoubleAffineConversionFactor(-scale_.toDouble(), -offset_.toDouble());
}

RationalAffineConversionFactor::RationalAffineConversionFactor(const std::vector<std::string>& fields)
    : scale_(1, 1, 0), offset_(0, 1, 0) {
  long long sn = 1, sd = 1, on = 0, od = 1;
  try {
    sn = boost::lexical_cast<long long>(field(fields, 0));
    sd = boost::lexical_cast<long long>(field(fields, 1));
    on = boost::lexical_cast<long long>(field(fields, 2));
    od = boost::lexical_cast<long long>(field(fields, 3));
  } catch (const boost::bad_lexical_cast&) {
    return;
  }
  scale_ = ScaledRational(sn, sd, 0);  // a zero denominator escapes as boost::bad_rational
  offset_ = ScaledRational(on, od, 0);
}

ConversionFactorImpl* RationalAffineConversionFactor::clone() const {
  return new RationalAffineConversionFactor(*this);
}

ConversionFactorImpl* RationalAffineConversionFactor::operator-() const {
  std::unique_ptr<ConversionFactorImpl> scale(-scale_), offset(-offset_);
  return new RationalAffineConversionFactor(static_cast<const ScaledRational&>(*scale),
                                            static_cast<const ScaledRational&>(*offset));
}

}  // namespace QLTypeSys
