// Overflow detection: one scan of the source against thresholds chosen by the rounding mode, so
// that a plain comparison of the unrounded value says whether the rounded value leaves the range.
#include "ql_types/convert/internal/OverflowDetection.hpp"

#include <cmath>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/convert/internal/BuiltinTypes.hpp"
#include "ql_types/datatypes/DataType.hpp"

namespace QLTypeSys::detail {
namespace {

/// The high test is x >= M + highOffset (x > M + highOffset when not inclusive); the low test is
/// x <= m + lowOffset (x < m + lowOffset). All thresholds are exact in double.
struct Threshold {
  double highOffset;
  bool highInclusive;
  double lowOffset;
  bool lowInclusive;
};

// clang-format off
constexpr Threshold kThresholds[] = {
  //                         high             low
  /* 0 ZERO      */ { 1.0, true,   -1.0, true  },  // x >= M + 1     x <= m - 1
  /* 1 NEAREST   */ { 0.5, true,   -0.5, false },  // x >= M + 0.5   x <  m - 0.5
  /* 2 CEIL      */ { 0.0, false,  -1.0, true  },  // x >  M         x <= m - 1
  /* 3 FLOOR     */ { 1.0, true,    0.0, false },  // x >= M + 1     x <  m
  /* 4 AS_ZERO   */ { 1.0, true,   -1.0, true  },  // as ZERO
  /* 5 HALF_AWAY */ { 0.5, true,   -0.5, true  },  // x >= M + 0.5   x <= m - 0.5
  /* 6 HALF_EVEN */ { 0.5, true,   -0.5, false },  // x >= M + 0.5   x <  m - 0.5 (m is even)
};
// clang-format on

/// Float source to integer: NaN fails both tests, an infinity passes one of them.
template <class F, bool HighInclusive, bool LowInclusive>
bool anyRoundsOutside(const F* values, std::size_t n, double high, double low) {
  for (std::size_t i = 0; i < n; ++i) {
    const double x = values[i];  // a single widens exactly
    const bool above = HighInclusive ? x >= high : x > high;
    const bool below = LowInclusive ? x <= low : x < low;
    if (above || below) return true;
  }
  return false;
}

template <class F>
bool scanFloatSource(const F* values, std::size_t n, int dstId, const Threshold& t) {
  const BuiltinRange& range = kBuiltinRanges[dstId];
  const double high = range.highest + t.highOffset;
  const double low = range.lowest + t.lowOffset;
  if (t.highInclusive) {
    return t.lowInclusive ? anyRoundsOutside<F, true, true>(values, n, high, low)
                          : anyRoundsOutside<F, true, false>(values, n, high, low);
  }
  return t.lowInclusive ? anyRoundsOutside<F, false, true>(values, n, high, low)
                        : anyRoundsOutside<F, false, false>(values, n, high, low);
}

/// double to single: a value overflows when its conversion becomes infinite. A source that was
/// already infinite does not count; NaN stays NaN. The conversion past single's range is the IEEE one,
/// which GCC and Clang define, so it is asked directly.
bool anyBecomesInfinite(const double* values, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (std::isinf(values[i])) continue;
    if (std::isinf(static_cast<float>(values[i]))) return true;
  }
  return false;
}

/// Integer to integer, compared exactly in double.
template <class I>
bool anyOutside(const I* values, std::size_t n, const BuiltinRange& range) {
  for (std::size_t i = 0; i < n; ++i) {
    const double x = values[i];
    if (x > range.highest || x < range.lowest) return true;
  }
  return false;
}

}  // namespace

bool checkForOverflowDuringDataTypeConversion(void const* src, int count, int srcId, bool isComplex, int dstId,
                                              fxpModeRounding_tag rounding) {
  if (srcId < 0 || srcId >= kBuiltinCount || dstId < 0 || dstId >= kBuiltinCount) return false;
  // The pairs scanned are those whose kernels select by overflow mode, and double to single.
  const bool doubleToSingle = srcId == kDouble && dstId == kSingle;
  if (!doubleToSingle && !builtinConvUsesOverflow[srcId * kBuiltinCount + dstId]) return false;

  const long long values = static_cast<long long>(count) * (isComplex ? 2 : 1);
  if (values < 1) return false;
  const auto n = static_cast<std::size_t>(values);

  if (doubleToSingle) return anyBecomesInfinite(static_cast<const double*>(src), n);
  if (srcId == kDouble || srcId == kSingle) {
    if (rounding < 0 || rounding >= static_cast<int>(std::size(kThresholds))) return false;
    const Threshold& t = kThresholds[rounding];
    return srcId == kDouble ? scanFloatSource(static_cast<const double*>(src), n, dstId, t)
                            : scanFloatSource(static_cast<const float*>(src), n, dstId, t);
  }
  return visitBuiltin(srcId, false, [&](auto id) {
    using Src = Builtin<decltype(id)::value>;
    if constexpr (Src::isFloat) {
      return false;  // handled above
    } else {
      return anyOutside(static_cast<const typename Src::element*>(src), n, kBuiltinRanges[dstId]);
    }
  });
}

}  // namespace QLTypeSys::detail

namespace QLTypeSys {

bool DataType::CheckForOverflowDuringDataTypeConversion(void const* src, int count, int srcId, bool isComplex,
                                                        int dstId, fxpModeRounding_tag rounding) {
  return detail::checkForOverflowDuringDataTypeConversion(src, count, srcId, isComplex, dstId, rounding);
}

}  // namespace QLTypeSys
