// Loading the shipped unit catalogue: the first getUnitDatabase after clearAll reads the package file
// through all eleven stages. The baseline, in the same run, reads the same file's bytes into memory, the
// least any loader must do.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"

namespace {

using QLTypeSys::UnitDatabase;

std::string packagePath() {
  return ConvertUStringToStdString(fl::filesystem::get_install_path() + UnitDatabase::unitDBPath);
}

void BM_LoadShippedCatalogue(benchmark::State& state) {
  UnitDatabase::setLoader(UnitDatabase::packageLoader());
  unsigned units = 0;
  for (auto _ : state) {
    state.PauseTiming();
    UnitDatabase::getUnitDatabase()->clearAll();
    state.ResumeTiming();
    units = UnitDatabase::getUnitDatabase()->getNumUnits();
  }
  state.counters["units"] = units;
  state.counters["abstract"] = UnitDatabase::getUnitDatabase()->getNumAbstractUnits();
  state.counters["prefixes"] = UnitDatabase::getUnitDatabase()->getNumPrefixes();
}
BENCHMARK(BM_LoadShippedCatalogue)->Name("Load/ShippedCatalogue")->Unit(benchmark::kMillisecond);

void BM_ReadPackageBytes(benchmark::State& state) {
  const std::string path = packagePath();
  std::size_t bytes = 0;
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    bytes = data.size();
    benchmark::DoNotOptimize(data.data());
  }
  state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_ReadPackageBytes)->Name("Load/ShippedCatalogue_baseline_read_bytes")->Unit(benchmark::kMillisecond);

}  // namespace
