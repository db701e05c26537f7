// The multiplication and division tables, cell by cell: for each kind of left operand and each kind of
// right operand, the class of the result and its numbers, against a transcription of the tables here.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "ql_types/units/ConversionFactorImpl.hpp"

namespace {

using namespace QLTypeSys;

enum class Cls { Null, SR, Double, DoubleAffine, DoubleRecip };

Cls classOf(const ConversionFactorImpl* f) {
  if (f == nullptr) return Cls::Null;
  if (typeid(*f) == typeid(ScaledRational)) return Cls::SR;
  if (typeid(*f) == typeid(DoubleConversionFactor)) return Cls::Double;
  if (typeid(*f) == typeid(DoubleAffineConversionFactor)) return Cls::DoubleAffine;
  if (typeid(*f) == typeid(DoubleReciprocalConversionFactor)) return Cls::DoubleRecip;
  ADD_FAILURE() << "unexpected class " << typeid(*f).name();
  return Cls::Null;
}

struct Operand {
  const char* label;
  std::shared_ptr<ConversionFactorImpl> f;
  char kind;      // 'S' ScaledRational, 'D' double, 'A' affine class, 'R' reciprocal
  double scale;   // v, or s for an affine class
  double offset;  // o, 0 for non-affine
};

std::vector<Operand> operands() {
  return {
      {"SR 3/2", std::make_shared<ScaledRational>(3, 2, 0), 'S', 1.5, 0.0},
      {"SR 7/4e1", std::make_shared<ScaledRational>(7, 4, 1), 'S', 17.5, 0.0},
      {"Double 0.25", std::make_shared<DoubleConversionFactor>(0.25), 'D', 0.25, 0.0},
      {"DoubleAffine 1.8+32", std::make_shared<DoubleAffineConversionFactor>(1.8, 32.0), 'A', 1.8, 32.0},
      {"RationalAffine 5/4+3",
       std::make_shared<RationalAffineConversionFactor>(ScaledRational(5, 4, 0), ScaledRational(3, 1, 0)), 'A', 1.25,
       3.0},
      {"DoubleAffine 3+0 (plain)", std::make_shared<DoubleAffineConversionFactor>(3.0, 0.0), 'A', 3.0, 0.0},
      {"RationalAffine 2+0 (plain)",
       std::make_shared<RationalAffineConversionFactor>(ScaledRational(2, 1, 0), ScaledRational(0, 1, 0)), 'A', 2.0,
       0.0},
      {"Reciprocal 2.5", std::make_shared<DoubleReciprocalConversionFactor>(2.5), 'R', 2.5, 0.0},
  };
}

struct Expected {
  Cls cls;
  double scale = 0;
  double offset = 0;
};

// The right operand is asked for affine first, then reciprocal; the left operand answers by its class.
char rightKind(const Operand& b) {
  if (b.kind == 'A') return b.offset != 0.0 ? 'a' : 'p';
  return b.kind == 'R' ? 'r' : 'p';
}

Expected multiply(const Operand& a, const Operand& b) {
  const double va = a.scale, vb = b.scale, sa = a.scale, sb = b.scale, oa = a.offset, ob = b.offset;
  const char k = rightKind(b);
  switch (a.kind) {
    case 'S':
    case 'D':
      if (k == 'a') return {Cls::DoubleAffine, sb * va, ob};  // kept: offset unscaled
      if (k == 'r') return {Cls::DoubleRecip, vb * va};
      if (a.kind == 'S' && b.kind == 'S') return {Cls::SR, va * vb};
      return {Cls::Double, vb * va};
    case 'A':
      if (k == 'a') return {Cls::DoubleAffine, sb * sa, oa + ob * sa};
      if (k == 'r') return {Cls::Null};
      return {Cls::DoubleAffine, sa * vb, oa};
    default:  // reciprocal
      if (k == 'a') return {Cls::Null};
      if (k == 'r') return {Cls::Double, va / vb};
      return {Cls::DoubleRecip, va / vb};
  }
}

Expected divide(const Operand& a, const Operand& b) {
  const double va = a.scale, vb = b.scale, sa = a.scale, sb = b.scale, oa = a.offset, ob = b.offset;
  const char k = rightKind(b);
  switch (a.kind) {
    case 'S':
    case 'D':
      if (k == 'a') return {Cls::DoubleAffine, va / sb, -(ob / sb)};
      if (k == 'r') return {Cls::DoubleRecip, vb / va};
      return {Cls::Double, va / vb};
    case 'A':
      if (k == 'a') return {Cls::DoubleAffine, sa / sb, (oa - ob) / sb};
      if (k == 'r') return {Cls::Null};
      return {Cls::DoubleAffine, sa / vb, oa / vb};
    default:
      if (k == 'a') return {Cls::Null};
      if (k == 'r') return {Cls::Double, vb / va};
      return {Cls::DoubleRecip, va / vb};
  }
}

void check(const char* op, const Operand& a, const Operand& b, const Expected& e, ConversionFactorImpl* got) {
  std::unique_ptr<ConversionFactorImpl> owned(got);
  SCOPED_TRACE(std::string(a.label) + " " + op + " " + b.label);
  ASSERT_EQ(classOf(got), e.cls);
  if (!got) return;
  EXPECT_EQ(got->toDouble(), e.scale);
  EXPECT_EQ(got->getOffset(), e.offset);
}

TEST(FactorTables, EveryMultiplicationCell) {
  int cells = 0;
  for (const Operand& a : operands())
    for (const Operand& b : operands()) {
      check("*", a, b, multiply(a, b), *a.f * *b.f);
      ++cells;
    }
  EXPECT_EQ(cells, 64);
}

TEST(FactorTables, EveryDivisionCell) {
  for (const Operand& a : operands())
    for (const Operand& b : operands()) check("/", a, b, divide(a, b), *a.f / *b.f);
}

TEST(FactorTables, ExactProductKeepsTheRational) {
  std::unique_ptr<ConversionFactorImpl> p(ScaledRational(3, 2, 0) * ScaledRational(7, 4, 1));
  const auto& r = dynamic_cast<const ScaledRational&>(*p);
  EXPECT_EQ(r.getNumerator(), 21);
  EXPECT_EQ(r.getDenominator(), 8);
  EXPECT_EQ(r.getExponent(), 1);
}

TEST(FactorTables, ReciprocalRowDividesItsConstant) {
  // kept: a reciprocal times a plain factor divides, and two reciprocals make a plain quotient.
  std::unique_ptr<ConversionFactorImpl> p(DoubleReciprocalConversionFactor(10.0) * ScaledRational(4, 1, 0));
  EXPECT_EQ(classOf(p.get()), Cls::DoubleRecip);
  EXPECT_EQ(p->toDouble(), 2.5);
  std::unique_ptr<ConversionFactorImpl> q(DoubleReciprocalConversionFactor(10.0) *
                                          DoubleReciprocalConversionFactor(4.0));
  EXPECT_EQ(classOf(q.get()), Cls::Double);
  EXPECT_EQ(q->toDouble(), 2.5);
}

TEST(FactorTables, PlainTimesAffineLeavesTheOffsetUnscaled) {
  std::unique_ptr<ConversionFactorImpl> p(ScaledRational(2, 1, 0) * DoubleAffineConversionFactor(1.8, 32.0));
  EXPECT_EQ(p->toDouble(), 3.6);
  EXPECT_EQ(p->getOffset(), 32.0);
  std::unique_ptr<ConversionFactorImpl> q(DoubleAffineConversionFactor(1.8, 32.0) * ScaledRational(2, 1, 0));
  EXPECT_EQ(q->toDouble(), 3.6);
  EXPECT_EQ(q->getOffset(), 32.0);
}

struct PowerCase {
  const char* label;
  std::shared_ptr<ConversionFactorImpl> f;
  int n;
  Cls cls;
  double value;
};

TEST(FactorPowers, EachClassByItsRule) {
  const std::vector<PowerCase> cases = {
      {"SR 2^10", std::make_shared<ScaledRational>(2, 1, 0), 10, Cls::SR, 1024.0},
      {"SR (3/2e1)^-2", std::make_shared<ScaledRational>(3, 2, 1), -2, Cls::SR, 4.0 / 9.0 * 0.01},
      {"SR 0^0", std::make_shared<ScaledRational>(0, 1, 0), 0, Cls::SR, 1.0},
      {"Double 1.5^3", std::make_shared<DoubleConversionFactor>(1.5), 3, Cls::Double, 3.375},
      {"Double 2^-2", std::make_shared<DoubleConversionFactor>(2.0), -2, Cls::Double, 0.25},
      {"Recip 2^3", std::make_shared<DoubleReciprocalConversionFactor>(2.0), 3, Cls::DoubleRecip, 8.0},
      {"Affine ^1", std::make_shared<DoubleAffineConversionFactor>(1.8, 32.0), 1, Cls::DoubleAffine, 1.8},
      {"Affine ^2", std::make_shared<DoubleAffineConversionFactor>(1.8, 32.0), 2, Cls::Null, 0},
      {"Affine ^0", std::make_shared<DoubleAffineConversionFactor>(1.8, 32.0), 0, Cls::Null, 0},
      {"Plain affine ^2", std::make_shared<DoubleAffineConversionFactor>(3.0, 0.0), 2, Cls::Null, 0},
  };
  for (const PowerCase& c : cases) {
    SCOPED_TRACE(c.label);
    std::unique_ptr<ConversionFactorImpl> p(*c.f ^ c.n);
    ASSERT_EQ(classOf(p.get()), c.cls);
    if (p) {
      EXPECT_EQ(p->toDouble(), c.value);
    }
  }
}

TEST(FactorPowers, BinaryRuleOrderOfProducts) {
  // Squaring order matters in the last bit; these are the products the rule prescribes.
  const double x = 1.1;
  double r = 1.0, s = x;
  r *= s;  // bit 0 of 13
  s *= s;  // x^2
  s *= s;  // x^4 (bit 1 is clear)
  r *= s;  // bit 2
  s *= s;  // x^8
  r *= s;  // bit 3
  EXPECT_EQ(binaryPower(x, 13), r);
  EXPECT_EQ(binaryPower(x, -13), 1.0 / r);
  EXPECT_EQ(binaryPower(2.0, 0), 1.0);
  EXPECT_EQ(binaryPower(2.0, -2147483647 - 1), 0.0);
}

TEST(FactorNegation, EachClass) {
  std::unique_ptr<ConversionFactorImpl> a(-ScaledRational(30, 7, 0));
  const auto& r = dynamic_cast<const ScaledRational&>(*a);
  EXPECT_EQ(r.getNumerator(), -3);
  EXPECT_EQ(r.getExponent(), 1);
  std::unique_ptr<ConversionFactorImpl> b(-DoubleAffineConversionFactor(1.8, 32.0));
  EXPECT_EQ(b->toDouble(), -1.8);
  EXPECT_EQ(b->getOffset(), -32.0);
  std::unique_ptr<ConversionFactorImpl> c(
      -RationalAffineConversionFactor(ScaledRational(9, 5, 0), ScaledRational(32, 1, 0)));
  ASSERT_NE(dynamic_cast<RationalAffineConversionFactor*>(c.get()), nullptr);
  EXPECT_EQ(dynamic_cast<RationalAffineConversionFactor&>(*c).getScale().getNumerator(), -9);
  EXPECT_EQ(c->getOffset(), -32.0);
  std::unique_ptr<ConversionFactorImpl> d(-DoubleReciprocalConversionFactor(2.0));
  EXPECT_TRUE(d->isReciprocal());
  EXPECT_EQ(d->toDouble(), -2.0);
  std::unique_ptr<ConversionFactorImpl> e(-DoubleConversionFactor(2.0));
  EXPECT_EQ(e->toDouble(), -2.0);
  // The one numerator without a negation stays as it is rather than overflow.
  std::unique_ptr<ConversionFactorImpl> f(-ScaledRational(-9223372036854775807LL - 1, 1, 0));
  EXPECT_EQ(dynamic_cast<const ScaledRational&>(*f).getNumerator(), -9223372036854775807LL - 1);
}

}  // namespace
