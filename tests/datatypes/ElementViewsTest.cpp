// Element views against an independent walk of structures filled by the client rule.
//
// The builder below fills structures the way a client does (counts, packed offsets with
// alignment padding, variable-dimension offsets); the reference walk enumerates nodes, leaves
// and raw values from the same descriptions without using any view.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/datatypes/StructElementAccess.hpp"
#include "ql_types/platform/Memory.hpp"
#include "ql_types/platform/Text.hpp"

namespace {

using namespace QLTypeSys;

struct Field {
  std::string name;
  int type;  // a built-in id (0-8), or -(k+100) for the k-th structure of the shape
  std::vector<int> dims;
  bool complex = false;
};
using Shape = std::vector<std::vector<Field>>;  // structures, each may use earlier ones

struct Built {
  std::vector<int> ids;  // table id of each structure
  std::map<int, int> size, dfs, flat, raw;
  std::map<int, std::vector<int>> offsets, varOffsets, padding;
};

int widthOf(const Field& f) {
  int w = 1;
  for (int d : f.dims) w *= d;
  return w;
}

// Fills structures as a client would: sizes, offsets aligned to the element size, counts.
Built build(DataTypeTable& table, const Shape& shape, const std::string& prefix = "S") {
  Built b;
  for (std::size_t k = 0; k < shape.size(); ++k) {
    const int id =
        table.registerStructDataType((prefix + std::to_string(k)).c_str(), static_cast<DataTypeSource>(2), nullptr);
    b.ids.push_back(id);
    auto* s = static_cast<StructDataType*>(table.getDataType(id));
    s->setNumElements(static_cast<int>(shape[k].size()));
    int offset = 0, dfs = 1, flat = 0, raw = 0, var = 0;
    for (std::size_t i = 0; i < shape[k].size(); ++i) {
      const Field& f = shape[k][i];
      StructElement* e = s->getElements()[i];
      const bool nested = f.type <= -100;
      const int typeId = nested ? b.ids[static_cast<std::size_t>(-f.type - 100)] : f.type;
      const int w = widthOf(f);
      const int elemSize = table.getDataType(typeId)->getSize() * (f.complex ? 2 : 1);
      const int align = nested ? 8 : table.getDataType(typeId)->getSize();
      const int start = (offset + align - 1) / align * align;
      e->setName(f.name);
      e->setDataTypeId(typeId);
      e->setNumDimensions(static_cast<int>(f.dims.size()));
      if (!f.dims.empty()) {
        int* dims = static_cast<int*>(utMalloc(sizeof(int) * f.dims.size()));
        for (std::size_t d = 0; d < f.dims.size(); ++d) dims[d] = f.dims[d];
        e->setDimensions(dims);
      }
      e->setSignalType(f.complex ? 1 : 0);
      e->setOffset(start);
      e->setVarDimsOffset(var);
      b.offsets[id].push_back(start);
      b.varOffsets[id].push_back(var);
      b.padding[id].push_back(0);
      var += 3 * static_cast<int>(i) + 1;
      offset = start + w * elemSize;
      if (nested) {
        dfs += w == 1 ? b.dfs[typeId] : 1 + w * b.dfs[typeId];
        flat += w * b.flat[typeId];
        raw += w * b.raw[typeId];
      } else {
        dfs += 1;
        flat += 1;
        raw += w * (f.complex ? 2 : 1);
      }
    }
    const int size = offset == 0 ? 8 : (offset + 7) / 8 * 8;  // an empty structure still takes space
    // Padding: from each element's end to the next start, the last one to the structure's end.
    for (std::size_t i = 0; i < shape[k].size(); ++i) {
      const Field& f = shape[k][i];
      const int typeId = f.type <= -100 ? b.ids[static_cast<std::size_t>(-f.type - 100)] : f.type;
      const int end = b.offsets[id][i] + table.getDataType(typeId)->getSize() * widthOf(f) * (f.complex ? 2 : 1);
      const int next = i + 1 < shape[k].size() ? b.offsets[id][i + 1] : size;
      b.padding[id][i] = next - end;
    }
    s->setSize(size);
    s->setNumDFSElements(dfs);
    s->setNumFlatElements(flat);
    s->setNumRawElements(raw);
    b.size[id] = size;
    b.dfs[id] = dfs;
    b.flat[id] = flat;
    b.raw[id] = raw;
  }
  return b;
}

struct Node {
  int typeId;
  std::string name;
  int offset, varOffset, width, signalType;
  std::string rel;  // path inside one instance
  int parentId, elementIdx;
  bool leaf;
};

struct RawValue {
  int typeId, offset;
};

class Walk {
 public:
  Walk(DataTypeTable& table, const Shape& shape, const Built& b) : table_(table), shape_(shape), b_(b) {}

  void nodes(int k, std::vector<Node>& out) const {
    const int id = b_.ids[static_cast<std::size_t>(k)];
    out.push_back({id, "", 0, 0, 1, 0, "", -10, -1, false});
    visit(k, "", 0, 0, out);
  }

  void raws(int k, int offset, std::vector<RawValue>& out) const {
    const int id = b_.ids[static_cast<std::size_t>(k)];
    for (std::size_t i = 0; i < shape_[static_cast<std::size_t>(k)].size(); ++i) {
      const Field& f = shape_[static_cast<std::size_t>(k)][i];
      const int start = offset + b_.offsets.at(id)[i];
      if (f.type <= -100) {
        const int t = b_.ids[static_cast<std::size_t>(-f.type - 100)];
        for (int inst = 0; inst < widthOf(f); ++inst) raws(-f.type - 100, start + inst * b_.size.at(t), out);
      } else {
        const int sz = table_.getDataType(f.type)->getSize();
        for (int v = 0; v < widthOf(f) * (f.complex ? 2 : 1); ++v) out.push_back({f.type, start + v * sz});
      }
    }
  }

 private:
  static std::string join(const std::string& a, const std::string& b) { return a.empty() ? b : a + "." + b; }

  void visit(int k, const std::string& rel, int off, int var, std::vector<Node>& out) const {
    const int id = b_.ids[static_cast<std::size_t>(k)];
    for (std::size_t i = 0; i < shape_[static_cast<std::size_t>(k)].size(); ++i) {
      const Field& f = shape_[static_cast<std::size_t>(k)][i];
      const int o = off + b_.offsets.at(id)[i], v = var + b_.varOffsets.at(id)[i], w = widthOf(f);
      const int ei = static_cast<int>(i);
      if (f.type > -100) {
        out.push_back({f.type, f.name, o, v, w, f.complex ? 1 : 0, join(rel, f.name), id, ei, true});
        continue;
      }
      const int nk = -f.type - 100;
      const int t = b_.ids[static_cast<std::size_t>(nk)];
      if (w == 1) {
        out.push_back({t, f.name, o, v, 1, 0, join(rel, f.name), id, ei, false});
        visit(nk, join(rel, f.name), o, v, out);
        continue;
      }
      out.push_back({t, f.name, o, v, w, 0, join(rel, f.name), id, ei, false});
      for (int inst = 0; inst < w; ++inst) {
        const std::string p = join(rel, f.name + "(" + std::to_string(inst) + ")");
        const int io = o + inst * b_.size.at(t);
        out.push_back({t, f.name, io, v, 1, 0, p, id, ei, false});
        visit(nk, p, io, v, out);
      }
    }
  }

  DataTypeTable& table_;
  const Shape& shape_;
  const Built& b_;
};

std::string fullPath(int instance, const std::string& rel, bool topLevel) {
  if (instance == 0 && !topLevel) return rel.empty() ? "(0)" : rel;
  return "(" + std::to_string(instance) + ")" + (rel.empty() ? "" : "." + rel);
}

const int S0 = -100, S1 = -101, S2 = -102;

struct ShapeCase {
  const char* name;
  Shape shape;
};

std::vector<ShapeCase> shapes() {
  return {
      {"Empty", {{}}},
      {"LeavesOnly", {{{"a", 0, {}}, {"b", 4, {}}, {"c", 8, {3}}}}},
      {"ComplexLeaves", {{{"c", 1, {2}, true}, {"b", 8, {}}, {"d", 0, {1}, true}}}},
      {"ArrayOfStructures", {{{"x", 2, {}}, {"y", 6, {}}}, {{"k", 5, {}}, {"a", S0, {3}}, {"z", 1, {2, 2}}}}},
      {"NestedDeep",
       {{{"p", 0, {}, true}, {"q", 3, {2}}},
        {{"in", S0, {2}}, {"tail", 4, {}}},
        {{"head", 7, {}}, {"mid", S1, {3}}, {"one", S1, {}}, {"flat", S0, {1, 1}}}}},
      {"SharedType", {{{"v", 6, {}}}, {{"left", S0, {}}, {"right", S0, {2}}, {"w", 0, {}}}}},
  };
}

class ElementViews : public testing::TestWithParam<ShapeCase> {
 protected:
  DataTypeTable table;
};

TEST_P(ElementViews, EveryViewAgreesWithTheReferenceWalk) {
  const Shape& shape = GetParam().shape;
  const Built b = build(table, shape);
  const Walk walk(table, shape, b);
  const int top = static_cast<int>(shape.size()) - 1;
  const int id = b.ids.back();
  std::vector<Node> nodes;
  walk.nodes(top, nodes);
  std::vector<RawValue> raws;
  walk.raws(top, 0, raws);
  const int n = b.dfs.at(id);
  ASSERT_EQ(static_cast<int>(nodes.size()), n);
  ASSERT_EQ(static_cast<int>(raws.size()), b.raw.at(id));

  DFSElementAccess dfs(&table, id);
  FlatElementAccess flat(&table, id);
  EXPECT_EQ(dfs.getNumElements(), n);
  EXPECT_EQ(flat.getNumElements(), b.flat.at(id));
  const int size = b.size.at(id);
  int flatIdx = 0, rawIdx = 0;
  for (int instance = 0; instance < 3; ++instance) {
    for (int i = 0; i < n; ++i) {
      const Node& node = nodes[static_cast<std::size_t>(i)];
      const int idx = instance * n + i;
      SCOPED_TRACE("node " + std::to_string(idx) + " " + node.rel);
      EXPECT_EQ(dfs.getDataTypeId(idx), node.typeId);
      EXPECT_EQ(dfs.getName(idx), node.name);
      EXPECT_EQ(dfs.getOffset(idx), instance * size + node.offset);
      EXPECT_EQ(dfs.getVarDimsOffset(idx), node.varOffset);
      EXPECT_EQ(dfs.getWidth(idx), node.width);
      EXPECT_EQ(dfs.getSignalType(idx), node.signalType);
      EXPECT_EQ(ConvertUStringToStdString(dfs.getFullPathAsString(idx, true)), fullPath(instance, node.rel, true));
      EXPECT_EQ(ConvertUStringToStdString(dfs.getFullPathAsString(idx, false)), fullPath(instance, node.rel, false));
      int parent = 0, element = 0;
      dfs.getImmediateParentDTypeIdAndOffset(idx, parent, element);
      EXPECT_EQ(parent, node.parentId);
      EXPECT_EQ(element, node.elementIdx);
      EXPECT_EQ(dfs.getRawElementIdx(idx), rawIdx);
      if (node.leaf) {
        EXPECT_EQ(dfs.getFlatElementIdx(idx), flatIdx);
        EXPECT_EQ(flat.getDataTypeId(flatIdx), node.typeId);
        EXPECT_EQ(flat.getName(flatIdx), node.name);
        EXPECT_EQ(flat.getOffset(flatIdx), instance * size + node.offset);
        EXPECT_EQ(flat.getWidth(flatIdx), node.width);
        EXPECT_EQ(ConvertUStringToStdString(flat.getFullPathAsString(flatIdx, true)),
                  fullPath(instance, node.rel, true));
        // Round trips between flat and depth-first numbering.
        EXPECT_EQ(flat.getStructType()->getDFSIdxFromFlatIdx(flatIdx), idx);
        EXPECT_EQ(flat.getStructType()->getFlatIdxFromDFSIdx(idx), flatIdx);
        ++flatIdx;
        rawIdx += node.width * (node.signalType == 1 ? 2 : 1);
      } else {
        EXPECT_EQ(dfs.getFlatElementIdx(idx), -1);
      }
    }
  }

  RawElementAccess raw(&table, id);
  EXPECT_EQ(raw.getNumElements(), static_cast<int>(raws.size()));
  for (std::size_t r = 0; r < raws.size(); ++r) {
    EXPECT_EQ(raw.getDataTypeId(static_cast<int>(r)), raws[r].typeId) << r;
    EXPECT_EQ(raw.getOffset(static_cast<int>(r)), raws[r].offset) << r;
    EXPECT_EQ(raw.getUnitId(static_cast<int>(r)), -1);
    EXPECT_EQ(raw.getSymbDimsId(static_cast<int>(r)), 0);
  }

  ImmediateElementAccess imm(&table, id);
  int before = 0;
  for (int i = 0; i < imm.getNumElements(); ++i) {
    const Field& f = shape.back()[static_cast<std::size_t>(i)];
    EXPECT_EQ(imm.getRawElementIdx(i), before);
    EXPECT_EQ(imm.getPadding(i), b.padding.at(id)[static_cast<std::size_t>(i)]) << f.name;
    EXPECT_EQ(imm.isScalar(i), widthOf(f) == 1);
    EXPECT_TRUE(imm.isIdxValid(i));
    before += f.type <= -100 ? widthOf(f) * b.raw.at(b.ids[static_cast<std::size_t>(-f.type - 100)])
                             : widthOf(f) * (f.complex ? 2 : 1);
  }
  EXPECT_FALSE(imm.isIdxValid(imm.getNumElements()));
}

TEST_P(ElementViews, SecondLookupReturnsTheCachedElement) {
  const Built b = build(table, GetParam().shape);
  DFSElementAccess first(&table, b.ids.back());
  DFSElementAccess second(&table, b.ids.back());
  for (int i = 0; i < first.getNumElements(); ++i) EXPECT_EQ(&first.getName(i), &second.getName(i));
}

INSTANTIATE_TEST_SUITE_P(Shapes, ElementViews, testing::ValuesIn(shapes()),
                         [](const testing::TestParamInfo<ShapeCase>& i) { return std::string(i.param.name); });

TEST(ElementViewEdges, RootNode) {
  DataTypeTable table;
  const Built b = build(table, {{{"a", 0, {}}, {"b", 0, {}}}});
  DFSElementAccess dfs(&table, b.ids[0]);
  EXPECT_EQ(dfs.getDataTypeId(0), b.ids[0]);
  EXPECT_EQ(dfs.getName(0), "");
  EXPECT_EQ(dfs.getWidth(0), 1);
  EXPECT_EQ(dfs.getOffset(0), 0);
  EXPECT_EQ(dfs.getVarDimsOffset(0), 0);
  EXPECT_EQ(dfs.getUnitId(0), 0);
  EXPECT_EQ(ConvertUStringToStdString(dfs.getFullPathAsString(0, true)), "(0)");
  auto* s = static_cast<StructDataType*>(table.getDataType(b.ids[0]));
  dfs.genFlatIdxToDFSIdxCache();
  EXPECT_EQ(s->getDFSIdxFromFlatIdx(3), 5);
  EXPECT_EQ(s->getFlatIdxFromDFSIdx(0), -1);
  EXPECT_EQ(s->getFlatIdxFromDFSIdx(4), 2);
}

TEST(ElementViewEdges, PathTextsKeepTheRepeatedPrefix) {
  using P = std::vector<std::pair<std::string, int>>;
  EXPECT_EQ(StructElementAccess::convertFullPathToString(P{}, "p"), "p");
  EXPECT_EQ(StructElementAccess::convertFullPathToString(P{{"a", -1}}, "p"), "pp.a");
  EXPECT_EQ(StructElementAccess::convertFullPathToString(P{{"", 0}, {"a", 2}, {"b", -1}}, "p"), "pp(0).a(2).b");
  EXPECT_EQ(StructElementAccess::convertFullPathToString(P{{"a", 2}, {"b", -1}}, ""), "a(2).b");
}

TEST(ElementViewEdges, ArrayNodeOfWidthThreeTakesSevenNodes) {
  DataTypeTable table;
  const Built b = build(table, {{{"x", 0, {}}}, {{"arr", S0, {3}}}});
  EXPECT_EQ(b.dfs.at(b.ids[1]), 1 + 1 + 3 * 2);
  DFSElementAccess dfs(&table, b.ids[1]);
  EXPECT_EQ(dfs.getName(1), "arr");
  EXPECT_EQ(dfs.getWidth(1), 3);
}

}  // namespace
