// An independent scalar model of built-in conversion, for differential tests, and the source values
// to run it on. Values are held as long double, whose 64-bit mantissa holds every double, single
// and 32-bit integer exactly; rounding, wrap-around and rounding to single are exact arithmetic
// written here, sharing no code with the library's kernels.
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace convref {

enum Id { kDouble, kSingle, kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kBoolean };
enum Overflow { kWrap, kSaturate };
enum Rounding { kZero, kNearest, kCeil, kFloor, kAsZero, kHalfAway, kHalfEven };

template <class T>
long double get(const unsigned char* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class T>
void put(unsigned char* p, long double x) {
  const T v = static_cast<T>(x);  // callers pass representable values
  std::memcpy(p, &v, sizeof v);
}

struct TypeInfo {
  const char* name;
  int bytes;
  bool isFloat;
  bool isSigned;
  long double (*get)(const unsigned char*);
  void (*put)(unsigned char*, long double);
};

// clang-format off
inline constexpr TypeInfo kTypes[9] = {
  {"double", 8, true,  true,  get<double>,        put<double>},
  {"single", 4, true,  true,  get<float>,         put<float>},
  {"int8",   1, false, true,  get<std::int8_t>,   put<std::int8_t>},
  {"uint8",  1, false, false, get<std::uint8_t>,  put<std::uint8_t>},
  {"int16",  2, false, true,  get<std::int16_t>,  put<std::int16_t>},
  {"uint16", 2, false, false, get<std::uint16_t>, put<std::uint16_t>},
  {"int32",  4, false, true,  get<std::int32_t>,  put<std::int32_t>},
  {"uint32", 4, false, false, get<std::uint32_t>, put<std::uint32_t>},
  {"boolean",1, false, false, get<std::uint8_t>,  put<std::uint8_t>},
};
// clang-format on

// Which kernels a pair has follows from what the two types can hold, so the tests derive it from that
// instead of restating the library's matrix: a wrong cell there disagrees with these rules.
inline int bitsOf(int id) { return 8 * kTypes[id].bytes; }
inline bool isIntegerType(int id) { return !kTypes[id].isFloat && id != kBoolean; }
/// Significant binary digits: the mantissa of a float type, the magnitude bits of an integer type.
inline int digitsOf(int id) {
  if (id == kDouble) return DBL_MANT_DIG;
  if (id == kSingle) return FLT_MANT_DIG;
  return bitsOf(id) - (kTypes[id].isSigned ? 1 : 0);
}
/// Every value of integer type src lies in the range of integer type dst.
inline bool integerRangeContained(int src, int dst) {
  if (kTypes[src].isSigned && !kTypes[dst].isSigned) return false;
  return digitsOf(src) <= digitsOf(dst);
}
/// Every value of src converts to dst and back unchanged.
inline bool alwaysExact(int src, int dst) {
  if (src == dst) return true;
  if (dst == kBoolean) return false;  // only 0 and 1 survive
  if (kTypes[dst].isFloat) return digitsOf(src) <= digitsOf(dst);
  return isIntegerType(src) && integerRangeContained(src, dst);
}
/// Rounding selects a kernel from a float source to an integer destination.
inline bool usesRounding(int src, int dst) { return kTypes[src].isFloat && isIntegerType(dst); }
/// Overflow selects a kernel where an integer destination cannot hold every source value. A boolean
/// source is copied byte for byte, with no overflow variant.
inline bool usesOverflow(int src, int dst) {
  return src != kBoolean && isIntegerType(dst) && (kTypes[src].isFloat || !integerRangeContained(src, dst));
}
/// A back-comparison pass exists where some value can change; boolean sources never check.
inline bool hasPass(int src, int dst) { return src != kBoolean && !alwaysExact(src, dst); }
inline int rowLength(int src, int dst) { return usesRounding(src, dst) ? 8 : usesOverflow(src, dst) ? 2 : 1; }

inline long double load(int id, const void* base, std::size_t i) {
  return kTypes[id].get(static_cast<const unsigned char*>(base) + i * kTypes[id].bytes);
}
inline void store(int id, void* base, std::size_t i, long double v) {
  kTypes[id].put(static_cast<unsigned char*>(base) + i * kTypes[id].bytes, v);
}

inline long double lowestOf(int id) { return kTypes[id].isSigned ? -std::ldexp(1.0L, bitsOf(id) - 1) : 0.0L; }
inline long double highestOf(int id) { return std::ldexp(1.0L, bitsOf(id) - kTypes[id].isSigned) - 1; }

/// x rounded to a whole number by any of the seven modes, from its floor and its exact fraction.
inline long double roundExact(long double x, int mode) {
  if (!std::isfinite(x)) return x;
  const long double below = std::floor(x), above = below + 1;
  const long double fraction = x - below;  // exact: x has at most 64 significant bits
  switch (mode) {
    case kNearest:
      return fraction >= 0.5L ? above : below;
    case kCeil:
      return fraction > 0 ? above : below;
    case kFloor:
      return below;
    case kHalfAway:
      return fraction > 0.5L || (fraction == 0.5L && x > 0) ? above : below;
    case kHalfEven:
      return fraction > 0.5L || (fraction == 0.5L && std::fmod(below, 2.0L) != 0) ? above : below;
    default:
      return x < 0 && fraction > 0 ? above : below;  // zero, as zero
  }
}

/// The whole number r modulo 2^bits as a two's complement value of that width, at any magnitude:
/// |r| is split into a 64-bit integer mantissa times a power of two and reduced in integers.
inline long double wrapExact(long double r, int bits, bool isSigned) {
  const std::uint64_t mask = (std::uint64_t{1} << bits) - 1;
  std::uint64_t residue = 0;
  if (r != 0) {
    int exponent;
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::fabs(r), &exponent), 64));
    const int shift = exponent - 64;  // >= -63 because |r| >= 1
    residue = shift >= bits ? 0 : shift >= 0 ? (mantissa << shift) & mask : (mantissa >> -shift) & mask;
    if (r < 0) residue = (mask + 1 - residue) & mask;
  }
  const long double value = static_cast<long double>(residue);
  return isSigned && residue > (mask >> 1) ? value - std::ldexp(1.0L, bits) : value;
}

/// v rounded to nearest even as a single: 24 significant bits, steps no finer than 2^-149, and
/// infinity from 2^128 on.
inline long double toSingle(long double v) {
  if (!std::isfinite(v) || v == 0) return v;
  int exponent;
  std::frexp(std::fabs(v), &exponent);
  const int step = std::max(exponent - 24, -149);
  long double result = std::ldexp(roundExact(std::ldexp(std::fabs(v), -step), kHalfEven), step);
  if (result >= 0x1p128L) result = HUGE_VALL;
  return std::copysign(result, v);  // a tiny negative value becomes -0
}

/// One value of type src converted to dst by the element rule of the pair's kernel. A boolean
/// destination means "not equal to zero"; the boolean row's copy to boolean is modelled as uint8.
inline long double convertValue(long double v, int src, int dst, int overflow, int rounding) {
  if (dst == kBoolean) return v != 0 ? 1 : 0;
  if (dst == kDouble) return v;  // every source value is a double already
  if (dst == kSingle) return toSingle(v);
  if (kTypes[src].isFloat) {
    if (std::isnan(v)) return 0;
    if (overflow == kWrap && std::isinf(v)) return 0;
    v = roundExact(v, rounding);
  }
  if (overflow == kSaturate) return std::clamp(v, lowestOf(dst), highestOf(dst));
  return wrapExact(v, bitsOf(dst), kTypes[dst].isSigned);
}

/// Whether v, rounded by mode 0..6, leaves the range of the integer type dst.
inline bool roundsOutside(long double v, int dst, int rounding) {
  if (std::isnan(v)) return false;
  const long double r = roundExact(v, rounding);
  return r < lowestOf(dst) || r > highestOf(dst);
}

// ---- source values ------------------------------------------------------------------------------

/// Edges of float conversion, meant as doubles: NaN, infinities, signed zeros, ties, 2^23, 2^52,
/// huge values, the single range, and each integer type's limits and word with their neighbours.
inline std::vector<long double> floatEdges() {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  // clang-format off
  std::vector<long double> v = {
      nan, -nan, inf, -inf, 0.0, -0.0, 0.5, -0.5, 1.5, -1.5, 2.5, -2.5, 3.5, -3.5, -0.3, 127.4, 200.7, -129.5,
      0.49999999999999994, -0.49999999999999994, 0.5000000000000001, std::nextafter(0.5f, 0.0f), 0.5 + 0x1p-24,
      1 - 0x1p-24, 127.0000001, 1e300, -1e300, DBL_MAX, -DBL_MAX, DBL_TRUE_MIN, -DBL_TRUE_MIN, FLT_MAX, -FLT_MAX,
      0x1p128 - 0x1p103, std::nextafter(0x1p128 - 0x1p103, 0.0), 0x1p128, 1e38, 1e39, -1e39,
      0x1p23, 0x1p23 + 0.5, 0x1p23 - 0.5, -0x1p23 - 0.5, 0x1p23 + 1, 0x1p24 + 2, 0x1p52, 0x1p52 - 0.5, -0x1p52 + 0.5,
      0x1p52 + 1, 0x1p53 + 2, 0x1p63, 0x1p64 + 0x1p12, -0x1p70 - 0x1p20, 3 * 0x1p32 + 7.5, -5 * 0x1p32 - 0.5,
      2147483520.0, 2147483584.0, 4294967040.0, 4294967168.0};
  // clang-format on
  for (int id = kInt8; id <= kUint32; ++id) {
    const long double word = std::ldexp(1.0L, bitsOf(id));
    for (long double edge : {lowestOf(id), highestOf(id), word, -word}) {
      for (long double d : {-1.0L, -0.75L, -0.5L, -0.25L, 0.0L, 0.25L, 0.5L, 0.75L, 1.0L}) v.push_back(edge + d);
      for (double tie : {double(edge - 0.5L), double(edge + 0.5L)})  // just either side of the ties
        for (double toward : {-inf, inf}) v.push_back(std::nextafter(tie, toward));
    }
  }
  return v;
}

/// Edges and random values (fixed seed) of a source type, each exactly representable in it.
inline std::vector<long double> sourcePool(int id, int randomCount = 48) {
  std::mt19937_64 rng(20240611u + id);
  std::vector<long double> pool;
  if (kTypes[id].isFloat) {
    std::vector<long double> all = floatEdges();
    std::uniform_real_distribution<double> spread(-300.0, 300.0);
    std::uniform_int_distribution<int> scale(-40, 80);
    for (int i = 0; i < randomCount; ++i) {
      const std::uint64_t bits = rng();
      double anyBits;
      std::memcpy(&anyBits, &bits, sizeof anyBits);
      all.push_back(i % 3 == 0 ? spread(rng) : i % 3 == 1 ? std::ldexp(spread(rng), scale(rng)) : anyBits);
    }
    for (long double c : all) pool.push_back(id == kSingle ? toSingle(static_cast<double>(c)) : static_cast<double>(c));
  } else if (bitsOf(id) == 8) {  // small enough to try every value
    for (int b = 0; b < 256; ++b) pool.push_back(kTypes[id].isSigned ? static_cast<std::int8_t>(b) : b);
  } else {
    for (int other = kInt8; other <= kUint32; ++other)
      for (long double edge : {lowestOf(other), highestOf(other), 0.0L, 16777217.0L, -16777217.0L})
        for (long double x = edge - 2; x <= edge + 2; ++x)
          if (x >= lowestOf(id) && x <= highestOf(id)) pool.push_back(x);
    std::uniform_int_distribution<long long> any(static_cast<long long>(lowestOf(id)),
                                                 static_cast<long long>(highestOf(id)));
    for (int i = 0; i < randomCount; ++i) pool.push_back(any(rng));
  }
  return pool;
}

}  // namespace convref
