// The parse with a grammar built for it alone: what a parse cost before the grammar was shared. Kept only
// as the baseline of the parser benchmark and for a test that it reads texts as the shared grammar does.
#pragma once

#include <string>

#include "ql_types/units/UnitExprParser.hpp"

namespace QLTypeSys {
namespace internal {

/// parseUnitExpr, building the expression grammar anew for this one call.
bool parseUnitExprWithFreshGrammar(const std::wstring& text, UnitExprAST& ast);

}  // namespace internal
}  // namespace QLTypeSys
