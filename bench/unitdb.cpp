// Benchmarks of the unit database: getUnit on stored names and symbols, on prefixed readings (the first
// lookup, which makes the composite, and repeated ones), and resolution of new compound expressions.
// Baselines in the same run: a plain std::map of the same texts, a naive prefix split (every prefix tried
// in turn against a std::map of units), and the bare parse of the same expressions. Divide the rates for
// the ratios.
//
// The catalogue is grown in code to a few hundred units (each a multiple of the metre, half of them
// admitting the 20 SI prefixes), so that maps and tries have a realistic depth.
#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "ParseBaseline.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

constexpr int kUnits = 400;

struct Prefix {
  const wchar_t *name, *symbol;
  int exponent;
};
// clang-format off
const Prefix kPrefixes[] = {
    {L"quetta", L"Q", 30}, {L"ronna", L"R", 27}, {L"yotta", L"Y", 24}, {L"zetta", L"Z", 21}, {L"exa", L"E", 18},
    {L"peta", L"P", 15},   {L"tera", L"T", 12},  {L"giga", L"G", 9},   {L"mega", L"M", 6},   {L"kilo", L"k", 3},
    {L"hecto", L"h", 2},   {L"deca", L"da", 1},  {L"deci", L"d", -1},  {L"centi", L"c", -2}, {L"milli", L"m", -3},
    {L"micro", L"u", -6},  {L"nano", L"n", -9},  {L"pico", L"p", -12}, {L"femto", L"f", -15}, {L"atto", L"a", -18}};
// clang-format on

std::wstring unitName(int i) { return L"lengthunit" + std::to_wstring(i); }
std::wstring unitSymbol(int i) { return L"L" + std::to_wstring(i); }

void grownCatalogue(UnitDatabase& db, const std::wstring&) {
  for (const Prefix& p : kPrefixes)
    db.addUnitPrefix(*UnitFactory::createUnitPrefix(p.name, p.symbol, p.symbol, p.name,
                                                    F::createConversionFactor(1, 1, p.exponent), {}));
  auto length = UnitFactory::createAbstractUnit(-10, L"length", L"L", L"length", L"Len", L"Len");
  length->parseExpressionAndGenerateAST();
  db.addUnit(*length);
  const UnitBase& stored = *db.getAbstractUnit(L"length").begin();
  std::vector<std::reference_wrapper<const UnitPrefix>> all;
  for (const UnitPrefix& p : db.getAllPrefixes()) all.emplace_back(p);
  for (int i = 0; i < kUnits; ++i) {
    auto u = UnitFactory::createUnit(
        -10, unitName(i), L"m", unitSymbol(i), unitSymbol(i), L"", F::createConversionFactor(i + 1, 1, 0), L"", {},
        i % 2 == 0 ? all : std::vector<std::reference_wrapper<const UnitPrefix>>{}, false, stored);
    u->parseExpressionAndGenerateAST();
    db.addUnit(*u);
  }
}

UnitDatabase* freshDatabase() {
  UnitDatabase::setLoader(grownCatalogue);
  UnitDatabase::getUnitDatabase()->clearAll();
  return UnitDatabase::getUnitDatabase();
}

std::vector<std::wstring> storedTexts() {
  std::vector<std::wstring> texts;
  for (int i = 0; i < kUnits; ++i) {
    texts.push_back(unitName(i));
    texts.push_back(unitSymbol(i));
  }
  return texts;
}

std::vector<std::wstring> prefixedTexts() {
  std::vector<std::wstring> texts;
  for (int i = 0; i < kUnits; i += 2)
    for (const Prefix& p : {kPrefixes[9], kPrefixes[14], kPrefixes[11], kPrefixes[16]}) {
      texts.push_back(p.symbol + unitSymbol(i));
      texts.push_back(p.name + unitName(i));
    }
  return texts;
}

void BM_GetUnitStored(benchmark::State& state) {
  UnitDatabase* db = freshDatabase();
  const std::vector<std::wstring> texts = storedTexts();
  std::size_t found = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) found += db->getUnit(t).size();
  benchmark::DoNotOptimize(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_GetUnitStored)->Name("GetUnit/Stored");

void BM_StdMapStored(benchmark::State& state) {
  std::map<std::wstring, int> map;
  const std::vector<std::wstring> texts = storedTexts();
  for (std::size_t i = 0; i < texts.size(); ++i) map.emplace(texts[i], static_cast<int>(i));
  std::size_t found = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) found += map.count(t);
  benchmark::DoNotOptimize(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_StdMapStored)->Name("GetUnit/Stored_baseline_stdmap");

void BM_GetUnitPrefixedFirst(benchmark::State& state) {
  const std::vector<std::wstring> texts = prefixedTexts();
  std::size_t found = 0;
  for (auto _ : state) {
    state.PauseTiming();
    UnitDatabase* db = freshDatabase();  // no composites yet
    state.ResumeTiming();
    for (const std::wstring& t : texts) found += db->getUnit(t).size();
  }
  benchmark::DoNotOptimize(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_GetUnitPrefixedFirst)->Name("GetUnit/PrefixedFirst");

void BM_GetUnitPrefixedRepeated(benchmark::State& state) {
  UnitDatabase* db = freshDatabase();
  const std::vector<std::wstring> texts = prefixedTexts();
  for (const std::wstring& t : texts) db->getUnit(t);
  std::size_t found = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) found += db->getUnit(t).size();
  benchmark::DoNotOptimize(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_GetUnitPrefixedRepeated)->Name("GetUnit/PrefixedRepeated");

// Every prefix tried in turn (names and symbols), the rest looked up in a std::map of units.
void BM_NaivePrefixSplit(benchmark::State& state) {
  std::map<std::wstring, int> units;
  for (int i = 0; i < kUnits; ++i) {
    units.emplace(unitName(i), i);
    units.emplace(unitSymbol(i), i);
  }
  const std::vector<std::wstring> texts = prefixedTexts();
  std::size_t found = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts)
      for (const Prefix& p : kPrefixes)
        for (const std::wstring& head : {std::wstring(p.name), std::wstring(p.symbol)})
          if (t.compare(0, head.size(), head) == 0) found += units.count(t.substr(head.size()));
  benchmark::DoNotOptimize(found);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_NaivePrefixSplit)->Name("GetUnit/Prefixed_baseline_naive_split");

std::vector<std::wstring> compoundTexts() {
  std::vector<std::wstring> texts;
  for (int i = 0; i < 200; ++i)
    texts.push_back(L"k" + unitSymbol(2 * i) + L"*" + unitSymbol(i + 1) + L"^2/(m" + unitSymbol((4 * i) % kUnits) +
                    L"*" + unitName(i + 3) + L")");
  return texts;
}

void BM_Resolve(benchmark::State& state) {
  UnitDatabase* db = freshDatabase();
  const std::vector<std::wstring> texts = compoundTexts();
  std::size_t terms = 0;
  for (auto _ : state)
    for (const std::wstring& t : texts) {
      auto u = UnitFactory::createUnit(-10, t, t, t, t, t, ConversionFactor::unity, L"", {}, {}, false,
                                       UnitFactory::getDefaultAbstractUnit());
      u->parseExpressionAndGenerateAST();
      terms += u->getUnitsInfo().size();
    }
  benchmark::DoNotOptimize(terms);
  benchmark::DoNotOptimize(db);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_Resolve)->Name("Resolve/Compound");

void BM_ParseOnly(benchmark::State& state) { qlbench::parseOnly(state, compoundTexts()); }
BENCHMARK(BM_ParseOnly)->Name("Resolve/Compound_baseline_parse_only");

}  // namespace
