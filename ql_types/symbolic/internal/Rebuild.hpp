// Entering an expression of a given kind with new operands: the one place that maps kinds to classes.
#pragma once

#include <vector>

#include "ql_types/symbolic/SymbolicExpr.hpp"

namespace QL {
namespace internal {

/// Enters in table an expression of like's kind and value or name, with operands (indexes of table) in
/// place of like's; the operand count must be like's.
unsigned enterLike(SymbolicExprTable& table, const SymbolicExpr& like, const std::vector<unsigned>& operands);

/// Enters in table the two-operand expression of kind (Plus .. LessThan).
unsigned enterBinary(SymbolicExprTable& table, SymbolicExprKind kind, unsigned lhs, unsigned rhs);

}  // namespace internal
}  // namespace QL
