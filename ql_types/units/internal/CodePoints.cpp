// UTF-16 <-> code points through Boost's Unicode iterators, which also supply the error texts.
#include "ql_types/units/internal/CodePoints.hpp"

#include <boost/regex/pending/unicode_iterator.hpp>
#include <iterator>
#include <stdexcept>

namespace QLTypeSys {
namespace internal {

CodePoints decodeUtf16(const std::wstring& text) {
  std::u16string units;
  units.reserve(text.size());
  for (wchar_t c : text) {
    const auto u = static_cast<std::uint32_t>(c);
    if (u > 0xFFFF) throw std::out_of_range("Invalid UTF-16 code unit in wide text");
    units.push_back(static_cast<char16_t>(u));
  }
  // The range-checked iterators refuse a leading low or trailing high surrogate up front; any other
  // misplaced surrogate raises as it is reached, and all of the text is reached here.
  using In = boost::u16_to_u32_iterator<std::u16string::const_iterator, std::uint32_t>;
  CodePoints cps;
  cps.reserve(units.size());
  for (In it(units.begin(), units.begin(), units.end()), end(units.end(), units.begin(), units.end()); it != end; ++it)
    cps.push_back(*it);
  return cps;
}

bool isUnitExprOperator(std::uint32_t c) {
  switch (c) {
    case '@':
    case '*':
    case '/':
    case '^':
    case '(':
    case ')':
    case '+':
    case '-':
      return true;
    default:
      return false;
  }
}

std::wstring encodeUtf16(const CodePoints& cps) {
  std::u16string units;
  using Out = boost::utf16_output_iterator<std::back_insert_iterator<std::u16string>>;
  Out out(std::back_inserter(units));
  for (std::uint32_t cp : cps) *out++ = cp;
  return std::wstring(units.begin(), units.end());
}

int maxNesting(const CodePoints& cps) {
  int depth = 0, deepest = 0;
  for (std::uint32_t cp : cps) {
    if (cp == '(') {
      if (++depth > deepest) deepest = depth;
    } else if (cp == ')' && depth > 0) {
      --depth;
    }
  }
  return deepest;
}

}  // namespace internal
}  // namespace QLTypeSys
