// The state of a constraint store: eight hash maps keyed by size id or block, and two counts.
//
// Equalities: parents link each id of a class toward its representative, the smallest id; members lists,
// per id that was a representative when a merge happened, the ids joined to it. Orders: smaller lists,
// per size id, the size ids told smaller. Bounds: ranges, per representative. The block maps record who
// asserted what; blockConstraints lists, per block, the ids of the relation expressions it asserted.
//
// Every adding operation makes all its checks before it changes anything, so a refused fact leaves every
// map as it was. Queries walk the order relation with an explicit stack and a visited set: deep chains
// cannot exhaust the call stack, and shared parts of the relation are visited once.
#pragma once

#include <boost/function/function_fwd.hpp>
#include <set>
#include <unordered_map>
#include <vector>

#include "ql_types/dimensions/SymbolicDimsConstraints.hpp"

namespace QL {
class SymbolicExprTable;
}

namespace QLTypeSys::internal {

using IdSet = std::set<int>;
using BlockSet = std::set<QLBlock const*>;

class SymbolicDimsConstraintsImpl {
 public:
  explicit SymbolicDimsConstraintsImpl(SymbolicDimsTable* table);

  void addEqual(int a, int b, QLBlock const* block);
  void addEqualValue(int id, int value, QLBlock const* block);
  void addGreaterThan(int a, int b, QLBlock const* block);
  void addGreaterThanValue(int id, int value, QLBlock const* block);
  void addLessThanValue(int id, int value, QLBlock const* block);
  void addRange(int id, int min, int max, QLBlock const* block);

  SymbDimsRange getRange(int id) const;
  bool isEqual(int a, int b) const;
  bool isGreaterThan(int a, int b) const;

  void getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  void getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  void getSymbolicDimsConstraints(std::vector<int>& out) const;
  void getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const;
  void getSymbolicDimsConstraints(QLBlock const* block, std::vector<int>& out) const;
  void getSymbolicDimsConstraints(QLBlock const* block, boost::function<QLBlock const*(QLBlock const*)> const& original,
                                  std::vector<int>& out) const;

 private:
  /// The id of the product of id's dimensions (id itself unless multi-dimensional).
  int sizeId(int id) const;
  /// The representative of the class of sizeId(id).
  int representative(int id) const;
  /// The representative of a size id.
  int representativeOfSize(int size) const;
  /// The integer of a size id, if it is one.
  bool intValue(int size, int& value) const;
  /// The printed form of id, for messages.
  std::string str(int id) const;
  /// The id of the integer entry of value.
  int intId(int value) const;
  /// The stored range of a representative, or the unknown range.
  SymbDimsRange storedRange(int rep) const;
  /// Whether the size id x is known greater than the size id y.
  bool greaterSizes(int x, int y) const;
  /// Records that block asserted the relation expression relationId.
  void enterBlockConstraint(QLBlock const* block, int relationId);
  /// Calls emit(relation id, blocks or null) for every fact, in the order of getSymbolicDimsConstraints.
  template <class Emit>
  void forEachConstraint(Emit&& emit) const;
  /// Moves divisions of both sides of each element to the other side.
  void removeDivisions(std::vector<SymbolicDimsCGConstraint>& out) const;

  std::unordered_map<int, IdSet> members_;
  std::unordered_map<int, int> parents_;
  std::unordered_map<int, BlockSet> equalBlocks_;
  std::unordered_map<int, IdSet> smaller_;
  std::unordered_map<int, BlockSet> greaterBlocks_;
  std::unordered_map<int, SymbDimsRange> ranges_;
  std::unordered_map<int, BlockSet> rangeBlocks_;
  std::unordered_map<QLBlock const*, IdSet> blockConstraints_;
  SymbolicDimsTable* table_;            // not owned
  QL::SymbolicExprTable* expressions_;  // the table's, not owned
  unsigned equalityCount_ = 0;          // merges; only to reserve space
  unsigned greaterCount_ = 0;           // order relations; only to reserve space
};

}  // namespace QLTypeSys::internal
