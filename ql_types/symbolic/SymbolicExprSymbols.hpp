// The names occurring in an expression.
#pragma once

#include <string>
#include <vector>

namespace QL {

class SymbolicExprTable;

/// Lists the names of an expression, each once, in order of first occurrence reading the printed text
/// from left to right.
class SymbolicExprSymbols {
 public:
  explicit SymbolicExprSymbols(const SymbolicExprTable& table);

  /// Appends to names each name occurring in the entry at index that names does not hold yet.
  void operator()(unsigned index, std::vector<std::string>& names) const;

 private:
  const SymbolicExprTable& table_;
};

}  // namespace QL
