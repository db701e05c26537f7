// An independent scalar model of built-in conversion, for differential tests. Values are held as
// long double, whose 64-bit mantissa holds every double, single and 32-bit integer exactly.
// Rounding, wrap-around and rounding to single are done by exact arithmetic written here, with no
// code shared with the library's kernels. It models one element; the tests model the vector frame.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace convref {

enum Id { kDouble, kSingle, kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kBoolean };
enum Overflow { kWrap, kSaturate };
enum Rounding { kZero, kNearest, kCeil, kFloor, kAsZero, kHalfAway, kHalfEven };

struct TypeInfo {
  const char* name;
  int bytes;
  bool isFloat;
  bool isSigned;
};

inline constexpr TypeInfo kTypes[9] = {
    {"double", 8, true, true},  {"single", 4, true, true},   {"int8", 1, false, true},
    {"uint8", 1, false, false}, {"int16", 2, false, true},   {"uint16", 2, false, false},
    {"int32", 4, false, true},  {"uint32", 4, false, false}, {"boolean", 1, false, false},
};

inline int bitsOf(int id) { return 8 * kTypes[id].bytes; }

inline long double lowestOf(int id) { return kTypes[id].isSigned ? -std::ldexp(1.0L, bitsOf(id) - 1) : 0.0L; }

inline long double highestOf(int id) {
  return kTypes[id].isSigned ? std::ldexp(1.0L, bitsOf(id) - 1) - 1 : std::ldexp(1.0L, bitsOf(id)) - 1;
}

/// Element index of a buffer, read as an exact number.
inline long double load(int id, const void* base, std::size_t index) {
  const auto* p = static_cast<const unsigned char*>(base) + index * kTypes[id].bytes;
  switch (id) {
    case kDouble: {
      double v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    case kSingle: {
      float v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    case kInt8:
      return static_cast<std::int8_t>(p[0]);
    case kInt16: {
      std::int16_t v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    case kUint16: {
      std::uint16_t v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    case kInt32: {
      std::int32_t v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    case kUint32: {
      std::uint32_t v;
      std::memcpy(&v, p, sizeof v);
      return v;
    }
    default:  // uint8, boolean
      return p[0];
  }
}

/// Stores v, which the caller made representable in the type.
inline void store(int id, void* base, std::size_t index, long double v) {
  auto* p = static_cast<unsigned char*>(base) + index * kTypes[id].bytes;
  auto put = [p](auto value) { std::memcpy(p, &value, sizeof value); };
  switch (id) {
    case kDouble:
      put(static_cast<double>(v));
      break;
    case kSingle:
      put(static_cast<float>(v));
      break;
    case kInt8:
      put(static_cast<std::int8_t>(v));
      break;
    case kInt16:
      put(static_cast<std::int16_t>(v));
      break;
    case kUint16:
      put(static_cast<std::uint16_t>(v));
      break;
    case kInt32:
      put(static_cast<std::int32_t>(v));
      break;
    case kUint32:
      put(static_cast<std::uint32_t>(v));
      break;
    default:
      put(static_cast<std::uint8_t>(v));
      break;
  }
}

/// x rounded to a whole number by any of the seven modes, from its floor and its exact fraction.
inline long double roundExact(long double x, int mode) {
  if (!std::isfinite(x)) return x;
  const long double below = std::floor(x);
  const long double fraction = x - below;  // exact: x has at most 64 significant bits
  const long double above = below + 1;
  switch (mode) {
    case kNearest:
      return fraction >= 0.5L ? above : below;
    case kCeil:
      return fraction > 0 ? above : below;
    case kFloor:
      return below;
    case kHalfAway:
      if (fraction == 0.5L) return x > 0 ? above : below;
      return fraction > 0.5L ? above : below;
    case kHalfEven:
      if (fraction == 0.5L) return std::fmod(below, 2.0L) == 0 ? below : above;
      return fraction > 0.5L ? above : below;
    default:  // zero, as zero
      return x < 0 && fraction > 0 ? above : below;
  }
}

/// The whole number r modulo 2^bits as a two's complement value of that width, for any magnitude:
/// r is split into a 64-bit integer mantissa and a power of two, and the modulus taken in integers.
inline long double wrapExact(long double r, int bits, bool isSigned) {
  const std::uint64_t mask = (std::uint64_t{1} << bits) - 1;
  std::uint64_t residue = 0;
  if (r != 0) {
    int exponent;
    const long double fraction = std::frexp(std::fabs(r), &exponent);  // |r| = fraction * 2^exponent
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 64));
    const int shift = exponent - 64;  // |r| = mantissa * 2^shift, and shift >= -63 since |r| >= 1
    if (shift >= bits) {
      residue = 0;
    } else if (shift >= 0) {
      residue = (mantissa << shift) & mask;
    } else {
      residue = (mantissa >> -shift) & mask;
    }
    if (r < 0) residue = (mask + 1 - residue) & mask;
  }
  long double value = static_cast<long double>(residue);
  if (isSigned && residue > (mask >> 1)) value -= std::ldexp(1.0L, bits);
  return value;
}

/// v rounded to nearest even in a binary format of the given precision whose smallest step is
/// 2^minStep and whose magnitudes from 2^maxExponent on overflow to infinity.
inline long double roundToFormat(long double v, int precision, int minStep, int maxExponent) {
  if (!std::isfinite(v) || v == 0) return v;
  const long double magnitude = std::fabs(v);
  int exponent;
  std::frexp(magnitude, &exponent);  // 2^(exponent-1) <= |v| < 2^exponent
  int step = exponent - precision;
  if (step < minStep) step = minStep;
  const long double units = roundExact(std::ldexp(magnitude, -step), kHalfEven);
  long double result = std::ldexp(units, step);
  if (result >= std::ldexp(1.0L, maxExponent)) result = HUGE_VALL;
  return std::copysign(result, v);  // a tiny negative value becomes -0
}

inline long double toSingle(long double v) { return roundToFormat(v, 24, -149, 128); }

inline long double clamp(long double v, long double lo, long double hi) { return v < lo ? lo : v > hi ? hi : v; }

/// Converts one value of type src to type dst, as the element conversion of the kernel for the
/// pair. The boolean destination here means "not equal to zero"; a caller that models the copy
/// of boolean to boolean passes dst = uint8.
inline long double convertValue(long double v, int src, int dst, int overflow, int rounding) {
  if (dst == kBoolean) return v != 0 ? 1 : 0;
  if (dst == kDouble) return v;  // every source value is a double already
  if (dst == kSingle) return toSingle(v);
  const int bits = bitsOf(dst);
  const bool isSigned = kTypes[dst].isSigned;
  if (kTypes[src].isFloat) {
    if (std::isnan(v)) return 0;
    const long double r = roundExact(v, rounding == kAsZero ? kZero : rounding);
    if (overflow == kSaturate) return clamp(r, lowestOf(dst), highestOf(dst));
    return std::isinf(v) ? 0 : wrapExact(r, bits, isSigned);
  }
  if (overflow == kSaturate) return clamp(v, lowestOf(dst), highestOf(dst));
  return wrapExact(v, bits, isSigned);
}

/// Whether v, converted with rounding mode "rounding" (0..6), leaves the range of dst. NaN stays
/// in; an infinity leaves any integer range.
inline bool roundsOutside(long double v, int dst, int rounding) {
  if (std::isnan(v)) return false;
  if (std::isinf(v)) return true;
  const long double r = roundExact(v, rounding == kAsZero ? kZero : rounding);
  return r < lowestOf(dst) || r > highestOf(dst);
}

}  // namespace convref

namespace convref {

/// The matrix of kernels as the tests know it: R has 8 kernels, O has 2, S has 1, and a trailing
/// c marks a back-comparison pass. Rows are sources, columns destinations, both in id order.
// clang-format off
inline constexpr const char* kMatrix[9][9] = {
  //            double single int8  uint8 int16 uint16 int32 uint32 boolean
  /* double  */ {"S",  "Sc",  "Rc", "Rc", "Rc", "Rc",  "Rc", "Rc",  "Sc"},
  /* single  */ {"S",  "S",   "Rc", "Rc", "Rc", "Rc",  "Rc", "Rc",  "Sc"},
  /* int8    */ {"S",  "S",   "S",  "Oc", "S",  "Oc",  "S",  "Oc",  "Sc"},
  /* uint8   */ {"S",  "S",   "Oc", "S",  "S",  "S",   "S",  "S",   "Sc"},
  /* int16   */ {"S",  "S",   "Oc", "Oc", "S",  "Oc",  "S",  "Oc",  "Sc"},
  /* uint16  */ {"S",  "S",   "Oc", "Oc", "Oc", "S",   "S",  "S",   "Sc"},
  /* int32   */ {"S",  "Sc",  "Oc", "Oc", "Oc", "Oc",  "S",  "Oc",  "Sc"},
  /* uint32  */ {"S",  "Sc",  "Oc", "Oc", "Oc", "Oc",  "Oc", "S",   "Sc"},
  /* boolean */ {"S",  "S",   "S",  "S",  "S",  "S",   "S",  "S",   "S" },
};
// clang-format on

inline bool usesRounding(int src, int dst) { return kMatrix[src][dst][0] == 'R'; }
inline bool usesOverflow(int src, int dst) { return kMatrix[src][dst][0] != 'S'; }
inline bool hasPass(int src, int dst) { return kMatrix[src][dst][1] == 'c'; }
inline int rowLength(int src, int dst) { return usesRounding(src, dst) ? 8 : usesOverflow(src, dst) ? 2 : 1; }

}  // namespace convref
