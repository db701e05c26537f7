// The host array bridge: class id mappings, zeroed buffers and enumeration objects.
#include <gtest/gtest.h>

#include "ql_types/convert/HostArrayBridge.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"
#include "support/ExpectRaises.hpp"

namespace {

TEST(HostClassIds, MapBothWays) {
  for (int c : {0, 1, 2, 4, 5, 14, -3, 99}) EXPECT_EQ(utGetDTypeIdFromQxClassId(static_cast<qxClassID>(c)), -10) << c;
  EXPECT_EQ(utGetDTypeIdFromQxClassId(qxLOGICAL_CLASS), 8);
  for (int id = 0; id <= 8; ++id) EXPECT_EQ(utGetDTypeIdFromQxClassId(utGetqxClassIdFromDTypeId(id, false)), id);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(8, false), qxLOGICAL_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(8, true), qxUINT8_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(6, false), qxINT32_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(10, false), qxINT32_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(9, false), qxNO_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(-1, false), qxNO_CLASS);
  EXPECT_EQ(utGetqxClassIdFromDTypeId(14, true), qxNO_CLASS);
}

TEST(HostBuffers, ZeroedAndSizedByType) {
  QLTypeSys::DataTypeTable table;
  auto* p = static_cast<std::int16_t*>(qxDTypeCalloc(&table, 3, 4, true));
  ASSERT_NE(p, nullptr);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(p[i], 0);  // 6 items of 2 bytes, the sanitizer checks the extent
  qxFree(p);
  EXPECT_EQ(qxDTypeCalloc(nullptr, 0, 4, false), nullptr);  // the table is not touched
  EXPECT_EQ(qxDTypeCalloc(&table, -2, 4, false), nullptr);
  EXPECT_EQ(qxDTypeCalloc(&table, 5, 9, false), nullptr);  // "fcn_call" has size 0
  const int unsized = table.registerDataType("Unsized", static_cast<QLTypeSys::DataTypeSource>(2), nullptr);
  EXPECT_EQ(qxDTypeCalloc(&table, 5, unsized, false), nullptr);
}

TEST(HostBuffers, OutOfMemoryRaisesTheMemoryDiagnostic) {
  QLTypeSys::DataTypeTable table;
  const int big = table.registerDataType("Big", static_cast<QLTypeSys::DataTypeSource>(2), nullptr);
  table.getDataType(big)->setSize(0x7FFFFFFF);
  EXPECT_RAISES(qxDTypeCalloc(&table, 0x7FFFFFFF, big, true), "ql_services:core", "OutOfMemory", {});
}

class EnumObjects : public testing::Test {
 protected:
  void SetUp() override {
    qlsvRegisterHostFunction("Color", [](int, qxArray_tag* out[], int, qxArray_tag* in[]) {
      out[0] = qxCreateNumericArray(qxINT32_CLASS, in[0]->dimensions, false);
      static_cast<std::int32_t*>(out[0]->data)[0] = 100 + static_cast<std::int32_t>(static_cast<double*>(in[0]->data)[0]);
    });
  }
  void TearDown() override { qlsvRegisterHostFunction("Color", nullptr); }
};

TEST_F(EnumObjects, ReplaceTheArrayOnSuccess) {
  qxArray_tag* a = qxCreateNumericArray(qxDOUBLE_CLASS, {1, 1}, false);
  static_cast<double*>(a->data)[0] = 2;
  QLTypeConv::qlConvertMatrixToEnumObjects(a, "Color");
  EXPECT_EQ(a->classId, qxINT32_CLASS);
  EXPECT_EQ(static_cast<std::int32_t*>(a->data)[0], 102);
  qxDestroyArray(a);
}

TEST_F(EnumObjects, LeaveTheArrayOnFailure) {
  qxArray_tag* a = qxCreateNumericArray(qxDOUBLE_CLASS, {1, 1}, false);
  qxArray_tag* const before = a;
  EXPECT_RAISES(QLTypeConv::qlConvertMatrixToEnumObjects(a, "NoSuchEnum"), "ql_services:core",
                "UndefinedHostFunction", {"NoSuchEnum"});
  EXPECT_EQ(a, before);
  EXPECT_EQ(a->refCount, 1);
  qxDestroyArray(a);
}

}  // namespace
