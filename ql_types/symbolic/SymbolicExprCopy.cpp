// Copying between tables: a post-order walk with an explicit stack, so deep expressions cannot exhaust
// the call stack, and a memo of what is already copied.
#include "ql_types/symbolic/SymbolicExprCopy.hpp"

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"

namespace QL {

SymbolicExprCopy::SymbolicExprCopy(const SymbolicExprTable& source, SymbolicExprTable& target)
    : source_(source), target_(target) {}

unsigned SymbolicExprCopy::copy(unsigned index) {
  source_.get(index);  // raises for a bad index before anything is entered
  if (copied_.size() < source_.size()) copied_.resize(source_.size(), SymbolicExpr::npos);
  if (&source_ == &target_) return index;
  std::vector<unsigned> stack{index};
  std::vector<unsigned> operands;
  while (!stack.empty()) {
    const unsigned i = stack.back();
    if (copied_[i] != SymbolicExpr::npos) {
      stack.pop_back();
      continue;
    }
    const SymbolicExpr& e = source_.get(i);
    const unsigned n = e.getNumOperands();
    bool ready = true;
    // Push right to left so operands are entered left to right, as a parse of the printed text would.
    for (unsigned k = n; k-- > 0;) {
      if (copied_[e.getOperand(k)] == SymbolicExpr::npos) {
        stack.push_back(e.getOperand(k));
        ready = false;
      }
    }
    if (!ready) continue;
    operands.resize(n);
    for (unsigned k = 0; k < n; ++k) operands[k] = copied_[e.getOperand(k)];
    copied_[i] = internal::enterLike(target_, e, operands);
    stack.pop_back();
  }
  return copied_[index];
}

}  // namespace QL
