// Structure and bus types: elements, summary flags, bus limits, checksums.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/datatypes/StructDataType.hpp"
#include "ql_types/datatypes/StructElementAccess.hpp"
#include "ql_types/platform/Memory.hpp"

namespace {

using namespace QLTypeSys;

const DataTypeSource kClient = static_cast<DataTypeSource>(2);
constexpr double kInf = std::numeric_limits<double>::infinity();

// How a client gets buses: a table that makes a BusDataType for names starting with "Bus".
class BusTable : public DataTypeTable {
 public:
  int registerStructDataType(const char* name, DataTypeSource source, const char* blockPath) override {
    if (std::string(name ? name : "").rfind("Bus", 0) != 0)
      return DataTypeTable::registerStructDataType(name, source, blockPath);
    validateDataTypeName(name);
    if (DataType* existing = getDataType(name)) {
      verifyDataTypeSourcesMatch(source, existing->getId());
      return existing->getId();
    }
    auto* bus = new BusDataType(getNumDataTypes() - 1, name, source);
    addDataType(bus);
    return bus->getId();
  }
};

void setDims(StructElement* e, std::vector<int> dims) {
  e->setNumDimensions(static_cast<int>(dims.size()));
  int* d = static_cast<int*>(utMalloc(sizeof(int) * dims.size()));
  for (std::size_t i = 0; i < dims.size(); ++i) d[i] = dims[i];
  e->setDimensions(d);
}

StructDataType* structAt(DataTypeTable& t, int id) { return static_cast<StructDataType*>(t.getDataType(id)); }

TEST(StructElements, Defaults) {
  StructElement e;
  EXPECT_EQ(e.getName(), "");
  EXPECT_EQ(e.getDataTypeId(), -10);
  EXPECT_EQ(e.getUnitId(), -1);
  EXPECT_EQ(e.getSymbDimsId(), 0);
  EXPECT_EQ(e.getOffset(), -1);
  EXPECT_EQ(e.getSignalType(), -1);
  EXPECT_FALSE(e.getMinSpec());
  EXPECT_FALSE(e.getMaxSpec());
  EXPECT_EQ(e.getMin(), -kInf);
  e.setName(nullptr);
  EXPECT_EQ(e.getName(), "");
  e.setMin(std::nan(""));  // a NaN limit counts as given
  EXPECT_TRUE(e.getMinSpec());
  e.setMax(kInf);
  EXPECT_FALSE(e.getMaxSpec());
}

TEST(StructTypes, EmptyStructure) {
  DataTypeTable table;
  StructDataType* s = structAt(table, table.registerStructDataType("S", kClient, nullptr));
  EXPECT_EQ(s->getType(), DataTypeQualifierStruct);
  EXPECT_EQ(s->getStorageId(), s->getId());
  EXPECT_EQ(s->getNumElements(), 0);
  EXPECT_TRUE(s->dependsOn().empty());
  s->createCacheForFrequentlyAccessedProperties(&table);
  EXPECT_FALSE(s->hasAOB() || s->hasComplexData() || s->hasFrameBasedElements() || s->hasVarDims());
  EXPECT_FALSE(s->emitPaddingInCode());
  s->emitPaddingInCode(true);
  EXPECT_TRUE(s->emitPaddingInCode());
  EXPECT_FALSE(DtGetDataTypeIsBus(&table, s->getId()));
  EXPECT_FALSE(DtGetDataTypeIsBus(&table, -1));
  EXPECT_FALSE(DtGetDataTypeIsBus(&table, 6));
  EXPECT_TRUE(table.IsStructType(s->getId()));
}

// Client dimensions whose product passes the int range give saturated widths and counts, never an overflow.
TEST(StructTypes, HugeDimensionsSaturate) {
  DataTypeTable table;
  StructDataType* s = structAt(table, table.registerStructDataType("S", kClient, nullptr));
  s->setNumElements(3);
  const std::vector<std::vector<int>> dims = {{100000, 100000}, {-65536, 65536}, {3}};
  for (int i = 0; i < 3; ++i) {
    StructElement* e = s->getElements()[static_cast<std::size_t>(i)];
    e->setDataTypeId(i == 0 ? 0 : 2);
    e->setSignalType(i == 0 ? 1 : 0);
    e->setOffset(0);
    setDims(e, dims[static_cast<std::size_t>(i)]);
  }
  ImmediateElementAccess view(&table, s->getId());
  EXPECT_EQ(view.getWidth(0), INT_MAX);
  EXPECT_EQ(view.getComplexWidth(0), INT_MAX);
  EXPECT_EQ(view.getWidth(1), INT_MIN);
  EXPECT_EQ(view.getWidth(2), 3);
  EXPECT_EQ(view.getRawElementIdx(1), INT_MAX);
  EXPECT_EQ(view.getRawElementIdx(3), INT_MAX + INT_MIN + 3);  // each step saturates on its own
  EXPECT_EQ(view.getPadding(0), -INT_MAX);                     // 0 - 0 - min(8 * INT_MAX, INT_MAX)
}

TEST(StructTypes, DependsOnListsElementTypesWithRepeats) {
  DataTypeTable table;
  StructDataType* s = structAt(table, table.registerStructDataType("S", kClient, nullptr));
  s->setNumElements(3);
  s->getElements()[0]->setDataTypeId(6);
  s->getElements()[1]->setDataTypeId(0);
  s->getElements()[2]->setDataTypeId(6);
  EXPECT_EQ(s->dependsOn(), (std::vector<int>{6, 0, 6}));
  s->setElementSymbDimsId(1, 5);
  EXPECT_EQ(s->getElementSymbDimsId(1), 5);
  s->setNumElements(1);  // records made before stay alive until the structure goes
  EXPECT_EQ(s->getNumElements(), 1);
}

struct FlagCase {
  const char* name;
  std::vector<int> dims;
  int dimensionsMode, samplingMode, innerSignalType;
  bool aob, varDims, frames, complex;
};

class SummaryFlags : public testing::TestWithParam<FlagCase> {};

TEST_P(SummaryFlags, ComputedThroughNesting) {
  const FlagCase c = GetParam();
  BusTable table;
  StructDataType* inner = structAt(table, table.registerStructDataType("BusInner", kClient, nullptr));
  inner->setNumElements(1);
  inner->getElements()[0]->setDataTypeId(0);
  inner->getElements()[0]->setSignalType(c.innerSignalType);
  StructDataType* outer = structAt(table, table.registerStructDataType("BusOuter", kClient, nullptr));
  outer->setNumElements(1);
  StructElement* e = outer->getElements()[0];
  const int alias = table.registerAliasDataType("InnerAlias", kClient, inner->getId(), nullptr);
  e->setDataTypeId(alias);  // nesting is found through aliases
  setDims(e, c.dims);
  e->setDimensionsMode(c.dimensionsMode);
  e->setSamplingMode(c.samplingMode);
  outer->createCacheForFrequentlyAccessedProperties(&table);
  EXPECT_EQ(outer->hasAOB(), c.aob);
  EXPECT_EQ(outer->hasVarDims(), c.varDims);
  EXPECT_EQ(outer->hasFrameBasedElements(), c.frames);
  EXPECT_EQ(outer->hasComplexData(), c.complex);
  EXPECT_EQ(table.doesBusDTHaveAoB(outer->getId()), c.aob);
  EXPECT_EQ(table.doesBusDTHaveComplexData(outer->getId()), c.complex);
  EXPECT_EQ(table.doesBusDTHaveVarDims(outer->getId()), c.varDims);
  EXPECT_EQ(table.doesBusDTHaveFrameBasedElements(outer->getId()), c.frames);
  EXPECT_EQ(inner->hasComplexData(), c.innerSignalType == 1);  // the nested type keeps its own flags
  bool aob = false, varDims = false, frames = false;
  ImmediateElementAccess(&table, outer->getId()).containsAoBOrVarDimsOrFrames(&aob, &varDims, &frames);
  EXPECT_EQ(aob, c.aob);
  EXPECT_EQ(varDims, c.varDims);
  EXPECT_EQ(frames, c.frames);
}

INSTANTIATE_TEST_SUITE_P(Table, SummaryFlags,
                         testing::Values(FlagCase{"ScalarFixed", {1}, 0, 0, 0, false, false, false, false},
                                         FlagCase{"ScalarVarDims", {1}, 1, 0, 0, true, true, false, false},
                                         FlagCase{"Array", {2}, 0, 0, 0, true, false, false, false},
                                         FlagCase{"ArrayVarDims", {2}, 1, 0, 0, true, true, false, false},
                                         FlagCase{"Frames", {1}, 0, 1, 0, false, false, true, false},
                                         FlagCase{"ComplexLeafInside", {1}, 0, 0, 1, false, false, false, true}),
                         [](const testing::TestParamInfo<FlagCase>& i) { return std::string(i.param.name); });

TEST(StructTypes, FlagsAreComputedOnceAndCyclesStop) {
  DataTypeTable table;
  StructDataType* s = structAt(table, table.registerStructDataType("S", kClient, nullptr));
  s->setNumElements(1);
  s->getElements()[0]->setDataTypeId(s->getId());  // a structure that contains itself
  s->createCacheForFrequentlyAccessedProperties(&table);
  EXPECT_TRUE(s->hasAOB() == false);
  s->getElements()[0]->setDataTypeId(0);
  s->getElements()[0]->setSignalType(1);
  s->createCacheForFrequentlyAccessedProperties(&table);
  EXPECT_FALSE(s->hasComplexData());  // stale by contract: filled first, read afterwards
}

TEST(BusTypes, ThreeStateLeafLimits) {
  BusTable table;
  const int id = table.registerStructDataType("BusA", kClient, nullptr);
  auto* bus = dynamic_cast<BusDataType*>(table.getDataType(id));
  ASSERT_NE(bus, nullptr);
  EXPECT_TRUE(DtGetDataTypeIsBus(&table, id));
  EXPECT_TRUE(bus->getHasSameMinValForAllLeaf());
  EXPECT_TRUE(bus->getHasSameMaxValForAllLeaf());
  EXPECT_FALSE(bus->hasLeafWithSpecMinMax());
  bus->setNotHaveSameMinValForAllLeaf();
  EXPECT_FALSE(bus->getHasSameMinValForAllLeaf());
  EXPECT_TRUE(bus->hasLeafWithSpecMin());
  bus->setSameMaxValForAllLeaf(5.0);
  EXPECT_TRUE(bus->hasLeafWithSpecMax());
  EXPECT_EQ(bus->getSameMaxValForAllLeaf(), 5.0);
  bus->setNotHaveSameMaxValForAllLeaf();
  EXPECT_FALSE(bus->getHasSameMaxValForAllLeaf());
  EXPECT_TRUE(bus->hasLeafWithSpecMinMax());
}

TEST(StructTypes, ChecksumsThroughAliases) {
  DataTypeTable table;
  const int s = table.registerStructDataType("S", kClient, nullptr);
  const int a = table.registerAliasDataType("SA", kClient, s, nullptr);
  DtSetStructDataTypeChecksum(&table, a, qlChecksumValue{{1, 2, 3, 4}});
  EXPECT_EQ(DtGetStructDataTypeChecksum(&table, s).value[3], 4u);
  EXPECT_EQ(structAt(table, s)->getDtChecksumValue().value[0], 1u);
}

}  // namespace
