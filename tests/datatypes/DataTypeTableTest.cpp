// The data type table: predefined rows, registration, callbacks, reset and classification.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <climits>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using namespace QLTypeSys;

const char* const kGeneral = "QuillonTypes:general";
const DataTypeSource kClient = static_cast<DataTypeSource>(2);
const DataTypeSource kOtherClient = static_cast<DataTypeSource>(3);

struct Row {
  int id;
  const char* name;
  int source, size, storage, qualifier;
  bool hasProps, groundNonZero;
};

class PredefinedRows : public testing::TestWithParam<Row> {};

TEST_P(PredefinedRows, FreshTableHasThem) {
  const Row r = GetParam();
  DataTypeTable table;
  const DataType* t = table.getDataType(r.id);
  EXPECT_EQ(t->getId(), r.id);
  EXPECT_EQ(t->getName(), r.name);
  EXPECT_EQ(static_cast<int>(t->getDataTypeSource()), r.source);
  EXPECT_EQ(t->getSize(), r.size);
  EXPECT_EQ(t->getStorageId(), r.storage);
  EXPECT_EQ(static_cast<int>(t->getType()), r.qualifier);
  EXPECT_EQ(t->getProperties() != nullptr, r.hasProps);
  EXPECT_EQ(t->groundHasNonZeroStoredValue(), r.groundNonZero);
  EXPECT_TRUE(t->getAliasedToLocked());
  EXPECT_FALSE(t->isAtomic());
  EXPECT_EQ(t->getDefaultGround(), r.id != 0 && r.id != 1);  // double and single are grounded explicitly
  if (r.id >= 0 && r.id <= 8) {
    EXPECT_EQ(t->getPropertiesSize(), static_cast<int>(sizeof(fxpDataTypeProp)));
    EXPECT_EQ(
        std::memcmp(t->getProperties(), DataTypeTable::getBuiltinDataTypeProperties(r.id), sizeof(fxpDataTypeProp)), 0);
    EXPECT_EQ(DataTypeTable::getBuiltInDataTypeSize(r.id), r.size);
    EXPECT_STREQ(DataTypeTable::getNameOfBuiltInDataType(r.id), r.name);
    EXPECT_EQ(DataTypeTable::getBuiltInDataType(r.name), r.id);
    EXPECT_EQ(DataTypeTable::getBuiltInDataType(std::wstring(r.name, r.name + std::strlen(r.name))), r.id);
  } else {
    EXPECT_EQ(DataTypeTable::getBuiltInDataType(r.name), -10);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, PredefinedRows,
    testing::Values(Row{-1, "auto", 0, 8, -1, 0, false, true}, Row{0, "double", 0, 8, 0, 0, true, false},
                    Row{1, "single", 0, 4, 1, 0, true, false}, Row{2, "int8", 0, 1, 2, 0, true, false},
                    Row{3, "uint8", 0, 1, 3, 0, true, false}, Row{4, "int16", 0, 2, 4, 0, true, false},
                    Row{5, "uint16", 0, 2, 5, 0, true, false}, Row{6, "int32", 0, 4, 6, 0, true, false},
                    Row{7, "uint32", 0, 4, 7, 0, true, false}, Row{8, "boolean", 0, 1, 8, 0, true, false},
                    Row{9, "fcn_call", 1, 0, 9, 1, false, true}, Row{10, "integer", 1, 4, 10, 1, false, true},
                    Row{11, "pointer", 1, 4, 11, 1, false, true}, Row{12, "action", 1, 8, 12, 1, false, true},
                    Row{13, "timer_uint32_pair", 1, 8, 13, 1, false, true}));

TEST(PredefinedProperties, IntegersAreTrivialFixedPoint) {
  for (int id = 2; id <= 7; ++id) {
    const fxpDataTypeProp* p = DataTypeTable::getBuiltinDataTypeProperties(id);
    EXPECT_TRUE(p->isFixedPoint() && p->isScalingTrivial());
    EXPECT_EQ(p->isSigned(), id % 2 == 0);
  }
  EXPECT_TRUE(DataTypeTable::getBuiltinDataTypeProperties(0)->isDouble());
  EXPECT_TRUE(DataTypeTable::getBuiltinDataTypeProperties(8)->isBoolean());
}

class Registration : public testing::Test {
 protected:
  DataTypeTable table;
};

TEST_F(Registration, IdsAreDenseFromFourteen) {
  EXPECT_EQ(table.getNumDataTypes(), 15);
  EXPECT_EQ(table.registerDataType("A", kClient, nullptr), 14);
  EXPECT_EQ(table.registerDataType("B", kClient, nullptr), 15);
  EXPECT_EQ(table.getDataTypeId("B"), 15);
  EXPECT_EQ(table.getDataTypeAt(16)->getName(), "B");
  EXPECT_EQ(table.getDataTypeId("nope"), -10);
  EXPECT_EQ(table.getDataType(static_cast<const char*>(nullptr)), nullptr);
}

TEST_F(Registration, RepeatedNamesAndSources) {
  EXPECT_EQ(table.registerDataType("double", DataTypeSourceBuiltIn, nullptr), 0);
  EXPECT_RAISES(table.registerDataType("double", kClient, nullptr), kGeneral, "DataType_SameNameAsExistingType",
                {"double"});
  EXPECT_EQ(table.registerDataType("double", DataTypeSourceAny, nullptr), 0);
  EXPECT_EQ(table.registerDataType("auto", DataTypeSourceBuiltIn, nullptr), -1);
  EXPECT_EQ(table.registerDataType("fcn_call", DataTypeSourceInternal, nullptr), 9);
  EXPECT_RAISES(table.registerDataType("fcn_call", DataTypeSourceBuiltIn, nullptr), kGeneral,
                "DataType_SameNameAsExistingType", {"fcn_call"});
  const int id = table.registerDataType("W", DataTypeSourceAny, nullptr);
  // Only the request can be the wild card: a type stored with source 4 matches only 4.
  EXPECT_RAISES(table.registerDataType("W", kClient, nullptr), kGeneral, "DataType_SameNameAsExistingType", {"W"});
  EXPECT_EQ(table.registerDataType("W", DataTypeSourceAny, nullptr), id);
  EXPECT_EQ(table.getNumDataTypes(), 16);
}

TEST_F(Registration, BadNamesChangeNothing) {
  EXPECT_RAISES(table.registerDataType("a-b", kClient, nullptr), kGeneral, "InvalidDataType", {"a-b"});
  EXPECT_RAISES(table.registerDataType(nullptr, kClient, nullptr), kGeneral, "InvalidDataType", {""});
  EXPECT_RAISES(table.registerDataType("9lives", kClient, nullptr), kGeneral, "InvalidDataType", {"9lives"});
  EXPECT_EQ(table.getNumDataTypes(), 15);
  EXPECT_FALSE(DataTypeTable::isAValidDataType(nullptr));
  EXPECT_TRUE(DataTypeTable::isAValidDataType("ok_1"));
}

struct FixptName {
  const char* name;
  bool intrinsic;
  int bits;
};

class IntrinsicFixptNames : public testing::TestWithParam<FixptName> {};

TEST_P(IntrinsicFixptNames, Recognised) {
  const FixptName c = GetParam();
  int bits = -1;
  EXPECT_EQ(DataTypeTable::isInstrinsicFixptName(c.name, &bits), c.intrinsic);
  EXPECT_EQ(bits, c.intrinsic ? c.bits : -1);  // untouched when false
  DataTypeTable table;
  const DataType* t = table.getDataType(table.registerDataType(c.name, kClient, nullptr));
  EXPECT_EQ(t->getType(), c.intrinsic ? DataTypeQualifierFixpt : DataTypeQualifierOther);
  EXPECT_EQ(t->getAliasedToLocked(), c.intrinsic);
  EXPECT_EQ(table.IsFixptDataType(t->getId()), c.intrinsic);
}

INSTANTIATE_TEST_SUITE_P(
    Table, IntrinsicFixptNames,
    testing::Values(FixptName{"sfix16_En3", true, 16}, FixptName{"fltu32", true, 32}, FixptName{"sfix16", true, 16},
                    FixptName{"flts16", true, 16}, FixptName{"ufix1_S1p5_B2", true, 1}, FixptName{"sfix", false, 0},
                    FixptName{"sfixed", false, 0}, FixptName{"sfix16_OBS", false, 0}, FixptName{"sfix8sfcn", false, 0},
                    FixptName{"fltx16", false, 0}, FixptName{"int16x", false, 0},
                    FixptName{"sfix2147483647", true, INT_MAX}, FixptName{"ufix2147483648", false, 0},
                    FixptName{"sfix99999999999_En3", false, 0}, FixptName{"flts00000000000000000016", true, 16}));

TEST_F(Registration, FixptAtomicityFollowsTheIntegersAndLargeSizes) {
  table.getDataType(4)->setIsAtomic(true);
  table.registerLargeAtomicIntSize(64);
  table.registerLargeAtomicIntSize(64);  // duplicates are kept
  EXPECT_TRUE(table.getDataType(table.registerDataType("sfix16_En3", kClient, nullptr))->isAtomic());
  EXPECT_FALSE(table.getDataType(table.registerDataType("sfix8_En3", kClient, nullptr))->isAtomic());
  EXPECT_TRUE(table.getDataType(table.registerDataType("ufix64", kClient, nullptr))->isAtomic());
  table.clearLargeAtomicIntSizes();
  EXPECT_FALSE(table.getDataType(table.registerDataType("sfix64", kClient, nullptr))->isAtomic());
}

class RefusingCallback : public ClientDataTypeCheckCallback {
 public:
  void dataTypeRegistered(DataType* type, const char* blockPath) override {
    seen.push_back(type->getName() + "@" + (blockPath ? blockPath : "-"));
    if (type->getName().rfind("bad", 0) == 0) throw std::runtime_error("refused");
    if (type->getName().rfind("worse", 0) == 0) qlRaise(qlmsg::general::InvalidDataType, type->getName());
  }
  void tableReset() override { ++resets; }
  std::vector<std::string> seen;
  int resets = 0;
};

TEST_F(Registration, CallbackRefusalLeavesTheVectorAsBefore) {
  auto cb = boost::make_shared<RefusingCallback>();
  table.setClientDataTypeCheckCallback(cb);
  EXPECT_EQ(table.getClientDataTypeCheckCallback(), cb);
  table.registerDataType("good", kClient, "blk");
  EXPECT_THROW(table.registerDataType("bad1", kClient, nullptr), std::runtime_error);
  EXPECT_THROW(table.registerAliasDataType("bad2", kClient, 6, nullptr), std::runtime_error);
  EXPECT_THROW(table.registerStructDataType("bad3", kClient, nullptr), std::runtime_error);
  EXPECT_EQ(table.getNumDataTypes(), 16);
  EXPECT_EQ(table.getDataTypeId("bad1"), -10);
  EXPECT_EQ(table.registerDataType("next", kClient, nullptr), 15);
  EXPECT_EQ(cb->seen, (std::vector<std::string>{"good@blk", "bad1@-", "bad2@-", "bad3@-", "next@-"}));
  int id = -99;
  qlsvDiagnostic d = DataTypeTable::RegisterDataType(&table, "model/blk", "worse", kClient, &id);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(id, -99);
  EXPECT_EQ(d->getKey(), "InvalidDataType");
  ASSERT_EQ(d->getCauses().size(), 1u);
  EXPECT_EQ(d->getCauses()[0]->getKey(), "DataTypeErrorFromBlock");
  EXPECT_EQ(d->getCauses()[0]->getArgumentTexts(), std::vector<std::string>{"model/blk"});
  EXPECT_EQ(table.getNumDataTypes(), 17);
  table.resetToBuiltin();
  EXPECT_EQ(cb->resets, 1);
}

TEST_F(Registration, RegisterDataTypeReturnsNullOnSuccessAndNoBlockCauseWithoutPath) {
  int id = -1;
  EXPECT_EQ(DataTypeTable::RegisterDataType(&table, "", "fine", kClient, &id), nullptr);
  EXPECT_EQ(id, 14);
  qlsvDiagnostic d = DataTypeTable::RegisterDataType(&table, "", "no good", kClient, &id);
  ASSERT_NE(d, nullptr);
  EXPECT_TRUE(d->getCauses().empty());
  EXPECT_EQ(id, 14);
}

TEST_F(Registration, ResetKeepsClientChangesToBuiltInsAndDropsTheRest) {
  const std::uint32_t words[4] = {9, 8, 7, 6};
  table.getDataType(8)->setSize(4);
  table.getDataType(6)->setIsAtomic(true);
  table.getDataType(6)->setChecksumElements(words);
  table.getDataType(6)->setTargetSize(3);
  table.getDataType(6)->setCGType(reinterpret_cast<CG::Type*>(&table));
  table.registerLargeAtomicIntSize(48);
  table.setLicensedForAliasTypes(LicensedForAliasTypesYes);
  table.registerDataType("A", kClient, nullptr);
  EXPECT_STREQ(table.generateAnonymousTypeName(), "rtt_0");
  EXPECT_STREQ(table.generateAnonymousTypeName(), "rtt_1");
  table.resetToBuiltin();
  EXPECT_EQ(table.getNumDataTypes(), 15);
  EXPECT_EQ(table.getDataType(8)->getSize(), 4);
  EXPECT_TRUE(table.getDataType(6)->isAtomic());
  EXPECT_EQ(table.getDataType(6)->getChecksumElements()[0], 9u);
  EXPECT_EQ(table.getDataType(6)->getTargetSize(), 3);
  EXPECT_EQ(table.getDataType(6)->getCGType(), nullptr);
  EXPECT_EQ(table.getLicensedForAliasTypes(), LicensedForAliasTypesNotChecked);
  EXPECT_STREQ(table.generateAnonymousTypeName(), "rtt_0");
  EXPECT_EQ(table.registerDataType("B", kClient, nullptr), 14);
  EXPECT_TRUE(table.getDataType(table.registerDataType("ufix48", kClient, nullptr))->isAtomic());
}

TEST_F(Registration, StaticCountsAndValidity) {
  EXPECT_EQ(DataTypeTable::getNumBuiltInDataTypes(), 9);
  EXPECT_EQ(DAGetNumQLDataTypes(), 14);
  EXPECT_TRUE(table.isDataTypeIdValid(-1));
  EXPECT_FALSE(table.isDataTypeIdValid_NotAuto(-1));
  EXPECT_FALSE(table.isDataTypeIdValid(14));
  EXPECT_RAISES(table.checkDataTypeId(14), kGeneral, "InvalidDataTypeId", {"14"});
  EXPECT_RAISES(table.checkDataTypeId(-2), kGeneral, "InvalidDataTypeId", {"-2"});
  EXPECT_TRUE(DataTypeTable::checkForBuiltInDataType(-1));
  EXPECT_FALSE(DataTypeTable::checkForBuiltInDataType(9));
  EXPECT_TRUE(DataTypeTable::isPredefinedDataType(13));
  EXPECT_EQ(DataTypeTable::getBuiltInDataType("auto"), -10);
  EXPECT_EQ(DataTypeTable::getBuiltInDataType(static_cast<const char*>(nullptr)), -10);
  EXPECT_FALSE(DataTypeTable::nameOfBuiltInDataType("fcn_call"));
  EXPECT_TRUE(DataTypeTable::nameOfBuiltInDataType(L"uint16"));
  EXPECT_EQ(DataTypeTable::getNameOfBuiltInDataType(9), nullptr);
  EXPECT_EQ(table.getDataTypeId("auto"), -1);
}

TEST_F(Registration, ClassificationThroughAliases) {
  const int fx = table.registerDataType("sfix16_En3", kClient, nullptr);
  const int sd = table.registerDataType("flts16", kClient, nullptr);
  const int fxAlias = table.registerAliasDataType("FxA", kClient, fx, nullptr);
  const int boolAlias = table.registerAliasDataType("BoolA", kClient, 8, nullptr);
  const int i32Alias = table.registerAliasDataType("I32A", kClient, 6, nullptr);
  const int st = table.registerStructDataType("S", kClient, nullptr);
  const int en = table.registerDataType("E", kClient, nullptr);
  table.getDataType(en)->setType(DataTypeQualifierEnum);
  table.setDataTypeStorageId(en, 6);
  const int enAlias = table.registerAliasDataType("EA", kClient, en, nullptr);

  EXPECT_TRUE(table.IsDataTypeNumericNonBoolean(-1));
  EXPECT_FALSE(table.IsDataTypeNumericNonBoolean(boolAlias));
  EXPECT_TRUE(table.IsDataTypeNumericNonBoolean(fxAlias));
  EXPECT_FALSE(table.IsDataTypeNumericNonBoolean(10));
  EXPECT_TRUE(table.IsDataTypeNumericOrBoolean(boolAlias));
  EXPECT_FALSE(table.IsDataTypeNumericOrBoolean(st));
  EXPECT_TRUE(table.IsFixptDTNotScaledDouble(fxAlias));
  EXPECT_FALSE(table.IsFixptDTNotScaledDouble(sd));
  EXPECT_TRUE(table.IsFixptDataType(sd));
  EXPECT_TRUE(table.IsStructType(st));
  EXPECT_FALSE(table.IsStructType(-1));
  EXPECT_TRUE(table.isEnumType(enAlias));
  EXPECT_FALSE(table.isEnumType(-1));
  for (int id : {-10}) {
    EXPECT_FALSE(table.IsDataTypeNumericNonBoolean(id));
    EXPECT_FALSE(table.IsFixptDataType(id));
    EXPECT_FALSE(table.IsStructType(id));
    EXPECT_FALSE(table.isEnumType(id));
  }
  EXPECT_RAISES(table.IsFixptDataType(99), kGeneral, "InvalidDataTypeId", {"99"});

  EXPECT_EQ(table.getDataTypeLoggingId(5), 5);
  EXPECT_EQ(table.getDataTypeLoggingId(-1), -1);
  EXPECT_EQ(table.getDataTypeLoggingId(i32Alias), 0);
  EXPECT_EQ(table.getDataTypeLoggingId(fx), 0);
  EXPECT_EQ(table.getDataTypeLoggingId(st), 0);
  EXPECT_EQ(table.getDataTypeLoggingId(en), 6);
  EXPECT_EQ(table.getDataTypeLoggingId(enAlias), 6);
  EXPECT_EQ(table.getDataTypeProperties("ignored", i32Alias), table.getDataType(6)->getProperties());
}

TEST_F(Registration, SettingsHaveTheirDefaults) {
  EXPECT_EQ(table.getParameterOverflowDiagnostic(), 1);
  EXPECT_EQ(table.getFixptConstOverflowDiagnostic(), 0);
  EXPECT_EQ(table.getDataSaturationDiagnostic(), 1);
  EXPECT_EQ(table.getUseIntDivNetSlopeOpt(), 0);
  EXPECT_EQ(table.getEnumTypeStringFromValue(3, 1), nullptr);
  EXPECT_TRUE(table.shortCircuitRegistration(kClient));
  EXPECT_EQ(table.getDataTypeAccess()->table, &table);
}

TEST_F(Registration, PrintListsEveryEntry) {
  std::ostringstream os;
  table.print(os);
  const std::string s = os.str();
  EXPECT_EQ(s.rfind("DataTypeTable\nNumber of DataTypes : 15\n\nDataType : 'auto'\nID : -1\nSize : 8\n", 0), 0u);
  EXPECT_NE(s.find("DataType : 'timer_uint32_pair'\nID : 13\nSize : 8\nStorage ID : 13\nDataTypeQualifier : 1\n\n\n"),
            std::string::npos);
}

// A table that replaces types registered again under the same name.
class ReplacingTable : public DataTypeTable {
 public:
  bool shortCircuitRegistration(DataTypeSource) override { return false; }
};

TEST(Replacement, ANameRegisteredAgainKeepsItsIdAndAliasesFollow) {
  ReplacingTable table;
  const int t = table.registerDataType("T", kClient, nullptr);
  const int a = table.registerAliasDataType("A", kClient, t, nullptr);
  EXPECT_EQ(table.registerDataType("T", kClient, nullptr), t);
  EXPECT_EQ(table.getNumDataTypes(), 17);
  table.getDataType(t)->setSize(2);  // the new object, reached through the alias
  EXPECT_EQ(table.getDataType(a)->getSize(), 2);
  EXPECT_EQ(table.getDataType(a)->getIdAliasedTo(), t);
  EXPECT_EQ(table.getDataType(t)->getStorageId(), t);
}

// The replacing entry takes the old id, so an alias of the name it replaces (directly or through other
// aliases) would alias itself: refused, with the table exactly as it was.
TEST(Replacement, AnAliasReachingTheNameItReplacesIsALoop) {
  ReplacingTable table;
  const int x = table.registerDataType("X", kClient, nullptr);
  table.getDataType(x)->setSize(2);
  const int a = table.registerAliasDataType("A", kClient, x, nullptr);
  const int b = table.registerAliasDataType("B", kClient, a, nullptr);
  std::ostringstream before;
  table.print(before);
  for (auto [target, shown] : {std::pair{x, "X"}, {a, "A"}, {b, "B"}}) {
    EXPECT_RAISES(table.registerAliasDataType("X", kClient, target, nullptr), "QuillonTypes:general",
                  "DataTypeAliasLoop", {"X", shown});
    std::ostringstream after;
    table.print(after);
    EXPECT_EQ(after.str(), before.str());
  }
  EXPECT_EQ(table.getDataType(b)->getSize(), 2);
  EXPECT_EQ(table.getDataTypeIdCommonAncestor(a, b), a);
  // Replacing a name in the middle of the chain by an alias of something outside it is no loop.
  EXPECT_EQ(table.registerAliasDataType("A", kClient, 6, nullptr), a);
  EXPECT_EQ(table.getDataType(a)->getSize(), 4);
  EXPECT_EQ(table.getDataType(b)->getIdAliasedTo(), a);
}

}  // namespace
