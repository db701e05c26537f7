// The structural order. Equal indexes mean equal structures (the table keeps entries unique), which ends
// the comparison of shared parts at once; so a comparison follows one path down, in a loop.
#include "ql_types/symbolic/internal/StructuralOrder.hpp"

#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QL {
namespace internal {

int compareStructure(const SymbolicExprTable& table, unsigned a, unsigned b) {
  while (a != b) {
    const SymbolicExpr& x = table.get(a);
    const SymbolicExpr& y = table.get(b);
    if (x.getKind() != y.getKind()) return x.getKind() < y.getKind() ? -1 : 1;
    switch (x.getKind()) {
      case SymbolicExprKind::IntValue: {
        const int u = static_cast<const SymbolicIntValue&>(x).getValue();
        const int v = static_cast<const SymbolicIntValue&>(y).getValue();
        return u < v ? -1 : 1;  // different entries of one kind hold different values
      }
      case SymbolicExprKind::String:
        return static_cast<const SymbolicString&>(x).getName() < static_cast<const SymbolicString&>(y).getName() ? -1
                                                                                                                 : 1;
      default:
        break;
    }
    const unsigned n = x.getNumOperands();
    const unsigned m = y.getNumOperands();
    if (n != m) return n < m ? -1 : 1;
    if (n == 0) return 0;  // not reached: two empty multi-dimensional sizes are one entry
    // The first operands that differ decide, and they are different entries, so their comparison is
    // never 0: follow them down rather than recurse (a long sum is a deep left operand).
    unsigned k = 0;
    while (k + 1 < n && x.getOperand(k) == y.getOperand(k)) ++k;
    a = x.getOperand(k);
    b = y.getOperand(k);
  }
  return 0;
}

}  // namespace internal
}  // namespace QL
