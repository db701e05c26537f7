// Chains: the sums or the products that a flat text makes into left-deep trees of two-operand nodes.
//
// "a+b+c+..." is one chain of sums, "a*b*c*..." one chain of products, and the walkers take a chain as a
// whole: its leaves with how often each counts, found with an explicit stack. Operands are always entered
// before the expressions that use them, so a higher index never occurs below a lower one; sorting the
// nodes of a chain by index orders them without a recursive walk.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ql_types/symbolic/SymbolicExpr.hpp"

namespace QL {

class SymbolicExprTable;

namespace internal {

/// Which operators make up a chain.
enum class ChainKind : unsigned char {
  Sum,      // + - and negation
  Product,  // *
};

/// The chain kind of an operator, if it makes up one.
inline bool chainKindOf(SymbolicExprKind kind, ChainKind& chain) {
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

/// A leaf (the index of an entry that is not of the chain's kind) and its multiplicity: for a sum the
/// signed number of times it is added, for a product its exponent.
using Leaves = std::vector<std::pair<unsigned, std::int64_t>>;

/// Walks chains, keeping its working space from one chain to the next: most chains are short, and
/// allocating would cost more than walking them.
class ChainWalker {
 public:
  /// See chainNodes.
  void nodes(const SymbolicExprTable& table, unsigned root, ChainKind chain, std::vector<unsigned>& nodes,
             std::vector<unsigned>& leaves);
  /// See chainLeaves.
  bool leaves(const SymbolicExprTable& table, unsigned root, ChainKind chain, Leaves& leaves);

 private:
  std::vector<unsigned> stack_, seenSmall_, nodes_, leafIndexes_;
  std::vector<std::int64_t> nodeCount_, leafCount_;
  std::unordered_set<unsigned> seen_;
};

/// The nodes of the chain at root (root included, ascending) and the indexes of all its leaves
/// (ascending, each once). root must be of the chain's kind.
void chainNodes(const SymbolicExprTable& table, unsigned root, ChainKind chain, std::vector<unsigned>& nodes,
                std::vector<unsigned>& leaves);

/// The leaves of the chain at root with their multiplicities, ascending, without those of multiplicity 0;
/// false when a multiplicity would overflow 64 bits (a shared part counted 2^63 times).
bool chainLeaves(const SymbolicExprTable& table, unsigned root, ChainKind chain, Leaves& leaves);

}  // namespace internal
}  // namespace QL
