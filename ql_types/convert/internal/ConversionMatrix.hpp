// The one description of the conversion family: for each pair of built-in types, how many kernels
// it has and whether they have a back-comparison pass. The dispatch rows (BuiltinConversion.cpp) and
// the per-instruction-set tables of real-vector loops (ConversionLevels.hpp) are both derived from
// it, so they cannot disagree on which kernels exist.
#pragma once

#include "ql_types/convert/internal/BuiltinTypes.hpp"

namespace QLTypeSys::detail {

/// S: one kernel; O: one per overflow mode; R: one per overflow and rounding mode; c: has a pass.
enum CellKind : unsigned char { S, Sc, Oc, Rc };

// clang-format off
inline constexpr CellKind kMatrix[kBuiltinCount * kBuiltinCount] = {
  // source \ destination: double  single  int8  uint8  int16  uint16  int32  uint32  boolean
  /* double  */            S,      Sc,     Rc,   Rc,    Rc,    Rc,     Rc,    Rc,     Sc,
  /* single  */            S,      S,      Rc,   Rc,    Rc,    Rc,     Rc,    Rc,     Sc,
  /* int8    */            S,      S,      S,    Oc,    S,     Oc,     S,     Oc,     Sc,
  /* uint8   */            S,      S,      Oc,   S,     S,     S,      S,     S,      Sc,
  /* int16   */            S,      S,      Oc,   Oc,    S,     Oc,     S,     Oc,     Sc,
  /* uint16  */            S,      S,      Oc,   Oc,    Oc,    S,      S,     S,      Sc,
  /* int32   */            S,      Sc,     Oc,   Oc,    Oc,    Oc,     S,     Oc,     Sc,
  /* uint32  */            S,      Sc,     Oc,   Oc,    Oc,    Oc,     Oc,    S,      Sc,
  /* boolean */            S,      S,      S,    S,     S,     S,      S,     S,      S,
};
// clang-format on

/// Kernels in a row of the kind: 8, 2 or 1.
constexpr int rowLength(CellKind kind) { return kind == Rc ? 8 : kind == Oc ? 2 : 1; }
constexpr bool hasPass(CellKind kind) { return kind != S; }

struct KernelTypes {
  int src;
  int dst;
};

/// The types whose kernel a cell runs. The boolean row reuses the uint8 kernels, its boolean cell
/// being the uint8 copy; only boolean to int8 and to uint8 have byte copies of their own. None of
/// them normalises, deliberately: a boolean byte of 2 stays 2, or becomes 2.0.
constexpr KernelTypes kernelTypesOf(int src, int dst) {
  if (src != kBoolean || dst == kInt8 || dst == kUint8) return {src, dst};
  return {kUint8, dst == kBoolean ? kUint8 : dst};
}

}  // namespace QLTypeSys::detail
