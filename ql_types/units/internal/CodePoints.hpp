// UTF-16 wide text to code points and back, for the unit expression parsers (private).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace QLTypeSys {
namespace internal {

using CodePoints = std::vector<std::uint32_t>;

/// The code points of UTF-16 text; std::out_of_range for a misplaced surrogate or a wchar_t above 0xFFFF.
CodePoints decodeUtf16(const std::wstring& text);
/// The UTF-16 form of code points.
std::wstring encodeUtf16(const CodePoints& cps);

/// Whether c is one of the operators of the expression language, "@*/^()+-", which no name may hold.
bool isUnitExprOperator(std::uint32_t c);

/// The deepest nesting of "(" in the text; a ")" without its "(" counts as no nesting.
int maxNesting(const CodePoints& cps);

}  // namespace internal
}  // namespace QLTypeSys
