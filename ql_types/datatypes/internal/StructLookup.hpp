// Shared helpers of the structure code.
#pragma once

#include "ql_types/datatypes/StructDataType.hpp"

namespace QLTypeSys {
class DataTypeTable;
namespace internal {

/// The through type of id when it is a structure; null for -1, -10, bad ids and other kinds.
StructDataType* structThrough(const DataTypeTable* table, int id);

/// The product of an element's dimensions; 1 for none.
int widthOf(const StructElement& e);

}  // namespace internal
}  // namespace QLTypeSys
