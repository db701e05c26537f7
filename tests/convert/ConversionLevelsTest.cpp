// The levels of real-vector loops: what the library picks at load, that forcing a level works only
// for levels the processor runs, and that every level has a loop for every kernel the rows hold.
// The results of each level are checked by the differential test.
#include <gtest/gtest.h>

#include <string>

#include "ConversionReference.hpp"
#include "ql_types/convert/internal/ConversionLevels.hpp"

namespace {

using namespace QLTypeSys::detail;

class ConversionLevels : public ::testing::Test {
 protected:
  void TearDown() override { setConversionLevel(bestConversionLevel()); }
};

TEST_F(ConversionLevels, TheBestAvailableLevelIsActiveAndScalarAlwaysIs) {
  EXPECT_EQ(conversionLevel(), bestConversionLevel());
  EXPECT_TRUE(conversionLevelAvailable(ConversionLevel::Scalar));
  EXPECT_TRUE(conversionLevelAvailable(bestConversionLevel()));
  for (int level = static_cast<int>(bestConversionLevel()) + 1; level < kConversionLevelCount; ++level)
    EXPECT_FALSE(conversionLevelAvailable(static_cast<ConversionLevel>(level)));
  RecordProperty("best_level", static_cast<int>(bestConversionLevel()));
}

TEST_F(ConversionLevels, ForcingALevelTakesEffectOnlyWhereAvailable) {
  for (int level = 0; level < kConversionLevelCount; ++level) {
    const auto wanted = static_cast<ConversionLevel>(level);
    const ConversionLevel before = conversionLevel();
    const bool set = setConversionLevel(wanted);
    EXPECT_EQ(set, conversionLevelAvailable(wanted)) << "level " << level;
    EXPECT_EQ(conversionLevel(), set ? wanted : before) << "level " << level;
  }
}

TEST_F(ConversionLevels, EveryCompiledLevelHasALoopExactlyWhereTheRowsHaveKernels) {
  const RealLoopTable* tables[kConversionLevelCount] = {&kScalarRealLoops, kAvx2RealLoops, kAvx512RealLoops};
  for (int level = 0; level < kConversionLevelCount; ++level) {
    if (tables[level] == nullptr) continue;  // not compiled for this processor family
    for (int cell = 0; cell < 81; ++cell)
      for (int position = 0; position < 8; ++position)
        for (int check = 0; check < 2; ++check) {
          const bool inRow = position < convref::rowLength(cell / 9, cell % 9);
          EXPECT_EQ(tables[level]->loops[cell][position][check] != nullptr, inRow)
              << "level " << level << ", " << convref::kTypes[cell / 9].name << " -> " << convref::kTypes[cell % 9].name
              << ", position " << position << ", check " << check;
        }
  }
}

}  // namespace
