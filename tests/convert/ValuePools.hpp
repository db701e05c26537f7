// Source values for the differential tests: the edges where conversions go wrong (NaN, infinities,
// signed zeros, ties, the limits of every integer type and their neighbours, 2^23, 2^52, huge
// values) and random values from a fixed seed. Every value is representable in its source type.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "ConversionReference.hpp"

namespace convref {

inline std::vector<long double> floatCandidates() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<long double> v = {nan,
                                -nan,
                                inf,
                                -inf,
                                0.0,
                                -0.0,
                                0.5,
                                -0.5,
                                1.5,
                                -1.5,
                                2.5,
                                -2.5,
                                3.5,
                                -3.5,
                                0.49999999999999994,
                                -0.49999999999999994,
                                0.5000000000000001,
                                std::nextafter(0.5f, 0.0f),  // the largest single below one half
                                0.5 + 0x1p-24,
                                1.0 - 0x1p-24,
                                127.4,
                                127.5,
                                200.7,
                                -129.5,
                                -0.3,
                                -1.5,
                                127.0000001,
                                1e300,
                                -1e300,
                                DBL_MAX,
                                -DBL_MAX,
                                DBL_TRUE_MIN,
                                -DBL_TRUE_MIN,
                                FLT_MAX,
                                -FLT_MAX,
                                0x1p128 - 0x1p103,  // halfway from the largest single to 2^128
                                std::nextafter(0x1p128 - 0x1p103, 0.0),
                                0x1p128,
                                1e38,
                                1e39,
                                -1e39,
                                0x1p23,
                                0x1p23 + 0.5,
                                0x1p23 - 0.5,
                                -0x1p23 - 0.5,
                                0x1p24 + 2,
                                0x1p52,
                                0x1p52 - 0.5,
                                -0x1p52 + 0.5,
                                0x1p52 + 1,
                                0x1p53 + 2,
                                0x1p63,
                                0x1p64 + 0x1p12,
                                -0x1p70 - 0x1p20,
                                3 * 0x1p32 + 7.5,
                                -(5 * 0x1p32) - 0.5,
                                2147483520.0,
                                2147483584.0,
                                4294967040.0,
                                4294967168.0};
  // Around the limits of each integer type, and around the word 2^W.
  for (int id = kInt8; id <= kUint32; ++id) {
    for (long double edge :
         {lowestOf(id), highestOf(id), std::ldexp(1.0L, bitsOf(id)), -std::ldexp(1.0L, bitsOf(id))}) {
      for (long double delta : {-1.0L, -0.75L, -0.5L, -0.25L, 0.0L, 0.25L, 0.5L, 0.75L, 1.0L})
        v.push_back(edge + delta);
      const double e = static_cast<double>(edge);
      for (double tie : {e - 0.5, e + 0.5}) {
        v.push_back(std::nextafter(tie, -inf));
        v.push_back(std::nextafter(tie, inf));
      }
    }
  }
  return v;
}

inline std::vector<long double> randomFloats(std::mt19937_64& rng, int count) {
  std::vector<long double> v;
  std::uniform_real_distribution<double> small(-300.0, 300.0), medium(-7e4, 7e4), large(-5e9, 5e9);
  std::uniform_int_distribution<int> exponent(-40, 80);
  for (int i = 0; i < count; ++i) {
    switch (i % 5) {
      case 0:
        v.push_back(small(rng));
        break;
      case 1:
        v.push_back(medium(rng));
        break;
      case 2:
        v.push_back(large(rng));
        break;
      case 3:
        v.push_back(std::ldexp(small(rng), exponent(rng)));
        break;
      default: {
        const std::uint64_t bits = rng();
        double d;
        std::memcpy(&d, &bits, sizeof d);
        v.push_back(d);
      }
    }
  }
  return v;
}

/// The pool for a source type: edges and random values, each exactly representable in the type.
inline std::vector<long double> sourcePool(int id, int randomCount = 48) {
  std::mt19937_64 rng(20240611u + static_cast<unsigned>(id));
  std::vector<long double> pool;
  if (kTypes[id].isFloat) {
    std::vector<long double> all = floatCandidates();
    for (long double r : randomFloats(rng, randomCount)) all.push_back(r);
    for (long double c : all) {
      const long double asDouble = static_cast<double>(c);  // every candidate is meant as a double
      pool.push_back(id == kSingle ? toSingle(asDouble) : asDouble);
    }
    return pool;
  }
  if (bitsOf(id) == 8) {  // small enough to try every value
    for (int b = 0; b < 256; ++b) pool.push_back(kTypes[id].isSigned ? static_cast<std::int8_t>(b) : b);
    return pool;
  }
  const long double lo = lowestOf(id), hi = highestOf(id);
  for (int other = kInt8; other <= kUint32; ++other) {
    for (long double edge : {lowestOf(other), highestOf(other)}) {
      for (long double delta : {-2.0L, -1.0L, 0.0L, 1.0L, 2.0L}) {
        const long double x = edge + delta;
        if (x >= lo && x <= hi) pool.push_back(x);
      }
    }
  }
  for (long double x : {0.0L, 1.0L, 2.0L, -1.0L, 16777217.0L, -16777217.0L})
    if (x >= lo && x <= hi) pool.push_back(x);
  std::uniform_int_distribution<long long> any(static_cast<long long>(lo), static_cast<long long>(hi));
  for (int i = 0; i < randomCount; ++i) pool.push_back(static_cast<long double>(any(rng)));
  return pool;
}

}  // namespace convref
