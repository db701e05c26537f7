// Benchmarks of the symbolic-expression library: entering expressions (hash-consing, with a linear-scan
// baseline in the same run), simplification time against expression size, and long flat sums (parse as
// the baseline, simplify and print).
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace {

using namespace QL;

// Enters count expressions of mixed shapes over a window of recent entries; some are already there.
void enterMixed(SymbolicExprTable& t, unsigned count) {
  std::vector<unsigned> recent;
  recent.reserve(64);
  for (unsigned i = 0; i < count; ++i) {
    unsigned id;
    const unsigned a = recent.empty() ? 0 : recent[i % recent.size()];
    const unsigned b = recent.empty() ? 0 : recent[(i * 7 + 3) % recent.size()];
    switch (i % 6) {
      case 0:
        id = SymbolicIntValue(t, static_cast<int>(i)).getId(t);
        break;
      case 1:
        id = SymbolicString(t, "N" + std::to_string(i % 50000)).getId(t);
        break;
      case 2:
        id = SymbolicPlusExpr(t, a, b).getId(t);
        break;
      case 3:
        id = SymbolicMultiplyExpr(t, a, b).getId(t);
        break;
      case 4:
        id = SymbolicDivideExpr(t, a, b).getId(t);
        break;
      default:
        id = SymbolicNDExpr(t, {a, b}).getId(t);
        break;
    }
    if (recent.size() < 64)
      recent.push_back(id);
    else
      recent[i % 64] = id;
  }
}

void BM_EnterMillionMixed(benchmark::State& state) {
  const unsigned count = static_cast<unsigned>(state.range(0));
  std::size_t entries = 0;
  for (auto _ : state) {
    SymbolicExprTable t;
    enterMixed(t, count);
    entries = t.size();
    benchmark::DoNotOptimize(entries);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * count);
  state.counters["distinct"] = static_cast<double>(entries);
}
BENCHMARK(BM_EnterMillionMixed)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

// Finding existing entries by hash-consing, against a scan of all entries for the equal one.
void BM_LookupHashVsLinearScan(benchmark::State& state) {
  const unsigned n = static_cast<unsigned>(state.range(0));
  SymbolicExprTable t;
  const unsigned x = SymbolicString(t, "x").getId(t);
  std::vector<unsigned> ints;
  for (unsigned i = 0; i < n; ++i) ints.push_back(SymbolicIntValue(t, static_cast<int>(i)).getId(t));
  for (unsigned i = 0; i < n; ++i) SymbolicMultiplyExpr(t, x, ints[i]).getId(t);
  auto scan = [&t](unsigned lhs, unsigned rhs) {
    for (unsigned i = 0; i < t.size(); ++i) {
      const SymbolicExpr& e = t.get(i);
      if (SymbolicMultiplyExpr::isa(e) && e.getOperand(0) == lhs && e.getOperand(1) == rhs) return i;
    }
    return SymbolicExpr::npos;
  };
  std::mt19937 rng(1);
  double hashNs = 0, scanNs = 0;
  std::size_t lookups = 0;
  for (auto _ : state) {
    const unsigned k = ints[rng() % n];
    auto t0 = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(SymbolicMultiplyExpr(t, x, k).getId(t));
    auto t1 = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(scan(x, k));
    auto t2 = std::chrono::steady_clock::now();
    hashNs += std::chrono::duration<double, std::nano>(t1 - t0).count();
    scanNs += std::chrono::duration<double, std::nano>(t2 - t1).count();
    ++lookups;
  }
  state.counters["hash_ns"] = hashNs / static_cast<double>(lookups);
  state.counters["scan_ns"] = scanNs / static_cast<double>(lookups);
  state.counters["scan_over_hash"] = scanNs / hashNs;
}
BENCHMARK(BM_LookupHashVsLinearScan)->Arg(1 << 10)->Arg(1 << 14);

// A sum of terms random monomials over eight names with small coefficients, in random order.
unsigned randomPolynomial(SymbolicExprTable& t, std::mt19937& rng, unsigned terms) {
  static const char* names[] = {"a", "b", "c", "d", "e", "f", "g", "h"};
  unsigned sum = SymbolicIntValue(t, 0).getId(t);
  for (unsigned i = 0; i < terms; ++i) {
    unsigned term = SymbolicIntValue(t, static_cast<int>(rng() % 9) - 4).getId(t);
    for (unsigned k = rng() % 4; k > 0; --k) {
      const unsigned name = SymbolicString(t, names[rng() % 8]).getId(t);
      term = SymbolicMultiplyExpr(t, name, term).getId(t);
    }
    sum = SymbolicPlusExpr(t, term, sum).getId(t);
  }
  return sum;
}

void BM_SimplifyPolynomial(benchmark::State& state) {
  const unsigned terms = static_cast<unsigned>(state.range(0));
  SymbolicExprTable t;
  std::mt19937 rng(terms);
  std::vector<unsigned> inputs;
  for (int i = 0; i < 64; ++i) inputs.push_back(randomPolynomial(t, rng, terms));
  std::size_t i = 0;
  for (auto _ : state) {
    SymbolicExprSimplify simplify(t, 10);  // a fresh simplifier per call, as each operator of a size uses
    benchmark::DoNotOptimize(simplify.simplify(inputs[i++ % inputs.size()]));
  }
  state.SetComplexityN(terms);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_SimplifyPolynomial)->RangeMultiplier(2)->Range(4, 512)->Complexity();

// A flat sum of n distinct names, as a model's text would write it: "d0+d1+...", a tree n levels deep.
std::string longSum(unsigned n) {
  std::string s;
  for (unsigned k = 0; k < n; ++k) s += (k ? "+d" : "d") + std::to_string(n - 1 - k);
  return s;
}

// The baseline of the two below: reading the text, which is linear in its length.
void BM_LongSumParse(benchmark::State& state) {
  const std::string text = longSum(static_cast<unsigned>(state.range(0)));
  for (auto _ : state) {
    SymbolicExprTable t;
    benchmark::DoNotOptimize(SymbolicExprParser{t}(text));
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LongSumParse)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond)->Complexity();

// Simplifying it (sorting the names into canonical order), in a fresh table each time.
void BM_LongSumSimplify(benchmark::State& state) {
  const std::string text = longSum(static_cast<unsigned>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    auto t = std::make_unique<SymbolicExprTable>();
    const unsigned i = SymbolicExprParser{*t}(text);
    state.ResumeTiming();
    benchmark::DoNotOptimize(SymbolicExprSimplify(*t, 10).simplify(i));
    state.PauseTiming();
    t.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LongSumSimplify)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond)->Complexity();

// Printing it.
void BM_LongSumPrint(benchmark::State& state) {
  const std::string text = longSum(static_cast<unsigned>(state.range(0)));
  SymbolicExprTable t;
  const unsigned i = SymbolicExprParser{t}(text);
  for (auto _ : state) benchmark::DoNotOptimize(SymbolicExprPrinter()(t, i));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LongSumPrint)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond)->Complexity();

}  // namespace
