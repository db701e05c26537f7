// The bridge between built-in type ids and the host environment's arrays.
#pragma once

#include "ql_types/platform/HostArray.hpp"

namespace QLTypeSys {
class DataTypeTable;
}

/// The built-in type id of a host array class; -10 for any class that is not numeric here.
int utGetDTypeIdFromQxClassId(qxClassID classId);
/// The host array class of a type id; boolean may be asked for as uint8. 0 for no class.
qxClassID utGetqxClassIdFromDTypeId(int id, bool booleanAsUint8);
/// Zeroed storage for count values of the type (twice that if complex), from the host's
/// allocator (free with qxFree); null for a count or size of 0 or less. Raises the memory
/// diagnostic when the host is out of memory.
void* qxDTypeCalloc(const QLTypeSys::DataTypeTable* table, int count, int id, bool isComplex);

namespace QLTypeConv {
/// Replaces array by what the host function enumClassName makes of it. On failure the host's
/// diagnostic is raised and array is left as it was.
void qlConvertMatrixToEnumObjects(qxArray_tag*& array, char const* enumClassName);
}  // namespace QLTypeConv
