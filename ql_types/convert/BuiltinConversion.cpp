// The conversion matrix: which kernels each pair of built-in types has, and the two entry points.
//
// The matrix of ConversionMatrix.hpp is the one description of the family. Each cell says how many
// kernels the pair has (R: one per rounding and overflow mode, O: one per overflow mode, S: a single
// one) and whether they have a back-comparison pass (c). The rows of kernels and both mode tables
// are instantiated from it at compile time.
#include "ql_types/convert/BuiltinConversion.hpp"

#include <array>
#include <cstddef>
#include <utility>

#include "ql_types/convert/internal/BuiltinTypes.hpp"
#include "ql_types/convert/internal/ConversionKernels.hpp"
#include "ql_types/convert/internal/ConversionMatrix.hpp"

namespace QLTypeSys::detail {
namespace {

constexpr auto W = FXP_OVERFLOW_WRAP;
constexpr auto Sat = FXP_OVERFLOW_SATURATE;

// A row holds the kernel for overflow o and rounding r at o + 2 x r. Modes a row doesn't select by
// are instantiated as wrap and FXP_ROUND_ZERO, which their element conversions never look at.
template <int Src, int Dst, CellKind Kind>
struct Row;

template <int Src, int Dst>
struct Row<Src, Dst, S> {
  static constexpr builtinConvFcn kernels[1] = {&convKernel<Src, Dst, W, FXP_ROUND_ZERO, false>};
};

template <int Src, int Dst>
struct Row<Src, Dst, Sc> {
  static constexpr builtinConvFcn kernels[1] = {&convKernel<Src, Dst, W, FXP_ROUND_ZERO, true>};
};

template <int Src, int Dst>
struct Row<Src, Dst, Oc> {
  static constexpr builtinConvFcn kernels[2] = {
      &convKernel<Src, Dst, W, FXP_ROUND_ZERO, true>,
      &convKernel<Src, Dst, Sat, FXP_ROUND_ZERO, true>,
  };
};

template <int Src, int Dst>
struct Row<Src, Dst, Rc> {
  // clang-format off
  static constexpr builtinConvFcn kernels[8] = {
      &convKernel<Src, Dst, W, FXP_ROUND_ZERO,    true>, &convKernel<Src, Dst, Sat, FXP_ROUND_ZERO,    true>,
      &convKernel<Src, Dst, W, FXP_ROUND_NEAREST, true>, &convKernel<Src, Dst, Sat, FXP_ROUND_NEAREST, true>,
      &convKernel<Src, Dst, W, FXP_ROUND_CEIL,    true>, &convKernel<Src, Dst, Sat, FXP_ROUND_CEIL,    true>,
      &convKernel<Src, Dst, W, FXP_ROUND_FLOOR,   true>, &convKernel<Src, Dst, Sat, FXP_ROUND_FLOOR,   true>,
  };
  // clang-format on
};

template <std::size_t Index>
constexpr builtinConvFcn const* rowAt() {
  constexpr KernelTypes types = kernelTypesOf(Index / kBuiltinCount, Index % kBuiltinCount);
  return Row<types.src, types.dst, kMatrix[Index]>::kernels;
}

template <std::size_t... Index>
constexpr std::array<builtinConvFcn const*, 81> makeRows(std::index_sequence<Index...>) {
  return {{rowAt<Index>()...}};
}

template <class Predicate>
constexpr std::array<unsigned char, 81> makeFlags(Predicate selects) {
  std::array<unsigned char, 81> flags{};
  for (std::size_t i = 0; i < flags.size(); ++i) flags[i] = selects(kMatrix[i]) ? 1 : 0;
  return flags;
}

}  // namespace
}  // namespace QLTypeSys::detail

using QLTypeSys::detail::CellKind;

const std::array<unsigned char, 81> builtinConvUsesOverflow =
    QLTypeSys::detail::makeFlags([](CellKind k) { return k == CellKind::Oc || k == CellKind::Rc; });

const std::array<unsigned char, 81> builtinConvUsesRounding =
    QLTypeSys::detail::makeFlags([](CellKind k) { return k == CellKind::Rc; });

const std::array<builtinConvFcn const*, 81> builtinConvRows =
    QLTypeSys::detail::makeRows(std::make_index_sequence<81>{});

builtinConvFcn utGetQlBuiltinDtypeConvFcn(int srcId, int dstId, fxpModeOverflow_tag overflow,
                                          fxpModeRounding_tag rounding) {
  const int index = srcId * QLTypeSys::detail::kBuiltinCount + dstId;
  int roundingSelector = builtinConvUsesRounding[index] ? rounding : 0;
  if (roundingSelector == FXP_ROUND_AS_ZERO) roundingSelector = FXP_ROUND_ZERO;
  const int overflowSelector = builtinConvUsesOverflow[index] ? overflow : 0;
  return builtinConvRows[index][overflowSelector + 2 * roundingSelector];
}

bool qlConvertBuiltInDTypeVectWithCheck(void const* src, unsigned int srcLength, int srcId, bool srcComplex, void* dst,
                                        unsigned int dstLength, int dstId, bool dstComplex,
                                        fxpModeOverflow_tag overflow, fxpModeRounding_tag rounding,
                                        bool checkLossless) {
  const builtinConvFcn kernel = utGetQlBuiltinDtypeConvFcn(srcId, dstId, overflow, rounding);
  return kernel(src, dst, srcLength, dstLength, srcComplex, dstComplex, checkLossless, srcId, dstId, overflow,
                rounding);
}
