// Every kernel reachable from utGetQlBuiltinDtypeConvFcn against the independent reference: all 81
// pairs, every overflow and rounding value a caller may pass (0..1, 0..4), the four complex shapes,
// broadcast sources, lengths around the unrolled loop, with and without the back-comparison pass.
// Each call checks every element written, the result, and guard bytes after the destination;
// source buffers are exactly as long as a kernel may read, so the sanitizer build catches overreads.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "ConversionReference.hpp"
#include "ValuePools.hpp"
#include "ql_types/convert/BuiltinConversion.hpp"

namespace {

using namespace convref;

constexpr std::size_t kGuardBytes = 32;
constexpr unsigned char kFill = 0xA5;

struct Call {
  int src;
  int dst;
  int overflow;
  int rounding;
  bool srcComplex;
  bool dstComplex;
  bool checkLossless;
  unsigned srcLength;
  unsigned dstLength;
};

std::string describe(const Call& c) {
  std::ostringstream out;
  out << kTypes[c.src].name << (c.srcComplex ? " complex" : "") << " -> " << kTypes[c.dst].name
      << (c.dstComplex ? " complex" : "") << ", overflow " << c.overflow << ", rounding " << c.rounding << ", check "
      << c.checkLossless << ", srcLength " << c.srcLength << ", dstLength " << c.dstLength;
  return out.str();
}

// Kernels to boolean (but not the boolean row's copy) have their own frame rules.
bool toBoolean(const Call& c) { return c.dst == kBoolean && c.src != kBoolean; }

std::size_t sourceStep(const Call& c) {
  const bool broadcast = toBoolean(c) ? c.srcLength == 1 : c.srcLength <= 1;
  return broadcast ? 0 : c.srcComplex ? 2 : 1;
}

/// How many source slots the call may read: its srcLength, or what dstLength reaches.
std::size_t sourceSlots(const Call& c) {
  const std::size_t parts = c.srcComplex ? 2 : 1;
  std::size_t slots = c.srcLength * parts;
  if (c.dstLength > 0) slots = std::max(slots, (c.dstLength - 1) * sourceStep(c) + parts);
  return slots;
}

std::size_t destinationSlots(const Call& c) { return c.dstLength * (c.dstComplex && !toBoolean(c) ? 2 : 1); }

struct Expected {
  std::vector<long double> dst;
  bool result;
};

/// The frame, modelled: which source slots feed which destination slots, and the pass.
Expected model(const Call& c, const std::vector<long double>& slots) {
  // Modes a pair's row doesn't select by are not looked at; the boolean row copies to boolean.
  const int overflow = usesOverflow(c.src, c.dst) ? c.overflow : kWrap;
  const int rounding = usesRounding(c.src, c.dst) ? c.rounding : kZero;
  const int elementDst = c.src == kBoolean && c.dst == kBoolean ? kUint8 : c.dst;
  auto convert = [&](long double v) { return convertValue(v, c.src, elementDst, overflow, rounding); };

  Expected e{{}, true};
  bool lossless = true;
  const std::size_t step = sourceStep(c);
  for (std::size_t i = 0; i < c.dstLength; ++i) {
    const long double re = slots[i * step];
    const long double im = c.srcComplex ? slots[i * step + 1] : 0;
    if (toBoolean(c)) {
      const long double out = re != 0 || (c.srcComplex && im != 0) ? 1 : 0;
      e.dst.push_back(out);
      lossless = lossless && out == re && (!c.srcComplex || im == 0);
      continue;
    }
    const long double outRe = convert(re);
    e.dst.push_back(outRe);
    lossless = lossless && outRe == re;
    if (c.dstComplex) {
      const long double outIm = c.srcComplex ? convert(im) : 0;
      e.dst.push_back(outIm);
      if (c.srcComplex) lossless = lossless && outIm == im;
    } else if (c.srcComplex) {
      lossless = lossless && im == 0;
    }
  }
  e.result = hasPass(c.src, c.dst) && c.checkLossless ? lossless : true;
  return e;
}

// Floats must match to the sign of zero; an integer zero has no sign.
bool sameResult(int dst, long double got, long double want) {
  if (std::isnan(want)) return std::isnan(got);
  return got == want && (!kTypes[dst].isFloat || std::signbit(got) == std::signbit(want));
}

/// Runs one call on a fresh pair of buffers; returns an empty string or the first discrepancy.
std::string runAndCompare(const Call& c, const std::vector<long double>& pool, std::size_t offset) {
  std::vector<long double> slots(sourceSlots(c));
  for (std::size_t i = 0; i < slots.size(); ++i) slots[i] = pool[(offset + i) % pool.size()];
  std::vector<unsigned char> src(slots.size() * kTypes[c.src].bytes);
  for (std::size_t i = 0; i < slots.size(); ++i) store(c.src, src.data(), i, slots[i]);

  const std::size_t dstBytes = destinationSlots(c) * kTypes[c.dst].bytes;
  std::vector<unsigned char> dst(dstBytes + kGuardBytes, kFill);

  const builtinConvFcn kernel = utGetQlBuiltinDtypeConvFcn(c.src, c.dst, static_cast<fxpModeOverflow_tag>(c.overflow),
                                                           static_cast<fxpModeRounding_tag>(c.rounding));
  const bool result =
      kernel(src.data(), dst.data(), c.srcLength, c.dstLength, c.srcComplex, c.dstComplex, c.checkLossless, c.src,
             c.dst, static_cast<fxpModeOverflow_tag>(c.overflow), static_cast<fxpModeRounding_tag>(c.rounding));

  const Expected e = model(c, slots);
  std::ostringstream failure;
  for (std::size_t i = 0; i < e.dst.size(); ++i) {
    const long double got = load(c.dst, dst.data(), i);
    if (!sameResult(c.dst, got, e.dst[i])) {
      const std::size_t source = (i / (destinationSlots(c) == c.dstLength ? 1 : 2)) * sourceStep(c);
      failure << "slot " << i << ": got " << static_cast<double>(got) << ", want " << static_cast<double>(e.dst[i])
              << " (source " << static_cast<double>(slots[source]) << ")";
      break;
    }
  }
  if (failure.str().empty() && result != e.result) failure << "result " << result << ", want " << e.result;
  for (std::size_t b = dstBytes; failure.str().empty() && b < dst.size(); ++b)
    if (dst[b] != kFill) failure << "guard byte " << b - dstBytes << " past the destination was written";
  return failure.str().empty() ? "" : describe(c) + ": " + failure.str();
}

class KernelDifferential : public ::testing::TestWithParam<int> {
 protected:
  int src() const { return GetParam() / 9; }
  int dst() const { return GetParam() % 9; }

  /// Runs every call the lambda produces for each mode and shape combination, stopping at the first
  /// discrepancy of each combination.
  template <class CallsFor>
  void sweep(CallsFor callsFor) {
    const std::vector<long double> pool = sourcePool(src());
    for (int overflow = 0; overflow <= 1; ++overflow)
      for (int rounding = 0; rounding <= 4; ++rounding)
        for (int shape = 0; shape < 4; ++shape)
          for (bool check : {false, true}) {
            const Call base{src(), dst(), overflow, rounding, (shape & 2) != 0, (shape & 1) != 0, check, 0, 0};
            for (const auto& [call, offset] : callsFor(base, pool.size())) {
              const std::string failure = runAndCompare(call, pool, offset);
              if (!failure.empty()) {
                ADD_FAILURE() << failure;
                break;
              }
            }
          }
  }
};

using CallList = std::vector<std::pair<Call, std::size_t>>;

TEST_P(KernelDifferential, WholePoolInOneVector) {
  sweep([](Call c, std::size_t poolSize) {
    c.srcLength = c.dstLength = static_cast<unsigned>(poolSize / (c.srcComplex ? 2 : 1));
    return CallList{{c, 0}, {c, 1}};  // offset 1 pairs the values differently when complex
  });
}

TEST_P(KernelDifferential, EachValueAloneDecidesThePass) {
  sweep([](Call c, std::size_t poolSize) {
    CallList calls;
    c.srcLength = c.dstLength = 1;
    for (std::size_t k = 0; k < poolSize; ++k) calls.push_back({c, k});
    return calls;
  });
}

TEST_P(KernelDifferential, LengthsAroundTheUnrolledLoopAndBroadcast) {
  sweep([](Call c, std::size_t poolSize) {
    CallList calls;
    for (unsigned dstLength = 0; dstLength <= 9; ++dstLength) {
      for (unsigned srcLength : {0u, 1u, dstLength, dstLength + 3}) {
        c.dstLength = dstLength;
        c.srcLength = srcLength;
        for (std::size_t offset : {std::size_t{0}, poolSize / 3, poolSize / 2 + 1}) calls.push_back({c, offset});
      }
    }
    return calls;
  });
}

std::string pairName(const ::testing::TestParamInfo<int>& info) {
  return std::string(kTypes[info.param / 9].name) + "_to_" + kTypes[info.param % 9].name;
}

INSTANTIATE_TEST_SUITE_P(AllPairs, KernelDifferential, ::testing::Range(0, 81), pairName);

}  // namespace
