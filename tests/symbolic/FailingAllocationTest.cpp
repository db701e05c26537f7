// Entering and parsing when memory runs out: every allocation is made to fail in turn, and after each
// failure the table must be exactly as before (same entries, same indexes, found by lookup) and usable.
#include <gtest/gtest.h>

#include <string>

#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "support/AllocationFailure.hpp"
#include "symbolic/SymbolicTestSupport.hpp"

namespace {

using namespace QL;

class FailingAllocation : public testing::TestWithParam<unsigned> {
 protected:
  // GetParam() names, so that the next entry finds the vectors full or the index at its load limit.
  void SetUp() override {
    for (unsigned k = 0; k < GetParam(); ++k) SymbolicString(t, "n" + std::to_string(k)).getId(t);
    before = t.size();
  }

  void expectUnchanged() {
    ASSERT_EQ(t.size(), before);
    for (unsigned k = 0; k < GetParam(); ++k) {
      const SymbolicString name(t, "n" + std::to_string(k));
      EXPECT_EQ(t.find(name), std::optional<unsigned>(k));  // through the hash index, not the entry's own
    }
    EXPECT_FALSE(t.find(SymbolicString(t, "fresh")).has_value());
  }

  SymbolicExprTable t;
  unsigned before = 0;
};

TEST_P(FailingAllocation, EnteringLeavesTheTableAsItWas) {
  const int allocations =
      qltest::forEveryAllocationFailure([&] { SymbolicString(t, "fresh").getId(t); }, [&] { expectUnchanged(); });
  EXPECT_GT(allocations, 0);
  EXPECT_EQ(t.size(), before + 1);
  EXPECT_EQ(symtest::text(t, before), "fresh");
}

TEST_P(FailingAllocation, ParsingLeavesTheTableAsItWas) {
  unsigned parsed = 0;
  qltest::forEveryAllocationFailure([&] { parsed = SymbolicExprParser{t}("fresh*2 + n0 - other"); },
                                    [&] { expectUnchanged(); });
  EXPECT_EQ(symtest::text(t, parsed), "fresh*2+n0-other");
}

// Sizes at and around the points where the vectors (powers of two) or the index (half load) grow.
INSTANTIATE_TEST_SUITE_P(TableSizes, FailingAllocation, testing::Values(0u, 14u, 15u, 31u, 32u, 63u));

}  // namespace
