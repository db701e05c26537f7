// Hash mixing for the table's open addressing, which needs well spread low bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace QL {
namespace internal {

/// Folds v into the running hash h (a multiply-xorshift finaliser, so nearby operand indexes spread).
inline std::size_t hashMix(std::size_t h, std::uint64_t v) {
  std::uint64_t x = (static_cast<std::uint64_t>(h) ^ v) + 0x9e3779b97f4a7c15ull + (static_cast<std::uint64_t>(h) << 6);
  x ^= x >> 30;
  x *= 0xbf58476d1ce4e5b9ull;
  x ^= x >> 27;
  x *= 0x94d049bb133111ebull;
  x ^= x >> 31;
  return static_cast<std::size_t>(x);
}

}  // namespace internal
}  // namespace QL
