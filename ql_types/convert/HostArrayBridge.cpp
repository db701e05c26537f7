// Host array class ids, zeroed value buffers and the call that makes enumeration objects.
#include "ql_types/convert/HostArrayBridge.hpp"

#include "ql_types/datatypes/BuiltinTypes.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"

int utGetDTypeIdFromQxClassId(qxClassID classId) {
  for (int id = 0; id < QLTypeSys::kNumBuiltinTypes; ++id)
    if (QLTypeSys::kBuiltinTypes[id].hostClass == classId) return id;
  return -10;
}

qxClassID utGetqxClassIdFromDTypeId(int id, bool booleanAsUint8) {
  if (QLTypeSys::isBuiltinTypeId(id)) {
    const QLTypeSys::BuiltinTypeTraits& t = QLTypeSys::kBuiltinTypes[id];
    return t.isBoolean && booleanAsUint8 ? qxUINT8_CLASS : t.hostClass;
  }
  if (id == 10) return qxINT32_CLASS;  // "integer"
  return qxNO_CLASS;                   // "fcn_call" and everything else
}

void* qxDTypeCalloc(const QLTypeSys::DataTypeTable* table, int count, int id, bool isComplex) {
  if (count <= 0) return nullptr;
  const int size = table->getDataType(id)->getSize();
  if (size <= 0) return nullptr;
  const std::size_t items = static_cast<std::size_t>(count) * (isComplex ? 2u : 1u);
  void* buffer = qxCallocEx(items, static_cast<std::size_t>(size));
  if (!buffer) qlsvThrowIExceptionFromDiagnostic(qlsvCreateMemoryAllocationDiagnostic(), nullptr);
  return buffer;
}

namespace QLTypeConv {

void qlConvertMatrixToEnumObjects(qxArray_tag*& array, char const* enumClassName) {
  qxArray_tag* inputs[1] = {array};
  qxArray_tag* outputs[1] = {nullptr};
  qlsvDiagnostic failure = qlsvFEVAL_NoThrow(1, outputs, 1, inputs, enumClassName, true, nullptr);
  if (failure) qlsvThrowIExceptionFromDiagnostic(std::move(failure), nullptr);
  qxDestroyArray(array);
  array = outputs[0];
}

}  // namespace QLTypeConv
