// The value functions that the rows of "auto" and the nine numeric types carry.
#pragma once

#include "ql_types/datatypes/DataType.hpp"

namespace QLTypeSys {
namespace internal {

/// The five value functions of one built-in type.
struct BuiltinValueFunctions {
  DataTypeConvertBetweenFcn convertBetween;
  DataTypeIsPositiveFcn isPositive;
  DataTypeIsNegativeFcn isNegative;
  DataTypeGreaterThanFcn greaterThan;
  DataTypeGreaterEqualFcn greaterEqual;
};

/// The functions of built-in id 0 to 8.
const BuiltinValueFunctions& builtinValueFunctions(int id);

}  // namespace internal
}  // namespace QLTypeSys
