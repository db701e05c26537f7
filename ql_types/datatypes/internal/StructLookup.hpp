// Shared helpers of the structure code.
#pragma once

#include "ql_types/datatypes/StructDataType.hpp"

namespace QLTypeSys {
class DataTypeTable;
namespace internal {

/// The through type of id when it is a structure; null for -1, -10, bad ids and other kinds.
StructDataType* structThrough(const DataTypeTable* table, int id);

/// The product of an element's dimensions; 1 for none. Client dimensions can make it pass the int range:
/// it then saturates at INT_MAX (INT_MIN for a negative product), like every count derived from it.
int widthOf(const StructElement& e);

/// a * b and a + b, saturated at the int limits.
int saturatedProduct(long long a, long long b);
int saturatedSum(long long a, long long b);

}  // namespace internal
}  // namespace QLTypeSys
