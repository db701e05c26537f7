// The AVX2 level of the real-vector loops: blocks of eight doubles or sixteen singles in two
// registers, lane masks as vectors of all-ones or all-zeros. Run only on processors with AVX2.
#include "ql_types/convert/internal/ConversionLevels.hpp"

#if QL_TYPES_X86_SIMD

#include <immintrin.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "ql_types/convert/internal/ConversionKernels.hpp"

// Everything after this line, to pop_options, is compiled for AVX2; the headers above are not, so
// their inline functions keep one portable definition across the library.
#pragma GCC push_options
#pragma GCC target("avx2")

namespace QLTypeSys::detail {
namespace {

struct Doubles {
  struct Block {
    __m256d lo, hi;
  };
  using Mask = Block;
  static constexpr std::size_t kBlock = 8;

  static Block load(const double* p) { return {_mm256_loadu_pd(p), _mm256_loadu_pd(p + 4)}; }
  static Block load(const float* p) { return {_mm256_cvtps_pd(_mm_loadu_ps(p)), _mm256_cvtps_pd(_mm_loadu_ps(p + 4))}; }
  static Block splat(double v) { return {_mm256_set1_pd(v), _mm256_set1_pd(v)}; }
  static Block sub(Block a, Block b) { return {_mm256_sub_pd(a.lo, b.lo), _mm256_sub_pd(a.hi, b.hi)}; }
  template <int Mode>
  static Block round(Block x) {
    return {_mm256_round_pd(x.lo, Mode | _MM_FROUND_NO_EXC), _mm256_round_pd(x.hi, Mode | _MM_FROUND_NO_EXC)};
  }
  static Block trunc(Block x) { return round<_MM_FROUND_TO_ZERO>(x); }
  static Block floor(Block x) { return round<_MM_FROUND_TO_NEG_INF>(x); }
  static Block ceil(Block x) { return round<_MM_FROUND_TO_POS_INF>(x); }
  static Mask atLeast(Block a, Block b) {
    return {_mm256_cmp_pd(a.lo, b.lo, _CMP_GE_OQ), _mm256_cmp_pd(a.hi, b.hi, _CMP_GE_OQ)};
  }
  static Block addOneWhere(Block a, Mask m) {
    const __m256d one = _mm256_set1_pd(1.0);
    return {_mm256_add_pd(a.lo, _mm256_and_pd(m.lo, one)), _mm256_add_pd(a.hi, _mm256_and_pd(m.hi, one))};
  }

  // vmaxpd returns its second operand when either is NaN.
  static __m256d clamp(__m256d v, double lo, double hi) {
    return _mm256_min_pd(_mm256_max_pd(v, _mm256_set1_pd(lo)), _mm256_set1_pd(hi));
  }
  static __m256d withoutNan(__m256d v) { return _mm256_and_pd(v, _mm256_cmp_pd(v, v, _CMP_ORD_Q)); }
  static Block clampToRange(Block r, double lo, double hi) { return {clamp(r.lo, lo, hi), clamp(r.hi, lo, hi)}; }
  static Block saturateToRange(Block r, double lo, double hi) {
    return {clamp(withoutNan(r.lo), lo, hi), clamp(withoutNan(r.hi), lo, hi)};
  }

  // r - floor(r / word) x word is exact for every finite whole r: the scaling by a power of two, the
  // floor and the product are exact, and the difference, a whole number below word <= 2^32, is
  // representable. It lies in [0, word); a signed destination then moves the upper half down.
  static __m256d reduce(__m256d v, double word, double hi) {
    const __m256d w = _mm256_set1_pd(word);
    const __m256d quotient = _mm256_mul_pd(v, _mm256_set1_pd(1.0 / word));
    const __m256d multiple = _mm256_mul_pd(_mm256_round_pd(quotient, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC), w);
    const __m256d q = _mm256_sub_pd(v, multiple);
    return withoutNan(_mm256_sub_pd(q, _mm256_and_pd(_mm256_cmp_pd(q, _mm256_set1_pd(hi), _CMP_GT_OQ), w)));
  }
  static Block reduceModulo(Block r, double word, double hi) {
    return {reduce(r.lo, word, hi), reduce(r.hi, word, hi)};
  }

  // Whole values in [0, 2^32) as the bit patterns of uint32: shifted down by 2^31 (exactly) into
  // vcvttpd2dq's range, and back up by flipping the top bit.
  static __m128i toUint32Bits(__m256d v) {
    const __m128i shifted = _mm256_cvttpd_epi32(_mm256_sub_pd(v, _mm256_set1_pd(0x1p31)));
    return _mm_xor_si128(shifted, _mm_set1_epi32(INT32_MIN));
  }

  template <class D>
  static void storeWhole(D* p, Block c) {
    if constexpr (std::is_same_v<D, std::uint32_t>) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), toUint32Bits(c.lo));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), toUint32Bits(c.hi));
    } else {
      storeInt32s(p, _mm256_cvttpd_epi32(c.lo), _mm256_cvttpd_epi32(c.hi));
    }
  }

  // Eight values in D's range, as two vectors of four int32, stored as D. Packing saturates, which
  // changes nothing for values already in range.
  template <class D>
  static void storeInt32s(D* p, __m128i a, __m128i b) {
    if constexpr (sizeof(D) == 4) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), a);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), b);
    } else if constexpr (std::is_same_v<D, std::int16_t>) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(a, b));
    } else if constexpr (std::is_same_v<D, std::uint16_t>) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi32(a, b));
    } else if constexpr (std::is_same_v<D, std::int8_t>) {
      const __m128i words = _mm_packs_epi32(a, b);
      _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi16(words, words));
    } else {
      const __m128i words = _mm_packs_epi32(a, b);
      _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
    }
  }

  // vcvttpd2dq is exact in [-2^31, 2^31) and gives 0x80000000 for everything else, NaN and infinities
  // included; a lane that really is -2^31 merely takes the exact path as well. A uint32 destination
  // shifts the window to [0, 2^32). Narrower destinations keep the low bits of the int32, masked so
  // that packing cannot saturate.
  template <class D>
  static bool storeLowBits(D* p, Block r) {
    __m128i a, b;
    if constexpr (std::is_same_v<D, std::uint32_t>) {
      const __m256d shift = _mm256_set1_pd(0x1p31);
      a = _mm256_cvttpd_epi32(_mm256_sub_pd(r.lo, shift));
      b = _mm256_cvttpd_epi32(_mm256_sub_pd(r.hi, shift));
    } else {
      a = _mm256_cvttpd_epi32(r.lo);
      b = _mm256_cvttpd_epi32(r.hi);
    }
    const __m128i indefinite = _mm_set1_epi32(INT32_MIN);
    const __m128i beyond = _mm_or_si128(_mm_cmpeq_epi32(a, indefinite), _mm_cmpeq_epi32(b, indefinite));
    if (_mm_movemask_epi8(beyond) != 0) return false;
    if constexpr (sizeof(D) == 4) {
      if constexpr (std::is_same_v<D, std::uint32_t>) {
        a = _mm_xor_si128(a, indefinite);
        b = _mm_xor_si128(b, indefinite);
      }
      storeInt32s(p, a, b);
    } else {
      const __m128i lowBits = _mm_set1_epi32(sizeof(D) == 2 ? 0xFFFF : 0xFF);
      a = _mm_and_si128(a, lowBits);
      b = _mm_and_si128(b, lowBits);
      const __m128i words = _mm_packus_epi32(a, b);
      if constexpr (sizeof(D) == 2) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), words);
      } else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(words, words));
      }
    }
    return true;
  }

  template <class D>
  static void storeReduced(D* p, Block r, double word, double hi) {
    storeWhole(p, reduceModulo(r, word, hi));
  }

  static Mask noChange() { return splat(0.0); }
  static Mask differs(Block a, Block b) {
    return {_mm256_cmp_pd(a.lo, b.lo, _CMP_NEQ_UQ), _mm256_cmp_pd(a.hi, b.hi, _CMP_NEQ_UQ)};
  }
  static Mask either(Mask a, Mask b) { return {_mm256_or_pd(a.lo, b.lo), _mm256_or_pd(a.hi, b.hi)}; }
  static bool anyChange(Mask m) { return _mm256_movemask_pd(_mm256_or_pd(m.lo, m.hi)) != 0; }
};

struct Singles {
  struct Block {
    __m256 lo, hi;
  };
  using Mask = Block;
  static constexpr std::size_t kBlock = 16;

  static Block load(const float* p) { return {_mm256_loadu_ps(p), _mm256_loadu_ps(p + 8)}; }
  static Block splat(double v) {  // only exact values
    return {_mm256_set1_ps(static_cast<float>(v)), _mm256_set1_ps(static_cast<float>(v))};
  }
  static Block sub(Block a, Block b) { return {_mm256_sub_ps(a.lo, b.lo), _mm256_sub_ps(a.hi, b.hi)}; }
  template <int Mode>
  static Block round(Block x) {
    return {_mm256_round_ps(x.lo, Mode | _MM_FROUND_NO_EXC), _mm256_round_ps(x.hi, Mode | _MM_FROUND_NO_EXC)};
  }
  static Block trunc(Block x) { return round<_MM_FROUND_TO_ZERO>(x); }
  static Block floor(Block x) { return round<_MM_FROUND_TO_NEG_INF>(x); }
  static Block ceil(Block x) { return round<_MM_FROUND_TO_POS_INF>(x); }
  static Mask atLeast(Block a, Block b) {
    return {_mm256_cmp_ps(a.lo, b.lo, _CMP_GE_OQ), _mm256_cmp_ps(a.hi, b.hi, _CMP_GE_OQ)};
  }
  static Block addOneWhere(Block a, Mask m) {
    const __m256 one = _mm256_set1_ps(1.0f);
    return {_mm256_add_ps(a.lo, _mm256_and_ps(m.lo, one)), _mm256_add_ps(a.hi, _mm256_and_ps(m.hi, one))};
  }

  // vmaxps returns its second operand when either is NaN.
  static __m256 clamp(__m256 v, double lo, double hi) {
    return _mm256_min_ps(_mm256_max_ps(v, _mm256_set1_ps(static_cast<float>(lo))),
                         _mm256_set1_ps(static_cast<float>(hi)));
  }
  static __m256 withoutNan(__m256 v) { return _mm256_and_ps(v, _mm256_cmp_ps(v, v, _CMP_ORD_Q)); }
  static Block clampToRange(Block r, double lo, double hi) { return {clamp(r.lo, lo, hi), clamp(r.hi, lo, hi)}; }
  static Block saturateToRange(Block r, double lo, double hi) {
    return {clamp(withoutNan(r.lo), lo, hi), clamp(withoutNan(r.hi), lo, hi)};
  }

  // Sixteen values in D's range (8- and 16-bit destinations only), as two vectors of eight int32.
  // Packing works within 128-bit halves, so the 64-bit quarters are put back in order before the
  // last step; it saturates, which changes nothing for values already in range.
  template <class D>
  static void storeInt32s(D* p, __m256i a, __m256i b) {
    static_assert(sizeof(D) <= 2);
    constexpr bool kUnsigned = std::is_unsigned_v<D>;
    const __m256i words = _mm256_permute4x64_epi64(
        kUnsigned && sizeof(D) == 2 ? _mm256_packus_epi32(a, b) : _mm256_packs_epi32(a, b), 0xD8);
    if constexpr (sizeof(D) == 2) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), words);
    } else {
      const __m128i low = _mm256_castsi256_si128(words), high = _mm256_extracti128_si256(words, 1);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                       kUnsigned ? _mm_packus_epi16(low, high) : _mm_packs_epi16(low, high));
    }
  }

  template <class D>
  static void storeWhole(D* p, Block c) {
    storeInt32s(p, _mm256_cvttps_epi32(c.lo), _mm256_cvttps_epi32(c.hi));
  }

  // vcvttps2dq is exact below 2^31 in magnitude and gives 0x80000000 for everything else, whose low
  // 16 bits are already the result for NaN and infinities. So only finite lanes beyond 2^31 take the
  // exact path, which realistic data never does: no branch to mispredict. The low bits are masked so
  // that packing cannot saturate.
  static __m256 finiteBeyondInt32(__m256 v) {
    const __m256 magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), v);
    return _mm256_and_ps(_mm256_cmp_ps(magnitude, _mm256_set1_ps(0x1p31f), _CMP_GE_OQ),
                         _mm256_cmp_ps(magnitude, _mm256_set1_ps(HUGE_VALF), _CMP_LT_OQ));
  }
  template <class D>
  static bool storeLowBits(D* p, Block r) {
    if (_mm256_movemask_ps(_mm256_or_ps(finiteBeyondInt32(r.lo), finiteBeyondInt32(r.hi))) != 0) return false;
    const __m256i lowBits = _mm256_set1_epi32(sizeof(D) == 2 ? 0xFFFF : 0xFF);
    const __m256i a = _mm256_and_si256(_mm256_cvttps_epi32(r.lo), lowBits);
    const __m256i b = _mm256_and_si256(_mm256_cvttps_epi32(r.hi), lowBits);
    const __m256i words = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
    if constexpr (sizeof(D) == 2) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), words);
    } else {
      const __m128i low = _mm256_castsi256_si128(words), high = _mm256_extracti128_si256(words, 1);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(low, high));
    }
    return true;
  }

  // As for doubles, and exact in single too: the residue modulo word <= 2^16 is exact in single.
  static __m256 reduce(__m256 v, double word, double hi) {
    const __m256 w = _mm256_set1_ps(static_cast<float>(word));
    const __m256 quotient = _mm256_mul_ps(v, _mm256_set1_ps(static_cast<float>(1.0 / word)));
    const __m256 multiple = _mm256_mul_ps(_mm256_round_ps(quotient, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC), w);
    const __m256 q = _mm256_sub_ps(v, multiple);
    const __m256 high = _mm256_set1_ps(static_cast<float>(hi));
    return withoutNan(_mm256_sub_ps(q, _mm256_and_ps(_mm256_cmp_ps(q, high, _CMP_GT_OQ), w)));
  }
  template <class D>
  static void storeReduced(D* p, Block r, double word, double hi) {
    storeWhole(p, Block{reduce(r.lo, word, hi), reduce(r.hi, word, hi)});
  }

  static Mask noChange() { return splat(0.0); }
  static Mask differs(Block a, Block b) {
    return {_mm256_cmp_ps(a.lo, b.lo, _CMP_NEQ_UQ), _mm256_cmp_ps(a.hi, b.hi, _CMP_NEQ_UQ)};
  }
  static Mask either(Mask a, Mask b) { return {_mm256_or_ps(a.lo, b.lo), _mm256_or_ps(a.hi, b.hi)}; }
  static bool anyChange(Mask m) { return _mm256_movemask_ps(_mm256_or_ps(m.lo, m.hi)) != 0; }
};

#include "ql_types/convert/internal/SimdRealLoops.inc"

constexpr RealLoopTable kTable = RealLoopTableBuilder<SimdRealLoop>::make();

}  // namespace

const RealLoopTable* const kAvx2RealLoops = &kTable;

}  // namespace QLTypeSys::detail

#pragma GCC pop_options

#else

namespace QLTypeSys::detail {
const RealLoopTable* const kAvx2RealLoops = nullptr;
}  // namespace QLTypeSys::detail

#endif
