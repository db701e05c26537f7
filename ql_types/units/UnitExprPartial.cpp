// The partial entry: whether a prefix can still become a complete entry.
//
// The left text is a prefix of an expression exactly when one of a few short continuations completes it:
// once its current token is finished, a prefix needs at most a name ("x"), an integer ("1", "1)"), a
// closing of an exponent ("1)", ")"), the rest of a leading "n/x" ("/x", "1/x", ")/x", "1)/x"), and then
// one ")" for each group still open. Trying those with the real parser keeps this in step with the grammar
// instead of restating it.
#include "ql_types/units/UnitExprPartial.hpp"

#include <boost/spirit/home/support/char_encoding/unicode/query.hpp>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/internal/CodePoints.hpp"

namespace QLTypeSys {

namespace {

namespace ucd = boost::spirit::ucd;

// Open groups at the end of text; -1 when a ")" closes nothing.
int openGroups(const std::wstring& text) {
  int depth = 0;
  for (wchar_t c : text) {
    if (c == L'(') ++depth;
    if (c == L')' && --depth < 0) return -1;
  }
  return depth;
}

bool expressionCanContinue(const std::wstring& left) {
  static const wchar_t* const continuations[] = {L"", L"x", L"1", L"1)", L")", L"/x", L"1/x", L")/x", L"1)/x"};
  UnitExprAST ast;
  for (const wchar_t* more : continuations) {
    std::wstring candidate = left + more;
    const int open = openGroups(candidate);
    if (open < 0) continue;
    if (open > kMaxUnitExprNesting) return false;
    candidate.append(static_cast<std::size_t>(open), L')');
    if (parseUnitExpr(candidate, ast)) return true;
  }
  return false;
}

// The abstract name typed so far, less the white space around it, is all graphic characters other than
// the operators: the same classes the parser uses.
bool abstractCanContinue(const internal::CodePoints& right, std::wstring& name) {
  std::size_t b = 0, e = right.size();
  while (b < e && ucd::is_white_space(right[b])) ++b;
  while (e > b && ucd::is_white_space(right[e - 1])) --e;
  const internal::CodePoints trimmed(right.begin() + static_cast<std::ptrdiff_t>(b),
                                     right.begin() + static_cast<std::ptrdiff_t>(e));
  name = internal::encodeUtf16(trimmed);
  for (std::uint32_t c : trimmed)
    if (!ucd::is_graph(c) || internal::isUnitExprOperator(c)) return false;
  return true;
}

}  // namespace

bool parsePartialUnitExpr(const std::wstring& text, std::wstring& left, std::wstring& right) {
  const std::size_t at = text.find(L'@');
  left = text.substr(0, at);
  right.clear();
  try {
    internal::decodeUtf16(text);  // malformed text is not well formed
  } catch (const std::out_of_range&) {
    if (at != std::wstring::npos) right = text.substr(at + 1);
    return false;
  }
  if (at == std::wstring::npos) return expressionCanContinue(left);
  std::wstring name;
  const bool abstractOk = abstractCanContinue(internal::decodeUtf16(text.substr(at + 1)), name);
  right = name;
  UnitExprAST ast;
  return abstractOk && parseUnitExpr(left, ast);
}

}  // namespace QLTypeSys
