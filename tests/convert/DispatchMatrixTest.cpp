// The dispatch data and kernel selection: the shape of the matrix, which cells share kernels, and
// which modes each selection ignores.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "ConversionReference.hpp"
#include "ql_types/convert/BuiltinConversion.hpp"

namespace {

using namespace convref;

builtinConvFcn select(int src, int dst, int overflow, int rounding) {
  return utGetQlBuiltinDtypeConvFcn(src, dst, static_cast<fxpModeOverflow_tag>(overflow),
                                    static_cast<fxpModeRounding_tag>(rounding));
}

TEST(DispatchMatrix, ModeTablesFollowTheCellKinds) {
  for (int src = 0; src < 9; ++src)
    for (int dst = 0; dst < 9; ++dst) {
      SCOPED_TRACE(std::string(kTypes[src].name) + " -> " + kTypes[dst].name);
      EXPECT_EQ(builtinConvUsesOverflow[src * 9 + dst] != 0, usesOverflow(src, dst));
      EXPECT_EQ(builtinConvUsesRounding[src * 9 + dst] != 0, usesRounding(src, dst));
    }
}

TEST(DispatchMatrix, Holds186EntriesOver179DistinctKernels) {
  std::set<builtinConvFcn> distinct;
  int entries = 0;
  for (int i = 0; i < 81; ++i) {
    const int length = rowLength(i / 9, i % 9);
    std::set<builtinConvFcn> inRow;
    for (int p = 0; p < length; ++p) {
      ASSERT_NE(builtinConvRows[i][p], nullptr);
      inRow.insert(builtinConvRows[i][p]);
      distinct.insert(builtinConvRows[i][p]);
      ++entries;
    }
    EXPECT_EQ(static_cast<int>(inRow.size()), length) << "row " << i << " repeats a kernel";
  }
  EXPECT_EQ(entries, 186);
  EXPECT_EQ(distinct.size(), 179u);
}

TEST(DispatchMatrix, BooleanRowReusesTheUint8Kernels) {
  for (int dst : {kDouble, kSingle, kInt16, kUint16, kInt32, kUint32})
    EXPECT_EQ(builtinConvRows[kBoolean * 9 + dst][0], builtinConvRows[kUint8 * 9 + dst][0]) << kTypes[dst].name;
  // Its boolean cell copies bytes like uint8 to uint8, and is not the not-equal-to-zero kernel.
  EXPECT_EQ(builtinConvRows[kBoolean * 9 + kBoolean][0], builtinConvRows[kUint8 * 9 + kUint8][0]);
  EXPECT_NE(builtinConvRows[kBoolean * 9 + kBoolean][0], builtinConvRows[kUint8 * 9 + kBoolean][0]);
  // Only the cells to int8 and uint8 have kernels of their own.
  for (int p = 0; p < 2; ++p)
    EXPECT_NE(builtinConvRows[kBoolean * 9 + kInt8][0], builtinConvRows[kUint8 * 9 + kInt8][p]);
  EXPECT_NE(builtinConvRows[kBoolean * 9 + kUint8][0], builtinConvRows[kUint8 * 9 + kUint8][0]);
}

class KernelSelection : public ::testing::TestWithParam<int> {};

TEST_P(KernelSelection, PicksOverflowPlusTwiceRoundingAndIgnoresUnusedModes) {
  const int src = GetParam() / 9, dst = GetParam() % 9;
  std::set<builtinConvFcn> reached;
  for (int overflow = 0; overflow <= 1; ++overflow)
    for (int rounding = 0; rounding <= 4; ++rounding) {
      const int o = usesOverflow(src, dst) ? overflow : 0;
      const int r = usesRounding(src, dst) ? (rounding == kAsZero ? kZero : rounding) : 0;
      const builtinConvFcn k = select(src, dst, overflow, rounding);
      EXPECT_EQ(k, builtinConvRows[GetParam()][o + 2 * r]) << "overflow " << overflow << ", rounding " << rounding;
      reached.insert(k);
    }
  EXPECT_EQ(static_cast<int>(reached.size()), rowLength(src, dst)) << "every entry of the row is reachable";
}

INSTANTIATE_TEST_SUITE_P(AllPairs, KernelSelection, ::testing::Range(0, 81),
                         [](const ::testing::TestParamInfo<int>& info) {
                           return std::string(kTypes[info.param / 9].name) + "_to_" + kTypes[info.param % 9].name;
                         });

TEST(KernelSelection, RoundingFiveAndSixAreHarmlessWhereRoundingIsUnused) {
  for (int src = 0; src < 9; ++src)
    for (int dst = 0; dst < 9; ++dst)
      for (int rounding : {kHalfAway, kHalfEven}) {
        if (!usesRounding(src, dst)) {
          EXPECT_EQ(select(src, dst, kSaturate, rounding), select(src, dst, kSaturate, kZero));
        }
      }
}

TEST(KernelSignature, RunTimeIdsAndModesAreNotRead) {
  // A kernel is specific to its types and modes; nonsense in the last four arguments changes nothing.
  const double src[2] = {2.5, -300.7};
  std::int8_t viaRight[2], viaNonsense[2];
  const builtinConvFcn k = select(kDouble, kInt8, kWrap, kNearest);
  EXPECT_FALSE(k(src, viaRight, 2, 2, false, false, true, kDouble, kInt8, FXP_OVERFLOW_WRAP, FXP_ROUND_NEAREST));
  EXPECT_FALSE(k(src, viaNonsense, 2, 2, false, false, true, 77, -5, static_cast<fxpModeOverflow_tag>(9),
                 static_cast<fxpModeRounding_tag>(6)));
  EXPECT_EQ(viaRight[0], 3);
  EXPECT_EQ(viaRight[1], -45);  // -301 wraps to -45
  EXPECT_EQ(viaNonsense[0], viaRight[0]);
  EXPECT_EQ(viaNonsense[1], viaRight[1]);
}

TEST(ConvertEntryPoint, PassesEachBufferWithItsOwnLengthIdAndComplexity) {
  // A complex int16 source of two pairs into a real uint8 destination of two elements.
  const std::int16_t src[4] = {300, 0, -2, 5};
  std::uint8_t viaEntry[2] = {}, viaKernel[2] = {};
  const bool entry = qlConvertBuiltInDTypeVectWithCheck(src, 2, kInt16, true, viaEntry, 2, kUint8, false,
                                                        FXP_OVERFLOW_SATURATE, FXP_ROUND_CEIL, true);
  const bool kernel = select(kInt16, kUint8, kSaturate, kCeil)(src, viaKernel, 2, 2, true, false, true, kInt16, kUint8,
                                                               FXP_OVERFLOW_SATURATE, FXP_ROUND_CEIL);
  EXPECT_FALSE(entry);
  EXPECT_EQ(entry, kernel);
  EXPECT_EQ(viaEntry[0], 255);
  EXPECT_EQ(viaEntry[1], 0);
  EXPECT_EQ(viaEntry[0], viaKernel[0]);
  EXPECT_EQ(viaEntry[1], viaKernel[1]);
}

TEST(ConvertEntryPoint, WithoutCheckEveryPairReturnsTrue) {
  // Values that no destination keeps: a fraction, a negative, and one above every 8- and 16-bit range.
  const double values[3] = {0.5, -1.0, 70000.25};
  for (int src = 0; src < 9; ++src)
    for (int dst = 0; dst < 9; ++dst) {
      std::vector<unsigned char> in(3 * kTypes[src].bytes), out(3 * kTypes[dst].bytes);
      for (int i = 0; i < 3; ++i) {
        long double v = kTypes[src].isFloat
                            ? values[i]
                            : wrapExact(roundExact(values[i], kZero), bitsOf(src), kTypes[src].isSigned);
        store(src, in.data(), i, v);
      }
      for (int overflow = 0; overflow <= 1; ++overflow)
        EXPECT_TRUE(qlConvertBuiltInDTypeVectWithCheck(in.data(), 3, src, false, out.data(), 3, dst, false,
                                                       static_cast<fxpModeOverflow_tag>(overflow), FXP_ROUND_ZERO,
                                                       false))
            << kTypes[src].name << " -> " << kTypes[dst].name;
    }
}

}  // namespace
