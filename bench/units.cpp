// Benchmarks of the units half: parsing unit expressions with the shared grammar, against building the
// grammar for every parse (the baseline, in the same run), and conversion factor products and powers,
// exact against double.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/internal/UnitExprGrammarCost.hpp"

namespace {

using namespace QLTypeSys;

// Texts as blocks of a model give them: plain and prefixed names, quotients and powers, groups, names of
// other scripts, white space, and abstract units after "@" (split off first, as the unit table does).
const std::vector<std::wstring>& mix() {
  static const std::vector<std::wstring> texts = {
      L"m",           L"km/h",       L"kg*m/s^2",   L"N*m",           L"m/s^2",      L"(m/s)^-1",
      L"1/(m*s)",     L"rad/s",      L"\u00B0C",    L"\u00B5m",       L"\u03A9",     L"k\u03A9*mA",
      L"W/(m^2*K)",   L"J/(kg*K)",   L"m^3/s",      L"km/h@velocity", L"N*m@torque", L"\u7C73/\u79D2",
      L"V*A",         L"lbf*ft",     L"kWh",        L"mi/gal",        L"Pa*s",       L"mol/(m^3*s)",
      L" m / s ^ 2 ", L"deg/s^(-1)", L"A*h@charge", L"m^-1",          L"ft^2",       L"1/min",
  };
  return texts;
}

template <bool FreshGrammar>
void BM_ParseMix(benchmark::State& state) {
  std::wstring unitPart, abstractPart;
  UnitExprAST ast;
  std::size_t terms = 0;
  for (auto _ : state) {
    for (const std::wstring& text : mix()) {
      splitUnitExpr(text, unitPart, abstractPart);
      const bool ok =
          FreshGrammar ? internal::parseUnitExprWithFreshGrammar(unitPart, ast) : parseUnitExpr(unitPart, ast);
      if (!ok) state.SkipWithError("a text of the mix did not parse");
      terms += ast.names.size();
    }
  }
  benchmark::DoNotOptimize(terms);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * mix().size()));
  state.SetLabel("items = parses");
}
BENCHMARK_TEMPLATE(BM_ParseMix, false)->Name("ParseMix/SharedGrammar");
BENCHMARK_TEMPLATE(BM_ParseMix, true)->Name("ParseMix/GrammarPerParse_baseline");

void BM_SplitOnly(benchmark::State& state) {
  std::wstring unitPart, abstractPart;
  for (auto _ : state)
    for (const std::wstring& text : mix()) splitUnitExpr(text, unitPart, abstractPart);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * mix().size()));
}
BENCHMARK(BM_SplitOnly)->Name("ParseMix/SplitOnly");

// Factors of a few units (kilo, hour, mile, foot, minute, inch...) combined as expressions compose them.
std::vector<ConversionFactor> exactFactors() {
  return {ConversionFactorFactory::createConversionFactor(1000, 1, 0),
          ConversionFactorFactory::createConversionFactor(3600, 1, 0),
          ConversionFactorFactory::createConversionFactor(1609344, 1000, 0),
          ConversionFactorFactory::createConversionFactor(3048, 10000, 0),
          ConversionFactorFactory::createConversionFactor(60, 1, 0),
          ConversionFactorFactory::createConversionFactor(254, 100, -2)};
}

std::vector<ConversionFactor> doubleFactors() {
  std::vector<ConversionFactor> out;
  for (const ConversionFactor& f : exactFactors())
    out.push_back(ConversionFactorFactory::createConversionFactor(f.toDouble()));
  return out;
}

template <bool Exact>
void BM_FactorProducts(benchmark::State& state) {
  const std::vector<ConversionFactor> factors = Exact ? exactFactors() : doubleFactors();
  double sink = 0;
  for (auto _ : state) {
    for (std::size_t i = 0; i < factors.size(); ++i) {
      // One term of a composed unit: a factor times another raised to a small power, as km/h is k·h^-1.
      const ConversionFactor p = factors[i] * factors[(i + 1) % factors.size()];
      sink += p.toDouble();
    }
  }
  benchmark::DoNotOptimize(sink);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * factors.size()));
  state.SetLabel("items = products");
}
BENCHMARK_TEMPLATE(BM_FactorProducts, true)->Name("FactorProducts/Exact");
BENCHMARK_TEMPLATE(BM_FactorProducts, false)->Name("FactorProducts/Double");

template <bool Exact>
void BM_FactorPowers(benchmark::State& state) {
  const std::vector<ConversionFactor> factors = Exact ? exactFactors() : doubleFactors();
  const int powers[] = {2, -1, 3, -2};
  double sink = 0;
  for (auto _ : state) {
    for (std::size_t i = 0; i < factors.size(); ++i) {
      const ConversionFactor p = factors[i] ^ powers[i % 4];
      sink += p.toDouble();
    }
  }
  benchmark::DoNotOptimize(sink);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * factors.size()));
  state.SetLabel("items = powers");
}
BENCHMARK_TEMPLATE(BM_FactorPowers, true)->Name("FactorPowers/Exact");
BENCHMARK_TEMPLATE(BM_FactorPowers, false)->Name("FactorPowers/Double");

// The composition of a whole expression's factor: km/h·(m/s)^-1 style chains of products and powers.
template <bool Exact>
void BM_ComposeExpression(benchmark::State& state) {
  const std::vector<ConversionFactor> f = Exact ? exactFactors() : doubleFactors();
  double sink = 0;
  for (auto _ : state) {
    ConversionFactor base;
    base *= f[0];
    base *= f[1] ^ -1;
    base *= f[2] ^ 2;
    base *= f[3] ^ -2;
    base *= f[4];
    sink += base.toDouble();
  }
  benchmark::DoNotOptimize(sink);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  state.SetLabel("items = five-term compositions");
}
BENCHMARK_TEMPLATE(BM_ComposeExpression, true)->Name("ComposeExpression/Exact");
BENCHMARK_TEMPLATE(BM_ComposeExpression, false)->Name("ComposeExpression/Double");

}  // namespace
