// Conversions whose results are known by heart: rounding before or after the limit test, ties,
// wrap-around, the pass, boolean bytes, and the frame's deliberate quirk. They pin the behaviour
// independently of the reference model that the differential test trusts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <ostream>
#include <vector>

#include "ConversionReference.hpp"
#include "ql_types/convert/BuiltinConversion.hpp"

namespace {

using namespace convref;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct ScalarCase {
  int src;
  double value;  // as the source type holds it
  int dst;
  int overflow;
  int rounding;
  long double expected;
  bool lossless;  // the result with checkLossless set

  friend std::ostream& operator<<(std::ostream& out, const ScalarCase& c) {
    return out << kTypes[c.src].name << " " << c.value << " -> " << kTypes[c.dst].name << ", overflow " << c.overflow
               << ", rounding " << c.rounding;
  }
};

class ConvertScalar : public ::testing::TestWithParam<ScalarCase> {};

TEST_P(ConvertScalar, GivesTheKnownValueAndPassResult) {
  const ScalarCase& c = GetParam();
  unsigned char in[8] = {}, out[8] = {};
  store(c.src, in, 0, c.value);
  const bool result = qlConvertBuiltInDTypeVectWithCheck(in, 1, c.src, false, out, 1, c.dst, false,
                                                         static_cast<fxpModeOverflow_tag>(c.overflow),
                                                         static_cast<fxpModeRounding_tag>(c.rounding), true);
  EXPECT_EQ(load(c.dst, out, 0), c.expected);
  EXPECT_EQ(result, c.lossless);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(RoundingAndLimits, ConvertScalar, ::testing::Values(
  //          source          value                 destination  overflow   rounding  expected     lossless
  ScalarCase{kDouble, kInf,                  kInt8,   kWrap,     kZero,    0,           false},
  ScalarCase{kDouble, kInf,                  kInt8,   kSaturate, kZero,    127,         false},
  ScalarCase{kDouble, 127.4,                 kInt8,   kSaturate, kNearest, 127,         false},
  ScalarCase{kDouble, 127.5,                 kInt8,   kSaturate, kNearest, 127,         false},  // limit test first
  ScalarCase{kDouble, 127.5,                 kInt8,   kWrap,     kNearest, -128,        false},
  ScalarCase{kDouble, 200.7,                 kInt8,   kWrap,     kZero,    -56,         false},
  ScalarCase{kDouble, -129.5,                kInt8,   kWrap,     kZero,    127,         false},
  ScalarCase{kDouble, -1.5,                  kUint8,  kWrap,     kZero,    255,         false},
  ScalarCase{kDouble, -0.3,                  kUint8,  kSaturate, kCeil,    0,           false},
  ScalarCase{kDouble, -2.5,                  kInt16,  kWrap,     kNearest, -2,          false},
  ScalarCase{kDouble, 2.5,                   kInt16,  kWrap,     kNearest, 3,           false},
  ScalarCase{kDouble, -0.5,                  kInt16,  kSaturate, kNearest, 0,           false},
  ScalarCase{kDouble, 0.49999999999999994,   kInt32,  kWrap,     kNearest, 0,           false},
  ScalarCase{kDouble, 1e300,                 kInt32,  kWrap,     kZero,    0,           false},
  ScalarCase{kDouble, 1e300,                 kInt32,  kSaturate, kZero,    2147483647,  false},
  ScalarCase{kDouble, 4294967295.0,          kUint32, kSaturate, kZero,    4294967295., true},
  ScalarCase{kDouble, 4294967296.0,          kUint32, kWrap,     kZero,    0,           false},
  ScalarCase{kDouble, -4294967297.0,         kUint32, kWrap,     kFloor,   4294967295., false},
  ScalarCase{kSingle, 2147483648.0,          kInt32,  kSaturate, kNearest, 2147483647,  false},  // compared in double
  ScalarCase{kSingle, 2147483648.0,          kInt32,  kWrap,     kNearest, -2147483648., false},
  ScalarCase{kSingle, 0x1p23 + 1,            kInt32,  kSaturate, kNearest, 0x1p23 + 1,  true},
  ScalarCase{kSingle, -0.5,                  kInt8,   kWrap,     kNearest, 0,           false},
  ScalarCase{kDouble, 3.0,                   kInt32,  kSaturate, kCeil,    3,           true},
  ScalarCase{kDouble, 1e39,                  kSingle, kWrap,     kZero,    HUGE_VALL,   false},
  ScalarCase{kDouble, 0.1,                   kSingle, kWrap,     kZero,    0.100000001490116119384765625L, false},
  ScalarCase{kInt32,  16777217,              kSingle, kWrap,     kZero,    16777216,    false},
  ScalarCase{kUint32, 4294967295.0,          kSingle, kWrap,     kZero,    4294967296.0, false},
  ScalarCase{kInt8,   -1,                    kUint8,  kSaturate, kZero,    0,           false},
  ScalarCase{kInt8,   -1,                    kUint8,  kWrap,     kZero,    255,         false},
  ScalarCase{kInt8,   -1,                    kUint16, kWrap,     kZero,    0xFFFF,      false},
  ScalarCase{kInt8,   -1,                    kUint32, kWrap,     kZero,    0xFFFFFFFFu, false},
  ScalarCase{kUint32, 4294967295.0,          kInt32,  kSaturate, kZero,    2147483647,  false},
  ScalarCase{kInt16,  -300,                  kUint16, kWrap,     kZero,    65236,       false},
  ScalarCase{kDouble, 0.5,                   kBoolean, kWrap,    kZero,    1,           false},
  ScalarCase{kDouble, 1.0,                   kBoolean, kWrap,    kZero,    1,           true},
  ScalarCase{kDouble, kNaN,                  kBoolean, kWrap,    kZero,    1,           false},
  ScalarCase{kInt16,  -2,                    kBoolean, kWrap,    kZero,    1,           false},
  ScalarCase{kBoolean, 2,                    kDouble, kWrap,     kZero,    2,           true},   // no normalising
  ScalarCase{kBoolean, 2,                    kBoolean, kWrap,    kZero,    2,           true},
  ScalarCase{kBoolean, 200,                  kInt8,   kSaturate, kZero,    -56,         true}    // a byte copy
));
// clang-format on

TEST(ConvertScalar, NaNGivesZeroForEveryIntegerModeAndFailsThePass) {
  for (int dst = kInt8; dst <= kUint32; ++dst)
    for (int src : {kDouble, kSingle})
      for (int mode = 0; mode < 10; ++mode) {
        unsigned char in[8], out[8] = {0xEE, 0xEE, 0xEE, 0xEE};
        store(src, in, 0, kNaN);
        EXPECT_FALSE(qlConvertBuiltInDTypeVectWithCheck(in, 1, src, false, out, 1, dst, false,
                                                        static_cast<fxpModeOverflow_tag>(mode % 2),
                                                        static_cast<fxpModeRounding_tag>(mode / 2), true));
        EXPECT_EQ(load(dst, out, 0), 0) << kTypes[src].name << " -> " << kTypes[dst].name << ", mode " << mode;
      }
}

// A complex destination of type boolean: the kernels to boolean ignore it and write one byte per element,
// while boolean to boolean is the uint8 copy, which writes pairs like every copy does.
TEST(ConvertFrame, BytesWrittenToAComplexBooleanDestination) {
  constexpr unsigned kN = 5;
  for (int src = kDouble; src <= kBoolean; ++src)
    for (bool srcComplex : {false, true}) {
      unsigned char in[2 * kN * 8] = {};
      for (unsigned i = 0; i < 2 * kN; ++i) store(src, in, i, i % 3 == 0 ? 0 : 1);
      unsigned char out[4 * kN];
      std::fill(std::begin(out), std::end(out), 0xEE);
      qlConvertBuiltInDTypeVectWithCheck(in, kN, src, srcComplex, out, kN, kBoolean, true, FXP_OVERFLOW_SATURATE,
                                         FXP_ROUND_ZERO, false);
      const unsigned written = src == kBoolean ? 2 * kN : kN;
      for (unsigned i = 0; i < 4 * kN; ++i)
        EXPECT_EQ(out[i] != 0xEE, i < written) << kTypes[src].name << (srcComplex ? " complex" : "") << " byte " << i;
      if (src == kBoolean)  // pairs: the real part, then the imaginary part copied or zero
        for (unsigned i = 0; i < kN; ++i) {
          EXPECT_EQ(out[2 * i], in[srcComplex ? 2 * i : i]);
          EXPECT_EQ(out[2 * i + 1], srcComplex ? in[2 * i + 1] : 0);
        }
    }
}

TEST(ConvertFrame, EmptySourceBroadcastsExceptToBoolean) {
  const double src[3] = {0.0, 5.0, 0.0};
  double toDouble[3] = {};
  std::uint8_t toBoolean[3] = {};
  qlConvertBuiltInDTypeVectWithCheck(src, 0, kDouble, false, toDouble, 3, kDouble, false, FXP_OVERFLOW_WRAP,
                                     FXP_ROUND_ZERO, false);
  qlConvertBuiltInDTypeVectWithCheck(src, 0, kDouble, false, toBoolean, 3, kBoolean, false, FXP_OVERFLOW_WRAP,
                                     FXP_ROUND_ZERO, false);
  EXPECT_EQ(std::vector<double>(toDouble, toDouble + 3), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(std::vector<std::uint8_t>(toBoolean, toBoolean + 3), (std::vector<std::uint8_t>{0, 1, 0}));  // steps on
}

}  // namespace
