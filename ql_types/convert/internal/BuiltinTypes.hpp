// The conversion layer's view of the nine built-in types: compile-time traits by id, derived from the
// one list of the data type half. The kernel matrix, the kernels' limits and word sizes, and the
// thresholds of overflow detection all come from here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "ql_types/datatypes/BuiltinTypes.hpp"

namespace QLTypeSys::detail {

enum BuiltinId : int {
#define QL_BUILTIN_ID(id, name, element, text, hostClass) k##name = id,
  QL_BUILTIN_TYPES(QL_BUILTIN_ID)
#undef QL_BUILTIN_ID
};

inline constexpr int kBuiltinCount = kNumBuiltinTypes;

template <int Id>
struct BuiltinElement;
#define QL_BUILTIN_ELEMENT(id, name, element_, text, hostClass) \
  template <>                                                   \
  struct BuiltinElement<id> {                                   \
    using type = element_;                                      \
  };
QL_BUILTIN_TYPES(QL_BUILTIN_ELEMENT)
#undef QL_BUILTIN_ELEMENT

/// What the conversion layer needs to know of one built-in type, by id.
template <int Id>
struct Builtin {
  using element = typename BuiltinElement<Id>::type;
  static constexpr int id = Id;
  static constexpr bool isFloat = std::is_floating_point_v<element>;
  static constexpr bool isBoolean = kBuiltinTypes[Id].isBoolean;
  /// Word size W in bits.
  static constexpr int bits = 8 * static_cast<int>(sizeof(element));
  /// The limits m and M; for the float types they are only used as bounds of no interest.
  static constexpr element lowest = std::numeric_limits<element>::lowest();
  static constexpr element highest = std::numeric_limits<element>::max();
};

/// The limits of a built-in type as doubles (exact for every integer type), indexed by id.
struct BuiltinRange {
  double lowest;
  double highest;
};

template <std::size_t... Id>
constexpr std::array<BuiltinRange, kBuiltinCount> makeBuiltinRanges(std::index_sequence<Id...>) {
  return {{BuiltinRange{static_cast<double>(Builtin<Id>::lowest), static_cast<double>(Builtin<Id>::highest)}...}};
}

inline constexpr std::array<BuiltinRange, kBuiltinCount> kBuiltinRanges =
    makeBuiltinRanges(std::make_index_sequence<kBuiltinCount>{});

/// Calls fn with std::integral_constant<int, id> for a run-time id in 0..8; other ids give fallback.
template <class Result, class Fn>
Result visitBuiltin(int id, Result fallback, Fn&& fn) {
  switch (id) {
#define QL_BUILTIN_CASE(id_, name, element, text, hostClass) \
  case id_:                                                  \
    return fn(std::integral_constant<int, id_>{});
    QL_BUILTIN_TYPES(QL_BUILTIN_CASE)
#undef QL_BUILTIN_CASE
    default:
      return fallback;
  }
}

}  // namespace QLTypeSys::detail
