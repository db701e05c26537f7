// The names of an expression: a depth-first walk, left operand first, visiting shared parts once.
#include "ql_types/symbolic/SymbolicExprSymbols.hpp"

#include <unordered_set>

#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QL {

SymbolicExprSymbols::SymbolicExprSymbols(const SymbolicExprTable& table) : table_(table) {}

void SymbolicExprSymbols::operator()(unsigned index, std::vector<std::string>& names) const {
  std::unordered_set<std::string> known(names.begin(), names.end());
  std::unordered_set<unsigned> visited;
  std::vector<unsigned> stack{index};
  while (!stack.empty()) {
    const unsigned i = stack.back();
    stack.pop_back();
    if (!visited.insert(i).second) continue;
    const SymbolicExpr& e = table_.get(i);
    if (SymbolicString::isa(e)) {
      const std::string& name = static_cast<const SymbolicString&>(e).getName();
      if (known.insert(name).second) names.push_back(name);
    }
    for (unsigned k = e.getNumOperands(); k-- > 0;) stack.push_back(e.getOperand(k));
  }
}

}  // namespace QL
