// Every kernel reachable from utGetQlBuiltinDtypeConvFcn against the reference, at every level of
// real-vector loops this processor runs (scalar, AVX2, AVX-512; the others are skipped): all 81
// pairs, every overflow and rounding value a caller may pass (0..1, 0..4), the four complex shapes,
// with and without the pass. Sources: the whole pool in one vector; each value alone; each value at
// every position of a vector of zeros (so each lane and the tail alone decide the pass) or of huge
// values or NaNs (which send wrap down its rare path); and lengths 0..19 (around the blocks of eight
// and the unrolled loop) with broadcast sources. Each call checks every element written, the result,
// and guard bytes after the destination. Source buffers are exactly as long as a kernel may read, so
// the sanitizer build catches overreads.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ConversionReference.hpp"
#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/convert/internal/ConversionLevels.hpp"

namespace {

using namespace convref;

struct Call {
  int src, dst, overflow, rounding;
  bool srcComplex, dstComplex, checkLossless;
  unsigned srcLength, dstLength;
};

// The boolean row's copy to boolean is a uint8 kernel, not one of the kernels to boolean.
bool toBoolean(const Call& c) { return c.dst == kBoolean && c.src != kBoolean; }

std::size_t sourceStep(const Call& c) {
  const bool broadcast = toBoolean(c) ? c.srcLength == 1 : c.srcLength <= 1;
  return broadcast ? 0 : c.srcComplex ? 2 : 1;
}

std::size_t destinationSlots(const Call& c) { return c.dstLength * (c.dstComplex && !toBoolean(c) ? 2 : 1); }

/// The frame, modelled: the destination slots and the result, from the source slots.
std::pair<std::vector<long double>, bool> model(const Call& c, const std::vector<long double>& in) {
  // Modes the pair's row doesn't select by are not looked at.
  const int overflow = usesOverflow(c.src, c.dst) ? c.overflow : kWrap;
  const int rounding = usesRounding(c.src, c.dst) ? c.rounding : kZero;
  const int dst = c.src == kBoolean && c.dst == kBoolean ? kUint8 : c.dst;
  auto convert = [&](long double v) { return convertValue(v, c.src, dst, overflow, rounding); };
  std::vector<long double> out;
  bool lossless = true;
  for (std::size_t i = 0; i < c.dstLength; ++i) {
    const long double re = in[i * sourceStep(c)], im = c.srcComplex ? in[i * sourceStep(c) + 1] : 0;
    const long double outRe = toBoolean(c) ? (re != 0 || im != 0) : convert(re);
    out.push_back(outRe);
    lossless = lossless && outRe == re && (!c.srcComplex || im == 0 || (c.dstComplex && !toBoolean(c)));
    if (c.dstComplex && !toBoolean(c)) {
      out.push_back(c.srcComplex ? convert(im) : 0);
      lossless = lossless && (!c.srcComplex || out.back() == im);
    }
  }
  return {out, hasPass(c.src, c.dst) && c.checkLossless ? lossless : true};
}

/// Where the source values of a call come from: the pool read cyclically from an offset, or, with a
/// lone slot, the filler everywhere except the pool's value at offset placed in that slot.
struct Source {
  std::size_t offset;
  std::size_t loneSlot = std::size_t(-1);
  long double filler = 0;
};

/// Runs one call on fresh buffers; returns an empty string or the first discrepancy.
std::string runAndCompare(const Call& c, const std::vector<long double>& pool, Source from) {
  const std::size_t parts = c.srcComplex ? 2 : 1;
  std::size_t slots = c.srcLength * parts;
  if (c.dstLength > 0) slots = std::max(slots, (c.dstLength - 1) * sourceStep(c) + parts);
  std::vector<long double> in(slots);
  std::vector<unsigned char> src(slots * kTypes[c.src].bytes);
  for (std::size_t i = 0; i < slots; ++i) {
    const bool lone = from.loneSlot != std::size_t(-1);
    in[i] = !lone ? pool[(from.offset + i) % pool.size()] : i == from.loneSlot ? pool[from.offset] : from.filler;
    store(c.src, src.data(), i, in[i]);
  }
  const std::size_t dstBytes = destinationSlots(c) * kTypes[c.dst].bytes;
  std::vector<unsigned char> dst(dstBytes + 32, 0xA5);

  const auto overflow = static_cast<fxpModeOverflow_tag>(c.overflow);
  const auto rounding = static_cast<fxpModeRounding_tag>(c.rounding);
  const bool result = utGetQlBuiltinDtypeConvFcn(c.src, c.dst, overflow, rounding)(
      src.data(), dst.data(), c.srcLength, c.dstLength, c.srcComplex, c.dstComplex, c.checkLossless, c.src, c.dst,
      overflow, rounding);

  const auto [want, wantResult] = model(c, in);
  std::ostringstream failure;
  for (std::size_t i = 0; i < want.size() && failure.str().empty(); ++i) {
    const long double got = load(c.dst, dst.data(), i);
    // Floats must match to the sign of zero; an integer zero has no sign.
    const bool same = std::isnan(want[i])
                          ? std::isnan(got)
                          : got == want[i] && (!kTypes[c.dst].isFloat || std::signbit(got) == std::signbit(want[i]));
    if (!same) failure << "slot " << i << ": got " << double(got) << ", want " << double(want[i]);
  }
  if (failure.str().empty() && result != wantResult) failure << "result " << result << ", want " << wantResult;
  for (std::size_t b = dstBytes; failure.str().empty() && b < dst.size(); ++b)
    if (dst[b] != 0xA5) failure << "wrote past the destination";
  if (failure.str().empty()) return "";
  std::ostringstream call;
  call << kTypes[c.src].name << (c.srcComplex ? " complex" : "") << " -> " << kTypes[c.dst].name
       << (c.dstComplex ? " complex" : "") << ", overflow " << c.overflow << ", rounding " << c.rounding << ", check "
       << c.checkLossless << ", lengths " << c.srcLength << "/" << c.dstLength << ", pool offset " << from.offset;
  if (from.loneSlot != std::size_t(-1)) call << " in slot " << from.loneSlot << " among " << double(from.filler);
  call << ": ";
  return call.str() + failure.str();
}

/// Values beyond the reach of the SIMD loops' integer conversions (2^31 for single lanes and for AVX2,
/// 2^63 for AVX-512's double lanes): finite ones, with residues that are not zero where the source
/// type allows, and NaN. None for integer sources.
std::vector<long double> rarePathFillers(int src) {
  if (src == kDouble) return {-(0x1p63L + 3 * 0x1p12L), std::numeric_limits<long double>::quiet_NaN()};
  if (src == kSingle)
    return {0x1p31L + 3 * 0x1p8L, -(0x1p64L + 0x1p41L), std::numeric_limits<long double>::quiet_NaN()};
  return {};
}

const char* const kLevelNames[QLTypeSys::detail::kConversionLevelCount] = {"scalar", "avx2", "avx512"};

/// Parameters: the level of real-vector loops, and srcId x 9 + dstId.
class KernelDifferential : public ::testing::TestWithParam<std::tuple<int, int>> {
 protected:
  void SetUp() override {
    const int level = std::get<0>(GetParam());
    if (!QLTypeSys::detail::setConversionLevel(static_cast<QLTypeSys::detail::ConversionLevel>(level)))
      GTEST_SKIP() << "this processor doesn't run the " << kLevelNames[level] << " loops";
  }
  void TearDown() override { QLTypeSys::detail::setConversionLevel(QLTypeSys::detail::bestConversionLevel()); }
};

TEST_P(KernelDifferential, MatchesTheReferenceForEveryModeShapeAndLength) {
  const int src = std::get<1>(GetParam()) / 9, dst = std::get<1>(GetParam()) % 9;
  const std::vector<long double> pool = sourcePool(src);
  for (int overflow = 0; overflow <= 1; ++overflow)
    for (int rounding = 0; rounding <= 4; ++rounding)
      for (int shape = 0; shape < 4; ++shape)
        for (bool check : {false, true}) {
          Call c{src, dst, overflow, rounding, (shape & 2) != 0, (shape & 1) != 0, check, 0, 0};
          std::vector<std::pair<Call, Source>> calls;
          c.srcLength = c.dstLength = static_cast<unsigned>(pool.size() / (c.srcComplex ? 2 : 1));
          calls.insert(calls.end(), {{c, {0}}, {c, {1}}});  // the whole pool, paired two ways when complex
          c.srcLength = c.dstLength = 1;
          for (std::size_t k = 0; k < pool.size(); ++k) calls.push_back({c, {k}});  // each value decides the pass
          // Two blocks of sixteen singles, or four of eight doubles, and a tail.
          c.srcLength = c.dstLength = 35;
          if (shape == 0 && check) {
            // Each value at one position among zeros, which every kernel keeps: only it can fail the pass.
            for (std::size_t k = 0; k < pool.size(); ++k) calls.push_back({c, {k, k % 35}});
          }
          if (shape == 0 && !check) {
            // Each value at one position among values that send every block of a wrap kernel down its
            // rare path (exact reduction in floating point).
            for (long double filler : rarePathFillers(src))
              for (std::size_t k = 0; k < pool.size(); ++k) calls.push_back({c, {k, k % 35, filler}});
          }
          for (unsigned dstLength = 0; dstLength <= 19; ++dstLength)
            for (unsigned srcLength : {0u, 1u, dstLength, dstLength + 3})
              for (std::size_t offset : {std::size_t{0}, pool.size() / 3, pool.size() / 2 + 1}) {
                c.srcLength = srcLength;
                c.dstLength = dstLength;
                calls.push_back({c, {offset}});
              }
          for (const auto& [call, from] : calls) {
            const std::string failure = runAndCompare(call, pool, from);
            if (!failure.empty()) {
              ADD_FAILURE() << failure;
              break;  // one report per combination
            }
          }
        }
}

INSTANTIATE_TEST_SUITE_P(AllLevelsAndPairs, KernelDifferential,
                         ::testing::Combine(::testing::Range(0, QLTypeSys::detail::kConversionLevelCount),
                                            ::testing::Range(0, 81)),
                         [](const auto& info) {
                           const int pair = std::get<1>(info.param);
                           return std::string(kLevelNames[std::get<0>(info.param)]) + "_" + kTypes[pair / 9].name +
                                  "_to_" + kTypes[pair % 9].name;
                         });

}  // namespace
