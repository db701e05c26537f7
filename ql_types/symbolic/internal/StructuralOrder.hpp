// The canonical order of entries: by structure alone, never by index or address, so that canonical forms
// and printed texts come out the same whatever order expressions were entered in.
#pragma once

namespace QL {

class SymbolicExprTable;

namespace internal {

/// Negative, zero or positive as entry a comes before, is, or comes after entry b: first by kind, then
/// integers by value, names by their bytes, and operators by their operands left to right.
int compareStructure(const SymbolicExprTable& table, unsigned a, unsigned b);

}  // namespace internal
}  // namespace QL
