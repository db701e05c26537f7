// The AVX-512 level (F, BW, DQ and VL) of the real-vector loops: blocks of eight doubles or sixteen
// singles in one register, lane masks in mask registers. Run only on processors that have all four
// extensions.
#include "ql_types/convert/internal/ConversionLevels.hpp"

#if QL_TYPES_X86_SIMD

// GCC 12's AVX-512 intrinsics pass an undefined vector as the unused merge source, which its
// uninitialised-value analysis reports once they are inlined here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "ql_types/convert/internal/ConversionKernels.hpp"

// Everything after this line, to pop_options, is compiled for AVX-512; the headers above are not, so
// their inline functions keep one portable definition across the library.
#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl")

namespace QLTypeSys::detail {
namespace {

struct Doubles {
  using Block = __m512d;
  using Mask = __mmask8;
  static constexpr std::size_t kBlock = 8;

  static Block load(const double* p) { return _mm512_loadu_pd(p); }
  static Block load(const float* p) { return _mm512_cvtps_pd(_mm256_loadu_ps(p)); }
  static Block splat(double v) { return _mm512_set1_pd(v); }
  static Block sub(Block a, Block b) { return _mm512_sub_pd(a, b); }
  static Block trunc(Block x) { return _mm512_roundscale_pd(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
  static Block floor(Block x) { return _mm512_roundscale_pd(x, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC); }
  static Block ceil(Block x) { return _mm512_roundscale_pd(x, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC); }
  static Mask atLeast(Block a, Block b) { return _mm512_cmp_pd_mask(a, b, _CMP_GE_OQ); }
  static Block addOneWhere(Block a, Mask m) { return _mm512_mask_add_pd(a, m, a, splat(1.0)); }

  // vmaxpd returns its second operand when either is NaN.
  static Block clampToRange(Block r, double lo, double hi) {
    return _mm512_min_pd(_mm512_max_pd(r, splat(lo)), splat(hi));
  }
  static Block saturateToRange(Block r, double lo, double hi) {
    const Mask ordered = _mm512_cmp_pd_mask(r, r, _CMP_ORD_Q);
    return _mm512_min_pd(_mm512_maskz_max_pd(ordered, r, splat(lo)), splat(hi));
  }

  // r - floor(r / word) x word is exact for every finite whole r: the scaling by a power of two, the
  // floor and the product are exact, and the difference, a whole number below word <= 2^32, is
  // representable. It lies in [0, word); a signed destination then moves the upper half down.
  static Block reduceModulo(Block r, double word, double hi) {
    const Block multiple = _mm512_mul_pd(floor(_mm512_mul_pd(r, splat(1.0 / word))), splat(word));
    Block q = _mm512_sub_pd(r, multiple);
    q = _mm512_mask_sub_pd(q, _mm512_cmp_pd_mask(q, splat(hi), _CMP_GT_OQ), q, splat(word));
    return _mm512_maskz_mov_pd(_mm512_cmp_pd_mask(q, q, _CMP_ORD_Q), q);  // NaN by now for NaN and infinities
  }

  template <class D>
  static void storeWhole(D* p, Block c) {
    if constexpr (std::is_same_v<D, std::uint32_t>) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvttpd_epu32(c));
    } else {
      const __m256i v = _mm512_cvttpd_epi32(c);
      if constexpr (sizeof(D) == 4) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
      } else if constexpr (sizeof(D) == 2) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvtepi32_epi16(v));
      } else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm256_cvtepi32_epi8(v));
      }
    }
  }

  // vcvttpd2qq is exact below 2^63 in magnitude and gives 0x8000000000000000 for everything else,
  // NaN and infinities included; a lane that really is -2^63 merely takes the exact path as well.
  // Branching on the rare lanes is faster than handling NaN and infinities in line.
  template <class D>
  static bool storeLowBits(D* p, Block r) {
    const __m512i q = _mm512_cvttpd_epi64(r);
    if (_mm512_cmpeq_epi64_mask(q, _mm512_set1_epi64(INT64_MIN)) != 0) return false;
    if constexpr (sizeof(D) == 4) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32(q));
    } else if constexpr (sizeof(D) == 2) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm512_cvtepi64_epi16(q));
    } else {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm512_cvtepi64_epi8(q));
    }
    return true;
  }

  template <class D>
  static void storeReduced(D* p, Block r, double word, double hi) {
    storeWhole(p, reduceModulo(r, word, hi));
  }

  static Mask noChange() { return 0; }
  static Mask differs(Block a, Block b) { return _mm512_cmp_pd_mask(a, b, _CMP_NEQ_UQ); }
  static Mask either(Mask a, Mask b) { return static_cast<Mask>(a | b); }
  static bool anyChange(Mask m) { return m != 0; }
};

struct Singles {
  using Block = __m512;
  using Mask = __mmask16;
  static constexpr std::size_t kBlock = 16;

  static Block load(const float* p) { return _mm512_loadu_ps(p); }
  static Block splat(double v) { return _mm512_set1_ps(static_cast<float>(v)); }  // only exact values
  static Block sub(Block a, Block b) { return _mm512_sub_ps(a, b); }
  static Block trunc(Block x) { return _mm512_roundscale_ps(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
  static Block floor(Block x) { return _mm512_roundscale_ps(x, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC); }
  static Block ceil(Block x) { return _mm512_roundscale_ps(x, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC); }
  static Mask atLeast(Block a, Block b) { return _mm512_cmp_ps_mask(a, b, _CMP_GE_OQ); }
  static Block addOneWhere(Block a, Mask m) { return _mm512_mask_add_ps(a, m, a, splat(1.0)); }

  // vmaxps returns its second operand when either is NaN.
  static Block clampToRange(Block r, double lo, double hi) {
    return _mm512_min_ps(_mm512_max_ps(r, splat(lo)), splat(hi));
  }
  static Block saturateToRange(Block r, double lo, double hi) {
    const Mask ordered = _mm512_cmp_ps_mask(r, r, _CMP_ORD_Q);
    return _mm512_min_ps(_mm512_maskz_max_ps(ordered, r, splat(lo)), splat(hi));
  }

  // 8- and 16-bit destinations only; the int32 lanes narrow by truncation.
  template <class D>
  static void storeInt32s(D* p, __m512i v) {
    static_assert(sizeof(D) <= 2);
    if constexpr (sizeof(D) == 2) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi32_epi16(v));
    } else {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm512_cvtepi32_epi8(v));
    }
  }

  template <class D>
  static void storeWhole(D* p, Block c) {
    storeInt32s(p, _mm512_cvttps_epi32(c));
  }

  // vcvttps2dq is exact below 2^31 in magnitude and gives 0x80000000 for everything else, whose low
  // 16 bits are already the result for NaN and infinities. So only finite lanes beyond 2^31 take the
  // exact path, which realistic data never does: no branch to mispredict.
  template <class D>
  static bool storeLowBits(D* p, Block r) {
    const Block magnitude = _mm512_abs_ps(r);
    const Mask beyond = _mm512_cmp_ps_mask(magnitude, _mm512_set1_ps(0x1p31f), _CMP_GE_OQ);
    if (_mm512_mask_cmp_ps_mask(beyond, magnitude, _mm512_set1_ps(HUGE_VALF), _CMP_LT_OQ) != 0) return false;
    storeInt32s(p, _mm512_cvttps_epi32(r));
    return true;
  }

  // As for doubles, and exact in single too: the residue modulo word <= 2^16 is exact in single.
  template <class D>
  static void storeReduced(D* p, Block r, double word, double hi) {
    const Block multiple = _mm512_mul_ps(floor(_mm512_mul_ps(r, splat(1.0 / word))), splat(word));
    Block q = _mm512_sub_ps(r, multiple);
    q = _mm512_mask_sub_ps(q, _mm512_cmp_ps_mask(q, splat(hi), _CMP_GT_OQ), q, splat(word));
    storeWhole(p, _mm512_maskz_mov_ps(_mm512_cmp_ps_mask(q, q, _CMP_ORD_Q), q));  // NaN by now for NaN and infinities
  }

  static Mask noChange() { return 0; }
  static Mask differs(Block a, Block b) { return _mm512_cmp_ps_mask(a, b, _CMP_NEQ_UQ); }
  static Mask either(Mask a, Mask b) { return static_cast<Mask>(a | b); }
  static bool anyChange(Mask m) { return m != 0; }
};

#include "ql_types/convert/internal/SimdRealLoops.inc"

constexpr RealLoopTable kTable = RealLoopTableBuilder<SimdRealLoop>::make();

}  // namespace

const RealLoopTable* const kAvx512RealLoops = &kTable;

}  // namespace QLTypeSys::detail

#pragma GCC pop_options

#else

namespace QLTypeSys::detail {
const RealLoopTable* const kAvx512RealLoops = nullptr;
}  // namespace QLTypeSys::detail

#endif
