// Helpers of the dimension tests: fake blocks, and a snapshot of everything a constraint store answers.
#pragma once

#include <gtest/gtest.h>

#include <boost/function.hpp>
#include <boost/optional/optional_io.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"

namespace dimtest {

using QLTypeSys::SymbDimsRange;
using QLTypeSys::SymbolicDimsCGConstraint;
using QLTypeSys::SymbolicDimsConstraint;
using QLTypeSys::SymbolicDimsTable;

/// Blocks are opaque: any distinct addresses will do.
inline QLBlock const* block(int n) {
  static const char storage[16] = {};
  return reinterpret_cast<QLBlock const*>(&storage[n]);
}

/// Blocks 1 and 3 stand for block 1, as a subsystem and its contents might; others stand for themselves.
inline QLBlock const* originalOf(QLBlock const* b) { return b == block(3) ? block(1) : b; }

/// Every output form of a store, over the given sizes and blocks.
struct Snapshot {
  std::vector<SymbolicDimsCGConstraint> equivalent;
  std::vector<SymbolicDimsCGConstraint> greater;
  std::vector<int> constraintIds;
  std::vector<SymbolicDimsConstraint> constraints;
  std::vector<std::vector<int>> perBlock;
  std::vector<std::vector<int>> perOriginalBlock;
  std::vector<SymbDimsRange> ranges;
  std::vector<bool> equal;
  std::vector<bool> greaterThan;

  bool operator==(const Snapshot& o) const {
    return equivalent == o.equivalent && greater == o.greater && constraintIds == o.constraintIds &&
           constraints == o.constraints && perBlock == o.perBlock && perOriginalBlock == o.perOriginalBlock &&
           ranges == o.ranges && equal == o.equal && greaterThan == o.greaterThan;
  }
};

inline Snapshot snapshot(const SymbolicDimsTable& t, const std::vector<int>& sizes,
                         const std::vector<QLBlock const*>& blocks) {
  Snapshot s;
  t.getEquivalentSymbolicDims(s.equivalent);
  t.getGreaterThanSymbolicDims(s.greater);
  t.getSymbolicDimsConstraints(s.constraintIds);
  t.getSymbolicDimsConstraints(s.constraints);
  for (QLBlock const* b : blocks) {
    s.perBlock.emplace_back();
    t.getSymbolicDimsConstraints(b, s.perBlock.back());
    s.perOriginalBlock.emplace_back();
    t.getSymbolicDimsConstraints(b, originalOf, s.perOriginalBlock.back());
  }
  for (int a : sizes) {
    s.ranges.push_back(t.getRange(a));
    for (int b : sizes) {
      s.equal.push_back(t.hasEqualRelation(a, b));
      s.greaterThan.push_back(t.hasGreaterThanRelation(a, b));
    }
  }
  return s;
}

/// The pairs of a code generation output as "left==right" texts, for readable expectations.
inline std::vector<std::string> texts(SymbolicDimsTable& t, const std::vector<SymbolicDimsCGConstraint>& v,
                                      const char* op) {
  std::vector<std::string> out;
  for (const auto& c : v)
    out.push_back(t.getSymbolicDims(c.getLHSId()).toString() + op + t.getSymbolicDims(c.getRHSId()).toString());
  return out;
}

/// The relation expressions of ids as texts.
inline std::vector<std::string> texts(SymbolicDimsTable& t, const std::vector<int>& ids) {
  std::vector<std::string> out;
  for (int id : ids) out.push_back(t.getSymbolicDims(id).toString());
  return out;
}

}  // namespace dimtest

namespace QLTypeSys {
// Readable failures of the snapshot comparisons.
inline void PrintTo(const SymbDimsRange& r, std::ostream* os) { *os << "[" << r.min << ", " << r.max << "]"; }
inline void PrintTo(const SymbolicDimsCGConstraint& c, std::ostream* os) {
  *os << "(" << c.getLHSId() << ", " << c.getRHSId() << ", " << c.getNumBlocks() << " blocks)";
}
}  // namespace QLTypeSys
