// The constraint store's facts: adding them with their checks, and the queries the checks rest on.
#include "ql_types/dimensions/internal/SymbolicDimsConstraintsImpl.hpp"

#include <cstdint>
#include <string>
#include <unordered_set>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QLTypeSys::internal {

namespace {

constexpr std::size_t kInitialBuckets = 11;

template <class Map>
void shape(Map& map) {
  map.max_load_factor(1.0f);
  map.rehash(kInitialBuckets);
}

// Numbers in the three-text messages, widened so that a bound at the end of int's range plus one is exact.
std::string text(std::int64_t value) { return std::to_string(value); }

template <class Expr>
int relation(QL::SymbolicExprTable& t, int lhs, int rhs) {
  const unsigned index =
      Expr(t, SymbolicDimsTable::symbDimsId2TableIdx(lhs), SymbolicDimsTable::symbDimsId2TableIdx(rhs)).getId(t);
  return SymbolicDimsTable::tableIdx2SymbDimsId(index);
}

}  // namespace

SymbolicDimsConstraintsImpl::SymbolicDimsConstraintsImpl(SymbolicDimsTable* table)
    : table_(table), expressions_(&table->exprTbl()) {
  shape(members_);
  shape(parents_);
  shape(equalBlocks_);
  shape(smaller_);
  shape(greaterBlocks_);
  shape(ranges_);
  shape(rangeBlocks_);
  shape(blockConstraints_);
}

int SymbolicDimsConstraintsImpl::sizeId(int id) const { return SymbolicDims(table_, id).getSize().getId(); }

int SymbolicDimsConstraintsImpl::representative(int id) const { return representativeOfSize(sizeId(id)); }

int SymbolicDimsConstraintsImpl::representativeOfSize(int size) const {
  if (parents_.empty()) return size;
  int current = size;
  for (auto it = parents_.find(current); it != parents_.end() && it->second < current; it = parents_.find(current))
    current = it->second;
  return current;
}

bool SymbolicDimsConstraintsImpl::intValue(int size, int& value) const {
  const QL::SymbolicExpr& e = expressions_->get(SymbolicDimsTable::symbDimsId2TableIdx(size));
  if (!QL::SymbolicIntValue::isa(e)) return false;
  value = static_cast<const QL::SymbolicIntValue&>(e).getValue();
  return true;
}

std::string SymbolicDimsConstraintsImpl::str(int id) const { return SymbolicDims(table_, id).toString(); }

int SymbolicDimsConstraintsImpl::intId(int value) const { return SymbolicDimsIntValue(table_, value).getId(); }

SymbDimsRange SymbolicDimsConstraintsImpl::storedRange(int rep) const {
  auto it = ranges_.find(rep);
  return it == ranges_.end() ? SymbDimsRange() : it->second;
}

void SymbolicDimsConstraintsImpl::enterBlockConstraint(QLBlock const* block, int relationId) {
  blockConstraints_[block].insert(relationId);
}

// Adding facts.

void SymbolicDimsConstraintsImpl::addEqual(int a, int b, QLBlock const* block) {
  const int x = sizeId(a);
  const int y = sizeId(b);
  if (x == y) return;
  if (isGreaterThan(x, y)) qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionNotEqual, str(x), str(y), str(y));
  if (isGreaterThan(y, x)) qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionNotEqual, str(y), str(x), str(x));
  int xv = 0;
  int yv = 0;
  const bool xInt = intValue(x, xv);
  const bool yInt = intValue(y, yv);
  if (xInt && yInt) {
    // Different integers are ordered, so the checks above refuse them first; this one stays in its place.
    if (xv != yv) qlRaise(qlmsg::dimensions::InvalidSymbolicDimensionNotEqual, xv, yv);
    return;
  }
  if (yInt) return addEqualValue(x, yv, block);
  if (xInt) return addEqualValue(y, xv, block);

  if (block) enterBlockConstraint(block, relation<QL::SymbolicEqualExpr>(*expressions_, x, y));
  int lo = x < y ? x : y;
  const int hi = x < y ? y : x;
  auto lp = parents_.find(lo);
  if (lp == parents_.end()) {
    parents_.emplace(lo, lo);
    if (block) equalBlocks_[lo].insert(block);
  } else if (lp->second < lo) {
    lo = lp->second;  // deliberate: one step, not a walk to the root; the classes built so are what callers see
  }
  members_[lo].insert(hi);
  auto hp = parents_.find(hi);
  if (hp == parents_.end()) {
    parents_.emplace(hi, lo);
    if (block) equalBlocks_[hi].insert(block);
  } else {
    const int p = hp->second;
    if (p <= lo) return;  // deliberate: hi is already under lo or below it; no merge is counted
    members_[lo].insert(p);
    parents_[p] = lo;
    parents_[hi] = lo;
  }
  // deliberate: the ranges and members of an absorbed representative stay under it, no longer seen
  ++equalityCount_;
}

void SymbolicDimsConstraintsImpl::addEqualValue(int id, int value, QLBlock const* block) {
  addRange(id, value, value, block);
  if (block) enterBlockConstraint(block, relation<QL::SymbolicEqualExpr>(*expressions_, sizeId(id), intId(value)));
}

void SymbolicDimsConstraintsImpl::addGreaterThan(int a, int b, QLBlock const* block) {
  const int x = sizeId(a);
  const int y = sizeId(b);
  if (x == y) return;  // deliberate: a size told greater than itself is accepted silently
  int xv = 0;
  int yv = 0;
  const bool xInt = intValue(x, xv);
  const bool yInt = intValue(y, yv);
  if (xInt && yInt) {
    if (!(xv > yv)) qlRaise(qlmsg::dimensions::InvalidSymbolicDimensionGreaterThan, xv, yv);
    return;
  }
  if (yInt) return addGreaterThanValue(x, yv, block);
  if (xInt) return addLessThanValue(y, xv, block);
  if (isEqual(x, y)) qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionEqual, str(x), str(y), str(y));
  if (isGreaterThan(y, x)) qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionGreaterThan, str(x), str(y), str(y));
  if (block) {
    enterBlockConstraint(block, relation<QL::SymbolicGreaterThanExpr>(*expressions_, x, y));
    greaterBlocks_[x].insert(block);
  }
  smaller_[x].insert(y);
  ++greaterCount_;
}

void SymbolicDimsConstraintsImpl::addGreaterThanValue(int id, int value, QLBlock const* block) {
  const int size = sizeId(id);
  const int r = representativeOfSize(size);
  SymbDimsRange range = storedRange(r);
  if (!(value < range.max))
    qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionGreaterThan, str(r), text(value),
            text(std::int64_t{range.max} + 1));
  if (range.min < value + 1) range.min = value + 1;
  ranges_[r] = range;
  if (block) {
    enterBlockConstraint(block, relation<QL::SymbolicGreaterThanExpr>(*expressions_, size, intId(value)));
    rangeBlocks_[r].insert(block);
  }
}

void SymbolicDimsConstraintsImpl::addLessThanValue(int id, int value, QLBlock const* block) {
  const int size = sizeId(id);
  const int r = representativeOfSize(size);
  SymbDimsRange range = storedRange(r);
  if (!(range.min < value))
    qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionLessThan, str(r), text(value),
            text(std::int64_t{range.min} - 1));
  if (range.max > value - 1) range.max = value - 1;
  ranges_[r] = range;
  if (block) {
    enterBlockConstraint(block, relation<QL::SymbolicLessThanExpr>(*expressions_, size, intId(value)));
    rangeBlocks_[r].insert(block);
  }
}

void SymbolicDimsConstraintsImpl::addRange(int id, int min, int max, QLBlock const* block) {
  const int r = representative(id);
  SymbDimsRange range = storedRange(r);
  // deliberate: only the stored bounds are checked, so min above max on a fresh size is stored as it comes
  if (max < range.min)
    qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionLessThan, str(r), text(std::int64_t{max} + 1),
            text(std::int64_t{range.min} - 1));
  if (min > range.max)
    qlRaise(qlmsg::dimensions::InconsistentSymbolicDimensionGreaterThan, str(r), text(std::int64_t{min} - 1),
            text(std::int64_t{range.max} + 1));
  if (range.min < min) range.min = min;
  if (range.max > max) range.max = max;
  ranges_[r] = range;
  if (block) rangeBlocks_[r].insert(block);
}

// Queries.

SymbDimsRange SymbolicDimsConstraintsImpl::getRange(int id) const {
  const int size = sizeId(id);
  SymbDimsRange result = storedRange(representativeOfSize(size));
  // deliberate: minimums are carried up from everything known smaller as they are (above a size of minimum 4
  // the minimum shows as 4, not 5) and maximums are not carried down; code generation reads these bounds.
  std::vector<int> stack;
  std::unordered_set<int> seen;
  auto pushSmaller = [&](int from) {
    auto it = smaller_.find(from);
    if (it == smaller_.end()) return;
    for (auto m = it->second.rbegin(); m != it->second.rend(); ++m)
      if (seen.insert(*m).second) stack.push_back(*m);
  };
  pushSmaller(size);
  while (!stack.empty()) {
    const int m = stack.back();
    stack.pop_back();
    auto r = ranges_.find(representative(m));
    if (r != ranges_.end() && r->second.min > result.min) result.min = r->second.min;
    pushSmaller(m);
  }
  return result;
}

bool SymbolicDimsConstraintsImpl::isEqual(int a, int b) const {
  if (representative(a) == representative(b)) return true;
  const int x = sizeId(a);
  const int y = sizeId(b);
  int xv = 0;
  int yv = 0;
  const bool xInt = intValue(x, xv);
  const bool yInt = intValue(y, yv);
  if (xInt && yInt) return xv == yv;
  if (yInt) {
    const SymbDimsRange r = getRange(x);
    return r.min == yv && r.max == yv;
  }
  if (xInt) {
    const SymbDimsRange r = getRange(y);
    return r.min == xv && r.max == xv;
  }
  return false;
}

bool SymbolicDimsConstraintsImpl::isGreaterThan(int a, int b) const { return greaterSizes(sizeId(a), sizeId(b)); }

bool SymbolicDimsConstraintsImpl::greaterSizes(int x, int y) const {
  if (x == y) return false;
  int xv = 0;
  int yv = 0;
  const bool xInt = intValue(x, xv);
  const bool yInt = intValue(y, yv);
  if (xInt && yInt) return xv > yv;
  if (yInt) return getRange(x).min > yv;
  if (xInt) return getRange(y).max < xv;
  // Depth first through the sizes told smaller. deliberate: looked up by size id, not by representative, so
  // a fact about one member of a class is not known to the others. Each size is asked once, as its answer for
  // y does not depend on the path that reached it; the relation has no cycles, which addGreaterThan ensures.
  std::vector<int> stack{x};
  std::unordered_set<int> seen{x};
  while (!stack.empty()) {
    const int n = stack.back();
    stack.pop_back();
    auto it = smaller_.find(n);
    if (it == smaller_.end()) continue;
    if (it->second.count(y)) return true;
    for (auto m = it->second.rbegin(); m != it->second.rend(); ++m) {
      const int next = sizeId(*m);
      if (next == y) continue;
      int nv = 0;
      if (intValue(next, nv)) {
        if (getRange(y).max < nv) return true;
        continue;
      }
      if (seen.insert(next).second) stack.push_back(next);
    }
  }
  return false;
}

}  // namespace QLTypeSys::internal
