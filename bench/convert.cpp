// Conversion kernels against memcpy of the same footprint, on vectors of 1e3 elements (cache-resident)
// and 1e7 (memory-bound).
//
// memcpy is the ceiling for a kernel that reads every source byte and writes every destination byte
// once: it moves (bytes read + bytes written) / 2 from one buffer to another, the same traffic. Each
// benchmark times its kernel and that memcpy alternately, 15 rounds in the same run, and reports
// vs_memcpy = memcpy time / kernel time (1 means as fast as copying) from the best round of each, so
// load from other processes on the machine hits both sides alike. Some kernels also time a partner kernel the same way:
// a wrap kernel its saturate sibling (speed_vs_saturate = saturate time / wrap time), and a kernel with
// the lossless check the same kernel without it (pass_overhead = time with / time without - 1).
//
// Source data is realistic: mostly within the destination's range, some values outside it, and a few
// NaNs and infinities. The sweep at the end runs every float-to-integer kernel at 1e7 elements.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/convert/internal/ConversionLevels.hpp"

namespace {

using QLTypeSys::detail::ConversionLevel;

enum Id { kDouble, kSingle, kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kBoolean };
constexpr int kBytes[9] = {8, 4, 1, 1, 2, 2, 4, 4, 1};
constexpr const char* kTypeNames[9] = {"double", "single", "int8",   "uint8",  "int16",
                                       "uint16", "int32",  "uint32", "boolean"};
constexpr const char* kRoundingNames[4] = {"zero", "nearest", "ceil", "floor"};
constexpr double kLowest[9] = {0, 0, -128, 0, -32768, 0, -2147483648.0, 0, 0};
constexpr double kHighest[9] = {0, 0, 127, 255, 32767, 65535, 2147483647.0, 4294967295.0, 1};

bool isInteger(int id) { return id >= kInt8 && id <= kUint32; }

struct Case {
  int src;
  int dst;
  fxpModeOverflow_tag overflow;
  fxpModeRounding_tag rounding;
  bool check;

  std::string name() const {
    std::string s = std::string(kTypeNames[src]) + "_to_" + kTypeNames[dst];
    if (isInteger(dst)) s += overflow == FXP_OVERFLOW_SATURATE ? "_saturate" : "_wrap";
    if (isInteger(dst) && (src == kDouble || src == kSingle)) s += std::string("_") + kRoundingNames[rounding];
    return check ? s + "_pass" : s;
  }
};

/// A second kernel timed alongside, and how its time enters the counter.
struct Partner {
  Case kernel;
  enum { SpeedVsSaturate, PassOverhead } kind;
};

// ---- realistic sources --------------------------------------------------------------------------

/// n source values for a case, in random order: to an integer type 96% within its range and about 4%
/// outside it (up to one range width away); from a float type 0.2% NaN and 0.2% infinities among
/// them. Integer sources are whole and within their own type.
std::vector<double> sourceValues(const Case& c, std::size_t n) {
  std::mt19937_64 rng(20240611u + c.src * 9 + c.dst);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const bool floatSource = c.src == kDouble || c.src == kSingle;
  double lo, hi;
  if (isInteger(c.dst)) {
    lo = kLowest[c.dst];
    hi = kHighest[c.dst];
  } else if (c.dst == kBoolean) {
    lo = -1000;
    hi = 1000;
  } else {
    lo = isInteger(c.src) || c.src == kBoolean ? kLowest[c.src] : -1e6;
    hi = isInteger(c.src) || c.src == kBoolean ? kHighest[c.src] : 1e6;
  }
  const double width = hi - lo;
  std::vector<double> v(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double kind = unit(rng);
    double x;
    if (c.dst == kBoolean && kind < 0.3) {
      x = 0;  // a boolean destination sees many zeros
    } else if (floatSource && kind >= 0.998) {
      x = unit(rng) < 0.5 ? HUGE_VAL : -HUGE_VAL;
    } else if (floatSource && kind >= 0.996) {
      x = std::numeric_limits<double>::quiet_NaN();
    } else if (isInteger(c.dst) && kind >= 0.96) {
      const double beyond = unit(rng) * width + 1;
      x = unit(rng) < 0.5 ? lo - beyond : hi + beyond;
    } else {
      x = lo + unit(rng) * width;
    }
    if (!floatSource) x = std::clamp(std::floor(x), kLowest[c.src], kHighest[c.src]);
    v[i] = x;
  }
  return v;
}

void storeValues(int id, const std::vector<double>& values, unsigned char* out) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = values[i];
    unsigned char* p = out + i * kBytes[id];
    auto put = [p](auto value) { std::memcpy(p, &value, sizeof value); };
    switch (id) {
      case kDouble:
        put(x);
        break;
      case kSingle:
        put(static_cast<float>(x));
        break;
      case kInt8:
        put(static_cast<std::int8_t>(x));
        break;
      case kInt16:
        put(static_cast<std::int16_t>(x));
        break;
      case kUint16:
        put(static_cast<std::uint16_t>(x));
        break;
      case kInt32:
        put(static_cast<std::int32_t>(x));
        break;
      case kUint32:
        put(static_cast<std::uint32_t>(x));
        break;
      default:
        put(static_cast<std::uint8_t>(x));
        break;
    }
  }
}

// ---- timing -------------------------------------------------------------------------------------

struct Kernel {
  Case c;
  builtinConvFcn fn;
  const unsigned char* src;
  unsigned char* dst;
  unsigned n;

  void operator()() const {
    fn(src, dst, n, n, false, false, c.check, c.src, c.dst, c.overflow, c.rounding);
    benchmark::DoNotOptimize(dst);
    benchmark::ClobberMemory();
  }
};

Kernel kernelFor(const Case& c, const std::vector<unsigned char>& src, std::vector<unsigned char>& dst, unsigned n) {
  return {c, utGetQlBuiltinDtypeConvFcn(c.src, c.dst, c.overflow, c.rounding), src.data(), dst.data(), n};
}

template <class Fn>
double nanosPerCall(const Fn& fn, int calls) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) fn();
  const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
  return took.count() / calls;
}

/// The best of the rounds: other processes on the machine only ever slow a round down.
double best(const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); }

// ---- the benchmark ------------------------------------------------------------------------------

void BM_Convert(benchmark::State& state, Case c, std::optional<Partner> partner, ConversionLevel level) {
  if (!QLTypeSys::detail::setConversionLevel(level)) {
    state.SkipWithError("the processor doesn't run this level");
    return;
  }
  const auto n = static_cast<unsigned>(state.range(0));
  const std::size_t footprint = std::size_t{n} * (kBytes[c.src] + kBytes[c.dst]);
  std::vector<unsigned char> src(std::size_t{n} * kBytes[c.src]), dst(std::size_t{n} * kBytes[c.dst]);
  storeValues(c.src, sourceValues(c, n), src.data());
  std::vector<unsigned char> copyFrom(footprint / 2, 1), copyTo(footprint / 2, 0);
  const Kernel kernel = kernelFor(c, src, dst, n);

  for (auto _ : state) kernel();
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * n);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * footprint));

  // Interleaved rounds: kernel, memcpy and partner take turns, each timed over a batch of calls.
  const auto copy = [&] {
    std::memcpy(copyTo.data(), copyFrom.data(), copyTo.size());
    benchmark::DoNotOptimize(copyTo.data());
    benchmark::ClobberMemory();
  };
  std::vector<unsigned char> partnerDst(partner ? std::size_t{n} * kBytes[partner->kernel.dst] : 0);
  const Kernel other = partner ? kernelFor(partner->kernel, src, partnerDst, n) : kernel;
  const int calls = static_cast<int>(std::max<std::size_t>(1, (std::size_t{16} << 20) / footprint));
  const int rounds = 15;
  std::vector<double> kernelTimes, copyTimes, otherTimes;
  kernel();
  copy();
  other();
  for (int r = 0; r < rounds; ++r) {
    kernelTimes.push_back(nanosPerCall(kernel, calls));
    copyTimes.push_back(nanosPerCall(copy, calls));
    if (partner) otherTimes.push_back(nanosPerCall(other, calls));
  }
  const double kernelNs = best(kernelTimes), copyNs = best(copyTimes);
  state.counters["vs_memcpy"] = copyNs / kernelNs;
  state.counters["kernel_GBps"] = static_cast<double>(footprint) / kernelNs;
  state.counters["memcpy_GBps"] = static_cast<double>(footprint) / copyNs;
  if (partner) {
    const double otherNs = best(otherTimes);
    if (partner->kind == Partner::SpeedVsSaturate) {
      state.counters["speed_vs_saturate"] = otherNs / kernelNs;
    } else {
      state.counters["pass_overhead"] = kernelNs / otherNs - 1;
    }
  }
  QLTypeSys::detail::setConversionLevel(QLTypeSys::detail::bestConversionLevel());
}

constexpr auto W = FXP_OVERFLOW_WRAP;
constexpr auto Sat = FXP_OVERFLOW_SATURATE;
constexpr auto Zero = FXP_ROUND_ZERO;

constexpr const char* kLevelNames[3] = {"scalar", "avx2", "avx512"};

void add(const Case& c, std::optional<Partner> partner, std::initializer_list<std::int64_t> sizes,
         std::optional<ConversionLevel> level = std::nullopt, const char* prefix = "") {
  std::string name = std::string(prefix) + c.name();
  if (level) name += std::string("/") + kLevelNames[static_cast<int>(*level)];
  const ConversionLevel run = level.value_or(QLTypeSys::detail::bestConversionLevel());
  auto* b = benchmark::RegisterBenchmark(name.c_str(), BM_Convert, c, partner, run);
  for (std::int64_t n : sizes) b->Arg(n);
  b->Unit(benchmark::kMicrosecond);
}

bool registerAll() {
  const std::initializer_list<std::int64_t> both = {1000, 10000000};
  auto saturateOf = [](Case c) {
    c.overflow = Sat;
    return Partner{c, Partner::SpeedVsSaturate};
  };
  auto withoutPass = [](Case c) {
    c.check = false;
    return Partner{c, Partner::PassOverhead};
  };

  // The cases of the goals, at the best level the processor runs.
  const Case doubleInt16SatNearest{kDouble, kInt16, Sat, FXP_ROUND_NEAREST, false};
  add(doubleInt16SatNearest, std::nullopt, both);
  const Case doubleInt16WrapZero{kDouble, kInt16, W, Zero, false};
  add(doubleInt16WrapZero, saturateOf(doubleInt16WrapZero), both);
  const Case doubleInt16WrapNearest{kDouble, kInt16, W, FXP_ROUND_NEAREST, false};
  add(doubleInt16WrapNearest, saturateOf(doubleInt16WrapNearest), both);
  add({kSingle, kInt32, Sat, FXP_ROUND_FLOOR, false}, std::nullopt, both);
  const Case singleInt32WrapFloor{kSingle, kInt32, W, FXP_ROUND_FLOOR, false};
  add(singleInt32WrapFloor, saturateOf(singleInt32WrapFloor), both);
  add({kInt32, kUint8, Sat, Zero, false}, std::nullopt, both);
  const Case int32Int8Wrap{kInt32, kInt8, W, Zero, false};
  add(int32Int8Wrap, saturateOf(int32Int8Wrap), both);
  add({kUint8, kDouble, W, Zero, false}, std::nullopt, both);
  add({kSingle, kDouble, W, Zero, false}, std::nullopt, both);
  add({kDouble, kBoolean, W, Zero, false}, std::nullopt, both);
  const Case doubleInt16SatNearestPass{kDouble, kInt16, Sat, FXP_ROUND_NEAREST, true};
  add(doubleInt16SatNearestPass, withoutPass(doubleInt16SatNearestPass), both);

  // What the explicit loops gain: the first two cases at every level, cache-resident.
  for (int level = 0; level < QLTypeSys::detail::kConversionLevelCount; ++level) {
    add(doubleInt16SatNearest, std::nullopt, {1000}, static_cast<ConversionLevel>(level), "level/");
    add(doubleInt16WrapZero, saturateOf(doubleInt16WrapZero), {1000}, static_cast<ConversionLevel>(level), "level/");
  }

  // Every float-to-integer kernel, memory-bound.
  for (int src : {kDouble, kSingle})
    for (int dst = kInt8; dst <= kUint32; ++dst)
      for (int rounding = 0; rounding < 4; ++rounding)
        for (auto overflow : {W, Sat}) {
          const Case c{src, dst, overflow, static_cast<fxpModeRounding_tag>(rounding), false};
          add(c, overflow == W ? std::optional<Partner>(saturateOf(c)) : std::nullopt, {10000000}, std::nullopt,
              "sweep/");
        }
  return true;
}

[[maybe_unused]] const bool kRegistered = registerAll();

}  // namespace
