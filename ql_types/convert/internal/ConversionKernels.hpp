// The conversion kernel, written once as a template over the source and destination ids, the
// overflow and rounding modes and whether it has a back-comparison pass. BuiltinConversion.cpp
// instantiates it into the matrix, and the real-vector loops of each instruction set
// (ConversionLevels.hpp) reuse its element conversions; nothing else should include this header.
//
// The modes are template arguments, so an instantiated kernel has no branch on them, and the shape
// of the vectors (real or complex on either side) is chosen once, before the element loop. The
// back-comparison runs in the conversion loop itself, on the value just converted, so a vector is
// read once; it still never stops the conversion early.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/convert/internal/BuiltinTypes.hpp"
#include "ql_types/convert/internal/ConversionLevels.hpp"
#include "ql_types/fixpt/fxpModes.hpp"

namespace QLTypeSys::detail {

// double to single relies on IEEE behaviour: round to nearest even, infinity on overflow.
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<float>::is_iec559);

// ---------------------------------------------------------------------------------------------
// Element conversions

/// From this magnitude on every value of the type is whole: 2^52 for double, 2^23 for single.
template <class F>
inline constexpr F kAllWhole = std::is_same_v<F, double> ? F(0x1p52) : F(0x1p23);

/// trunc, floor and ceil with the C library's results for |x| <= kAllWhole, where the cast to a
/// 64-bit integer is exact. That is far cheaper than a libm call on processors without a rounding
/// instruction, and floor and ceil correct it in integers, without a branch that random signs would
/// mispredict. Zero loses its sign, which no integer destination can hold.
template <class F>
inline F truncInRange(F x) {
  return static_cast<F>(static_cast<long long>(x));
}

template <class F>
inline F floorInRange(F x) {
  const long long t = static_cast<long long>(x);
  return static_cast<F>(t - (static_cast<F>(t) > x));
}

template <class F>
inline F ceilInRange(F x) {
  const long long t = static_cast<long long>(x);
  return static_cast<F>(t + (static_cast<F>(t) < x));
}

/// Rounds a finite x to a whole number in its own precision (double or single).
template <fxpModeRounding_tag R, class F>
inline F roundFloat(F x) {
  static_assert(R >= FXP_ROUND_ZERO && R <= FXP_ROUND_FLOOR, "kernels implement four rounding modes");
  const F magnitude = std::fabs(x);
  // From L on every value is whole; for nearest, adding 0.5 there could round up to an even neighbour.
  if (magnitude >= kAllWhole<F>) return x;
  if constexpr (R == FXP_ROUND_NEAREST) {
    // Skips the addition, which would round 0.49999999999999994 + 0.5 up to 1.
    if (magnitude < F(0.5)) return F(0);
    return floorInRange(x + F(0.5));  // ties toward positive infinity: -2.5 gives -2
  } else if constexpr (R == FXP_ROUND_CEIL) {
    return ceilInRange(x);
  } else if constexpr (R == FXP_ROUND_FLOOR) {
    return floorInRange(x);
  } else {
    return truncInRange(x);
  }
}

/// The residue of a whole r with |r| >= 2^63 modulo 2^W, in m to M. fmod is exact at any magnitude,
/// and 2^W and every value of the word are exact in double, so q - 2^W cannot round. Such values are
/// rare, so this stays out of line.
template <int DstId>
[[gnu::noinline]] typename Builtin<DstId>::element wrapHuge(double r) {
  using Dst = Builtin<DstId>;
  constexpr double kHigh = Dst::highest;
  constexpr double kLow = Dst::lowest;
  constexpr double kWord = static_cast<double>(std::uint64_t{1} << Dst::bits);
  double q = std::fmod(r, kWord);  // takes the sign of r: q > M only for r > 0, q < m only for r < 0
  if (q > kHigh) q -= kWord;
  if (q < kLow) q += kWord;
  return static_cast<typename Dst::element>(q);
}

/// Float to integer under wrap: NaN and infinities give 0, other values are rounded and reduced
/// modulo 2^W. Instantiated once per source, rounding mode and destination.
template <class F, fxpModeRounding_tag R, int DstId>
typename Builtin<DstId>::element wrapFloatToInt(F x) {
  using D = typename Builtin<DstId>::element;
  if (!std::isfinite(x)) return 0;
  double r;
  if constexpr (R == FXP_ROUND_NEAREST) {
    r = roundFloat<R>(x);  // a single rounds in single precision, with single constants
  } else {
    r = roundFloat<R>(static_cast<double>(x));  // the other modes widen a single first
  }
  // Below 2^63 the whole r is exact in a 64-bit integer, and its low W bits are the residue modulo
  // 2^W: the same value fmod gives, without a division. The narrowing cast keeps the low bits.
  if (std::fabs(r) < 0x1p63) return static_cast<D>(static_cast<long long>(r));
  return wrapHuge<DstId>(r);
}

/// Float to integer under saturate. The limits are compared with the unrounded value, deliberately
/// (127.5 gives 127 under nearest), in the source's precision: a single sees int32's M as 2^31 and
/// uint32's as 2^32.
template <class F, fxpModeRounding_tag R, int DstId>
inline typename Builtin<DstId>::element saturateFloatToInt(F x) {
  using Dst = Builtin<DstId>;
  using D = typename Dst::element;
  constexpr F kHigh = static_cast<F>(Dst::highest);
  constexpr F kLow = static_cast<F>(Dst::lowest);
  if (std::isnan(x)) return 0;
  if (x >= kHigh) return Dst::highest;
  if (x <= kLow) return Dst::lowest;
  // m < x < M with whole limits, so the rounded value stays in range and the cast is defined.
  return static_cast<D>(roundFloat<R>(x));
}

/// Integer (or boolean byte) to integer: wrap keeps the low bits, saturate clamps.
template <int SrcId, int DstId, fxpModeOverflow_tag O>
inline typename Builtin<DstId>::element intToInt(typename Builtin<SrcId>::element s) {
  using Dst = Builtin<DstId>;
  using D = typename Dst::element;
  if constexpr (O == FXP_OVERFLOW_SATURATE) {
    // Only the limits the source's range reaches past are tested, each in the source's own type,
    // which holds it; so the clamp vectorises at the source's width.
    using Src = Builtin<SrcId>;
    using S = typename Src::element;
    if constexpr (static_cast<long long>(Src::lowest) < static_cast<long long>(Dst::lowest)) {
      if (s < static_cast<S>(Dst::lowest)) return Dst::lowest;
    }
    if constexpr (static_cast<long long>(Src::highest) > static_cast<long long>(Dst::highest)) {
      if (s > static_cast<S>(Dst::highest)) return Dst::highest;
    }
  }
  // Narrowing keeps the low bits (modular in C++20, and GCC's and Clang's documented behaviour
  // before); widening sign- or zero-extends by the source's signedness.
  return static_cast<D>(s);
}

/// One element, real or one part of a complex value, for every destination but boolean.
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R>
inline typename Builtin<DstId>::element convertElement(typename Builtin<SrcId>::element s) {
  using Src = Builtin<SrcId>;
  using Dst = Builtin<DstId>;
  using D = typename Dst::element;
  if constexpr (Dst::isFloat) {
    if constexpr (SrcId == kUint32 && DstId == kSingle) {
      return static_cast<float>(static_cast<double>(s));  // exact in double, one rounding to single
    } else {
      // IEEE conversion; exact except double to single and int32 to single. A double past single's range
      // becomes an infinity, the IEEE result that GCC and Clang define (only casts to integers are checked).
      return static_cast<D>(s);
    }
  } else if constexpr (Src::isFloat) {
    if constexpr (O == FXP_OVERFLOW_WRAP) {
      return wrapFloatToInt<typename Src::element, R, DstId>(s);
    } else {
      return saturateFloatToInt<typename Src::element, R, DstId>(s);
    }
  } else {
    return intToInt<SrcId, DstId, O>(s);
  }
}

// ---------------------------------------------------------------------------------------------
// Back-comparison

/// The type in which a source and a destination value compare as exact numbers: double when
/// either side is a double or a 32-bit integer, otherwise single, otherwise integers.
template <int SrcId, int DstId>
using CompareType =
    std::conditional_t<SrcId == kDouble || DstId == kDouble || SrcId == kInt32 || SrcId == kUint32 || DstId == kInt32 ||
                           DstId == kUint32,
                       double, std::conditional_t<SrcId == kSingle || DstId == kSingle, float, long long>>;

template <int SrcId, int DstId>
inline bool sameValue(typename Builtin<SrcId>::element s, typename Builtin<DstId>::element d) {
  using C = CompareType<SrcId, DstId>;
  return static_cast<C>(s) == static_cast<C>(d);  // a NaN source never compares equal
}

// ---------------------------------------------------------------------------------------------
// The frame

enum class Shape { RealToReal, ComplexToComplex, ComplexToReal, RealToComplex };

/// Runs body(i) for i in [0, n); four per trip when unrolled, then the tail one by one.
template <bool Unroll4, class Body>
inline void forEachElement(std::size_t n, Body&& body) {
  std::size_t i = 0;
  if constexpr (Unroll4) {
    for (; i + 4 <= n; i += 4) {
      body(i);
      body(i + 1);
      body(i + 2);
      body(i + 3);
    }
  }
  for (; i < n; ++i) body(i);
}

/// One element, real or one part of a complex value; to boolean, "not equal to zero".
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R>
inline typename Builtin<DstId>::element convertPart(typename Builtin<SrcId>::element s) {
  if constexpr (DstId == kBoolean) {
    return s != 0;  // NaN is not equal to zero and gives 1
  } else {
    return convertElement<SrcId, DstId, O, R>(s);
  }
}

/// Converts n contiguous real elements, with the back-comparison folded in when Check is set: the
/// result is false iff some element did not survive exactly, and every element is still written.
/// Always inlined, so that each instruction set's copy of the loop is vectorised for that set.
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R, bool Check>
[[gnu::always_inline]] inline bool convertReal(const typename Builtin<SrcId>::element* src,
                                               typename Builtin<DstId>::element* dst, std::size_t n) {
  // An int accumulator, not a bool, so that the loop vectorises as a plain reduction.
  unsigned changed = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const auto d = convertPart<SrcId, DstId, O, R>(src[i]);
    dst[i] = d;
    if constexpr (Check) changed |= !sameValue<SrcId, DstId>(src[i], d);
  }
  return changed == 0;
}

/// The scalar level's loop, an entry of kScalarRealLoops.
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R, bool Check>
struct ScalarRealLoop {
  static bool run(const void* src, void* dst, std::size_t n) {
    return convertReal<SrcId, DstId, O, R, Check>(static_cast<const typename Builtin<SrcId>::element*>(src),
                                                  static_cast<typename Builtin<DstId>::element*>(dst), n);
  }
};

/// Broadcast sources and complex shapes, which every level runs alike. Returns whether all elements
/// survived exactly when check is set, otherwise true.
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R, Shape Sh>
bool convertShape(const void* source, void* destination, std::size_t n, std::size_t step, bool check) {
  using D = typename Builtin<DstId>::element;
  const auto* src = static_cast<const typename Builtin<SrcId>::element*>(source);
  auto* dst = static_cast<D*>(destination);
  constexpr bool kToBoolean = DstId == kBoolean;
  bool same = true;
  forEachElement<Builtin<DstId>::isFloat>(n, [&](std::size_t i) {
    const auto* s = src + i * step;
    if constexpr (Sh == Shape::RealToReal) {
      const D d = convertPart<SrcId, DstId, O, R>(s[0]);
      dst[i] = d;
      if (check) same = same && sameValue<SrcId, DstId>(s[0], d);
    } else if constexpr (Sh == Shape::ComplexToReal) {
      // The dropped imaginary part must have been zero. For boolean the byte 0 or 1 meets the real
      // part, so a source of 2 deliberately fails although it converted correctly.
      const D d = kToBoolean ? D(s[0] != 0 || s[1] != 0) : convertPart<SrcId, DstId, O, R>(s[0]);
      dst[i] = d;
      if (check) same = same && sameValue<SrcId, DstId>(s[0], d) && s[1] == 0;
    } else if constexpr (Sh == Shape::ComplexToComplex) {
      const D re = convertElement<SrcId, DstId, O, R>(s[0]);
      const D im = convertElement<SrcId, DstId, O, R>(s[1]);
      dst[2 * i] = re;
      dst[2 * i + 1] = im;
      if (check) same = same && sameValue<SrcId, DstId>(s[0], re) && sameValue<SrcId, DstId>(s[1], im);
    } else {
      const D re = convertElement<SrcId, DstId, O, R>(s[0]);
      dst[2 * i] = re;
      dst[2 * i + 1] = D(0);
      if (check) same = same && sameValue<SrcId, DstId>(s[0], re);
    }
  });
  return same;
}

/// The kernel. Its signature is builtinConvFcn; the ids and modes passed at run time are unused.
template <int SrcId, int DstId, fxpModeOverflow_tag O, fxpModeRounding_tag R, bool Pass>
bool convKernel(void const* src, void* dst, unsigned int srcLength, unsigned int dstLength, bool srcComplex,
                bool dstComplex, bool checkLossless, int /*srcId*/, int /*dstId*/, fxpModeOverflow_tag /*overflow*/,
                fxpModeRounding_tag /*rounding*/) {
  const std::size_t n = dstLength;
  const bool check = Pass && checkLossless;
  if constexpr (DstId == kBoolean) {
    // Deliberate: kernels to boolean broadcast only a source of exactly one element, so an empty
    // source steps forward. The destination is never complex: one byte per element.
    if (srcComplex) {
      const std::size_t step = srcLength == 1 ? 0 : 2;
      return convertShape<SrcId, DstId, O, R, Shape::ComplexToReal>(src, dst, n, step, check);
    }
    if (srcLength != 1) return activeRealLoops().loops[SrcId * kBuiltinCount + DstId][O + 2 * R][check](src, dst, n);
    return convertShape<SrcId, DstId, O, R, Shape::RealToReal>(src, dst, n, 0, check);
  } else {
    const std::size_t step = srcLength <= 1 ? 0 : srcComplex ? 2 : 1;
    if (srcComplex) {
      return dstComplex ? convertShape<SrcId, DstId, O, R, Shape::ComplexToComplex>(src, dst, n, step, check)
                        : convertShape<SrcId, DstId, O, R, Shape::ComplexToReal>(src, dst, n, step, check);
    }
    if (dstComplex) return convertShape<SrcId, DstId, O, R, Shape::RealToComplex>(src, dst, n, step, check);
    if (step != 0) return activeRealLoops().loops[SrcId * kBuiltinCount + DstId][O + 2 * R][check](src, dst, n);
    return convertShape<SrcId, DstId, O, R, Shape::RealToReal>(src, dst, n, 0, check);
  }
}

}  // namespace QLTypeSys::detail
