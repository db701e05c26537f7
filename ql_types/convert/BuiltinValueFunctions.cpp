// The value functions of the built-in types: one shared convert function that runs the
// conversion kernel with saturation and rounding toward zero, and four compare functions per
// type. All of them ignore their extra argument and succeed.
//
// The data type table declares what its built-in rows carry; the conversion layer supplies it here,
// since the convert function runs the kernel matrix. So includes run from convert to datatypes only.
#include "ql_types/datatypes/internal/BuiltinValueFunctions.hpp"

#include <cstdint>
#include <type_traits>

#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/datatypes/BuiltinTypes.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"

namespace QLTypeSys {
namespace internal {

namespace {

int convertBetweenBuiltIn(_qlDataTypeAccess_tag* access, const char*, int dstId, int srcId, int n, const void* src,
                          const void*, void* dst) {
  const auto* table = static_cast<const DataTypeTable*>(access->table);
  // "auto" converts as the "double" it stands for; anything but a numeric type has no kernel.
  auto builtIn = [table](int id) {
    const int thru = table->getDataTypeIdAliasedThruToWithCheckForBuiltInDataType(id);
    return thru == -1 ? 0 : thru;
  };
  const int d = builtIn(dstId), s = builtIn(srcId);
  if (!isBuiltinTypeId(d) || !isBuiltinTypeId(s) || n < 0) return 0;
  const builtinConvFcn kernel = utGetQlBuiltinDtypeConvFcn(s, d, FXP_OVERFLOW_SATURATE, FXP_ROUND_ZERO);
  const auto count = static_cast<unsigned int>(n);
  kernel(src, dst, count, count, false, false, true, s, d, FXP_OVERFLOW_SATURATE, FXP_ROUND_ZERO);
  return 1;
}

template <class T, bool kUnsigned>
struct Compare {
  static int isPositive(_qlDataTypeAccess_tag*, const char*, int, int n, const void* src, const void*, void* result) {
    const T* x = static_cast<const T*>(src);
    auto* r = static_cast<unsigned char*>(result);
    for (int i = 0; i < n; ++i) r[i] = x[i] > T(0);
    return 1;
  }
  static int isNegative(_qlDataTypeAccess_tag*, const char*, int, int n, const void* src, const void*, void* result) {
    const T* x = static_cast<const T*>(src);
    auto* r = static_cast<unsigned char*>(result);
    for (int i = 0; i < n; ++i) r[i] = kUnsigned ? 0 : x[i] < T(0);
    return 1;
  }
  static int greaterThan(_qlDataTypeAccess_tag*, const char*, int, int n, const void* a, const void* b, const void*,
                         void* result) {
    const T* x = static_cast<const T*>(a);
    const T* y = static_cast<const T*>(b);
    auto* r = static_cast<unsigned char*>(result);
    for (int i = 0; i < n; ++i) r[i] = x[i] > y[i];
    return 1;
  }
  static int greaterEqual(_qlDataTypeAccess_tag*, const char*, int, int n, const void* a, const void* b, const void*,
                          void* result) {
    const T* x = static_cast<const T*>(a);
    const T* y = static_cast<const T*>(b);
    auto* r = static_cast<unsigned char*>(result);
    for (int i = 0; i < n; ++i) r[i] = x[i] >= y[i];
    return 1;
  }
};

// "double" is the hot type: four elements per turn, then the rest. NaN compares false.
struct CompareDouble {
  template <class Op>
  static void unary(int n, const double* x, unsigned char* r, Op op) {
    int i = 0;
    for (; i + 4 <= n; i += 4) {
      r[i] = op(x[i]);
      r[i + 1] = op(x[i + 1]);
      r[i + 2] = op(x[i + 2]);
      r[i + 3] = op(x[i + 3]);
    }
    for (; i < n; ++i) r[i] = op(x[i]);
  }
  template <class Op>
  static void binary(int n, const double* x, const double* y, unsigned char* r, Op op) {
    int i = 0;
    for (; i + 4 <= n; i += 4) {
      r[i] = op(x[i], y[i]);
      r[i + 1] = op(x[i + 1], y[i + 1]);
      r[i + 2] = op(x[i + 2], y[i + 2]);
      r[i + 3] = op(x[i + 3], y[i + 3]);
    }
    for (; i < n; ++i) r[i] = op(x[i], y[i]);
  }
  static int isPositive(_qlDataTypeAccess_tag*, const char*, int, int n, const void* src, const void*, void* result) {
    unary(n, static_cast<const double*>(src), static_cast<unsigned char*>(result), [](double v) { return v > 0.0; });
    return 1;
  }
  static int isNegative(_qlDataTypeAccess_tag*, const char*, int, int n, const void* src, const void*, void* result) {
    unary(n, static_cast<const double*>(src), static_cast<unsigned char*>(result), [](double v) { return v < 0.0; });
    return 1;
  }
  static int greaterThan(_qlDataTypeAccess_tag*, const char*, int, int n, const void* a, const void* b, const void*,
                         void* result) {
    binary(n, static_cast<const double*>(a), static_cast<const double*>(b), static_cast<unsigned char*>(result),
           [](double u, double v) { return u > v; });
    return 1;
  }
  static int greaterEqual(_qlDataTypeAccess_tag*, const char*, int, int n, const void* a, const void* b, const void*,
                          void* result) {
    binary(n, static_cast<const double*>(a), static_cast<const double*>(b), static_cast<unsigned char*>(result),
           [](double u, double v) { return u >= v; });
    return 1;
  }
};

template <class C>
constexpr BuiltinValueFunctions functionsOf() {
  return {convertBetweenBuiltIn, C::isPositive, C::isNegative, C::greaterThan, C::greaterEqual};
}

// The compare functions of an element type; "double", the hot type, has its own.
template <class E>
struct CompareOf {
  using type = Compare<E, std::is_unsigned_v<E>>;
};
template <>
struct CompareOf<double> {
  using type = CompareDouble;
};

// In id order; "boolean" compares as an unsigned byte.
constexpr BuiltinValueFunctions kFunctions[kNumBuiltinTypes] = {
#define QL_BUILTIN_FUNCTIONS(id, Name, element, text, hostClass) functionsOf<CompareOf<element>::type>(),
    QL_BUILTIN_TYPES(QL_BUILTIN_FUNCTIONS)
#undef QL_BUILTIN_FUNCTIONS
};

}  // namespace

const BuiltinValueFunctions& builtinValueFunctions(int id) { return kFunctions[id]; }

}  // namespace internal
}  // namespace QLTypeSys
