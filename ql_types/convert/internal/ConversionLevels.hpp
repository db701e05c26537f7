// The real-vector loops of the kernels, compiled once per instruction set, and the switch that picks
// one set for the whole library.
//
// A kernel (ConversionKernels.hpp) handles broadcast and the complex shapes itself, and hands the
// common case, a contiguous real vector, to a loop looked up in the active table. There is one table
// per level: the portable scalar loops, AVX2 and AVX-512. The best level the processor runs is chosen
// when the library loads; tests force each level in turn, so every compiled variant is checked
// against the same reference. All levels compute identical results; they differ only in speed.
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "ql_types/convert/internal/ConversionMatrix.hpp"
#include "ql_types/fixpt/fxpModes.hpp"

// The SIMD levels are written with GCC's per-function target pragmas and x86 intrinsics; other
// compilers and processors build the scalar level only.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define QL_TYPES_X86_SIMD 1
#else
#define QL_TYPES_X86_SIMD 0
#endif

namespace QLTypeSys::detail {

/// Instruction sets the real-vector loops are compiled for, lowest first.
enum class ConversionLevel : int { Scalar = 0, Avx2 = 1, Avx512 = 2 };
inline constexpr int kConversionLevelCount = 3;

/// Converts n contiguous real elements from src to dst. Returns false only for a loop with the
/// back-comparison folded in, when some element did not survive exactly.
using RealLoop = bool (*)(const void* src, void* dst, std::size_t n);

/// One level's loops: [srcId x 9 + dstId][overflow + 2 x rounding][with back-comparison], at the
/// positions of the dispatch rows. Entries a row doesn't have are null.
struct RealLoopTable {
  RealLoop loops[kBuiltinCount * kBuiltinCount][8][2];
};

/// Fills a table from a class template Loop<SrcId, DstId, Overflow, Rounding, Check> with a static
/// run function, instantiating exactly the loops the dispatch rows can reach.
template <template <int, int, fxpModeOverflow_tag, fxpModeRounding_tag, bool> class Loop>
struct RealLoopTableBuilder {
  static constexpr std::size_t kEntries = kBuiltinCount * kBuiltinCount * 8 * 2;

  template <std::size_t Entry>
  static constexpr RealLoop entry() {
    constexpr std::size_t cell = Entry / 16, position = Entry / 2 % 8;
    constexpr CellKind kind = kMatrix[cell];
    if constexpr (position >= static_cast<std::size_t>(rowLength(kind))) {
      return nullptr;
    } else {
      constexpr KernelTypes types =
          kernelTypesOf(static_cast<int>(cell / kBuiltinCount), static_cast<int>(cell % kBuiltinCount));
      constexpr bool check = Entry % 2 == 1 && hasPass(kind);
      return &Loop<types.src, types.dst, static_cast<fxpModeOverflow_tag>(position % 2),
                   static_cast<fxpModeRounding_tag>(position / 2), check>::run;
    }
  }

  template <std::size_t... Entry>
  static constexpr RealLoopTable make(std::index_sequence<Entry...>) {
    constexpr RealLoop flat[] = {entry<Entry>()...};
    RealLoopTable table{};
    for (std::size_t e = 0; e < kEntries; ++e) table.loops[e / 16][e / 2 % 8][e % 2] = flat[e];
    return table;
  }

  static constexpr RealLoopTable make() { return make(std::make_index_sequence<kEntries>{}); }
};

/// The tables of each level; a level not compiled into this build has a null table.
extern const RealLoopTable kScalarRealLoops;
extern const RealLoopTable* const kAvx2RealLoops;
extern const RealLoopTable* const kAvx512RealLoops;

/// The table the kernels use; holds the scalar table until the library's load-time choice runs.
extern std::atomic<const RealLoopTable*> gActiveRealLoops;

inline const RealLoopTable& activeRealLoops() { return *gActiveRealLoops.load(std::memory_order_relaxed); }

/// Whether this build has the level's loops and the processor (and operating system) runs them.
bool conversionLevelAvailable(ConversionLevel level);
/// The highest available level: what the library chooses when it loads.
ConversionLevel bestConversionLevel();
/// The level the kernels use now.
ConversionLevel conversionLevel();
/// Makes every kernel use the level from now on; for tests and benchmarks. Returns false and changes
/// nothing when the level isn't available. Not meant to race with running kernels.
bool setConversionLevel(ConversionLevel level);

}  // namespace QLTypeSys::detail
