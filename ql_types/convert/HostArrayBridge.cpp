// Host array class ids, zeroed value buffers and the call that makes enumeration objects.
#include "ql_types/convert/HostArrayBridge.hpp"

#include "ql_types/datatypes/DataTypeTable.hpp"

int utGetDTypeIdFromQxClassId(qxClassID classId) {
  switch (static_cast<int>(classId)) {
    case qxLOGICAL_CLASS: return 8;
    case qxDOUBLE_CLASS: return 0;
    case qxSINGLE_CLASS: return 1;
    case qxINT8_CLASS: return 2;
    case qxUINT8_CLASS: return 3;
    case qxINT16_CLASS: return 4;
    case qxUINT16_CLASS: return 5;
    case qxINT32_CLASS: return 6;
    case qxUINT32_CLASS: return 7;
    default: return -10;
  }
}

qxClassID utGetqxClassIdFromDTypeId(int id, bool booleanAsUint8) {
  if (id >= 0 && id <= 7) return static_cast<qxClassID>(qxDOUBLE_CLASS + id);
  if (id == 8) return booleanAsUint8 ? qxUINT8_CLASS : qxLOGICAL_CLASS;
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
