// Copying expressions from one table to another.
//
// The copy goes through the whole expression; every sub-expression is entered in the target, so equal
// sub-expressions merge with what the target already holds. A copier remembers what it has copied, so
// copying many expressions that share parts costs each part once.
#pragma once

#include <vector>

namespace QL {

class SymbolicExprTable;

/// Copies expressions of source into target.
class SymbolicExprCopy {
 public:
  SymbolicExprCopy(const SymbolicExprTable& source, SymbolicExprTable& target);

  /// The index in the target of the copy of the source's entry at index.
  unsigned copy(unsigned index);
  /// Same as copy(index).
  unsigned operator()(unsigned index) { return copy(index); }

 private:
  const SymbolicExprTable& source_;
  SymbolicExprTable& target_;
  std::vector<unsigned> copied_;  // source index -> target index, npos where not copied yet
};

}  // namespace QL
