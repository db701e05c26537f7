// libFuzzer target for the unit expression language: parseUnitExpr, splitUnitExpr and the partial entry.
#include <cstdio>
#include <cstdlib>

#include "units/fuzz/UnitExprFuzzBody.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string failure = qlfuzz::runUnitExprFuzzInput(data, size);
  if (!failure.empty()) {
    std::fprintf(stderr, "unit expression property failed: %s\n", failure.c_str());
    std::abort();
  }
  return 0;
}
