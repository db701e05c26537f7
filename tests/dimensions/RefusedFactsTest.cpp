// A refused fact leaves the store exactly as it was: every output form is compared before and after, for
// each kind of contradiction and for random sequences of facts.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <iterator>
#include <random>
#include <set>

#include "DimensionsTestSupport.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "support/ExpectRaises.hpp"

using namespace QLTypeSys;
using dimtest::block;
using dimtest::snapshot;
using dimtest::Snapshot;

namespace {

const std::vector<QLBlock const*> kBlocks{nullptr, block(1), block(2), block(3)};

// A model with names, integers, an expression, a division and multi-dimensional sizes.
struct Model {
  explicit Model(SymbolicDimsTable& t)
      : n(t.registerSymbolicDims("N", nullptr)),
        m(t.registerSymbolicDims("M", nullptr)),
        k(t.registerSymbolicDims("K", nullptr)),
        f(t.registerSymbolicDims("F", nullptr)),
        twoN(t.registerSymbolicDimsExpr("2*N", nullptr)),
        halfM(t.registerSymbolicDimsExpr("M/2", nullptr)),
        nd(t.registerSymbolicDims(std::vector<std::string>{"N", "3"}, nullptr)),
        one(t.registerSymbolicDims(std::vector<std::string>{"K"}, nullptr)),
        three(t.registerSymbolicDims(3)),
        seven(t.registerSymbolicDims(7)) {}
  std::vector<int> sizes() const { return {n, m, k, f, twoN, halfM, nd, one, three, seven}; }
  int n, m, k, f, twoN, halfM, nd, one, three, seven;
};

// A fact, by what it does to the table.
using Fact = std::function<void(SymbolicDimsTable&, const Model&)>;

struct Contradiction {
  const char* name;
  Fact fact;
  const char* key;
  std::vector<std::string> args;
};

void PrintTo(const Contradiction& c, std::ostream* os) { *os << c.name; }

class DimsRefused : public ::testing::TestWithParam<Contradiction> {
 protected:
  // Some facts of every kind, from several blocks.
  void SetUp() override {
    t.addEqualRelation(x.m, x.k, block(1));
    t.addGreaterThanRelation(x.n, x.m, block(2));
    t.addGreaterThanRelation(x.twoN, x.n, block(3));
    t.addRange(x.n, 4, 20, block(1));
    t.addEqualConstraint(x.halfM, 3, block(2));
    t.addLessThanConstraint(x.nd, 50, block(3));
    t.addGreaterThanConstraint(x.one, 1, nullptr);
  }
  SymbolicDimsTable t;
  Model x{t};
};

TEST_P(DimsRefused, WithItsMessageAndEveryOutputAsItWas) {
  const Snapshot before = snapshot(t, x.sizes(), kBlocks);
  EXPECT_RAISES(GetParam().fact(t, x), "QuillonTypes:Dimensions", GetParam().key, GetParam().args);
  EXPECT_TRUE(snapshot(t, x.sizes(), kBlocks) == before);
}

#define FACT(statement) [](SymbolicDimsTable& t, const Model& x) { statement; }

INSTANTIATE_TEST_SUITE_P(
    EveryKind, DimsRefused,
    ::testing::Values(Contradiction{"EqualAfterOrder",
                                    FACT(t.addEqualRelation(x.twoN, x.m, block(1))),
                                    "InconsistentSymbolicDimensionNotEqual",
                                    {"2*N", "M", "M"}},
                      Contradiction{"EqualAfterOrderSwapped",
                                    FACT(t.addEqualRelation(x.m, x.twoN, nullptr)),
                                    "InconsistentSymbolicDimensionNotEqual",
                                    {"2*N", "M", "M"}},
                      Contradiction{"EqualOutsideRange",
                                    FACT(t.addEqualRelation(x.n, x.three, block(1))),
                                    "InconsistentSymbolicDimensionNotEqual",
                                    {"N", "3", "3"}},
                      // Different integers are ordered, and orders are checked first: the message is that of an order.
                      Contradiction{"DifferentIntegers",
                                    FACT(t.addEqualRelation(x.three, x.seven, nullptr)),
                                    "InconsistentSymbolicDimensionNotEqual",
                                    {"7", "3", "3"}},
                      Contradiction{"OrderOfEquals",
                                    FACT(t.addGreaterThanRelation(x.k, x.m, block(2))),
                                    "InconsistentSymbolicDimensionEqual",
                                    {"K", "M", "M"}},
                      Contradiction{"OrderReversedThroughAChain",
                                    FACT(t.addGreaterThanRelation(x.m, x.twoN, block(2))),
                                    "InconsistentSymbolicDimensionGreaterThan",
                                    {"M", "2*N", "2*N"}},
                      Contradiction{"IntegersOutOfOrder",
                                    FACT(t.addGreaterThanRelation(x.three, x.seven, nullptr)),
                                    "InvalidSymbolicDimensionGreaterThan",
                                    {"3", "7"}},
                      Contradiction{"LowerBoundPastUpper",
                                    FACT(t.addGreaterThanConstraint(x.n, 20, block(3))),
                                    "InconsistentSymbolicDimensionGreaterThan",
                                    {"N", "20", "21"}},
                      Contradiction{"UpperBoundPastLower",
                                    FACT(t.addLessThanConstraint(x.n, 4, nullptr)),
                                    "InconsistentSymbolicDimensionLessThan",
                                    {"N", "4", "3"}},
                      Contradiction{"RangeBelow",
                                    FACT(t.addRange(x.n, 1, 3, block(1))),
                                    "InconsistentSymbolicDimensionLessThan",
                                    {"N", "4", "3"}},
                      Contradiction{"RangeAbove",
                                    FACT(t.addRange(x.halfM, 4, 9, block(1))),
                                    "InconsistentSymbolicDimensionGreaterThan",
                                    {"M/2", "3", "4"}},
                      Contradiction{"ValueOfAProductOutsideRange",
                                    FACT(t.addEqualConstraint(x.nd, 60, block(2))),
                                    "InconsistentSymbolicDimensionGreaterThan",
                                    {"N*3", "59", "50"}},
                      Contradiction{"IntegerAboveASizeOfHigherMinimum",
                                    FACT(t.addGreaterThanRelation(x.three, x.n, block(2))),
                                    "InconsistentSymbolicDimensionLessThan",
                                    {"N", "3", "3"}},
                      // Bounds one past the ends of int are written exactly.
                      Contradiction{"LowerBoundAtIntMax",
                                    FACT(t.addGreaterThanConstraint(x.f, INT_MAX, nullptr)),
                                    "InconsistentSymbolicDimensionGreaterThan",
                                    {"F", "2147483647", "2147483648"}},
                      Contradiction{"UpperBoundAtIntMin",
                                    FACT(t.addLessThanConstraint(x.f, INT_MIN, nullptr)),
                                    "InconsistentSymbolicDimensionLessThan",
                                    {"F", "-2147483648", "-2147483649"}}),
    [](const auto& info) { return std::string(info.param.name); });

// One random fact: sizes a and b, numbers v <= w.
using Step = void (*)(SymbolicDimsTable&, int a, int b, int v, int w, QLBlock const*);
const Step kSteps[] = {
    [](SymbolicDimsTable& t, int a, int b, int, int, QLBlock const* k) { t.addEqualRelation(a, b, k); },
    [](SymbolicDimsTable& t, int a, int b, int, int, QLBlock const* k) { t.addGreaterThanRelation(a, b, k); },
    [](SymbolicDimsTable& t, int a, int, int v, int, QLBlock const* k) { t.addEqualConstraint(a, v, k); },
    [](SymbolicDimsTable& t, int a, int, int v, int, QLBlock const* k) { t.addGreaterThanConstraint(a, v, k); },
    [](SymbolicDimsTable& t, int a, int, int, int w, QLBlock const* k) { t.addLessThanConstraint(a, w, k); },
    [](SymbolicDimsTable& t, int a, int, int v, int w, QLBlock const* k) { t.addRange(a, v, w, k); },
};

// Random sequences of facts over the model's sizes, some of them contradictory. Every refused fact must
// leave all outputs as they were; accepted ones may change anything. Runs under the sanitizers in CI, so a
// crash, a leak or undefined behaviour on any sequence fails too.
TEST(DimsRefusedRandom, SequencesOfFacts) {
  std::mt19937 rng(20240607);
  unsigned refused = 0;
  unsigned accepted = 0;
  std::set<std::string> keys;
  for (int sequence = 0; sequence < 100; ++sequence) {
    SymbolicDimsTable t;
    const Model x(t);
    std::vector<int> sizes = x.sizes();
    sizes.push_back(-1);  // built-ins and unknown ids are dropped by the table
    sizes.push_back(0);
    sizes.push_back(999);
    auto pick = [&](const std::vector<int>& v) { return v[rng() % v.size()]; };
    auto value = [&] { return static_cast<int>(rng() % 14) - 1; };
    for (int step = 0; step < 25; ++step) {
      const int a = pick(sizes), b = pick(sizes), v0 = value(), w0 = value();
      const int v = v0 < w0 ? v0 : w0, w = v0 < w0 ? w0 : v0;
      QLBlock const* blk = kBlocks[rng() % kBlocks.size()];
      const Snapshot before = snapshot(t, x.sizes(), kBlocks);
      try {
        kSteps[rng() % std::size(kSteps)](t, a, b, v, w, blk);
        ++accepted;
      } catch (const fl::except::IException& e) {
        ++refused;
        ASSERT_EQ(e.getDiagnostic()->getCatalog(), "QuillonTypes:Dimensions");
        keys.insert(e.getDiagnostic()->getKey());
        ASSERT_TRUE(snapshot(t, x.sizes(), kBlocks) == before)
            << "sequence " << sequence << " step " << step << ": " << e.what();
      }
    }
  }
  // The mix must really exercise both roads.
  EXPECT_GT(refused, 200u);
  EXPECT_GT(accepted, 1500u);
  EXPECT_EQ(keys.size(), 5u);  // every key a contradiction can raise (different integers are refused as ordered)
}

}  // namespace
