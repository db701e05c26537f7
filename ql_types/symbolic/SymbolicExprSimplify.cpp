// Simplification: passes of the normaliser until nothing changes or the limit is reached.
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Normalizer.hpp"

namespace QL {

SymbolicExprSimplify::SymbolicExprSimplify(SymbolicExprTable& table, unsigned limit)
    : normalizer_(std::make_unique<internal::Normalizer>(table)), limit_(limit) {}

SymbolicExprSimplify::~SymbolicExprSimplify() = default;

unsigned SymbolicExprSimplify::simplify(unsigned index, bool& converged) {
  normalizer_->table().get(index);  // raises for a bad index
  converged = false;
  for (unsigned pass = 0; pass < limit_; ++pass) {
    const unsigned next = normalizer_->normalize(index);
    if (next == index) {
      converged = true;
      break;
    }
    index = next;
  }
  return index;
}

unsigned SymbolicExprSimplify::simplify(unsigned index) {
  bool converged;
  return simplify(index, converged);
}

}  // namespace QL
