// Registration by name and the fixed-point text cache.
//
// BM_RegisterTypes registers n distinct client types into a fresh table; time per type stays
// flat as n grows. BM_LinearScanRegistry is the baseline: the same registrations with a
// lookup that scans every name, which grows quadratically.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/fixpt/fxpDataTypeText.hpp"

namespace {

std::vector<std::string> names(std::size_t n) {
  std::vector<std::string> out;
  out.reserve(n);
  for (std::size_t i = 0; i < n; ++i) out.push_back("BusType_" + std::to_string(i));
  return out;
}

void BM_RegisterTypes(benchmark::State& state) {
  const auto list = names(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    QLTypeSys::DataTypeTable table;
    for (const std::string& n : list)
      benchmark::DoNotOptimize(table.registerDataType(n.c_str(), static_cast<QLTypeSys::DataTypeSource>(2), nullptr));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_RegisterTypes)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_LinearScanRegistry(benchmark::State& state) {
  const auto list = names(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::vector<std::string> registry;
    for (const std::string& n : list) {
      bool found = false;
      for (const std::string& r : registry)
        if (r == n) found = true;
      if (!found) registry.push_back(n);
    }
    benchmark::DoNotOptimize(registry.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LinearScanRegistry)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_FixptIdentifierCacheHit(benchmark::State& state) {
  const fxpDataTypeProp p(true, 16, 1.5, -3, 0.25);
  for (auto _ : state) benchmark::DoNotOptimize(fxpDataTypeToIdentifierString(&p));
}
BENCHMARK(BM_FixptIdentifierCacheHit);

void BM_FixptConstructorCacheHitHashed(benchmark::State& state) {
  const fxpDataTypeProp p(true, 16, 7);
  for (auto _ : state)
    benchmark::DoNotOptimize(fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, FxpDT::scalingRepBinaryPoint));
}
BENCHMARK(BM_FixptConstructorCacheHitHashed);

void BM_FixptIdentifierCacheMiss(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    // A record never seen before: every call computes and keeps a new entry.
    const fxpDataTypeProp p(true, 2 + (i % 120), 1.25, -(i / 120), 0.5);
    ++i;
    benchmark::DoNotOptimize(fxpDataTypeToIdentifierString(&p));
  }
}
BENCHMARK(BM_FixptIdentifierCacheMiss);

}  // namespace
