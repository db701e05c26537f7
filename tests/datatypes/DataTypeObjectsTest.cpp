// Data type objects: the set-once discipline, locking, "auto", classifiers and print.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <sstream>
#include <vector>

#include "ql_types/datatypes/AliasDataType.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/platform/HostArray.hpp"
#include "support/AllocationFailure.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using namespace QLTypeSys;

const char* const kGeneral = "QuillonTypes:general";

int convertA(_qlDataTypeAccess_tag*, const char*, int, int, int, const void*, const void*, void*) { return 1; }
int convertB(_qlDataTypeAccess_tag*, const char*, int, int, int, const void*, const void*, void*) { return 1; }
int signA(_qlDataTypeAccess_tag*, const char*, int, int, const void*, const void*, void*) { return 1; }
int signB(_qlDataTypeAccess_tag*, const char*, int, int, const void*, const void*, void*) { return 1; }
int cmpA(_qlDataTypeAccess_tag*, const char*, int, int, const void*, const void*, const void*, void*) { return 1; }
int cmpB(_qlDataTypeAccess_tag*, const char*, int, int, const void*, const void*, const void*, void*) { return 1; }
void h2tA(ExternalSim_tag*, char*, const void*, int, int) {}
void h2tB(ExternalSim_tag*, char*, const void*, int, int) {}
void t2hA(ExternalSim_tag*, void*, const char*, int, int) {}
void t2hB(ExternalSim_tag*, void*, const char*, int, int) {}

// Everything a refused call must leave as it was.
struct Snapshot {
  int size, propertiesSize, targetSize;
  bool defaultGround, locked;
  std::string ground, properties;
  const void *convert, *pos, *neg, *gt, *ge, *h2t, *t2h;
  bool operator==(const Snapshot& o) const {
    return size == o.size && propertiesSize == o.propertiesSize && targetSize == o.targetSize &&
           defaultGround == o.defaultGround && locked == o.locked && ground == o.ground && properties == o.properties &&
           convert == o.convert && pos == o.pos && neg == o.neg && gt == o.gt && ge == o.ge && h2t == o.h2t &&
           t2h == o.t2h;
  }
};

Snapshot snapshot(const DataType& t) {
  auto bytes = [](const void* p, int n) {
    return p && n > 0 ? std::string(static_cast<const char*>(p), static_cast<std::size_t>(n)) : std::string("<none>");
  };
  return Snapshot{t.getSize(),
                  t.getPropertiesSize(),
                  t.getTargetSize(),
                  t.getDefaultGround(),
                  t.getAliasedToLocked(),
                  bytes(t.getGround(), 2 * t.getSize()),
                  bytes(t.getProperties(), t.getPropertiesSize()),
                  reinterpret_cast<const void*>(t.getConvertBetweenFcn()),
                  reinterpret_cast<const void*>(t.getIsPositiveFcn()),
                  reinterpret_cast<const void*>(t.getIsNegativeFcn()),
                  reinterpret_cast<const void*>(t.getGreaterThanFcn()),
                  reinterpret_cast<const void*>(t.getGreaterEqualFcn()),
                  reinterpret_cast<const void*>(t.getHostToTargetFcn()),
                  reinterpret_cast<const void*>(t.getTargetToHostFcn())};
}

// One set-once property: how to prepare a fresh type, set it, and set a different value.
struct SetOnceCase {
  const char* name;
  std::function<void(DataType&)> prepare;
  std::function<void(DataType&)> setFirst;
  std::function<void(DataType&)> setOther;
  const char* key;
  std::vector<std::string> args;  // "T" is the type's name
  bool locks;
};

const std::int32_t kA = 0x11223344, kB = 0x55667788;
const double kPropsA[2] = {1.0, 2.0}, kPropsB[2] = {1.0, 3.0};

std::vector<SetOnceCase> setOnceCases() {
  auto none = [](DataType&) {};
  auto sized = [](DataType& t) { t.setSize(4); };
  auto propsSized = [](DataType& t) { t.setPropertiesSize(16); };
  return {
      {"Size",
       none,
       [](DataType& t) { t.setSize(4); },
       [](DataType& t) { t.setSize(2); },
       "CannotModifyDataTypeSize",
       {"T", "4"},
       true},
      {"Ground",
       sized,
       [](DataType& t) { t.setGround(&kA); },
       [](DataType& t) { t.setGround(&kB); },
       "CannotModifyDataTypeGroundRepresentation",
       {"T"},
       true},
      {"PropertiesSize",
       none,
       [](DataType& t) { t.setPropertiesSize(8); },
       [](DataType& t) { t.setPropertiesSize(16); },
       "CannotModifyDataTypePropertiesSize",
       {"T", "8", "16"},
       true},
      {"Properties",
       propsSized,
       [](DataType& t) { t.setProperties(kPropsA); },
       [](DataType& t) { t.setProperties(kPropsB); },
       "CannotModifyDataTypeProperties",
       {"T"},
       true},
      {"ConvertBetween",
       none,
       [](DataType& t) { t.setConvertBetweenFcn(convertA); },
       [](DataType& t) { t.setConvertBetweenFcn(convertB); },
       "InconsistentDataTypeConvertBetweenFcn",
       {"T"},
       true},
      {"IsPositive",
       none,
       [](DataType& t) { t.setIsPositiveFcn(signA); },
       [](DataType& t) { t.setIsPositiveFcn(signB); },
       "InconsistentDataTypeIsPositiveFcn",
       {"T"},
       true},
      {"IsNegative",
       none,
       [](DataType& t) { t.setIsNegativeFcn(signA); },
       [](DataType& t) { t.setIsNegativeFcn(signB); },
       "InconsistentDataTypeIsNegativeFcn",
       {"T"},
       true},
      {"GreaterThan",
       none,
       [](DataType& t) { t.setGreaterThanFcn(cmpA); },
       [](DataType& t) { t.setGreaterThanFcn(cmpB); },
       "InconsistentDataTypeGreaterThanFcn",
       {"T"},
       true},
      {"GreaterEqual",
       none,
       [](DataType& t) { t.setGreaterEqualFcn(cmpA); },
       [](DataType& t) { t.setGreaterEqualFcn(cmpB); },
       "InconsistentDataTypeGreaterEqualFcn",
       {"T"},
       true},
      {"HostToTarget",
       none,
       [](DataType& t) { t.setHostToTargetFcn(h2tA); },
       [](DataType& t) { t.setHostToTargetFcn(h2tB); },
       "InConsistentTargetToHostFcn",
       {},
       false},
      {"TargetToHost",
       none,
       [](DataType& t) { t.setTargetToHostFcn(t2hA); },
       [](DataType& t) { t.setTargetToHostFcn(t2hB); },
       "InConsistentTargetToHostFcn",
       {},
       false},
  };
}

class SetOnce : public testing::TestWithParam<SetOnceCase> {
 protected:
  DataTypeTable table;
  DataType& fresh() { return *table.getDataType(table.registerDataType("T", static_cast<DataTypeSource>(2), nullptr)); }
};

TEST_P(SetOnce, FirstSetRepeatAndRefusalThatChangesNothing) {
  const SetOnceCase& c = GetParam();
  DataType& t = fresh();
  c.prepare(t);
  const bool lockedBefore = t.getAliasedToLocked();
  c.setFirst(t);
  EXPECT_EQ(t.getAliasedToLocked(), c.locks || lockedBefore);
  const Snapshot afterFirst = snapshot(t);
  c.setFirst(t);  // the same value again passes
  EXPECT_TRUE(snapshot(t) == afterFirst);
  EXPECT_RAISES(c.setOther(t), kGeneral, c.key, c.args);
  EXPECT_TRUE(snapshot(t) == afterFirst);
}

INSTANTIATE_TEST_SUITE_P(Setters, SetOnce, testing::ValuesIn(setOnceCases()),
                         [](const testing::TestParamInfo<SetOnceCase>& i) { return std::string(i.param.name); });

class DataTypeObject : public testing::Test {
 protected:
  DataTypeTable table;
  DataType& make(const char* name) {
    return *table.getDataType(table.registerDataType(name, static_cast<DataTypeSource>(2), nullptr));
  }
};

TEST_F(DataTypeObject, SizeMustBePositive) {
  DataType& t = make("T");
  EXPECT_RAISES(t.setSize(-1), kGeneral, "InvalidDataTypeSize", {"T", "-1"});
  EXPECT_RAISES(t.setSize(0), kGeneral, "InvalidDataTypeSize", {"T", "0"});
  EXPECT_EQ(t.getSize(), -1);
  EXPECT_FALSE(t.getAliasedToLocked());
}

TEST_F(DataTypeObject, RepeatingTheSizeReopensTheGround) {
  DataType& t = make("T");
  t.setSize(4);
  EXPECT_TRUE(t.getDefaultGround());
  t.setGround(&kA);
  EXPECT_FALSE(t.getDefaultGround());
  EXPECT_EQ(std::memcmp(static_cast<const char*>(t.getGround()) + 4, &kA, 4), 0);  // imaginary half too
  t.setSize(4);
  t.setGround(&kB);
  EXPECT_EQ(std::memcmp(t.getGround(), &kB, 4), 0);
}

TEST_F(DataTypeObject, GroundNeedsASize) {
  DataType& t = make("T");
  EXPECT_RAISES(t.setGround(&kA), kGeneral, "CannotSetGroundRepBeforeSettingSize", {"T"});
}

TEST_F(DataTypeObject, BooleanAloneMayChangeItsSize) {
  DataType& b = *table.getDataType(8);
  b.setSize(4);
  EXPECT_EQ(b.getSize(), 4);
  EXPECT_TRUE(b.getDefaultGround());
  for (int i = 0; i < 8; ++i) EXPECT_EQ(static_cast<const unsigned char*>(b.getGround())[i], 0);
  EXPECT_RAISES(table.getDataType(2)->setSize(4), kGeneral, "CannotModifyDataTypeSize", {"int8", "1"});
}

// Running out of memory at any allocation leaves size, ground and locks as they were.
TEST_F(DataTypeObject, SetSizeOutOfMemoryChangesNothing) {
  DataType& t = make("T");
  DataType& b = *table.getDataType(8);  // boolean: the one type whose size may change, ground and all
  b.setGround(&kA);
  const std::vector<unsigned char> ground(static_cast<const unsigned char*>(b.getGround()),
                                          static_cast<const unsigned char*>(b.getGround()) + 2);
  const void* groundBefore = b.getGround();
  qltest::forEveryAllocationFailure([&] { t.setSize(4); },
                                    [&] {
                                      EXPECT_EQ(t.getSize(), -1);
                                      EXPECT_EQ(t.getGround(), nullptr);
                                      EXPECT_FALSE(t.getAliasedToLocked());
                                    });
  EXPECT_EQ(t.getSize(), 4);
  qltest::forEveryAllocationFailure([&] { b.setSize(3); },
                                    [&] {
                                      EXPECT_EQ(b.getSize(), 1);
                                      EXPECT_EQ(b.getGround(), groundBefore);
                                      EXPECT_EQ(std::memcmp(b.getGround(), ground.data(), 2), 0);
                                      EXPECT_FALSE(b.getDefaultGround());
                                    });
  EXPECT_EQ(b.getSize(), 3);
}

TEST_F(DataTypeObject, PropertiesRules) {
  DataType& t = make("T");
  EXPECT_RAISES(t.setProperties(kPropsA), kGeneral, "CannotSetPropertiesBeforeSettingSize", {"T"});
  EXPECT_FALSE(t.getAliasedToLocked());
  t.setProperties(nullptr);  // passes with no size, and locks
  EXPECT_TRUE(t.getAliasedToLocked());
  DataType& u = make("U");
  EXPECT_RAISES(u.setPropertiesSize(-1), kGeneral, "InvalidDataTypePropertiesSize", {"U", "-1"});
  u.setPropertiesSize(0);  // valid, leaves the size unset, still locks
  EXPECT_EQ(u.getPropertiesSize(), 0);
  EXPECT_TRUE(u.getAliasedToLocked());
}

TEST_F(DataTypeObject, NullFunctionStoresNullAndLocks) {
  DataType& t = make("T");
  t.setGreaterThanFcn(nullptr);
  EXPECT_TRUE(t.getAliasedToLocked());
  t.setGreaterThanFcn(cmpA);  // still unset, so it takes
  EXPECT_EQ(t.getGreaterThanFcn(), cmpA);
}

TEST_F(DataTypeObject, UnlockingSettersDoNotLock) {
  DataType& t = make("T");
  t.setIsAtomic(true);
  t.setStorageId(3);
  t.setTargetSize(2);
  t.setCGType(nullptr);
  t.setHostToTargetFcn(h2tA);
  EXPECT_FALSE(t.getAliasedToLocked());
}

TEST_F(DataTypeObject, AutoIgnoresEveryChange) {
  DataType& a = *table.getDataType(-1);
  const Snapshot before = snapshot(a);
  a.setSize(2);
  a.setConvertBetweenFcn(convertA);
  a.setGreaterThanFcn(cmpA);
  a.setGreaterEqualFcn(cmpA);
  a.setIsNegativeFcn(signA);
  a.setIsPositiveFcn(signA);
  a.setStorageId(3);
  a.setGround(&kA);
  a.setDefaultGround(false);
  a.setProperties(kPropsA);
  a.setPropertiesSize(16);
  a.setCGType(reinterpret_cast<CG::Type*>(&a));
  EXPECT_TRUE(snapshot(a) == before);
  EXPECT_EQ(a.getSize(), 8);
  EXPECT_EQ(a.getStorageId(), -1);
  EXPECT_EQ(a.getCGType(), nullptr);
}

TEST_F(DataTypeObject, InterfaceIsSharedAndReleased) {
  DataType& t = make("T");
  qxArray_tag* a = qxCreateNumericArray(qxDOUBLE_CLASS, {1}, false);
  t.setInterface(a);
  EXPECT_EQ(a->refCount, 2);
  EXPECT_EQ(a->flags & qxFLAG_TEMPORARY, 0u);
  t.setInterface(a);  // the same array again keeps one reference
  EXPECT_EQ(a->refCount, 2);
  t.setInterface(nullptr);
  EXPECT_EQ(a->refCount, 1);
  t.setInterface(a);
  qxDestroyArray(a);  // the type's reference is released with the table
}

TEST_F(DataTypeObject, PrintWritesFiveLinesAndABlankOne) {
  DataType& t = make("T");
  t.setSize(2);
  std::ostringstream os;
  os << t;
  EXPECT_EQ(os.str(), "DataType : 'T'\nID : 14\nSize : 2\nStorage ID : 14\nDataTypeQualifier : 5\n\n");
}

TEST_F(DataTypeObject, ChecksumWords) {
  DataType& t = make("T");
  const std::uint32_t words[4] = {1, 2, 3, 0xFFFFFFFF};
  t.setChecksumElements(words);
  EXPECT_EQ(std::memcmp(t.getChecksumElements(), words, sizeof words), 0);
}

TEST(DataTypeClassifiers, ById) {
  for (int id = -1; id <= 14; ++id) {
    EXPECT_EQ(DataType::isDataTypeBoolDT(id), id == 8);
    EXPECT_EQ(DataType::isDataTypeFloatDT(id), id == 0 || id == 1);
    EXPECT_EQ(DataType::isDataTypeIntDT(id), id >= 2 && id <= 7);
    EXPECT_EQ(DataType::isDataTypeSignedIntDT(id), id == 2 || id == 4 || id == 6);
    EXPECT_EQ(DataType::isDataTypeUnsignedIntDT(id), id == 3 || id == 5 || id == 7);
    EXPECT_EQ(DataType::isDataTypeSignedDT(id), id == 0 || id == 1 || id == 2 || id == 4 || id == 6);
  }
}

TEST(DataTypeClassifiers, SignedFixptTestsOnlyThePrefixUfix) {
  EXPECT_TRUE(DataType::isDataTypeSignedFixptDT("sfix16", 14));
  EXPECT_FALSE(DataType::isDataTypeSignedFixptDT("ufix16", 14));
  EXPECT_TRUE(DataType::isDataTypeSignedFixptDT("fltu16", 14));  // only "ufix" is tested
  EXPECT_FALSE(DataType::isDataTypeSignedFixptDT("anything", 5));
  EXPECT_FALSE(DataType::isDataTypeSignedFixptDT("boolean", 8));
  DataTypeTable table;
  const int id = table.registerDataType("fltu16", static_cast<DataTypeSource>(2), nullptr);
  EXPECT_TRUE(table.getDataType(id)->isSignedFixptDT());
}

}  // namespace
