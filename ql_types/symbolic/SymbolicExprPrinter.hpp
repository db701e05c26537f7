// The text of an expression: compact infix with the fewest parentheses that keep the tree.
//
// "N*2", "(A+B)*C", "-N", "[N,3]". Operators are those of C with C's precedence and left associativity, so
// a right operand of equal precedence keeps its parentheses: a-(b-c), and also a*(b*c), which is a
// different entry from a*b*c. Parsing the text gives the same entry back (see SymbolicExprParser), and a
// negative integer prints as "-5" while the negation of 5 prints as "-(5)", for that reason. Printing
// keeps no call stack per level, so sums and products of any length print.
#pragma once

#include <cstddef>
#include <string>

namespace QL {

class SymbolicExpr;
class SymbolicExprTable;

/// The hook through which a caller changes how names are printed.
class SymbolicExprPrinterPredicate {
 public:
  virtual ~SymbolicExprPrinterPredicate();
  /// The text printed for a name; the default is the name as written.
  virtual std::string name(const std::string& name) const;
};

/// Prints expressions.
class SymbolicExprPrinter {
 public:
  /// The longest text printed. Entries share their parts, so an expression built by squaring n times
  /// is n entries big but 2^n names long; past this length printing raises SymbolicExprTextTooLong.
  static constexpr std::size_t kMaxTextLength = std::size_t{1} << 24;

  /// The default predicate: names as written.
  class Predicate : public SymbolicExprPrinterPredicate {
   public:
    /// The one default predicate.
    static const Predicate& instance();
  };

  /// The text of expr, whose operands are read in the table it was built on.
  std::string operator()(const SymbolicExpr& expr,
                         const SymbolicExprPrinterPredicate& predicate = Predicate::instance()) const;
  /// The text of the entry at index of table.
  std::string operator()(const SymbolicExprTable& table, unsigned index,
                         const SymbolicExprPrinterPredicate& predicate = Predicate::instance()) const;
};

}  // namespace QL
