// Replays the fuzz seeds and every input that ever made a fuzz target fail, one test per file, through the
// same body as the fuzz target (plain GoogleTest, no fuzzer runtime).
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "units/fuzz/UnitExprFuzzBody.hpp"

namespace {

namespace fs = std::filesystem;

// tests/units/fuzz in the source tree: from the environment when ctest runs, otherwise beside this file.
fs::path fuzzDir() {
  if (const char* root = std::getenv("QL_TYPES_SOURCE_DIR")) return fs::path(root) / "tests" / "units" / "fuzz";
  return fs::path(__FILE__).parent_path() / "fuzz";
}

std::vector<fs::path> keptInputs() {
  std::vector<fs::path> files;
  for (const char* kind : {"corpus", "crashes"}) {
    std::error_code ec;
    for (fs::recursive_directory_iterator it(fuzzDir() / kind, ec), end; !ec && it != end; it.increment(ec))
      if (it->is_regular_file() && it->path().filename() != "README.md") files.push_back(it->path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

class FuzzReplay : public testing::TestWithParam<fs::path> {};

TEST_P(FuzzReplay, PropertiesHold) {
  std::ifstream in(GetParam(), std::ios::binary);
  ASSERT_TRUE(in) << GetParam();
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(qlfuzz::runUnitExprFuzzInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), "");
}

std::string testName(const testing::TestParamInfo<fs::path>& info) {
  std::string name = info.param.parent_path().parent_path().filename().string() + "_" +
                     info.param.parent_path().filename().string() + "_" + info.param.filename().string();
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Kept, FuzzReplay, testing::ValuesIn(keptInputs()), testName);

TEST(FuzzReplayFiles, SeedsArePresent) { EXPECT_GE(keptInputs().size(), 20u) << fuzzDir(); }

}  // namespace
