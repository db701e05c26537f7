// The baseline that the unit benchmarks share: parsing the same texts without resolving them.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ql_types/units/UnitExprParser.hpp"

namespace qlbench {

/// Parses every text once per iteration; items are texts.
inline void parseOnly(benchmark::State& state, const std::vector<std::wstring>& texts) {
  QLTypeSys::UnitExprAST ast;
  std::size_t terms = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) {
      QLTypeSys::parseUnitExpr(t, ast);
      terms += ast.names.size();
    }
  benchmark::DoNotOptimize(terms);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}

}  // namespace qlbench
