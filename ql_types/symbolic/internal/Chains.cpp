// Chains of sums and products, walked without recursion.
#include "ql_types/symbolic/internal/Chains.hpp"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QL {
namespace internal {

bool chainKindOf(SymbolicExprKind kind, ChainKind& chain) {
  switch (kind) {
    case SymbolicExprKind::Plus:
    case SymbolicExprKind::Minus:
    case SymbolicExprKind::UnaryMinus:
      chain = ChainKind::Sum;
      return true;
    case SymbolicExprKind::Multiply:
      chain = ChainKind::Product;
      return true;
    default:
      return false;
  }
}

namespace {

bool inChain(const SymbolicExprTable& table, unsigned index, ChainKind chain) {
  ChainKind k;
  return chainKindOf(table.get(index).getKind(), k) && k == chain;
}

}  // namespace

void chainNodes(const SymbolicExprTable& table, unsigned root, ChainKind chain, std::vector<unsigned>& nodes,
                std::vector<unsigned>& leaves) {
  nodes.clear();
  leaves.clear();
  std::unordered_set<unsigned> seen{root};
  std::vector<unsigned> stack{root};
  while (!stack.empty()) {
    const unsigned i = stack.back();
    stack.pop_back();
    nodes.push_back(i);
    const SymbolicExpr& e = table.get(i);
    for (unsigned k = 0, n = e.getNumOperands(); k < n; ++k) {
      const unsigned op = e.getOperand(k);
      if (!seen.insert(op).second) continue;
      if (inChain(table, op, chain))
        stack.push_back(op);
      else
        leaves.push_back(op);
    }
  }
  std::sort(nodes.begin(), nodes.end());
  std::sort(leaves.begin(), leaves.end());
}

bool chainLeaves(const SymbolicExprTable& table, unsigned root, ChainKind chain, Leaves& leaves) {
  std::vector<unsigned> nodes, leafIndexes;
  chainNodes(table, root, chain, nodes, leafIndexes);
  // Multiplicities flow from each node to its operands, parents first: descending indexes.
  std::unordered_map<unsigned, std::int64_t> count;
  count.reserve(nodes.size() + leafIndexes.size());
  count[root] = 1;
  for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
    const std::int64_t m = count[*it];
    if (m == 0) continue;
    const SymbolicExpr& e = table.get(*it);
    std::int64_t negated;
    if (__builtin_sub_overflow(std::int64_t{0}, m, &negated)) return false;
    auto give = [&count](unsigned to, std::int64_t v) {
      std::int64_t& c = count[to];
      return !__builtin_add_overflow(c, v, &c);
    };
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
  for (const unsigned leaf : leafIndexes) {
    const std::int64_t m = count[leaf];
    if (m != 0) leaves.emplace_back(leaf, m);
  }
  return true;
}

}  // namespace internal
}  // namespace QL
