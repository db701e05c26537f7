// Overflow detection against the reference: does the value, rounded exactly by each of the seven
// modes, leave the destination's range? Plus the scan's own rules: count, complex, no broadcast,
// and inputs it must answer without reading.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "ConversionReference.hpp"
#include "ql_types/convert/internal/OverflowDetection.hpp"

namespace {

using namespace convref;
using QLTypeSys::detail::checkForOverflowDuringDataTypeConversion;

bool check(const void* src, int count, int srcId, bool isComplex, int dstId, int rounding) {
  return checkForOverflowDuringDataTypeConversion(src, count, srcId, isComplex, dstId,
                                                  static_cast<fxpModeRounding_tag>(rounding));
}

/// Whether one value of type src overflows dst, judged by the reference.
bool referenceOverflows(long double v, int src, int dst, int rounding) {
  if (src == kBoolean || dst == kBoolean || dst == kDouble) return false;
  if (dst == kSingle) return src == kDouble && !std::isinf(v) && std::isinf(toSingle(v));
  if (kTypes[src].isFloat) return rounding >= 0 && rounding <= 6 && roundsOutside(v, dst, rounding);
  return v < lowestOf(dst) || v > highestOf(dst);
}

std::vector<unsigned char> buffer(int id, const std::vector<long double>& values) {
  std::vector<unsigned char> bytes(values.size() * kTypes[id].bytes);
  for (std::size_t i = 0; i < values.size(); ++i) store(id, bytes.data(), i, values[i]);
  return bytes;
}

class OverflowDifferential : public ::testing::TestWithParam<int> {};

TEST_P(OverflowDifferential, EachValueAgreesWithExactRounding) {
  const int src = GetParam() / 9, dst = GetParam() % 9;
  const std::vector<long double> pool = sourcePool(src, 200);
  const std::vector<unsigned char> bytes = buffer(src, pool);
  for (int rounding = 0; rounding <= 7; ++rounding) {
    for (std::size_t i = 0; i < pool.size(); ++i) {
      const void* one = bytes.data() + i * kTypes[src].bytes;
      ASSERT_EQ(check(one, 1, src, false, dst, rounding), referenceOverflows(pool[i], src, dst, rounding))
          << kTypes[src].name << " " << static_cast<double>(pool[i]) << " -> " << kTypes[dst].name << ", rounding "
          << rounding;
    }
  }
}

TEST_P(OverflowDifferential, AVectorOverflowsWhenAnyOfItsPartsDoes) {
  const int src = GetParam() / 9, dst = GetParam() % 9;
  const std::vector<long double> pool = sourcePool(src);
  for (int rounding = 0; rounding <= 6; ++rounding) {
    // Windows of the pool, so that some hold only in-range values and some end on the first that isn't.
    for (std::size_t start = 0; start + 6 <= pool.size(); start += 5) {
      const std::vector<long double> window(pool.begin() + start, pool.begin() + start + 6);
      bool expected = false;
      for (long double v : window) expected = expected || referenceOverflows(v, src, dst, rounding);
      const std::vector<unsigned char> bytes = buffer(src, window);
      EXPECT_EQ(check(bytes.data(), 6, src, false, dst, rounding), expected);
      EXPECT_EQ(check(bytes.data(), 3, src, true, dst, rounding), expected) << "three pairs cover the same six";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AllPairs, OverflowDifferential, ::testing::Range(0, 81),
                         [](const ::testing::TestParamInfo<int>& info) {
                           return std::string(kTypes[info.param / 9].name) + "_to_" + kTypes[info.param % 9].name;
                         });

struct ThresholdCase {
  int src;
  double value;
  int dst;
  int rounding;
  bool overflows;

  friend std::ostream& operator<<(std::ostream& out, const ThresholdCase& c) {
    return out << kTypes[c.src].name << " " << c.value << " -> " << kTypes[c.dst].name << ", rounding " << c.rounding;
  }
};

class OverflowThreshold : public ::testing::TestWithParam<ThresholdCase> {};

TEST_P(OverflowThreshold, MatchesTheKnownAnswer) {
  const ThresholdCase& c = GetParam();
  unsigned char bytes[8];
  store(c.src, bytes, 0, c.value);
  EXPECT_EQ(check(bytes, 1, c.src, false, c.dst, c.rounding), c.overflows);
}

constexpr double kInf = std::numeric_limits<double>::infinity();

// clang-format off
INSTANTIATE_TEST_SUITE_P(TiesAndLimits, OverflowThreshold, ::testing::Values(
  //             source   value          destination rounding          overflows
  ThresholdCase{kDouble, 127.4,          kInt8,   FXP_ROUND_NEAREST,   false},
  ThresholdCase{kDouble, 127.5,          kInt8,   FXP_ROUND_NEAREST,   true},
  ThresholdCase{kDouble, 127.5,          kInt8,   FXP_ROUND_ZERO,      false},
  ThresholdCase{kDouble, -128.5,         kInt8,   FXP_ROUND_NEAREST,   false},
  ThresholdCase{kDouble, -128.5,         kInt8,   FXP_ROUND_HALF_EVEN, false},
  ThresholdCase{kDouble, -128.5,         kInt8,   FXP_ROUND_HALF_AWAY, true},
  ThresholdCase{kDouble, 127.5,          kInt8,   FXP_ROUND_HALF_EVEN, true},   // 128 is the even neighbour
  ThresholdCase{kDouble, -0.5,           kUint8,  FXP_ROUND_NEAREST,   false},
  ThresholdCase{kDouble, -0.5,           kUint8,  FXP_ROUND_HALF_EVEN, false},
  ThresholdCase{kDouble, -0.5,           kUint8,  FXP_ROUND_HALF_AWAY, true},
  ThresholdCase{kDouble, -0.5,           kUint8,  FXP_ROUND_CEIL,      false},
  ThresholdCase{kDouble, -0.5,           kUint8,  FXP_ROUND_FLOOR,     true},
  ThresholdCase{kDouble, 127.0000001,    kInt8,   FXP_ROUND_CEIL,      true},
  ThresholdCase{kDouble, 127.0000001,    kInt8,   FXP_ROUND_FLOOR,     false},
  ThresholdCase{kDouble, 2147483647.5,   kInt32,  FXP_ROUND_NEAREST,   true},
  ThresholdCase{kDouble, -2147483648.5,  kInt32,  FXP_ROUND_NEAREST,   false},
  ThresholdCase{kDouble, 4294967295.25,  kUint32, FXP_ROUND_CEIL,      true},
  ThresholdCase{kDouble, -0.999,         kUint32, FXP_ROUND_CEIL,      false},
  ThresholdCase{kSingle, 2147483648.0,   kInt32,  FXP_ROUND_FLOOR,     true},
  ThresholdCase{kDouble, 1e39,           kSingle, FXP_ROUND_ZERO,      true},
  ThresholdCase{kDouble, 1e38,           kSingle, FXP_ROUND_ZERO,      false},
  ThresholdCase{kDouble, kInf,           kSingle, FXP_ROUND_ZERO,      false},  // was infinite already
  ThresholdCase{kUint32, 4294967295.0,   kInt32,  FXP_ROUND_ZERO,      true},
  ThresholdCase{kUint32, 2147483647.0,   kInt32,  FXP_ROUND_ZERO,      false},
  ThresholdCase{kInt16,  300,            kInt8,   7,                   true},   // rounding unused for integers
  ThresholdCase{kDouble, 1e300,          kInt8,   7,                   false},  // unknown rounding
  ThresholdCase{kBoolean, 200,           kInt8,   FXP_ROUND_ZERO,      false}   // boolean sources are not scanned
));
// clang-format on

TEST(OverflowDetection, AnswersWithoutReadingWhenThereIsNothingToScan) {
  // A null source is never touched when the answer is known beforehand.
  EXPECT_FALSE(check(nullptr, 0, kDouble, false, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, -3, kDouble, true, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, kDouble, false, kInt8, 7));
  EXPECT_FALSE(check(nullptr, 5, kSingle, false, kUint16, -1));
  EXPECT_FALSE(check(nullptr, 5, kInt8, false, kInt16, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, kUint8, false, kUint16, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, kBoolean, false, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, 9, false, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, kDouble, false, 9, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(nullptr, 5, -1, false, kInt8, FXP_ROUND_ZERO));
}

TEST(OverflowDetection, ReadsEveryPartWithoutBroadcast) {
  const double pairs[4] = {1.0, 2.0, 3.0, 500.0};  // 500 is the imaginary part of the second value
  EXPECT_TRUE(check(pairs, 2, kDouble, true, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(pairs, 1, kDouble, true, kInt8, FXP_ROUND_ZERO));
  EXPECT_FALSE(check(pairs, 3, kDouble, false, kInt8, FXP_ROUND_ZERO));
  EXPECT_TRUE(check(pairs, 4, kDouble, false, kInt8, FXP_ROUND_ZERO));
}

}  // namespace
