// The constraint store's outputs: the facts as pairs of sizes for code generation, with divisions moved
// to the other side, and as relation expressions, all of them or per block.
#include <algorithm>
#include <boost/function.hpp>
#include <climits>
#include <cstdint>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/dimensions/internal/SymbolicDimsConstraintsImpl.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QLTypeSys::internal {

namespace {

constexpr unsigned kSimplifyLimit = 10;

unsigned idx(int id) { return SymbolicDimsTable::symbDimsId2TableIdx(id); }
int idOf(unsigned index) { return SymbolicDimsTable::tableIdx2SymbDimsId(index); }

template <class Expr>
int relation(QL::SymbolicExprTable& t, int lhs, int rhs) {
  return idOf(Expr(t, idx(lhs), idx(rhs)).getId(t));
}

void addBlocks(SymbolicDimsCGConstraint& c, const std::unordered_map<int, BlockSet>& map, int key) {
  auto it = map.find(key);
  if (it == map.end()) return;
  for (QLBlock const* b : it->second) c.add(b);
}

const BlockSet* blocksOf(const std::unordered_map<int, BlockSet>& map, int key) {
  auto it = map.find(key);
  return it == map.end() ? nullptr : &it->second;
}

bool byLeftThenRight(const SymbolicDimsCGConstraint& a, const SymbolicDimsCGConstraint& b) {
  if (a.getLHSId() != b.getLHSId()) return a.getLHSId() < b.getLHSId();
  return a.getRHSId() < b.getRHSId();
}

// Sides of a relation with any division at the top, and products formed on the way.
class DivisionRemover {
 public:
  explicit DivisionRemover(QL::SymbolicExprTable& t) : t_(t), factor_(t), simplify_(t, kSimplifyLimit) {}

  void apply(SymbolicDimsCGConstraint& c) {
    const unsigned l = factor_.factorDivision(idx(c.getLHSId()));
    const unsigned r = factor_.factorDivision(idx(c.getRHSId()));
    const QL::SymbolicExpr& le = t_.get(l);
    const QL::SymbolicExpr& re = t_.get(r);
    const bool lDiv = QL::SymbolicDivideExpr::isa(le);
    const bool rDiv = QL::SymbolicDivideExpr::isa(re);
    unsigned newL = l;
    unsigned newR = r;
    if (rDiv && !lDiv) {  // L == n / d: L * d == n
      const auto& d = static_cast<const QL::SymbolicDivideExpr&>(re);
      newL = product(l, d.getDenominator());
      newR = d.getNumerator();
    } else if (lDiv && !rDiv) {  // n / d == R: n == d * R
      const auto& d = static_cast<const QL::SymbolicDivideExpr&>(le);
      newL = d.getNumerator();
      newR = product(d.getDenominator(), r);
    } else if (lDiv && rDiv) {
      const auto& ld = static_cast<const QL::SymbolicDivideExpr&>(le);
      const auto& rd = static_cast<const QL::SymbolicDivideExpr&>(re);
      int q = 0;
      if (quotient(rd.getDenominator(), ld.getDenominator(), q)) {  // ln / ld == rn / (ld*q): ln * q == rn
        newL = product(ld.getNumerator(), intIndex(q));
        newR = rd.getNumerator();
      } else if (quotient(ld.getDenominator(), rd.getDenominator(), q)) {  // ln == rn * q
        newL = ld.getNumerator();
        newR = product(rd.getNumerator(), intIndex(q));
      } else {  // cross-multiplied
        newL = product(ld.getNumerator(), rd.getDenominator());
        newR = product(rd.getNumerator(), ld.getDenominator());
      }
    }
    c.setLHSId(idOf(newL));
    c.setRHSId(idOf(newR));
  }

 private:
  unsigned product(unsigned a, unsigned b) { return simplify_.simplify(QL::SymbolicMultiplyExpr(t_, a, b).getId(t_)); }

  unsigned intIndex(int value) { return QL::SymbolicIntValue(t_, value).getId(t_); }

  // Whether the entries n and d are integers with n a multiple of d, and the quotient fits an int. A zero
  // denominator divides nothing here: divisions by zero are left to the cross-multiplied form.
  bool quotient(unsigned n, unsigned d, int& q) const {
    const QL::SymbolicExpr& ne = t_.get(n);
    const QL::SymbolicExpr& de = t_.get(d);
    if (!QL::SymbolicIntValue::isa(ne) || !QL::SymbolicIntValue::isa(de)) return false;
    const std::int64_t nv = static_cast<const QL::SymbolicIntValue&>(ne).getValue();
    const std::int64_t dv = static_cast<const QL::SymbolicIntValue&>(de).getValue();
    if (dv == 0 || nv % dv != 0) return false;
    const std::int64_t wide = nv / dv;
    if (wide < INT_MIN || wide > INT_MAX) return false;
    q = static_cast<int>(wide);
    return true;
  }

  QL::SymbolicExprTable& t_;
  QL::SymbolicExprFactorDivision factor_;
  QL::SymbolicExprSimplify simplify_;
};

}  // namespace

void SymbolicDimsConstraintsImpl::removeDivisions(std::vector<SymbolicDimsCGConstraint>& out) const {
  if (out.empty()) return;
  DivisionRemover remover(*expressions_);
  for (SymbolicDimsCGConstraint& c : out) remover.apply(c);
}

void SymbolicDimsConstraintsImpl::getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  out.clear();
  out.reserve(std::size_t{equalityCount_} + ranges_.size());
  for (const auto& [rep, ms] : members_) {
    for (const int m : ms) {
      out.emplace_back(rep, m);
      addBlocks(out.back(), equalBlocks_, m);
    }
  }
  for (const auto& [id, range] : ranges_) {
    if (range.min != range.max) continue;
    out.emplace_back(id, intId(range.min));
    addBlocks(out.back(), rangeBlocks_, id);
  }
  std::stable_sort(out.begin(), out.end(), byLeftThenRight);
  removeDivisions(out);  // the order is not restored afterwards
}

void SymbolicDimsConstraintsImpl::getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  out.clear();
  out.reserve(std::size_t{greaterCount_} + ranges_.size());
  for (const auto& [x, ys] : smaller_) {
    for (const int y : ys) {
      out.emplace_back(x, y);
      // deliberate: the blocks were entered under x and are read under y, as code generation has always seen them
      addBlocks(out.back(), greaterBlocks_, y);
    }
  }
  for (const auto& [id, range] : ranges_) {
    if (!(range.min > 0 && range.min < range.max)) continue;
    out.emplace_back(id, intId(range.min - 1));
    addBlocks(out.back(), rangeBlocks_, id);
  }
  std::stable_sort(out.begin(), out.end(), byLeftThenRight);
  removeDivisions(out);  // the order is not restored afterwards
}

template <class Emit>
void SymbolicDimsConstraintsImpl::forEachConstraint(Emit&& emit) const {
  QL::SymbolicExprTable& t = *expressions_;
  for (const auto& [rep, ms] : members_)
    for (const int m : ms) emit(relation<QL::SymbolicEqualExpr>(t, rep, m), blocksOf(equalBlocks_, m));
  for (const auto& [id, range] : ranges_)
    if (range.min == range.max)
      emit(relation<QL::SymbolicEqualExpr>(t, id, intId(range.min)), blocksOf(rangeBlocks_, id));
  for (const auto& [x, ys] : smaller_)
    for (const int y : ys) emit(relation<QL::SymbolicGreaterThanExpr>(t, x, y), blocksOf(greaterBlocks_, x));
  for (const auto& [id, range] : ranges_) {
    // deliberate: a lower bound at or under the default minimum goes without saying and is not reported
    if (SymbDimsRange::defaultMin() < range.min && range.min < range.max)
      emit(relation<QL::SymbolicGreaterThanExpr>(t, id, intId(range.min - 1)), blocksOf(rangeBlocks_, id));
    if (range.min < range.max && range.max < INT_MAX)
      emit(relation<QL::SymbolicLessThanExpr>(t, id, intId(range.max + 1)), blocksOf(rangeBlocks_, id));
  }
}

void SymbolicDimsConstraintsImpl::getSymbolicDimsConstraints(std::vector<int>& out) const {
  out.clear();
  out.reserve(std::size_t{equalityCount_} + greaterCount_ + ranges_.size());
  forEachConstraint([&](int id, const BlockSet*) { out.push_back(id); });
}

void SymbolicDimsConstraintsImpl::getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const {
  out.clear();
  out.reserve(std::size_t{equalityCount_} + greaterCount_ + ranges_.size());
  forEachConstraint([&](int id, const BlockSet* blocks) {
    out.emplace_back(id);
    if (blocks)
      for (QLBlock const* b : *blocks) out.back().add(b);
  });
}

void SymbolicDimsConstraintsImpl::getSymbolicDimsConstraints(QLBlock const* block, std::vector<int>& out) const {
  out.clear();
  auto it = blockConstraints_.find(block);
  if (it != blockConstraints_.end()) out.assign(it->second.begin(), it->second.end());
}

void SymbolicDimsConstraintsImpl::getSymbolicDimsConstraints(
    QLBlock const* block, boost::function<QLBlock const*(QLBlock const*)> const& original,
    std::vector<int>& out) const {
  // An empty function throws (bad_function_call) when it is first applied to a key, so a store where no
  // block asserted anything answers without calling it. out is assigned only once all keys are mapped.
  IdSet ids;
  for (const auto& [key, relations] : blockConstraints_)
    if (original(key) == block) ids.insert(relations.begin(), relations.end());
  out.assign(ids.begin(), ids.end());
}

}  // namespace QLTypeSys::internal
