// The host environment's arrays and its function calls.
//
// A qxArray_tag is a reference-counted numeric array with a class id, dimensions, a complexity
// flag and zeroed data; complex data is stored as interleaved pairs. Host functions are
// registered by name and called with qlsvFEVAL_NoThrow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"

/// The host's classes of arrays. Only the numeric classes and "no class" are used here.
enum qxClassID : int {
  qxNO_CLASS = 0,
  qxLOGICAL_CLASS = 3,
  qxTEXT_CLASS = 4,
  qxOPAQUE_CLASS = 5,
  qxDOUBLE_CLASS = 6,
  qxSINGLE_CLASS = 7,
  qxINT8_CLASS = 8,
  qxUINT8_CLASS = 9,
  qxINT16_CLASS = 10,
  qxUINT16_CLASS = 11,
  qxINT32_CLASS = 12,
  qxUINT32_CLASS = 13,
};

/// Flag bit of an array that nobody holds yet; cleared when the array becomes shared.
constexpr std::uint32_t qxFLAG_TEMPORARY = 0x1000;

/// A host array. Create with qxCreateNumericArray, release with qxDestroyArray.
struct qxArray_tag {
  qxClassID classId = qxNO_CLASS;
  std::vector<std::size_t> dimensions;
  bool isComplex = false;
  std::size_t elementSize = 0;
  void* data = nullptr;  // numel * elementSize bytes, twice that when complex; zeroed
  std::uint32_t flags = qxFLAG_TEMPORARY;
  int refCount = 1;
};

/// Bytes per element of a numeric class; 0 for a class without elements.
std::size_t qxElementSize(qxClassID classId);
/// A new zero-filled array with one reference, or null when out of memory or not numeric.
qxArray_tag* qxCreateNumericArray(qxClassID classId, const std::vector<std::size_t>& dimensions, bool isComplex);
/// Number of elements: the product of the dimensions.
std::size_t qxGetNumberOfElements(const qxArray_tag* array);
/// Releases one reference; the last one frees the array. Null is ignored.
void qxDestroyArray(qxArray_tag* array);
/// Adds one reference.
void qxAddReference(qxArray_tag* array);

/// Zeroed storage for count items of size bytes from the host's allocator, or null.
void* qxCallocEx(std::size_t count, std::size_t size);
/// Frees storage from qxCallocEx; null is ignored.
void qxFree(void* p);

/// A host function: fills outputs from inputs. It may throw fl::except::IException.
using qlsvHostFunction = std::function<void(int outputCount, qxArray_tag* outputs[], int inputCount,
                                            qxArray_tag* inputs[])>;
/// Registers (or replaces, or with an empty function removes) a host function by name.
void qlsvRegisterHostFunction(const std::string& name, qlsvHostFunction function);
/// Calls a host function; returns null on success or the diagnostic of the failure. Never throws.
/// The flag and the context pointer are accepted for compatibility and change nothing.
qlsvDiagnostic qlsvFEVAL_NoThrow(int outputCount, qxArray_tag* outputs[], int inputCount, qxArray_tag* inputs[],
                                 const char* functionName, bool flag, void* context);
