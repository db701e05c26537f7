// Random chains of products and integer powers of exact factors, against exact rationals computed here in
// 128-bit integers. The reference follows the rules a factor promises: 64-bit products wrap unreported,
// the parts then pass through double (rounding above 2^53), powers beyond 2^63 continue in double, and
// every exact result is reduced and decimal-normalised.
#include <gtest/gtest.h>

#include <boost/rational.hpp>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <memory>
#include <random>
#include <typeinfo>

#include "ql_types/units/ConversionFactorImpl.hpp"

namespace {

using namespace QLTypeSys;
using i128 = __int128;

i128 abs128(i128 v) { return v < 0 ? -v : v; }
i128 gcd128(i128 a, i128 b) {
  a = abs128(a);
  b = abs128(b);
  while (b != 0) {
    const i128 t = a % b;
    a = b;
    b = t;
  }
  return a;
}

// An exact value num/den·10^exp in the normal form of a ScaledRational.
struct Ref {
  i128 num = 1, den = 1;
  int exp = 0;
  bool isDouble = false;  // fell back to double: value holds the double
  double value = 0;
  bool throws = false;  // a zero denominator reached the rational
};

Ref normalForm(i128 num, i128 den, int exp) {
  Ref r;
  if (den == 0) {
    r.throws = true;
    return r;
  }
  if (num == 0) {
    r.num = 0;
    r.den = 1;
    r.exp = exp;
    return r;
  }
  const i128 g = gcd128(num, den);
  num /= g;
  den /= g;
  if (den < 0) {
    num = -num;
    den = -den;
  }
  while (num % 10 == 0) num /= 10, ++exp;
  while (den % 10 == 0) den /= 10, --exp;
  r.num = num;
  r.den = den;
  r.exp = exp;
  return r;
}

// Two's complement wrap of an exact product to 64 bits.
std::int64_t wrap64(i128 v) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(static_cast<unsigned __int128>(v)));
}

i128 truncated(double v) { return static_cast<i128>(static_cast<std::int64_t>(v)); }

// What makeCheckedRational builds from two doubles, or a fallback marker.
Ref fromDoubles(double num, double den, int exp, double fallback) {
  const double limit = 9223372036854775808.0;
  const bool positive = num > 0 && den > 0;
  // 2^63 itself has a long long form only as a negative numerator.
  if (std::fabs(num) > limit || std::fabs(den) > limit || std::fabs(den) == limit ||
      (std::fabs(num) == limit && positive)) {
    Ref r;
    r.isDouble = true;
    r.value = fallback;
    return r;
  }
  const double sign = positive ? 1.0 : -1.0;
  return normalForm(truncated(sign * std::fabs(num)), truncated(std::fabs(den)), exp);
}

double toDouble(const Ref& r) {
  return static_cast<double>(static_cast<std::int64_t>(r.num)) / static_cast<double>(static_cast<std::int64_t>(r.den)) *
         binaryPower(10.0, r.exp);
}

Ref product(const Ref& a, const Ref& b) {
  const std::int64_t n = wrap64(a.num * b.num), d = wrap64(a.den * b.den);
  return fromDoubles(static_cast<double>(n), static_cast<double>(d), a.exp + b.exp, toDouble(b) * toDouble(a));
}

// Exact powers in 128 bits where they fit; the double pow of the implementation only where the exact
// value is past 2^53 (where double pow may round).
Ref power(const Ref& a, int n) {
  const i128 base = n > 0 ? a.num : a.den, other = n > 0 ? a.den : a.num;
  const int m = n > 0 ? n : -n;
  i128 p = 1, q = 1;
  bool small = true;
  for (int i = 0; i < m && small; ++i) {
    p *= base;
    q *= other;
    small = abs128(p) <= (i128(1) << 53) && abs128(q) <= (i128(1) << 53);
  }
  if (small) {
    if (q == 0) {
      Ref r;
      r.throws = true;
      return r;
    }
    // The implementation's sign rule: negative unless both parts are strictly positive.
    const bool negative = !(p > 0 && q > 0);
    return normalForm(negative ? -abs128(p) : abs128(p), abs128(q), a.exp * n);
  }
  const double dn = std::pow(static_cast<double>(static_cast<std::int64_t>(base)), m);
  const double dd = std::pow(static_cast<double>(static_cast<std::int64_t>(other)), m);
  return fromDoubles(dn, dd, a.exp * n, binaryPower(toDouble(a), n));
}

void expectSame(const Ref& ref, const ConversionFactorImpl& got) {
  if (ref.isDouble) {
    ASSERT_EQ(typeid(got), typeid(DoubleConversionFactor));
    EXPECT_EQ(got.toDouble(), ref.value);
    return;
  }
  ASSERT_EQ(typeid(got), typeid(ScaledRational));
  const auto& r = static_cast<const ScaledRational&>(got);
  EXPECT_EQ(r.getNumerator(), static_cast<std::int64_t>(ref.num));
  EXPECT_EQ(r.getDenominator(), static_cast<std::int64_t>(ref.den));
  EXPECT_EQ(r.getExponent(), ref.exp);
}

struct Counts {
  int exact = 0, wrapped = 0, rounded = 0, fellBack = 0, threw = 0;
};

TEST(FactorChains, MatchExactRationals) {
  std::mt19937_64 rng(20261123);
  auto pick = [&](long long lo, long long hi) { return std::uniform_int_distribution<long long>(lo, hi)(rng); };
  auto randomFactor = [&]() -> Ref {
    switch (pick(0, 5)) {
      case 0:  // powers of two past 2^32: their products wrap
        return normalForm(i128(1) << pick(20, 45), pick(1, 3), static_cast<int>(pick(-3, 3)));
      case 1:  // decimal scales
        return normalForm(1, 1, static_cast<int>(pick(-12, 12)));
      case 2:  // a denominator with a factor of ten
        return normalForm(pick(-99, 99), pick(1, 5) * 10, static_cast<int>(pick(-3, 3)));
      default:
        return normalForm(pick(-100000, 100000), pick(1, 100000), static_cast<int>(pick(-6, 6)));
    }
  };
  Counts c;
  for (int chain = 0; chain < 4000; ++chain) {
    Ref ref = randomFactor();
    std::unique_ptr<ConversionFactorImpl> f(
        new ScaledRational(static_cast<long long>(ref.num), static_cast<long long>(ref.den), ref.exp));
    expectSame(ref, *f);
    for (int step = 0; step < 8; ++step) {
      Ref next;
      std::unique_ptr<ConversionFactorImpl> got;
      if (pick(0, 2) != 0) {
        const Ref b = randomFactor();
        const ScaledRational fb(static_cast<long long>(b.num), static_cast<long long>(b.den), b.exp);
        const i128 exactNum = ref.num * b.num, exactDen = ref.den * b.den;
        next = product(ref, b);
        if (next.throws) {
          EXPECT_THROW(delete (*f * fb), boost::bad_rational);
          ++c.threw;
          break;
        }
        got.reset(*f * fb);
        if (wrap64(exactNum) != exactNum || wrap64(exactDen) != exactDen)
          ++c.wrapped;
        else if (abs128(exactNum) > (i128(1) << 53) || exactDen > (i128(1) << 53))
          ++c.rounded;
        else
          ++c.exact;
      } else {
        const int n = static_cast<int>(pick(-6, 6));
        next = power(ref, n);
        if (next.throws) {
          EXPECT_THROW(delete (*f ^ n), boost::bad_rational);
          ++c.threw;
          break;
        }
        got.reset(*f ^ n);
        if (next.isDouble) ++c.fellBack;
      }
      ASSERT_NO_FATAL_FAILURE(expectSame(next, *got));
      if (next.isDouble) break;
      ref = next;
      f = std::move(got);
    }
  }
  // Each path was exercised, not only the easy one.
  EXPECT_GT(c.exact, 1000);
  EXPECT_GT(c.wrapped, 50);
  EXPECT_GT(c.rounded, 20);
  EXPECT_GT(c.fellBack, 50);
  std::cout << "exact " << c.exact << ", wrapped " << c.wrapped << ", rounded " << c.rounded << ", fell back "
            << c.fellBack << ", threw " << c.threw << '\n';
}

TEST(FactorChains, WrappedProductIsNotReported) {
  // 2^40 · 2^40 = 2^80 wraps to 0 in 64 bits: the result is 0/1, not a double and not an error.
  const ScaledRational big(1LL << 40, 1, 0);
  std::unique_ptr<ConversionFactorImpl> p(big * big);
  ASSERT_EQ(typeid(*p), typeid(ScaledRational));
  EXPECT_EQ(static_cast<ScaledRational&>(*p).getNumerator(), 0);
  EXPECT_EQ(static_cast<ScaledRational&>(*p).getDenominator(), 1);
  // 2^33 · 2^31 = 2^64 in the denominators wraps to 0: a zero denominator.
  EXPECT_THROW(delete (ScaledRational(1, 1LL << 33, 0) * ScaledRational(1, 1LL << 31, 0)), boost::bad_rational);
}

TEST(FactorChains, PowersFallBackPastTheLimit) {
  const ScaledRational p30(1LL << 30, 1, 0);
  std::unique_ptr<ConversionFactorImpl> sq(p30 ^ 2), cube(p30 ^ 3);
  ASSERT_EQ(typeid(*sq), typeid(ScaledRational));
  EXPECT_EQ(static_cast<ScaledRational&>(*sq).getNumerator(), 1LL << 60);
  ASSERT_EQ(typeid(*cube), typeid(DoubleConversionFactor));
  EXPECT_EQ(cube->toDouble(), std::ldexp(1.0, 90));
  // 2^63 is not over the limit; -2^63 has an exact long long form.
  std::unique_ptr<ConversionFactorImpl> neg(ScaledRational(-2, 1, 0) ^ 63);
  ASSERT_EQ(typeid(*neg), typeid(ScaledRational));
  EXPECT_EQ(static_cast<ScaledRational&>(*neg).getNumerator(), INT64_MIN);
  std::unique_ptr<ConversionFactorImpl> pos(ScaledRational(2, 1, 0) ^ 63), inv(ScaledRational(1, 2, 0) ^ 63);
  EXPECT_EQ(typeid(*pos), typeid(DoubleConversionFactor));
  EXPECT_EQ(pos->toDouble(), std::ldexp(1.0, 63));
  EXPECT_EQ(typeid(*inv), typeid(DoubleConversionFactor));
  std::unique_ptr<ConversionFactorImpl> over(ScaledRational(2, 1, 0) ^ 64);
  EXPECT_EQ(typeid(*over), typeid(DoubleConversionFactor));
}

}  // namespace
