// The constraint store of symbolic dimensions: the facts that blocks learn about sizes while a model
// compiles (equal, greater, between two numbers), checked against each other the moment they arrive and
// handed to code generation afterwards with the blocks that asserted each.
//
// The store keeps what it is told and solves nothing: equalities form classes under their smallest id,
// orders are kept per size, and bounds per class. A fact that contradicts what is known raises a
// "QuillonTypes:Dimensions" message and leaves the store exactly as it was. Sizes are ids of the owning
// SymbolicDimsTable; a multi-dimensional size stands for the product of its dimensions.
#pragma once

#include <boost/function/function_fwd.hpp>
#include <climits>
#include <memory>
#include <vector>

/// A block of the model: an opaque handle, stored and compared, never looked into.
class QLBlock;

namespace QLTypeSys {

class SymbolicDimsTable;

namespace internal {
class SymbolicDimsConstraintsImpl;
}

/// Bounds of a size, both included; nothing known is INT_MIN to INT_MAX.
struct SymbDimsRange {
  int min;
  int max;

  /// The range with nothing known.
  SymbDimsRange() : min(INT_MIN), max(INT_MAX) {}
  SymbDimsRange(int minimum, int maximum) : min(minimum), max(maximum) {}

  /// The feature "SymbolicDimensionDefaultMinimum" (2 unless changed); every call counts as a read.
  static int defaultMin();

  bool operator==(SymbDimsRange const& other) const { return min == other.min && max == other.max; }
  bool operator!=(SymbDimsRange const& other) const { return !(*this == other); }
};

/// A relation expression (its id in the table) with the blocks that asserted it.
class SymbolicDimsConstraint {
 public:
  using const_iterator = std::vector<QLBlock const*>::const_iterator;

  explicit SymbolicDimsConstraint(int constraintId = 0) : constraintId_(constraintId) {}

  int getConstraintId() const { return constraintId_; }
  void setConstraintId(int id) { constraintId_ = id; }
  /// Appends a block; blocks keep the order they were added in.
  void add(QLBlock const* const block) { blocks_.push_back(block); }
  const_iterator begin() const { return blocks_.begin(); }
  const_iterator end() const { return blocks_.end(); }
  unsigned int getNumBlocks() const { return static_cast<unsigned int>(blocks_.size()); }

  bool operator==(SymbolicDimsConstraint const& other) const {
    return constraintId_ == other.constraintId_ && blocks_ == other.blocks_;
  }
  bool operator!=(SymbolicDimsConstraint const& other) const { return !(*this == other); }

 private:
  int constraintId_;
  std::vector<QLBlock const*> blocks_;
};

/// A relation between two size ids for code generation, with the blocks that asserted it.
class SymbolicDimsCGConstraint {
 public:
  using const_iterator = std::vector<QLBlock const*>::const_iterator;

  /// Both sides 0 ("NOSYMBOLIC") until set.
  SymbolicDimsCGConstraint() : lhsId_(0), rhsId_(0) {}
  SymbolicDimsCGConstraint(int lhsId, int rhsId) : lhsId_(lhsId), rhsId_(rhsId) {}

  int getLHSId() const { return lhsId_; }
  int getRHSId() const { return rhsId_; }
  void setLHSId(int id) { lhsId_ = id; }
  void setRHSId(int id) { rhsId_ = id; }
  /// Appends a block; blocks keep the order they were added in.
  void add(QLBlock const* const block) { blocks_.push_back(block); }
  const_iterator begin() const { return blocks_.begin(); }
  const_iterator end() const { return blocks_.end(); }
  unsigned int getNumBlocks() const { return static_cast<unsigned int>(blocks_.size()); }

  bool operator==(SymbolicDimsCGConstraint const& other) const {
    return lhsId_ == other.lhsId_ && rhsId_ == other.rhsId_ && blocks_ == other.blocks_;
  }
  bool operator!=(SymbolicDimsCGConstraint const& other) const { return !(*this == other); }

 private:
  int lhsId_;
  int rhsId_;
  std::vector<QLBlock const*> blocks_;
};

/// The facts known about the sizes of one table. A null block means a fact with no owner: it is kept, and
/// it is in no block's list.
class SymbolicDimsConstraints {
 public:
  /// A store for the ids of table, which must outlive it (the table creates and owns its store).
  explicit SymbolicDimsConstraints(SymbolicDimsTable* table);
  ~SymbolicDimsConstraints();
  SymbolicDimsConstraints(SymbolicDimsConstraints const&) = delete;
  SymbolicDimsConstraints& operator=(SymbolicDimsConstraints const&) = delete;

  /// a equals b; refused if they are known ordered or are different integers.
  void addEqual(int a, int b, QLBlock const* const block) const;
  /// id equals value: the range value to value.
  void addEqualValue(int id, int value, QLBlock const* const block) const;
  /// a is greater than b; refused if they are known equal or b is known greater.
  void addGreaterThan(int a, int b, QLBlock const* const block) const;
  /// id is greater than value; refused if the known maximum is not above value.
  void addGreaterThanValue(int id, int value, QLBlock const* const block);
  /// id is less than value; refused if the known minimum is not below value.
  void addLessThanValue(int id, int value, QLBlock const* const block);
  /// id lies between min and max; refused if that misses the known range.
  void addRange(int id, int min, int max, QLBlock const* const block);

  /// The bounds of id's class, with minimums carried up from the sizes known smaller than id.
  SymbDimsRange getRange(int id);
  /// Whether a and b are known equal.
  bool isEqual(int a, int b) const;
  /// Whether a is known greater than b.
  bool isGreaterThan(int a, int b) const;

  /// Equalities, sorted by left then right id, divisions moved to the other side.
  void getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  /// Orders, sorted by left then right id, divisions moved to the other side.
  void getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  /// The ids of relation expressions for every fact.
  void getSymbolicDimsConstraints(std::vector<int>& out) const;
  /// The relation expressions for every fact, each with its blocks.
  void getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const;
  /// The ids of the relation expressions that block asserted, ascending.
  void getSymbolicDimsConstraints(QLBlock const* const block, std::vector<int>& out) const;
  /// The ids of the relation expressions of every block that original maps to block, ascending. Include
  /// <boost/function.hpp> to pass one; an empty function throws boost::bad_function_call once it is applied to a block,
  /// that is when some block asserted a fact.
  void getSymbolicDimsConstraints(QLBlock const* const block,
                                  boost::function<QLBlock const*(QLBlock const*)> const& original,
                                  std::vector<int>& out) const;

 private:
  std::unique_ptr<internal::SymbolicDimsConstraintsImpl> impl_;
};

}  // namespace QLTypeSys
