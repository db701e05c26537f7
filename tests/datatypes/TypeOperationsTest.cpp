// Value operations of the table: dispatch through value functions, the built-in functions,
// the non-zero test and the assistant text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using namespace QLTypeSys;

const char* const kGeneral = "QuillonTypes:general";
const DataTypeSource kClient = static_cast<DataTypeSource>(2);
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// A client type of its own: values are int16 counts of tenths; it knows how to become double.
int tenthsCalls = 0;
int tenthsToDouble(_qlDataTypeAccess_tag* access, const char* ctx, int dstId, int srcId, int n, const void* src,
                   const void*, void* dst) {
  ++tenthsCalls;
  auto* table = static_cast<DataTypeTable*>(access->table);
  if (ctx != nullptr || table->getDataType(srcId)->getName() != "Tenths") return 0;
  (void)dstId;
  for (int i = 0; i < n; ++i) static_cast<double*>(dst)[i] = static_cast<const std::int16_t*>(src)[i] / 10.0;
  return 1;
}
int failingSign(_qlDataTypeAccess_tag*, const char*, int, int, const void*, const void*, void*) { return 0; }

class TypeOperations : public testing::Test {
 protected:
  DataTypeTable table;
  std::vector<unsigned char> result = std::vector<unsigned char>(8, 9);
};

TEST_F(TypeOperations, BuiltInConvertSaturatesAndRoundsTowardZero) {
  const double src[4] = {1.9, -1.9, 1e9, kNaN};
  std::int16_t dst[4] = {};
  table.convertToUsingDstId(4, 0, 4, src, nullptr, dst);
  EXPECT_EQ(dst[0], 1);
  EXPECT_EQ(dst[1], -1);
  EXPECT_EQ(dst[2], 32767);
  EXPECT_EQ(dst[3], 0);
  const std::uint8_t b[2] = {2, 0};
  double d[2] = {};
  table.convertToUsingSrcId(0, 8, 2, b, nullptr, d);  // a stored boolean byte of 2 becomes 2.0
  EXPECT_EQ(d[0], 2.0);
  const int i32 = table.registerAliasDataType("I32", kClient, 6, nullptr);
  std::int32_t out[1] = {};
  const double big[1] = {-1e12};
  table.convertToUsingDstId(i32, -1, 1, big, nullptr, out);  // "auto" converts as "double"
  EXPECT_EQ(out[0], std::numeric_limits<std::int32_t>::min());
}

TEST_F(TypeOperations, ClientFunctionsThroughTheAccessRecord) {
  const int tenths = table.registerDataType("Tenths", kClient, nullptr);
  table.getDataType(tenths)->setSize(2);
  table.getDataType(tenths)->setConvertBetweenFcn(tenthsToDouble);
  const int alias = table.registerAliasDataType("TenthsAlias", kClient, tenths, nullptr);
  const std::int16_t src[2] = {15, -3};
  double dst[2] = {};
  table.convertToUsingSrcId(0, alias, 2, src, nullptr, dst);  // the alias supplies its through type's function
  EXPECT_EQ(dst[0], 1.5);
  EXPECT_EQ(dst[1], -0.3);
  EXPECT_EQ(tenthsCalls, 1);
  // The destination's function is double's, whose kernel has no row for a client type.
  EXPECT_RAISES(table.convertToUsingDstId(0, alias, 2, src, nullptr, dst), kGeneral,
                "DataTypeConvertBetweenFcnUnknownError", {"double"});
  const int plain = table.registerDataType("Plain", kClient, nullptr);
  EXPECT_RAISES(table.convertToUsingDstId(plain, tenths, 2, src, nullptr, dst), kGeneral,
                "DataTypeConvertBetweenFcnDoesNotExist", {"Plain"});
  table.convertToUsingSrcId(plain, tenths, 2, src, nullptr, dst);  // the source's function is used: passes
  EXPECT_EQ(table.convertToUsingSrcIdWithStatus(0, plain, 1, src, nullptr, dst), 0);  // no function: reason dropped
  EXPECT_EQ(table.convertToUsingSrcIdWithStatus(0, tenths, 1, src, nullptr, dst), 1);
}

TEST_F(TypeOperations, MissingAndFailingFunctionsRaiseTheirKeys) {
  const int plain = table.registerDataType("Plain", kClient, nullptr);
  const double v[1] = {1.0};
  EXPECT_RAISES(table.isPositive(plain, 1, v, nullptr, result.data()), kGeneral, "DataTypeIsPositiveFcnDoesNotExist",
                {"Plain"});
  EXPECT_RAISES(table.isNegative(plain, 1, v, nullptr, result.data()), kGeneral, "DataTypeIsNegativeFcnDoesNotExist",
                {"Plain"});
  EXPECT_RAISES(table.greaterThan(plain, 1, v, v, nullptr, result.data()), kGeneral,
                "DataTypeGreaterThanFcnDoesNotExist", {"Plain"});
  EXPECT_RAISES(table.greaterEqual(plain, 1, v, v, nullptr, result.data()), kGeneral,
                "DataTypeGreaterEqualFcnDoesNotExist", {"Plain"});
  EXPECT_EQ(table.isPositiveWithStatus(plain, 1, v, nullptr, result.data()), 0);
  table.getDataType(plain)->setIsPositiveFcn(failingSign);
  EXPECT_RAISES(table.isPositive(plain, 1, v, nullptr, result.data()), kGeneral, "DataTypeIsPositiveFcnUnknownError",
                {"Plain"});
  EXPECT_EQ(table.isPositiveWithStatus(0, 1, v, nullptr, result.data()), 1);
}

// The compare functions of every built-in type against plain comparisons, on the same values.
template <class T>
void checkCompares(DataTypeTable& table, int id, std::vector<T> a, std::vector<T> b, bool isUnsigned) {
  const int n = static_cast<int>(a.size());
  std::vector<unsigned char> pos(a.size()), neg(a.size()), gt(a.size()), ge(a.size());
  table.isPositive(id, n, a.data(), nullptr, pos.data());
  table.isNegative(id, n, a.data(), nullptr, neg.data());
  table.greaterThan(id, n, a.data(), b.data(), nullptr, gt.data());
  table.greaterEqual(id, n, a.data(), b.data(), nullptr, ge.data());
  for (std::size_t i = 0; i < a.size(); ++i) {
    SCOPED_TRACE(std::to_string(id) + " at " + std::to_string(i));
    EXPECT_EQ(pos[i], a[i] > T(0) ? 1 : 0);
    EXPECT_EQ(neg[i], !isUnsigned && a[i] < T(0) ? 1 : 0);
    EXPECT_EQ(gt[i], a[i] > b[i] ? 1 : 0);
    EXPECT_EQ(ge[i], a[i] >= b[i] ? 1 : 0);
  }
}

TEST_F(TypeOperations, BuiltInComparesAgreeWithPlainComparisons) {
  // Nine values: more than two turns of the four-wide loop of "double", plus a tail.
  checkCompares<double>(table, 0, {1, -1, 0, -0.0, kNaN, 5, 2, kNaN, -3}, {0, -1, 0, 0.0, 1, kNaN, 3, kNaN, -4}, false);
  checkCompares<double>(table, -1, {1, -2, 0}, {2, -3, 0}, false);  // "auto" shares them
  checkCompares<float>(table, 1, {1.5f, -1.f, std::nanf("")}, {1.5f, -2.f, 0.f}, false);
  checkCompares<std::int8_t>(table, 2, {-128, 127, 0}, {127, -128, 0}, false);
  checkCompares<std::uint8_t>(table, 3, {0, 255, 7}, {1, 254, 7}, true);
  checkCompares<std::int16_t>(table, 4, {-5, 5}, {5, -5}, false);
  checkCompares<std::uint16_t>(table, 5, {65535, 0}, {0, 0}, true);
  checkCompares<std::int32_t>(table, 6, {-1, 1}, {1, -1}, false);
  checkCompares<std::uint32_t>(table, 7, {4294967295u, 1}, {0, 1}, true);
  checkCompares<std::uint8_t>(table, 8, {2, 1, 0}, {1, 1, 1}, true);  // two true bytes compare unequal
  const int alias = table.registerAliasDataType("I32", kClient, 6, nullptr);
  checkCompares<std::int32_t>(table, alias, {-7, 7}, {0, 0}, false);
}

TEST_F(TypeOperations, NonZeroTest) {
  const double zeros[2] = {0.0, -0.0}, withNaN[2] = {0.0, kNaN}, cplx[4] = {0.0, 0.0, 0.0, 1.0};
  EXPECT_FALSE(table.checkIfNonZeroArray(zeros, 2, 0, false));
  EXPECT_TRUE(table.checkIfNonZeroArray(withNaN, 2, 0, false));
  EXPECT_TRUE(table.checkIfNonZeroArray(cplx, 2, 0, true));
  EXPECT_FALSE(table.checkIfNonZeroArray(cplx, 2, 0, false));
  EXPECT_FALSE(table.checkIfNonZeroArray(withNaN, 0, 0, false));
  const float fz[2] = {-0.0f, 0.0f};
  EXPECT_FALSE(table.checkIfNonZeroArray(fz, 2, 1, false));
  // Every other id compares bytes with the ground: an alias of "double" sees -0.0 as non-zero.
  const int alias = table.registerAliasDataType("D", kClient, 0, nullptr);
  EXPECT_TRUE(table.checkIfNonZeroArray(zeros, 2, alias, false));
  EXPECT_FALSE(table.checkIfNonZeroArray(zeros, 1, alias, false));
  const std::int16_t seven = 7, ground = 7;
  const int t = table.registerDataType("Seven", kClient, nullptr);
  table.getDataType(t)->setSize(2);
  table.getDataType(t)->setGround(&ground);
  const std::int16_t pair[2] = {7, 7};
  EXPECT_FALSE(table.checkIfNonZeroArray(&seven, 1, t, false));
  EXPECT_FALSE(table.checkIfNonZeroArray(pair, 1, t, true));  // the imaginary part against the first half
  const std::int16_t other[2] = {7, 0};
  EXPECT_TRUE(table.checkIfNonZeroArray(other, 1, t, true));
}

TEST_F(TypeOperations, AssistantTextByTheEntrysOwnKind) {
  const int fx = table.registerDataType("sfix16_En3", kClient, nullptr);
  EXPECT_EQ(table.getDTACompliantString(fx), "fixdt('sfix16_En3')");
  EXPECT_EQ(table.getDTACompliantString(table.registerAliasDataType("FxA", kClient, fx, nullptr)), "FxA");
  EXPECT_EQ(table.getDTACompliantString(table.registerStructDataType("Bus1", kClient, nullptr)), "Bus: Bus1");
  const int e = table.registerDataType("Color", kClient, nullptr);
  table.getDataType(e)->setType(DataTypeQualifierEnum);
  EXPECT_EQ(table.getDTACompliantString(e), "Enum: Color");
  EXPECT_EQ(table.getDTACompliantString(6), "int32");
  EXPECT_EQ(table.getDTACompliantString(9), "fcn_call");
}

}  // namespace
