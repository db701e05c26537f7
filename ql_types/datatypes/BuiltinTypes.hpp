// The nine built-in numeric types, listed once.
//
// Every table of built-in types in the library derives from this list: the names and sizes of the
// data type table's rows, their fixed-point properties and value functions, the id classifiers, the
// host array classes, and the conversion layer's kernels, limits and thresholds. So an id, a name, an
// element type and a range cannot disagree between two tables.
#pragma once

#include <cstdint>
#include <type_traits>

#include "ql_types/fixpt/fxpDataTypeProp.hpp"
#include "ql_types/platform/HostArray.hpp"

// X(id, Name, element type as it lies in a buffer, name in the table, host array class).
// boolean is one byte.
#define QL_BUILTIN_TYPES(X)                             \
  X(0, Double, double, "double", qxDOUBLE_CLASS)        \
  X(1, Single, float, "single", qxSINGLE_CLASS)         \
  X(2, Int8, std::int8_t, "int8", qxINT8_CLASS)         \
  X(3, Uint8, std::uint8_t, "uint8", qxUINT8_CLASS)     \
  X(4, Int16, std::int16_t, "int16", qxINT16_CLASS)     \
  X(5, Uint16, std::uint16_t, "uint16", qxUINT16_CLASS) \
  X(6, Int32, std::int32_t, "int32", qxINT32_CLASS)     \
  X(7, Uint32, std::uint32_t, "uint32", qxUINT32_CLASS) \
  X(8, Boolean, std::uint8_t, "boolean", qxLOGICAL_CLASS)

namespace QLTypeSys {

/// What the library knows of one built-in type, derived from its element type.
struct BuiltinTypeTraits {
  const char* name;
  int size;        ///< bytes of one element
  bool isFloat;    ///< double and single
  bool isInteger;  ///< the six integer types (boolean is not one)
  bool isBoolean;
  qxClassID hostClass;  ///< the host array class of its values
  fxpDataTypeProp properties;

  /// Whether the type is signed, as its properties say (boolean is not).
  constexpr bool isSigned() const { return properties.getSignedness() == 1u; }
};

namespace detail {
// The one row whose values are the host's logical class is boolean.
template <class E>
constexpr BuiltinTypeTraits builtinTraitsOf(const char* name, qxClassID hostClass) {
  const bool isBoolean = hostClass == qxLOGICAL_CLASS;
  constexpr bool isFloat = std::is_floating_point_v<E>;
  constexpr int bits = 8 * static_cast<int>(sizeof(E));
  const fxpDataTypeProp properties =
      isBoolean ? fxpDataTypeProp::booleanDataType()
      : isFloat ? (bits == 64 ? fxpDataTypeProp::doubleDataType() : fxpDataTypeProp::singleDataType())
                : fxpDataTypeProp(FXP_DT_FIXPT, std::is_signed_v<E> ? 1u : 0u, bits, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  return {name, bits / 8, isFloat, !isFloat && !isBoolean, isBoolean, hostClass, properties};
}
}  // namespace detail

/// The number of built-in numeric types; their ids are 0 to kNumBuiltinTypes - 1.
inline constexpr int kNumBuiltinTypes = 9;

/// The built-in types, indexed by id.
inline constexpr BuiltinTypeTraits kBuiltinTypes[kNumBuiltinTypes] = {
#define QL_BUILTIN_TRAITS(id, Name, element, text, hostClass) detail::builtinTraitsOf<element>(text, hostClass),
    QL_BUILTIN_TYPES(QL_BUILTIN_TRAITS)
#undef QL_BUILTIN_TRAITS
};

/// Whether id is one of the nine built-in numeric ids.
constexpr bool isBuiltinTypeId(int id) { return id >= 0 && id < kNumBuiltinTypes; }

}  // namespace QLTypeSys
