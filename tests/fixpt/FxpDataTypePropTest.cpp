// The fixed-point record: construction, normalisation, comparison and validation.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "ql_types/fixpt/fxpDataTypeProp.hpp"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

TEST(FxpConstruction, DefaultsAndFactories) {
  const fxpDataTypeProp d;
  EXPECT_EQ(d.getMode(), FXP_DT_FIXPT);
  EXPECT_EQ(d.getSignedness(), 1u);
  EXPECT_EQ(d.getWordLength(), 16);
  EXPECT_TRUE(d.isScalingTrivial());
  const fxpDataTypeProp dbl = fxpDataTypeProp::doubleDataType();
  EXPECT_TRUE(dbl.isDouble() && dbl.isSigned() && dbl.getWordLength() == 64 && dbl.validateFxpDTProp());
  const fxpDataTypeProp sgl = fxpDataTypeProp::singleDataType();
  EXPECT_TRUE(sgl.isSingle() && sgl.getWordLength() == 32 && sgl.validateFxpDTProp());
  const fxpDataTypeProp b = fxpDataTypeProp::booleanDataType();
  EXPECT_TRUE(b.isBoolean() && !b.isSigned() && b.getWordLength() == 8 && b.validateFxpDTProp());
}

TEST(FxpConstruction, FormsStoreWithoutNormalising) {
  const fxpDataTypeProp a(true, 16, 3.0, 0, 0.0);
  EXPECT_EQ(a.getSlopeAdjustmentFactor(), 3.0);
  EXPECT_FALSE(a.validateFxpDTProp());
  const fxpDataTypeProp b(false, 12u, 3);
  EXPECT_EQ(b.getFixedExponent(), -3);
  EXPECT_EQ(b.getFractionLength(), 3);
  const fxpDataTypeProp c(true, 16, 0.375, 1.0);  // total slope 0.375 = 1.5 * 2^-2
  EXPECT_EQ(c.getSlopeAdjustmentFactor(), 1.5);
  EXPECT_EQ(c.getFixedExponent(), -2);
  EXPECT_EQ(c.getBias(), 1.0);
  const fxpDataTypeProp d(c, 3.0, 7, 2.0);
  EXPECT_EQ(d.getWordLength(), 16);
  EXPECT_EQ(d.getSlopeAdjustmentFactor(), 3.0);
  EXPECT_EQ(d.getFixedExponent(), 7);
  const fxpDataTypeProp e(FXP_DT_SCALED_DOUBLE, 5u, 20u, 1.25, -4, 0.5, FXP_DTO_OFF);
  EXPECT_EQ(e.getSignedness(), 5u);
  EXPECT_EQ(e.getDataTypeOverride(), FXP_DTO_OFF);
  const fxpDataTypeProp f(FXP_DT_FIXPT, false, 8, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  EXPECT_EQ(f.getSignedness(), 0u);
}

TEST(FxpDerived, SignBitsAndMostSignificantBit) {
  fxpDataTypeProp p(true, 1, 0);
  EXPECT_EQ(p.getWordLengthNonSign(), 0);
  EXPECT_TRUE(fxpDataTypeProp::preValidateWordLength(p.getWordLength()));
  p = fxpDataTypeProp(true, 16, 4);
  EXPECT_EQ(p.getPow2WtMSBit(), 11);
  EXPECT_EQ(p.getPow2WtMSNonSignBit(), 10);
  p.setSignedness(2);  // unspecified signedness counts no sign bit
  EXPECT_FALSE(p.isSigned());
  EXPECT_EQ(p.getWordLengthNonSign(), 16);
  EXPECT_EQ(p.getUWordLengthNonSign(), 16u);
  EXPECT_TRUE(p.isWordLengthGreaterThan(-1));
  EXPECT_FALSE(p.isWordLengthGreaterThan(static_cast<unsigned>(-1)));
}

struct ScalingCase {
  double saf;
  int exponent;
  double bias;
  double wantSaf;
  int wantExponent;
};

class FxpSetScaling : public testing::TestWithParam<ScalingCase> {};

TEST_P(FxpSetScaling, NormalisesOnlyPositiveFiniteFactors) {
  const ScalingCase c = GetParam();
  fxpDataTypeProp p;
  p.setScaling(c.saf, c.exponent, c.bias);
  EXPECT_TRUE(p.getSlopeAdjustmentFactor() == c.wantSaf ||
              (std::isnan(c.wantSaf) && std::isnan(p.getSlopeAdjustmentFactor())));
  EXPECT_EQ(p.getFixedExponent(), c.wantExponent);
  EXPECT_EQ(p.getBias(), c.bias);
}

INSTANTIATE_TEST_SUITE_P(Table, FxpSetScaling,
                         testing::Values(ScalingCase{3.0, 0, 0.0, 1.5, 1}, ScalingCase{0.1875, 4, 1.0, 1.5, 1},
                                         ScalingCase{-3.0, 5, 0.0, -3.0, 5}, ScalingCase{0.0, 5, 0.0, 0.0, 5},
                                         ScalingCase{1.0, 9, 0.0, 1.0, 9}, ScalingCase{kInf, 2, 0.0, kInf, 2},
                                         ScalingCase{kNaN, 2, 0.0, kNaN, 2}, ScalingCase{0.75, 0, 0.0, 1.5, -1},
                                         ScalingCase{1024.0, 0, 0.0, 1.0, 10}));

TEST(FxpNormalizeScaling, KeepsTheProductExactlyForManyFactors) {
  std::mt19937_64 rng(3);
  auto check = [](double saf, int exponent) {
    double s = saf;
    int e = exponent;
    fxpDataTypeProp::normalizeScaling(&s, &e);
    ASSERT_GE(s, 1.0) << saf;
    ASSERT_LT(s, 2.0) << saf;
    // s is normal, so scaling the original factor up or down to it is exact.
    ASSERT_EQ(s, std::ldexp(saf, exponent - e)) << saf;
  };
  for (int i = 0; i < 100000; ++i) {
    std::uint64_t bits = rng() & ~(1ull << 63);  // positive
    double saf;
    std::memcpy(&saf, &bits, sizeof saf);
    if (!std::isfinite(saf) || saf == 0.0) continue;
    check(saf, static_cast<int>(rng() % 200) - 100);
  }
  for (double saf : {std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::min(),
                     std::numeric_limits<double>::max(), std::nextafter(2.0, 0.0), std::nextafter(1.0, 0.0), 2.0,
                     3.9999999999999996, 0.5000000000000001})
    check(saf, 0);
}

// Fields at the int limits: every derived length is the 64-bit result clamped to int, never an overflow.
TEST(FxpDerived, FieldsAtTheIntLimitsSaturate) {
  const int values[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
  auto clamp = [](long long v) {
    return static_cast<int>(std::min<long long>(INT_MAX, std::max<long long>(INT_MIN, v)));
  };
  for (unsigned sign : {0u, 1u, 2u})
    for (int wl : values)
      for (int e : values) {
        fxpDataTypeProp p(FXP_DT_FIXPT, sign, wl, 1.0, e, 0.0, FXP_DTO_DEFAULT);
        const long long signBit = sign == 1u ? 1 : 0;
        EXPECT_EQ(p.getFractionLength(), clamp(-static_cast<long long>(e)));
        EXPECT_EQ(p.getWordLengthNonSign(), clamp(wl - signBit));
        EXPECT_EQ(p.getPow2WtMSBit(), clamp(wl - 1LL + e));
        EXPECT_EQ(p.getPow2WtMSNonSignBit(), clamp(wl - 1LL + e - signBit));
        p.setScaling(e);
        EXPECT_EQ(p.getFixedExponent(), clamp(-static_cast<long long>(e)));
        p.setFractionLength(e);
        EXPECT_EQ(p.getFixedExponent(), clamp(-static_cast<long long>(e)));
      }
}

// Normalising must not move the exponent past the int range: then factor and exponent stay as they were.
TEST(FxpNormalizeScaling, ExponentAtTheIntLimits) {
  struct Case {
    double saf;
    int exponent;
    double wantSaf;
    int wantExponent;
  };
  const Case cases[] = {
      {3.0, INT_MAX, 3.0, INT_MAX},
      {3.0, INT_MAX - 1, 1.5, INT_MAX},
      {0.75, INT_MIN, 0.75, INT_MIN},
      {0.75, INT_MIN + 1, 1.5, INT_MIN},
      {0x1p-1074, INT_MIN, 0x1p-1074, INT_MIN},
      {0x1p-1074, 0, 1.0, -1074},
      {0x1p1000, INT_MAX - 999, 0x1p1000, INT_MAX - 999},
      {0x1p1000, INT_MAX - 1000, 1.0, INT_MAX},
  };
  for (const Case& c : cases) {
    double saf = c.saf;
    int e = c.exponent;
    fxpDataTypeProp::normalizeScaling(&saf, &e);
    EXPECT_EQ(saf, c.wantSaf) << c.saf << " " << c.exponent;
    EXPECT_EQ(e, c.wantExponent) << c.saf << " " << c.exponent;
    fxpDataTypeProp p;
    p.setScaling(c.saf, c.exponent, 2.0);
    EXPECT_EQ(p.getSlopeAdjustmentFactor(), c.wantSaf);
    EXPECT_EQ(p.getFixedExponent(), c.wantExponent);
  }
}

TEST(FxpTotalSlope, SplitsWithFrexpIncludingZeroAndNegatives) {
  fxpDataTypeProp p;
  p.setTotalSlope(0.0);
  EXPECT_EQ(p.getSlopeAdjustmentFactor(), 0.0);
  EXPECT_EQ(p.getFixedExponent(), -1);
  p.setTotalSlope(-3.0);
  EXPECT_EQ(p.getSlopeAdjustmentFactor(), -1.5);
  EXPECT_EQ(p.getFixedExponent(), 1);
  p.setBias(4.0);
  p.setTotalSlope(0.25);
  EXPECT_EQ(p.getBias(), 4.0);  // the bias stays
  EXPECT_EQ(p.getTotalSlope(), 0.25);
  p.setScaling(10.0, 0.5);
  EXPECT_EQ(p.getTotalSlope(), 10.0);
  EXPECT_EQ(p.getBias(), 0.5);
}

TEST(FxpModeChanges, OnlyTheirOwnModes) {
  fxpDataTypeProp p(true, 16, 3);
  p.changeFixptToScaledDoubles();
  EXPECT_TRUE(p.isScaledDouble());
  EXPECT_EQ(p.getFixedExponent(), -3);
  p.changeScaledDoublesToFixpt();
  EXPECT_TRUE(p.isFixedPoint());
  fxpDataTypeProp d = fxpDataTypeProp::doubleDataType();
  d.changeFixptToScaledDoubles();
  d.changeIfBooleanToUint8();
  EXPECT_TRUE(d.isDouble());
  fxpDataTypeProp b = fxpDataTypeProp::booleanDataType();
  b.setDataTypeOverride(FXP_DTO_OFF);
  b.changeIfBooleanToUint8();
  EXPECT_TRUE(b.isFixedPoint());
  EXPECT_EQ(b.getWordLength(), 8);
  EXPECT_EQ(b.getSignedness(), 0u);
  EXPECT_EQ(b.getDataTypeOverride(), FXP_DTO_DEFAULT);
}

TEST(FxpComparison, OverrideNeverCountsAndDoublesCompareExactly) {
  fxpDataTypeProp a(true, 16, 3), b = a;
  b.setDataTypeOverride(FXP_DTO_OFF);
  EXPECT_TRUE(a.isEqual(b));
  EXPECT_TRUE(a.isEqualConceptual(b));
  fxpDataTypeProp bool8 = fxpDataTypeProp::booleanDataType(), bool16 = bool8;
  bool16.setWordLength(16);
  EXPECT_TRUE(bool8.isEqualConceptual(bool16));
  EXPECT_FALSE(bool8.isEqual(bool16));
  EXPECT_FALSE(bool8.isEqualConceptual(fxpDataTypeProp::doubleDataType()));
  fxpDataTypeProp n = a;
  n.setBias(kNaN);
  EXPECT_FALSE(n.isEqual(n));  // NaN is unequal to itself
  fxpDataTypeProp z = a;
  z.setBias(-0.0);
  EXPECT_TRUE(z.isZeroBias());
  EXPECT_TRUE(z.isEqual(a));
  fxpDataTypeProp s = a;
  s.setScaling(2.0, 0, 0.0);
  s.setSlopeAdjustmentFactor(2.0);
  s.setFixedExponent(-1);
  EXPECT_FALSE(s.isUnitTotalSlope());
  EXPECT_EQ(s.getTotalSlope(), 1.0);
  EXPECT_TRUE(a.isEqualIgnoreScaling(s));
  EXPECT_FALSE(a.hasSameSlopeAdjustmentFactor(s));
  EXPECT_TRUE(a.isSignednessWordLengthEqual(1u, 16));
  EXPECT_TRUE(a.isSignednessWordLengthEqual(1u, 16u));
}

TEST(FxpValidation, ScalarValidators) {
  EXPECT_FALSE(fxpDataTypeProp::preValidateBias(kInf));
  EXPECT_FALSE(fxpDataTypeProp::preValidateBias(-kInf));
  EXPECT_FALSE(fxpDataTypeProp::preValidateBias(kNaN));
  EXPECT_TRUE(fxpDataTypeProp::preValidateBias(-1e300));
  EXPECT_TRUE(fxpDataTypeProp::preValidateSlopeAdjustmentFactor(1.0));
  EXPECT_FALSE(fxpDataTypeProp::preValidateSlopeAdjustmentFactor(2.0));
  EXPECT_FALSE(fxpDataTypeProp::preValidateTotalSlope(0.0));
  EXPECT_TRUE(fxpDataTypeProp::preValidateTotalSlope(1e-300));
  EXPECT_FALSE(fxpDataTypeProp::preValidateWordLength(0));
  EXPECT_TRUE(fxpDataTypeProp::preValidateWordLength(static_cast<unsigned>(-1)));
}

struct ComboCase {
  fxpModeDataType mode;
  unsigned signedness;
  int wordLength;
  double saf;
  int exponent;
  double bias;
  bool valid;
};

class FxpCombo : public testing::TestWithParam<ComboCase> {};

TEST_P(FxpCombo, ByMode) {
  const ComboCase c = GetParam();
  EXPECT_EQ(fxpDataTypeProp::preValidateCombo(c.mode, c.signedness, c.wordLength, c.saf, c.exponent, c.bias), c.valid);
  const fxpDataTypeProp p(c.mode, c.signedness, c.wordLength, c.saf, c.exponent, c.bias, FXP_DTO_DEFAULT);
  EXPECT_EQ(p.validateFxpDTProp(), c.valid);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FxpCombo,
    testing::Values(
        ComboCase{FXP_DT_FIXPT, 7, 100000, 1.5, 5000, -3.0, true},  // few limits, on purpose
        ComboCase{FXP_DT_FIXPT, 1, 0, 1.0, 0, 0.0, false}, ComboCase{FXP_DT_SCALED_DOUBLE, 0, 8, 2.0, 0, 0.0, false},
        ComboCase{FXP_DT_SCALED_DOUBLE, 0, 8, 1.0, 0, kNaN, false}, ComboCase{FXP_DT_DOUBLE, 1, 64, 1.0, 0, 0.0, true},
        ComboCase{FXP_DT_DOUBLE, 1, 64, 1.0, 1, 0.0, false}, ComboCase{FXP_DT_SINGLE, 1, 32, 1.0, 0, 0.0, true},
        ComboCase{FXP_DT_SINGLE, 0, 32, 1.0, 0, 0.0, false}, ComboCase{FXP_DT_BOOLEAN, 0, 8, 1.0, 0, 0.0, true},
        ComboCase{FXP_DT_BOOLEAN, 0, 8, 1.0, 0, 1.0, false},
        ComboCase{static_cast<fxpModeDataType>(5), 0, 8, 1.0, 0, 0.0, false}));

TEST(FxpPredicates, Modes) {
  fxpDataTypeProp p;
  p.DataTypeMode = static_cast<fxpModeDataType>(4);
  EXPECT_TRUE(p.isKnownMode() && p.isFixptOrBoolean() && !p.isFloat());
  p.DataTypeMode = static_cast<fxpModeDataType>(5);
  EXPECT_FALSE(p.isKnownMode());
  p.DataTypeMode = FXP_DT_SINGLE;
  EXPECT_TRUE(p.isFloat() && !p.isFixptOrScaledDouble());
}

}  // namespace
