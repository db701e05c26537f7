// Benchmarks of the unit table: registering new compound expressions in a fresh table (the whole of
// registerUnit: split, validity, composition with its four text forms, resolution, whitelist), registering
// known texts again, and the scale and offset between two registered ids. Baselines in the same run: the
// bare parse of the same expressions, a std::unordered_map lookup of the same texts, and reading two
// doubles. Divide the rates for the ratios.
//
// The catalogue is grown in code: 200 units of length (half admitting kilo and milli) and 50 of time.
#include "ql_types/units/UnitTable.hpp"

#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "ParseBaseline.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

constexpr int kLengths = 200;
constexpr int kTimes = 50;

std::wstring lengthSymbol(int i) { return L"len" + std::to_wstring(i); }
std::wstring timeSymbol(int i) { return L"tim" + std::to_wstring(i); }

void benchCatalogue(UnitDatabase& db, const std::wstring&) {
  db.addUnitPrefix(
      *UnitFactory::createUnitPrefix(L"kilo", L"k", L"k", L"kilo", F::createConversionFactor(1, 1, 3), {}));
  db.addUnitPrefix(
      *UnitFactory::createUnitPrefix(L"milli", L"m", L"m", L"milli", F::createConversionFactor(1, 1, -3), {}));
  for (const wchar_t* name : {L"length", L"time"}) {
    auto a = UnitFactory::createAbstractUnit(-10, name, name[0] == L'l' ? L"L" : L"T", name, name, name);
    a->parseExpressionAndGenerateAST();
    db.addUnit(*a);
  }
  const UnitBase& length = *db.getAbstractUnit(L"length").begin();
  const UnitBase& time = *db.getAbstractUnit(L"time").begin();
  std::vector<std::reference_wrapper<const UnitPrefix>> prefixes;
  for (const UnitPrefix& p : db.getAllPrefixes()) prefixes.emplace_back(p);
  for (int i = 0; i < kLengths; ++i) {
    auto u = UnitFactory::createUnit(-10, L"lengthunit" + std::to_wstring(i), L"m", lengthSymbol(i), lengthSymbol(i),
                                     L"", F::createConversionFactor(i + 1, 1, 0), L"", {},
                                     i % 2 == 0 ? prefixes : std::vector<std::reference_wrapper<const UnitPrefix>>{},
                                     false, length);
    u->parseExpressionAndGenerateAST();
    db.addUnit(*u);
  }
  for (int i = 0; i < kTimes; ++i) {
    auto u = UnitFactory::createUnit(-10, L"timeunit" + std::to_wstring(i), L"s", timeSymbol(i), timeSymbol(i), L"",
                                     F::createConversionFactor(i + 1, 1, 0), L"", {}, {}, false, time);
    u->parseExpressionAndGenerateAST();
    db.addUnit(*u);
  }
}

UnitDatabase* freshDatabase() {
  UnitDatabase::setLoader(benchCatalogue);
  UnitDatabase::getUnitDatabase()->clearAll();
  return UnitDatabase::getUnitDatabase();
}

// 400 distinct compound expressions: speeds, accelerations, prefixed and grouped forms.
std::vector<std::wstring> compoundTexts() {
  std::vector<std::wstring> texts;
  for (int i = 0; i < 100; ++i) {
    const std::wstring l = lengthSymbol(2 * i), t = timeSymbol(i % kTimes);
    texts.push_back(l + L"/" + t);
    texts.push_back(L"k" + l + L"/" + t + L"^2");
    texts.push_back(L"(" + l + L"*m" + l + L")/(" + t + L"*" + timeSymbol((i + 1) % kTimes) + L")");
    texts.push_back(lengthSymbol(2 * i + 1) + L"^3*" + t + L"^-1");
  }
  return texts;
}

void BM_RegisterNew(benchmark::State& state) {
  UnitDatabase* db = freshDatabase();
  const std::vector<std::wstring> texts = compoundTexts();
  int last = 0;
  for (auto _ : state) {
    UnitTable table;
    for (const std::wstring& t : texts) last = table.registerUnit(t);
  }
  benchmark::DoNotOptimize(last);
  benchmark::DoNotOptimize(db);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_RegisterNew)->Name("Register/New");

void BM_ParseOnly(benchmark::State& state) { qlbench::parseOnly(state, compoundTexts()); }
BENCHMARK(BM_ParseOnly)->Name("Register/New_baseline_parse_only");

void BM_RegisterKnown(benchmark::State& state) {
  freshDatabase();
  const std::vector<std::wstring> texts = compoundTexts();
  UnitTable table;
  for (const std::wstring& t : texts) table.registerUnit(t);
  long long sum = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) sum += table.registerUnit(t);
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_RegisterKnown)->Name("Register/Known");

void BM_HashLookup(benchmark::State& state) {
  const std::vector<std::wstring> texts = compoundTexts();
  std::unordered_map<std::wstring, int> ids;
  for (std::size_t i = 0; i < texts.size(); ++i) ids.emplace(texts[i], static_cast<int>(i));
  long long sum = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) sum += ids.find(t)->second;
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_HashLookup)->Name("Register/Known_baseline_unordered_map");

void BM_ConversionInfo(benchmark::State& state) {
  freshDatabase();
  const std::vector<std::wstring> texts = compoundTexts();
  UnitTable table;
  std::vector<int> speeds;
  for (std::size_t i = 0; i < texts.size(); i += 4) speeds.push_back(table.registerUnit(texts[i]));
  double sum = 0;
  for (auto _ : state)
    for (std::size_t i = 0; i + 1 < speeds.size(); ++i) {
      const UnitNumericInfoForConversions info = table.getConversionInfo(speeds[i], speeds[i + 1]);
      sum += info.getScalingFactor() + info.getOffset();
    }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * (speeds.size() - 1)));
}
BENCHMARK(BM_ConversionInfo)->Name("ConversionInfo/ById");

void BM_TwoDoubles(benchmark::State& state) {
  std::vector<double> scales(100), offsets(100);
  for (std::size_t i = 0; i < scales.size(); ++i) scales[i] = 1.0 + static_cast<double>(i);
  double sum = 0;
  for (auto _ : state)
    for (std::size_t i = 0; i + 1 < scales.size(); ++i) {
      benchmark::DoNotOptimize(scales.data());
      sum += scales[i] + offsets[i];
    }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * (scales.size() - 1)));
}
BENCHMARK(BM_TwoDoubles)->Name("ConversionInfo/ById_baseline_two_doubles");

}  // namespace
