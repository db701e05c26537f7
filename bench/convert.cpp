// Conversion kernels against a naive baseline: a plain per-element loop that reads through a type
// switch, rounds through a mode switch and writes through another switch on every element, as a
// converter without a kernel matrix would. Both run in the same program on the same 4096 values.
// Each kernel benchmark also times the two side by side and reports naive_over_kernel, the ratio
// of their times per vector (above 1 means the kernel is faster).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "ql_types/convert/BuiltinConversion.hpp"

namespace {

constexpr unsigned kLength = 4096;

struct Case {
  int src;
  int dst;
  fxpModeOverflow_tag overflow;
  fxpModeRounding_tag rounding;
  double spread;  // source values are drawn from [-spread, spread]
};

constexpr int kBytes[9] = {8, 4, 1, 1, 2, 2, 4, 4, 1};

// ---- the baseline ---------------------------------------------------------------------------

double readAsDouble(const void* base, int id, std::size_t i) {
  switch (id) {
    case 0:
      return static_cast<const double*>(base)[i];
    case 1:
      return static_cast<const float*>(base)[i];
    case 2:
      return static_cast<const std::int8_t*>(base)[i];
    case 3:
      return static_cast<const std::uint8_t*>(base)[i];
    case 4:
      return static_cast<const std::int16_t*>(base)[i];
    case 5:
      return static_cast<const std::uint16_t*>(base)[i];
    case 6:
      return static_cast<const std::int32_t*>(base)[i];
    case 7:
      return static_cast<const std::uint32_t*>(base)[i];
    default:
      return static_cast<const std::uint8_t*>(base)[i];
  }
}

void limitsOf(int id, double& lo, double& hi) {
  static const double kLo[9] = {0, 0, -128, 0, -32768, 0, -2147483648.0, 0, 0};
  static const double kHi[9] = {0, 0, 127, 255, 32767, 65535, 2147483647.0, 4294967295.0, 1};
  lo = kLo[id];
  hi = kHi[id];
}

void writeFromDouble(void* base, int id, std::size_t i, double v) {
  switch (id) {
    case 0:
      static_cast<double*>(base)[i] = v;
      break;
    case 1:
      static_cast<float*>(base)[i] = static_cast<float>(v);
      break;
    case 2:
      static_cast<std::int8_t*>(base)[i] = static_cast<std::int8_t>(v);
      break;
    case 3:
      static_cast<std::uint8_t*>(base)[i] = static_cast<std::uint8_t>(v);
      break;
    case 4:
      static_cast<std::int16_t*>(base)[i] = static_cast<std::int16_t>(v);
      break;
    case 5:
      static_cast<std::uint16_t*>(base)[i] = static_cast<std::uint16_t>(v);
      break;
    case 6:
      static_cast<std::int32_t*>(base)[i] = static_cast<std::int32_t>(v);
      break;
    case 7:
      static_cast<std::uint32_t*>(base)[i] = static_cast<std::uint32_t>(v);
      break;
    default:
      static_cast<std::uint8_t*>(base)[i] = v != 0;
      break;
  }
}

void naiveConvert(const void* src, void* dst, unsigned n, int srcId, int dstId, int overflow, int rounding) {
  for (std::size_t i = 0; i < n; ++i) {
    double x = readAsDouble(src, srcId, i);
    if (dstId >= 2 && dstId <= 7) {
      double lo, hi;
      limitsOf(dstId, lo, hi);
      if (std::isnan(x)) {
        x = 0;
      } else if (overflow == FXP_OVERFLOW_SATURATE && x >= hi) {
        x = hi;
      } else if (overflow == FXP_OVERFLOW_SATURATE && x <= lo) {
        x = lo;
      } else {
        switch (rounding) {
          case FXP_ROUND_NEAREST:
            x = std::fabs(x) < 0.5 ? 0 : std::floor(x + 0.5);
            break;
          case FXP_ROUND_CEIL:
            x = std::ceil(x);
            break;
          case FXP_ROUND_FLOOR:
            x = std::floor(x);
            break;
          default:
            x = std::trunc(x);
            break;
        }
        if (overflow == FXP_OVERFLOW_WRAP && (x > hi || x < lo)) {
          const double word = hi - lo + 1;
          x = std::isfinite(x) ? std::fmod(x, word) : 0;
          if (x > hi) x -= word;
          if (x < lo) x += word;
        }
      }
    }
    writeFromDouble(dst, dstId, i, x);
  }
}

// ---- the benchmarks ---------------------------------------------------------------------------

struct Buffers {
  std::vector<unsigned char> src;
  std::vector<unsigned char> dst;

  explicit Buffers(const Case& c) : src(kLength * kBytes[c.src]), dst(kLength * kBytes[c.dst]) {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> value(-c.spread, c.spread);
    for (unsigned i = 0; i < kLength; ++i) {
      const double v = value(rng);
      switch (c.src) {
        case 0:
          reinterpret_cast<double*>(src.data())[i] = v;
          break;
        case 3:
          src[i] = static_cast<std::uint8_t>(std::fabs(v));
          break;
        case 6:
          reinterpret_cast<std::int32_t*>(src.data())[i] = static_cast<std::int32_t>(v);
          break;
        default:
          break;
      }
    }
  }
};

/// The best time of one call over a few rounds, in nanoseconds.
template <class Fn>
double bestNanosPerCall(Fn&& fn) {
  constexpr int kRounds = 7, kCalls = 64;
  double best = 1e300;
  for (int r = 0; r < kRounds; ++r) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kCalls; ++i) {
      fn();
      benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
    best = std::min(best, took.count() / kCalls);
  }
  return best;
}

void BM_Kernel(benchmark::State& state, Case c) {
  Buffers b(c);
  const builtinConvFcn kernel = utGetQlBuiltinDtypeConvFcn(c.src, c.dst, c.overflow, c.rounding);
  auto runKernel = [&] {
    kernel(b.src.data(), b.dst.data(), kLength, kLength, false, false, false, c.src, c.dst, c.overflow, c.rounding);
  };
  for (auto _ : state) {
    runKernel();
    benchmark::DoNotOptimize(b.dst.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kLength);
  const double naive = bestNanosPerCall(
      [&] { naiveConvert(b.src.data(), b.dst.data(), kLength, c.src, c.dst, c.overflow, c.rounding); });
  state.counters["naive_over_kernel"] = naive / bestNanosPerCall(runKernel);
}

void BM_Naive(benchmark::State& state, Case c) {
  Buffers b(c);
  for (auto _ : state) {
    naiveConvert(b.src.data(), b.dst.data(), kLength, c.src, c.dst, c.overflow, c.rounding);
    benchmark::DoNotOptimize(b.dst.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kLength);
}

constexpr Case kDoubleToInt16{0, 4, FXP_OVERFLOW_SATURATE, FXP_ROUND_NEAREST, 40000.0};
constexpr Case kDoubleToInt32{0, 6, FXP_OVERFLOW_WRAP, FXP_ROUND_ZERO, 3e9};
constexpr Case kInt32ToSingle{6, 1, FXP_OVERFLOW_WRAP, FXP_ROUND_ZERO, 2e9};
constexpr Case kUint8ToDouble{3, 0, FXP_OVERFLOW_WRAP, FXP_ROUND_ZERO, 255.0};

BENCHMARK_CAPTURE(BM_Kernel, double_to_int16_nearest_saturate, kDoubleToInt16);
BENCHMARK_CAPTURE(BM_Naive, double_to_int16_nearest_saturate, kDoubleToInt16);
BENCHMARK_CAPTURE(BM_Kernel, double_to_int32_zero_wrap, kDoubleToInt32);
BENCHMARK_CAPTURE(BM_Naive, double_to_int32_zero_wrap, kDoubleToInt32);
BENCHMARK_CAPTURE(BM_Kernel, int32_to_single, kInt32ToSingle);
BENCHMARK_CAPTURE(BM_Naive, int32_to_single, kInt32ToSingle);
BENCHMARK_CAPTURE(BM_Kernel, uint8_to_double, kUint8ToDouble);
BENCHMARK_CAPTURE(BM_Naive, uint8_to_double, kUint8ToDouble);

}  // namespace
