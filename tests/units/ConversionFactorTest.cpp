// The ConversionFactor handle, the factory and its texts, equality and order, and the listed edge cases.
#include <gtest/gtest.h>

#include <boost/rational.hpp>
#include <cmath>
#include <limits>
#include <typeinfo>

#include "ql_types/units/ConversionFactor.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

const ScaledRational& asSR(const ConversionFactor& f) { return dynamic_cast<const ScaledRational&>(f.getFactor()); }

void expectSR(const ConversionFactor& f, long long num, long long den, int exponent) {
  ASSERT_EQ(typeid(f.getFactor()), typeid(ScaledRational));
  EXPECT_EQ(asSR(f).getNumerator(), num);
  EXPECT_EQ(asSR(f).getDenominator(), den);
  EXPECT_EQ(asSR(f).getExponent(), exponent);
}

ConversionFactor emptyFactor() { return F::createConversionFactor(1.8, 32.0) ^ 2; }

TEST(FactorConstants, UnityAndZero) {
  expectSR(ConversionFactor::unity, 1, 1, 0);
  expectSR(ConversionFactor::zero, 0, 1, 0);
  EXPECT_TRUE(ConversionFactor::unity.isWellDefined());
  expectSR(ConversionFactor(), 1, 1, 0);
  expectSR(ConversionFactor::unity * ConversionFactor::unity, 1, 1, 0);
}

TEST(FactorNormalForm, DecimalNormalisation) {
  expectSR(F::createConversionFactor(1000, 1, 0), 1, 1, 3);
  expectSR(F::createConversionFactor(1, 1000, 0), 1, 1, -3);
  expectSR(F::createConversionFactor(1000, 1, 0) * F::createConversionFactor(1, 1000, 0), 1, 1, 0);
  expectSR(F::createConversionFactor(3, 10, 0), 3, 1, -1);
  expectSR(F::createConversionFactor(-60, -4, 2), 15, 1, 2);
  expectSR(F::createConversionFactor(0, 7, 5), 0, 1, 5);  // zero leaves the exponent
  expectSR(F::createConversionFactor(25, 4, 0), 25, 4, 0);
  EXPECT_THROW(F::createConversionFactor(1, 0, 0), boost::bad_rational);
}

TEST(FactorNormalForm, ExponentWrapsInsteadOfOverflowing) {
  const int max = std::numeric_limits<int>::max();
  expectSR(F::createConversionFactor(10, 1, max), 1, 1, std::numeric_limits<int>::min());
}

TEST(FactorEdgeCases, QuotientOfRationalsIsDouble) {
  const ConversionFactor third = F::createConversionFactor(1, 3, 0);
  const ConversionFactor q = third / third;
  EXPECT_EQ(typeid(q.getFactor()), typeid(DoubleConversionFactor));
  EXPECT_EQ(q.toDouble(), 1.0);
  EXPECT_TRUE(ConversionFactor::unity == q);  // through the double branch of ScaledRational equality
  EXPECT_TRUE(q == ConversionFactor::unity);
}

TEST(FactorEdgeCases, PowerZeroIsUnity) {
  expectSR(F::createConversionFactor(7, 3, 4) ^ 0, 1, 1, 0);
  expectSR(ConversionFactor::zero ^ 0, 1, 1, 0);
  EXPECT_THROW(ConversionFactor::zero ^ -1, boost::bad_rational);
}

TEST(FactorEdgeCases, AffinePowers) {
  const ConversionFactor f = F::createConversionFactor(1.8, 32.0);
  EXPECT_TRUE((f ^ 2).isEmpty());
  const ConversionFactor one = f ^ Exponent(2, 1);
  ASSERT_FALSE(one.isEmpty());
  EXPECT_EQ(one.toDouble(), 1.8);
  EXPECT_EQ(one.getOffset(), 32.0);
  EXPECT_FALSE((f ^ Exponent::one).isEmpty());
  EXPECT_TRUE((f ^ Exponent(1, 1)).isEmpty());
}

TEST(FactorEdgeCases, ZeroOffsetIsPlain) {
  const ConversionFactor f = F::createConversionFactor(3.0, 0.0);
  EXPECT_FALSE(f.isAffine());
  const ConversionFactor p = F::createConversionFactor(2, 1, 0) * f;
  EXPECT_EQ(typeid(p.getFactor()), typeid(DoubleConversionFactor));
  EXPECT_EQ(p.toDouble(), 6.0);
  // Equal to a plain factor of its scale, from its own side.
  EXPECT_TRUE(f == F::createConversionFactor(3.0));
  EXPECT_TRUE(F::createConversionFactor(3.0, 5.0).isAffine());
}

TEST(FactorHandle, CopyAssignAndFlag) {
  ConversionFactor a = F::createConversionFactor(5, 18, 1);
  a.setWellDefined(false);
  ConversionFactor b(a);
  EXPECT_FALSE(b.isWellDefined());
  EXPECT_NE(&a.getFactor(), &b.getFactor());
  b = b;  // self-assignment keeps the factor
  expectSR(b, 5, 18, 1);
  ConversionFactor c;
  c = emptyFactor();
  EXPECT_TRUE(c.isEmpty());
  ConversionFactor d(c);
  EXPECT_TRUE(d.isEmpty());
  EXPECT_TRUE((d ^ 1).isEmpty());
  d = a;
  expectSR(d, 5, 18, 1);

  const ConversionFactor good = F::createConversionFactor(2.0);
  EXPECT_FALSE((a * good).isWellDefined());
  EXPECT_FALSE((good / a).isWellDefined());
  EXPECT_TRUE((good * good).isWellDefined());
  EXPECT_FALSE((-a).isWellDefined());
  EXPECT_FALSE((a ^ 2).isWellDefined());
  EXPECT_FALSE((a ^ Exponent(3)).isWellDefined());
  ConversionFactor e = good;
  e *= a;
  EXPECT_FALSE(e.isWellDefined());
  EXPECT_DOUBLE_EQ(e.toDouble(), 2.0 * 50.0 / 18.0);
  EXPECT_EQ(a(), a.toDouble());

  ConversionFactor adopted(new DoubleReciprocalConversionFactor(4.0), false);
  EXPECT_TRUE(adopted.isReciprocal());
  EXPECT_FALSE(adopted.isWellDefined());
  ConversionFactor cloned(DoubleConversionFactor(4.0));
  EXPECT_TRUE(cloned.isWellDefined());
}

TEST(FactorHandle, EmptyFactorRaisesOnUse) {
  const ConversionFactor e = emptyFactor();
  const ConversionFactor one;
  const char* cat = "QuillonTypes:Unit";
  const char* key = "UndefinedConversionFactor";
  EXPECT_RAISES(e.toDouble(), cat, key, {});
  EXPECT_RAISES(e(), cat, key, {});
  EXPECT_RAISES(e.getOffset(), cat, key, {});
  EXPECT_RAISES(e.isAffine(), cat, key, {});
  EXPECT_RAISES(e.isReciprocal(), cat, key, {});
  EXPECT_RAISES(e.getFactor(), cat, key, {});
  EXPECT_RAISES(e * one, cat, key, {});
  EXPECT_RAISES(one * e, cat, key, {});
  EXPECT_RAISES(e / one, cat, key, {});
  EXPECT_RAISES(-e, cat, key, {});
  EXPECT_RAISES(e ^ 2, cat, key, {});
  EXPECT_RAISES(e ^ Exponent::one, cat, key, {});
  EXPECT_RAISES((void)(e == one), cat, key, {});
  EXPECT_RAISES((void)(one != e), cat, key, {});
  EXPECT_RAISES((void)(e < one), cat, key, {});
  ConversionFactor f = one;
  EXPECT_RAISES(f *= e, cat, key, {});
  expectSR(f, 1, 1, 0);  // unchanged after the failure
}

TEST(FactorHandle, AffineTimesReciprocalIsEmpty) {
  const ConversionFactor a = F::createConversionFactor(1.8, 32.0),
                         r = F::createConversionFactor(L"2", DoubleReciprocalFactor);
  EXPECT_TRUE((a * r).isEmpty());
  EXPECT_TRUE((r * a).isEmpty());
  EXPECT_TRUE((a / r).isEmpty());
  EXPECT_TRUE((r / a).isEmpty());
}

TEST(FactorEquality, ScaledRationalComparesPartsWithItsOwnKind) {
  // 1/1e1 and 10/1e0 hold the same value; only a text-built factor can hold the second form.
  const ScaledRational ten(std::vector<std::string>{"10", "1", "0"});
  EXPECT_EQ(ten.getNumerator(), 10);  // kept: no decimal normalisation when read from text
  const ScaledRational normal(1, 1, 1);
  EXPECT_FALSE(ten == normal);
  EXPECT_TRUE(ten == DoubleConversionFactor(10.0));
  EXPECT_FALSE(ten < normal);
  // Cloning normalises.
  std::unique_ptr<ConversionFactorImpl> c(ten.clone());
  EXPECT_TRUE(*c == normal);
  // So does copying a handle.
  const ConversionFactor h(ten);
  expectSR(h, 1, 1, 1);
}

TEST(FactorEquality, LopsidedReciprocal) {
  const DoubleReciprocalConversionFactor r(2.0);
  const ScaledRational s(2, 1, 0);
  const DoubleConversionFactor d(2.0);
  EXPECT_TRUE(r == s);  // kept as it is
  EXPECT_TRUE(s == r);
  EXPECT_TRUE(r == d);
  EXPECT_FALSE(d == r);
  EXPECT_TRUE(d != r);
  EXPECT_FALSE(s == DoubleAffineConversionFactor(2.0, 1.0));
  EXPECT_TRUE(s == DoubleAffineConversionFactor(2.0, 0.0));
  EXPECT_FALSE(d == DoubleAffineConversionFactor(2.0, 1.0));
}

TEST(FactorEquality, AffineClasses) {
  const DoubleAffineConversionFactor da(1.25, 3.0);
  const RationalAffineConversionFactor ra(ScaledRational(5, 4, 0), ScaledRational(3, 1, 0));
  // Sub-factors compare by their own classes: a double scale equals a rational one of the same value
  // from the double's side only when the double branch is taken.
  EXPECT_TRUE(da == ra);
  EXPECT_TRUE(ra == da);
  EXPECT_FALSE(ra == ScaledRational(5, 4, 0));
  const RationalAffineConversionFactor plain(ScaledRational(5, 4, 0), ScaledRational(0, 1, 0));
  EXPECT_TRUE(plain == ScaledRational(5, 4, 0));
  EXPECT_FALSE(plain == ra);
  EXPECT_FALSE(ra == DoubleAffineConversionFactor(1.25, 4.0));
}

TEST(FactorOrder, ByValueAndByOffset) {
  EXPECT_TRUE(ScaledRational(1, 2, 0) < DoubleConversionFactor(0.75));
  EXPECT_FALSE(DoubleConversionFactor(0.75) < ScaledRational(1, 2, 0));
  EXPECT_TRUE(DoubleReciprocalConversionFactor(1.0) < ScaledRational(2, 1, 0));
  const DoubleAffineConversionFactor a(2.0, 1.0), b(2.0, 5.0), c(3.0, -100.0);
  EXPECT_TRUE(a < b);  // same scale: offsets
  EXPECT_FALSE(b < a);
  EXPECT_TRUE(b < c);                             // different scales: scales
  EXPECT_FALSE(a < DoubleConversionFactor(2.0));  // equal scale against a plain factor: offset < 0
  EXPECT_TRUE(DoubleAffineConversionFactor(2.0, -1.0) < DoubleConversionFactor(2.0));
  EXPECT_TRUE(a < DoubleConversionFactor(2.5));
  EXPECT_FALSE(a < ScaledRational(3, 2, 0));
}

struct TextCase {
  const wchar_t* text;
  int type;
  const char* cls;  // 'S' ScaledRational, 'D' double, 'A' double affine, 'Q' rational affine, 'R' reciprocal
  double scale;
  double offset;
};

TEST(FactorTexts, EachTypeAndItsDefaults) {
  const TextCase cases[] = {
      {L"0.3048", 1, "D", 0.3048, 0},
      {L"not a number", 1, "D", 1.0, 0},
      {L"", 1, "D", 1.0, 0},
      {L"inf", 1, "D", HUGE_VAL, 0},
      {L"1e3", 1, "D", 1000.0, 0},
      {L"5,18", 2, "S", 5.0 / 18.0, 0},
      {L"5,x", 2, "S", 1.0, 0},
      {L"254,100,-2", 3, "S", 2.54 * (1.0 / 100.0), 0},  // 127/50: read, not normalised
      {L"1,1", 3, "S", 1.0, 0},                          // a missing field reads like a bad one
      {L"9,5,2298,5", 4, "Q", 1.8, 459.6},
      {L"9,5,2298,x", 4, "Q", 1.0, 0.0},  // kept: one bad field leaves both defaults
      {L"1.8,32", 5, "A", 1.8, 32.0},
      {L"1.8,oops", 5, "A", 1.0, 0.0},
      {L"2.5", 6, "R", 2.5, 0},
      {L"two", 6, "R", 1.0, 0},
      {L"123,4", 7, "S", 1.0, 0},
      {L"123,4", 0, "S", 1.0, 0},
  };
  for (const TextCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << c.type);
    const ConversionFactor f = F::createConversionFactor(c.text, static_cast<ConversionFactorType>(c.type));
    const ConversionFactorImpl& impl = f.getFactor();
    switch (c.cls[0]) {
      case 'S':
        EXPECT_EQ(typeid(impl), typeid(ScaledRational));
        break;
      case 'D':
        EXPECT_EQ(typeid(impl), typeid(DoubleConversionFactor));
        break;
      case 'A':
        EXPECT_EQ(typeid(impl), typeid(DoubleAffineConversionFactor));
        break;
      case 'Q':
        EXPECT_EQ(typeid(impl), typeid(RationalAffineConversionFactor));
        break;
      case 'R':
        EXPECT_EQ(typeid(impl), typeid(DoubleReciprocalConversionFactor));
        break;
    }
    EXPECT_EQ(f.toDouble(), c.scale);
    EXPECT_EQ(f.getOffset(), c.offset);
    EXPECT_TRUE(f.isWellDefined());
  }
}

TEST(FactorTexts, ExactFormsAndZeroDenominators) {
  const ConversionFactor f = F::createConversionFactor(L"254,100,-2", ScaledRationalFactor);
  expectSR(f, 127, 50, -2);  // kept: read from text, not normalised
  const ConversionFactor copy = f;
  expectSR(copy, 127, 5, -3);  // the clone normalises
  EXPECT_THROW(F::createConversionFactor(L"1,0", RationalFactor), boost::bad_rational);
  EXPECT_THROW(F::createConversionFactor(L"1,1,1,0", RationalAffineFactor), boost::bad_rational);
  const ConversionFactor nan = F::createConversionFactor(L"nan", DoubleFactor);
  EXPECT_TRUE(std::isnan(nan.toDouble()));
  // Not UTF-16 at all: no field reads.
  const ConversionFactor bad = F::createConversionFactor(std::wstring(1, wchar_t(0xD800)), DoubleFactor);
  EXPECT_EQ(bad.toDouble(), 1.0);
}

TEST(FactorTexts, ToText) {
  EXPECT_EQ(asSR(F::createConversionFactor(5, 18, 0)).toText(), "5/18*1e0");
  EXPECT_EQ(asSR(F::createConversionFactor(-3, 10, 0)).toText(), "-3/1*1e-1");
}

TEST(FactorFactory, NumericOverloads) {
  const ConversionFactor d = F::createConversionFactor(0.5);
  EXPECT_EQ(typeid(d.getFactor()), typeid(DoubleConversionFactor));
  const ConversionFactor a = F::createConversionFactor(1, 1, 0, 27315, 100, 0);
  ASSERT_EQ(typeid(a.getFactor()), typeid(RationalAffineConversionFactor));
  const auto& ra = static_cast<const RationalAffineConversionFactor&>(a.getFactor());
  EXPECT_EQ(ra.getOffsetRational().getNumerator(), 5463);
  EXPECT_EQ(ra.getOffsetRational().getDenominator(), 2);
  EXPECT_EQ(ra.getOffsetRational().getExponent(), -1);
  EXPECT_EQ(a.getOffset(), 2731.5 * (1.0 / 10.0));
  EXPECT_TRUE(a.isAffine());
}

TEST(FactorExponent, ArithmeticAndChecks) {
  EXPECT_EQ(Exponent(3), Exponent(3, 0));
  EXPECT_EQ(Exponent(-2), Exponent(0, 2));
  EXPECT_EQ(Exponent(2, 1).getNet(), 1);
  EXPECT_EQ(Exponent(1, 2) + Exponent(3, 4), Exponent(4, 6));
  EXPECT_EQ(Exponent(1, 1) * Exponent(-1), Exponent(1, 1));
  EXPECT_EQ(Exponent(2, 1) * Exponent(3, 4), Exponent(2 * 3 + 1 * 4, 2 * 4 + 1 * 3));
  EXPECT_NE(Exponent(1, 1), Exponent::zero);
  Exponent out(7, 7);
  EXPECT_FALSE(Exponent::checkedMultiply(Exponent(65536), Exponent(32768), out));
  EXPECT_EQ(out, Exponent(7, 7));
  EXPECT_TRUE(Exponent::checkedMultiply(Exponent(65536), Exponent(-32767), out));
  EXPECT_EQ(out, Exponent(0, 65536 * 32767));
  EXPECT_FALSE(Exponent::checkedAdd(Exponent(std::numeric_limits<int>::max()), Exponent::one, out));
  EXPECT_FALSE(Exponent::checkedFromInt(std::numeric_limits<int>::min(), out));
  EXPECT_TRUE(Exponent::checkedFromInt(-5, out));
  EXPECT_EQ(out, Exponent(0, 5));
  // The unchecked forms wrap rather than trap.
  EXPECT_EQ((Exponent(std::numeric_limits<int>::max()) + Exponent::one).getPositive(), std::numeric_limits<int>::min());
  EXPECT_EQ(Exponent(std::numeric_limits<int>::min()).getNegative(), std::numeric_limits<int>::min());
}

}  // namespace
