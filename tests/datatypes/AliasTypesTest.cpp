// Alias types: chains, forwarding, turning types into aliases, loops, storage and ancestors.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "ql_types/datatypes/AliasDataType.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using namespace QLTypeSys;

const char* const kGeneral = "QuillonTypes:general";
const DataTypeSource kClient = static_cast<DataTypeSource>(2);

class AliasChains : public testing::Test {
 protected:
  DataTypeTable table;
  int alias(const char* name, int target) { return table.registerAliasDataType(name, kClient, target, nullptr); }
  int plain(const char* name) { return table.registerDataType(name, kClient, nullptr); }
  DataType& at(int id) { return *table.getDataType(id); }
};

TEST_F(AliasChains, ForwardToTheEndOfTheChainAndKeepTheDirectLink) {
  const int a = alias("A", 6);
  EXPECT_EQ(a, 14);
  EXPECT_EQ(at(a).getSize(), 4);
  EXPECT_EQ(at(a).getStorageId(), 6);
  EXPECT_EQ(at(a).getIdAliasedTo(), 6);
  EXPECT_EQ(at(a).getIdAliasedThruTo(), 6);
  const int b = alias("B", a);
  EXPECT_EQ(at(b).getIdAliasedTo(), a);
  EXPECT_EQ(at(b).getIdAliasedThruTo(), 6);
  EXPECT_EQ(at(b).dependsOn(), std::vector<int>{a});
  EXPECT_TRUE(at(b).isSignedIntDataType());
  EXPECT_EQ(at(b).getProperties(), at(6).getProperties());
  EXPECT_EQ(table.getDataTypeIdAliasedTo(b), a);
  EXPECT_EQ(table.getDTypeIdAliasedThruTo(b), 6);
  EXPECT_EQ(table.getDataTypeIdAliasedTo(-10), -10);
  EXPECT_EQ(table.getDataTypeIdAliasedThruToWithCheckForBuiltInDataType(3), 3);
  EXPECT_EQ(table.getDataTypeIdAliasedThruToWithCheckForBuiltInDataType(b), 6);
  EXPECT_EQ(table.getDataTypeAliasedThruTo(b), &at(6));
  EXPECT_RAISES(table.getDataTypeAliasedThruTo(40), kGeneral, "InvalidDataTypeId", {"40"});
  EXPECT_EQ(alias("ToAuto", -1), 16);  // "auto" is a valid target
}

TEST_F(AliasChains, UnknownTargetIsRefusedBeforeTheNameIsLookedUp) {
  EXPECT_RAISES(alias("A", -10), kGeneral, "UndefinedDataTypeToBeAliasedTo", {"A", "-10"});
  EXPECT_RAISES(alias("double", 99), kGeneral, "UndefinedDataTypeToBeAliasedTo", {"double", "99"});
  EXPECT_RAISES(alias("no way", 6), kGeneral, "InvalidDataType", {"no way"});
  EXPECT_EQ(table.getNumDataTypes(), 15);
}

TEST_F(AliasChains, RepeatWithAnotherTargetReturnsTheOldId) {
  const int a = alias("A", 6);
  EXPECT_EQ(alias("A", 4), a);
  EXPECT_EQ(at(a).getIdAliasedTo(), 6);
}

TEST_F(AliasChains, DefiningSettersRaiseAndHarmlessOnesDoNothing) {
  DataType& a = at(alias("A", 6));
  const int one = 1;
  EXPECT_RAISES(a.setSize(4), kGeneral, "CannotSetDataTypeSizeOfAlias", {"A"});
  EXPECT_RAISES(a.setGround(&one), kGeneral, "CannotSetDataTypeGroundOfAlias", {"A"});
  EXPECT_RAISES(a.setProperties(nullptr), kGeneral, "CannotSetDataTypePropertiesOfAlias", {"A"});
  EXPECT_RAISES(a.setPropertiesSize(0), kGeneral, "CannotSetDataTypePropertiesSizeOfAlias", {"A"});
  EXPECT_RAISES(a.setStorageId(6), kGeneral, "CannotSetDataTypeStorageIdOfAlias", {"A"});
  EXPECT_RAISES(a.setIsAtomic(false), kGeneral, "CannotSetDataTypeIsAtomicOfAlias", {"A"});
  EXPECT_RAISES(a.setGroundHasNonZeroStoredValue(true), kGeneral, "CannotSetDataTypeGroundHasNonZeroOfAlias", {"A"});
  EXPECT_RAISES(a.setConvertBetweenFcn(nullptr), kGeneral, "CannotSetDataTypeConvertBetweenOfAlias", {"A"});
  EXPECT_RAISES(a.setGreaterThanFcn(nullptr), kGeneral, "CannotSetDataTypeGreaterThanOfAlias", {"A"});
  EXPECT_RAISES(a.setGreaterEqualFcn(nullptr), kGeneral, "CannotSetDataTypeGreaterEqualOfAlias", {"A"});
  EXPECT_RAISES(a.setIsNegativeFcn(nullptr), kGeneral, "CannotSetDataTypeIsNegativeOfAlias", {"A"});
  EXPECT_RAISES(a.setIsPositiveFcn(nullptr), kGeneral, "CannotSetDataTypeIsPositiveOfAlias", {"A"});
  at(6).setTargetSize(7);
  a.setTargetSize(3);
  a.setHostToTargetFcn(nullptr);
  a.setTargetToHostFcn(nullptr);
  a.setDefaultGround(false);
  EXPECT_EQ(a.getTargetSize(), 7);
  EXPECT_TRUE(a.getDefaultGround());
  // Kind tests on the alias object itself see its own qualifier.
  EXPECT_TRUE(a.getIsType(DataTypeQualifierOther));
  EXPECT_FALSE(a.getIsType(DataTypeQualifierBuiltIn));
}

TEST_F(AliasChains, SetAliasedToTurnsAPlainTypeIntoAnAlias) {
  const int t = plain("T");
  table.setDataTypeIdAliasedTo(t, 4);
  EXPECT_EQ(at(t).getId(), t);
  EXPECT_EQ(at(t).getName(), "T");
  EXPECT_EQ(at(t).getIdAliasedTo(), 4);
  EXPECT_EQ(at(t).getSize(), 2);
  table.setDataTypeIdAliasedTo(t, 4);  // the repeat is harmless
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, 6), kGeneral, "InconsistentDataTypeIdAliasedTo",
                {"T", "int32", "int16"});
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, 77), kGeneral, "UndefinedDataTypeToBeAliasedTo", {"T", "77"});
}

TEST_F(AliasChains, DefinedTypesCannotBecomeAliases) {
  const int t = plain("T");
  at(t).setSize(2);
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, 4), kGeneral, "CannotSetAliasForDefinedType", {"T"});
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(6, 4), kGeneral, "CannotSetAliasForDefinedType", {"int32"});
  const int f = plain("sfix16_En3");
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(f, 4), kGeneral, "CannotSetAliasForDefinedType", {"sfix16_En3"});
  const int s = plain("S");
  table.setDataTypeStorageId(s, 3);
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(s, 4), kGeneral, "CannotSetAliasForDefinedType", {"S"});
}

TEST_F(AliasChains, LoopsAreRefused) {
  const int t = plain("T");
  const int a = alias("A", t);
  const int b = alias("B", a);
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, a), kGeneral, "DataTypeAliasLoop", {"T", "A"});
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, b), kGeneral, "DataTypeAliasLoop", {"T", "B"});
  EXPECT_RAISES(table.setDataTypeIdAliasedTo(t, t), kGeneral, "DataTypeAliasLoop", {"T", "T"});
  EXPECT_EQ(at(t).getIdAliasedTo(), -10);
}

TEST_F(AliasChains, ExistingAliasesFollowTheNewAliasOneStepFurther) {
  const int t = plain("T");
  const int a = alias("A", t);
  table.setDataTypeIdAliasedTo(t, 6);
  // Kept as it is: A's through type is now the alias T, so A reports T and forwards through it.
  EXPECT_EQ(at(a).getIdAliasedTo(), t);
  EXPECT_EQ(at(a).getIdAliasedThruTo(), t);
  EXPECT_EQ(at(a).getSize(), 4);
  EXPECT_EQ(at(a).getStorageId(), 6);
}

TEST_F(AliasChains, StorageIdIsSetOnce) {
  const int t = plain("T");
  EXPECT_RAISES(table.setDataTypeStorageId(t, 9), kGeneral, "IllegalDataTypeToBeStorageId", {"T", "fcn_call"});
  table.setDataTypeStorageId(t, 6);
  table.setDataTypeStorageId(t, 6);
  EXPECT_EQ(at(t).getStorageId(), 6);
  EXPECT_TRUE(at(t).getAliasedToLocked());
  EXPECT_RAISES(table.setDataTypeStorageId(t, 7), kGeneral, "InconsistentDataTypeStorageId", {"T", "uint32", "int32"});
  const int a = alias("A", 6);
  EXPECT_RAISES(table.setDataTypeStorageId(a, 6), kGeneral, "CannotSetDataTypeStorageIdOfAlias", {"A"});
}

// Ids with no entry are refused by number and never stored, so no later call reads through them.
TEST_F(AliasChains, StorageIdWithNoEntryIsRefusedAndNotStored) {
  const int t = plain("T");
  for (int bad : {1000000, -2, -10, INT_MIN, INT_MAX, table.getNumDataTypes() - 1}) {
    EXPECT_RAISES(table.setDataTypeStorageId(t, bad), kGeneral, "IllegalDataTypeToBeStorageId",
                  {"T", std::to_string(bad)});
    EXPECT_EQ(at(t).getStorageId(), t);
    EXPECT_FALSE(at(t).getAliasedToLocked());
  }
  table.setDataTypeStorageId(t, -1);  // "auto" is an entry, and its own storage is -1
  EXPECT_RAISES(table.setDataTypeStorageId(t, 6), kGeneral, "InconsistentDataTypeStorageId", {"T", "int32", "auto"});
}

TEST_F(AliasChains, CommonAncestor) {
  const int c = alias("C", 6);
  const int x = alias("X", c);
  const int y = alias("Y", c);
  const int deep = alias("Deep", x);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(x, y), c);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(deep, y), c);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(deep, x), x);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(x, 6), 6);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(6, x), 6);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(x, x), x);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(alias("I16", 4), x), -10);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(x, 500), -10);
  // The walk leaves no marks behind: asking again gives the same answers.
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(y, deep), c);
}

}  // namespace
