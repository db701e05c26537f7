// Host arrays and host function calls.
#include "ql_types/platform/HostArray.hpp"

#include <cstdlib>
#include <map>

std::size_t qxElementSize(qxClassID classId) {
  switch (classId) {
    case qxLOGICAL_CLASS: case qxINT8_CLASS: case qxUINT8_CLASS: return 1;
    case qxINT16_CLASS: case qxUINT16_CLASS: case qxTEXT_CLASS: return 2;
    case qxSINGLE_CLASS: case qxINT32_CLASS: case qxUINT32_CLASS: return 4;
    case qxDOUBLE_CLASS: return 8;
    default: return 0;
  }
}

std::size_t qxGetNumberOfElements(const qxArray_tag* array) {
  std::size_t n = 1;
  for (std::size_t d : array->dimensions) n *= d;
  return n;
}

qxArray_tag* qxCreateNumericArray(qxClassID classId, const std::vector<std::size_t>& dimensions, bool isComplex) {
  const std::size_t size = qxElementSize(classId);
  if (size == 0) return nullptr;
  auto* a = new (std::nothrow) qxArray_tag;
  if (!a) return nullptr;
  a->classId = classId;
  a->dimensions = dimensions;
  a->isComplex = isComplex;
  a->elementSize = size;
  const std::size_t items = qxGetNumberOfElements(a) * (isComplex ? 2 : 1);
  if (items) {
    a->data = std::calloc(items, size);
    if (!a->data) {
      delete a;
      return nullptr;
    }
  }
  return a;
}

void qxDestroyArray(qxArray_tag* array) {
  if (!array) return;
  if (--array->refCount > 0) return;
  std::free(array->data);
  delete array;
}

void qxAddReference(qxArray_tag* array) {
  if (array) ++array->refCount;
}

void* qxCallocEx(std::size_t count, std::size_t size) { return count && size ? std::calloc(count, size) : nullptr; }
void qxFree(void* p) { std::free(p); }

namespace {
std::map<std::string, qlsvHostFunction>& hostFunctions() {
  static std::map<std::string, qlsvHostFunction> functions;
  return functions;
}
}  // namespace

void qlsvRegisterHostFunction(const std::string& name, qlsvHostFunction function) {
  if (function)
    hostFunctions()[name] = std::move(function);
  else
    hostFunctions().erase(name);
}

qlsvDiagnostic qlsvFEVAL_NoThrow(int outputCount, qxArray_tag* outputs[], int inputCount, qxArray_tag* inputs[],
                                 const char* functionName, bool, void*) {
  const std::string name = functionName ? functionName : "";
  try {
    auto it = hostFunctions().find(name);
    if (it == hostFunctions().end()) return qlMakeDiagnostic(qlmsg::services::UndefinedHostFunction, name);
    it->second(outputCount, outputs, inputCount, inputs);
    return nullptr;
  } catch (const fl::except::IException& e) {
    return qlsvCreateDiagnosticFromIException(e, true);
  } catch (const std::bad_alloc&) {
    return qlsvCreateMemoryAllocationDiagnostic();
  } catch (const std::exception& e) {
    return qlMakeDiagnostic(qlmsg::services::HostFunctionFailed, name, e.what());
  } catch (...) {
    return qlMakeDiagnostic(qlmsg::services::HostFunctionFailed, name, "unknown exception");
  }
}
