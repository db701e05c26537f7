// Chains of sums and products, walked without recursion.
#include "ql_types/symbolic/internal/Chains.hpp"

#include <algorithm>
#include <unordered_set>

#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QL {
namespace internal {

namespace {

bool inChain(const SymbolicExprTable& table, unsigned index, ChainKind chain) {
  ChainKind k;
  return chainKindOf(table.get(index).getKind(), k) && k == chain;
}

}  // namespace

void ChainWalker::nodes(const SymbolicExprTable& table, unsigned root, ChainKind chain, std::vector<unsigned>& nodes,
                        std::vector<unsigned>& leaves) {
  nodes.clear();
  leaves.clear();
  // Most chains are short: a linear search beats a hash set until they are not.
  constexpr std::size_t kSmall = 32;
  seenSmall_.assign(1, root);
  seen_.clear();
  bool large = false;
  auto firstTime = [&](unsigned i) {
    if (!large) {
      if (std::find(seenSmall_.begin(), seenSmall_.end(), i) != seenSmall_.end()) return false;
      seenSmall_.push_back(i);
      if (seenSmall_.size() > kSmall) {
        seen_.insert(seenSmall_.begin(), seenSmall_.end());
        large = true;
      }
      return true;
    }
    return seen_.insert(i).second;
  };
  stack_.assign(1, root);
  while (!stack_.empty()) {
    const unsigned i = stack_.back();
    stack_.pop_back();
    nodes.push_back(i);
    const SymbolicExpr& e = table.get(i);
    for (unsigned k = 0, n = e.getNumOperands(); k < n; ++k) {
      const unsigned op = e.getOperand(k);
      if (!firstTime(op)) continue;
      if (inChain(table, op, chain))
        stack_.push_back(op);
      else
        leaves.push_back(op);
    }
  }
  std::sort(nodes.begin(), nodes.end());
  std::sort(leaves.begin(), leaves.end());
}

void chainNodes(const SymbolicExprTable& table, unsigned root, ChainKind chain, std::vector<unsigned>& nodes,
                std::vector<unsigned>& leaves) {
  ChainWalker().nodes(table, root, chain, nodes, leaves);
}

bool chainLeaves(const SymbolicExprTable& table, unsigned root, ChainKind chain, Leaves& leaves) {
  return ChainWalker().leaves(table, root, chain, leaves);
}

namespace {

// The common chain of one node, a op b or -a, without the general walk.
bool oneNodeLeaves(const SymbolicExprTable& table, const SymbolicExpr& e, ChainKind chain, Leaves& leaves) {
  const unsigned n = e.getNumOperands();
  for (unsigned k = 0; k < n; ++k)
    if (inChain(table, e.getOperand(k), chain)) return false;
  leaves.clear();
  const SymbolicExprKind kind = e.getKind();
  const std::int64_t first = kind == SymbolicExprKind::UnaryMinus ? -1 : 1;
  leaves.emplace_back(e.getOperand(0), first);
  if (n == 2) {
    const std::int64_t second = kind == SymbolicExprKind::Minus ? -1 : 1;
    const unsigned b = e.getOperand(1);
    if (b == leaves[0].first) {
      leaves[0].second += second;
      if (leaves[0].second == 0) leaves.clear();
    } else if (b < leaves[0].first) {
      leaves.insert(leaves.begin(), {b, second});
    } else {
      leaves.emplace_back(b, second);
    }
  }
  return true;
}

}  // namespace

bool ChainWalker::leaves(const SymbolicExprTable& table, unsigned root, ChainKind chain, Leaves& leaves) {
  if (oneNodeLeaves(table, table.get(root), chain, leaves)) return true;
  std::vector<unsigned>& nodes = nodes_;
  std::vector<unsigned>& leafIndexes = leafIndexes_;
  this->nodes(table, root, chain, nodes, leafIndexes);
  // Multiplicities flow from each node to its operands, parents first: descending indexes. Nodes and
  // leaves are sorted, so a count is found by binary search.
  std::vector<std::int64_t>& nodeCount = nodeCount_;
  std::vector<std::int64_t>& leafCount = leafCount_;
  nodeCount.assign(nodes.size(), 0);
  leafCount.assign(leafIndexes.size(), 0);
  nodeCount.back() = 1;  // the root has the highest index
  auto give = [&](unsigned to, std::int64_t v) {
    auto n = std::lower_bound(nodes.begin(), nodes.end(), to);
    std::int64_t& c = (n != nodes.end() && *n == to)
                          ? nodeCount[static_cast<std::size_t>(n - nodes.begin())]
                          : leafCount[static_cast<std::size_t>(
                                std::lower_bound(leafIndexes.begin(), leafIndexes.end(), to) - leafIndexes.begin())];
    return !__builtin_add_overflow(c, v, &c);
  };
  for (std::size_t k = nodes.size(); k-- > 0;) {
    const std::int64_t m = nodeCount[k];
    if (m == 0) continue;
    const SymbolicExpr& e = table.get(nodes[k]);
    std::int64_t negated;
    if (__builtin_sub_overflow(std::int64_t{0}, m, &negated)) return false;
    bool ok = true;
    switch (e.getKind()) {
      case SymbolicExprKind::Minus:
        ok = give(e.getOperand(0), m) && give(e.getOperand(1), negated);
        break;
      case SymbolicExprKind::UnaryMinus:
        ok = give(e.getOperand(0), negated);
        break;
      default:  // + and *
        ok = give(e.getOperand(0), m) && give(e.getOperand(1), m);
        break;
    }
    if (!ok) return false;
  }
  leaves.clear();
  for (std::size_t k = 0; k < leafIndexes.size(); ++k)
    if (leafCount[k] != 0) leaves.emplace_back(leafIndexes[k], leafCount[k]);
  return true;
}

}  // namespace internal
}  // namespace QL
