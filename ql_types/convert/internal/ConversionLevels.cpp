// The scalar level's loops, and the choice of level: the best one the processor runs, made once when
// the library loads, and changeable by tests.
#include "ql_types/convert/internal/ConversionLevels.hpp"

#include "ql_types/convert/internal/ConversionKernels.hpp"

namespace QLTypeSys::detail {

constexpr RealLoopTable kScalarRealLoops = RealLoopTableBuilder<ScalarRealLoop>::make();

// Constant-initialised, so a kernel run by another library's static constructor before the choice
// below still finds a table.
std::atomic<const RealLoopTable*> gActiveRealLoops{&kScalarRealLoops};

namespace {

const RealLoopTable* tableOf(ConversionLevel level) {
  switch (level) {
    case ConversionLevel::Scalar:
      return &kScalarRealLoops;
    case ConversionLevel::Avx2:
      return kAvx2RealLoops;
    case ConversionLevel::Avx512:
      return kAvx512RealLoops;
  }
  return nullptr;
}

bool processorRuns(ConversionLevel level) {
#if QL_TYPES_X86_SIMD
  // libgcc's checks include the operating system's support for the wider registers (XGETBV).
  __builtin_cpu_init();
  switch (level) {
    case ConversionLevel::Scalar:
      return true;
    case ConversionLevel::Avx2:
      return __builtin_cpu_supports("avx2");
    case ConversionLevel::Avx512:
      return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
             __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  }
  return false;
#else
  return level == ConversionLevel::Scalar;
#endif
}

}  // namespace

bool conversionLevelAvailable(ConversionLevel level) { return tableOf(level) != nullptr && processorRuns(level); }

ConversionLevel bestConversionLevel() {
  for (int level = kConversionLevelCount - 1; level > 0; --level)
    if (conversionLevelAvailable(static_cast<ConversionLevel>(level))) return static_cast<ConversionLevel>(level);
  return ConversionLevel::Scalar;
}

ConversionLevel conversionLevel() {
  const RealLoopTable* active = gActiveRealLoops.load(std::memory_order_relaxed);
  for (int level = 0; level < kConversionLevelCount; ++level)
    if (tableOf(static_cast<ConversionLevel>(level)) == active) return static_cast<ConversionLevel>(level);
  return ConversionLevel::Scalar;
}

bool setConversionLevel(ConversionLevel level) {
  if (!conversionLevelAvailable(level)) return false;
  gActiveRealLoops.store(tableOf(level), std::memory_order_relaxed);
  return true;
}

namespace {
[[maybe_unused]] const bool kChosenAtLoad = setConversionLevel(bestConversionLevel());
}  // namespace

}  // namespace QLTypeSys::detail
