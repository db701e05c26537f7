// Reading expressions from text.
//
// The language: decimal integer literals, names (letters, digits and underscores, not starting with a
// digit), + - * / %, unary minus and parentheses, with C's precedence and left associativity and white
// space anywhere between tokens. A minus sign before a bare integer literal makes a negative integer
// ("-5", "- 5"); before anything else, parenthesised literals included ("-(5)"), it makes a negation.
// The expression is entered as written, unsimplified. Bad text raises an error of the catalogue
// "QL:symbolic" that gives the 1-based position of the fault, and then nothing has been entered.
#pragma once

#include <string>

namespace QL {

class SymbolicExprTable;

/// Parses expression texts into a table.
class SymbolicExprParser {
 public:
  /// Deepest nesting of parentheses and minus signs accepted, so that a hostile text cannot exhaust the
  /// call stack of the parser. Sums and products of any length are accepted: they are read in loops, and
  /// every algorithm that walks the result keeps its own stack instead of the call stack.
  static constexpr unsigned kMaxDepth = 500;

  explicit SymbolicExprParser(SymbolicExprTable& table);

  /// Enters the expression of text (null reads as empty) and returns its index.
  unsigned parse(const char* text);
  /// Same as parse(text).
  unsigned parse(const std::string& text) { return parse(text.c_str()); }
  /// Same as parse(text).
  unsigned operator()(const char* text) { return parse(text); }
  /// Same as parse(text).
  unsigned operator()(const std::string& text) { return parse(text.c_str()); }

 private:
  SymbolicExprTable& table_;
};

}  // namespace QL
