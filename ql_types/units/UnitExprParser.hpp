// The unit expression language: names joined by "*" and "/", raised with "^", grouped with "(" and ")",
// optionally followed by "@" and an abstract unit. This file gives the flat form an expression parses
// into (term names with exponents) and the two entry points; it knows nothing of which names exist.
//
//   expression := first { ("*" | "/") factor }
//   first      := exponent "/" factor | factor        (the number before the slash is only a form: "5/s" is "1/s")
//   factor     := (group | name) { "^" exponent }     (left to right: "a^2^3" is a to the sixth)
//   group      := "(" expression ")"
//   exponent   := integer | "(" integer ")"           (integer: optional sign, decimal digits, 32-bit)
//   name       := one or more graphic characters other than "@*/^()+-"
//
// White space (the Unicode property) may stand between tokens, never inside a name or an integer. A name
// may be all digits ("1" parses as the name "1"). Each term appears once, in order of first appearance,
// and its positive and negative counts are kept apart: "m/m" is the term m with counts (1, 1).
//
// Limits, where a client's text could otherwise exhaust the stack or overflow: more than
// kMaxUnitExprNesting nested parentheses do not parse, and neither does an expression whose exponent
// counts leave the 32-bit range (including the exponent -2147483648, whose negative count has no 32-bit
// form).
//
// Texts are UTF-16, one code unit per wchar_t. Text that is not well-formed UTF-16 raises
// std::out_of_range before any parsing: a misplaced surrogate with Boost's text "Misplaced UTF-16
// surrogate U+..." and a wchar_t above 0xFFFF with "Invalid UTF-16 code unit in wide text".
#pragma once

#include <string>
#include <vector>

#include "ql_types/units/Exponent.hpp"

namespace QLTypeSys {

/// The deepest nesting of parentheses that parses.
inline constexpr int kMaxUnitExprNesting = 64;

/// A parsed unit expression: each term name once, in order of first appearance, with its exponent.
struct UnitExprAST {
  /// The term names, UTF-16.
  std::vector<std::wstring> names;
  /// The exponents, parallel to names.
  std::vector<Exponent> exponents;
  /// The number when the rule matched an integer; 0 for an expression.
  int value = 0;

  bool operator==(const UnitExprAST& other) const {
    return names == other.names && exponents == other.exponents && value == other.value;
  }
  bool operator!=(const UnitExprAST& other) const { return !(*this == other); }
};

/// Whether all of text (less trailing white space) is an expression; on true ast holds its terms, on false
/// ast is left as it was. "m^0" parses to no terms at all, which is a success.
bool parseUnitExpr(const std::wstring& text, UnitExprAST& ast);

/// Splits "unit@abstract": unitPart is the run of graphic characters other than "@" after any leading white
/// space, abstractPart the run of graphic characters other than "@*/^()+-" after an "@" (white space may
/// stand before and after the "@"). Returns whether a unit part was found; both parts are filled as far as
/// matched and whatever follows is ignored (so "m s" gives "m", and "m/s@" gives "m/s" and nothing).
bool splitUnitExpr(const std::wstring& text, std::wstring& unitPart, std::wstring& abstractPart);

}  // namespace QLTypeSys
