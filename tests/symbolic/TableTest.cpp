// The table: hash-consing across every expression class, dense indexes, operands as entries, access to
// operands and dimensions, and the errors of bad indexes.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "support/ExpectRaises.hpp"
#include "symbolic/SymbolicTestSupport.hpp"

namespace {

using namespace QL;

// Builds an expression of one class on a table holding the names a (0), b (1) and the integer 3 (2).
struct Builder {
  const char* name;
  std::function<unsigned(SymbolicExprTable&)> build;
  std::function<bool(const SymbolicExpr&)> isa;
};

void PrintTo(const Builder& b, std::ostream* os) { *os << b.name; }

class HashConsing : public testing::TestWithParam<Builder> {
 protected:
  void SetUp() override {
    SymbolicString(t, "a").getId(t);
    SymbolicString(t, "b").getId(t);
    SymbolicIntValue(t, 3).getId(t);
  }
  SymbolicExprTable t;
};

TEST_P(HashConsing, SameStructureSameIndexAndNothingNew) {
  const unsigned first = GetParam().build(t);
  const unsigned size = t.size();
  EXPECT_EQ(first, size - 1);  // indexes are dense, the newest entry is the last
  EXPECT_EQ(GetParam().build(t), first);
  EXPECT_EQ(t.size(), size);
  EXPECT_TRUE(GetParam().isa(t.get(first)));
  EXPECT_EQ(t.get(first).getIndex(), first);
  EXPECT_EQ(t.get(first).getId(t), first);  // an entry knows its index
  EXPECT_EQ(t.find(t.get(first)), first);
}

TEST_P(HashConsing, IsaHoldsForItsOwnClassOnly) {
  const SymbolicExpr& e = t.get(GetParam().build(t));
  int hits = 0;
  for (auto isa :
       {SymbolicIntValue::isa, SymbolicString::isa, SymbolicNDExpr::isa, SymbolicUnaryMinusExpr::isa,
        SymbolicPlusExpr::isa, SymbolicMinusExpr::isa, SymbolicMultiplyExpr::isa, SymbolicDivideExpr::isa,
        SymbolicModuloExpr::isa, SymbolicEqualExpr::isa, SymbolicGreaterThanExpr::isa, SymbolicLessThanExpr::isa})
    hits += isa(e) ? 1 : 0;
  EXPECT_EQ(hits, 1);
}

std::vector<Builder> builders() {
  return {
      {"Int", [](SymbolicExprTable& t) { return SymbolicIntValue(t, -7).getId(t); }, SymbolicIntValue::isa},
      {"String", [](SymbolicExprTable& t) { return SymbolicString(t, "N_1").getId(t); }, SymbolicString::isa},
      {"ND",
       [](SymbolicExprTable& t) {
         return SymbolicNDExpr(t, {0, 2}).getId(t);
       },
       SymbolicNDExpr::isa},
      {"EmptyND", [](SymbolicExprTable& t) { return SymbolicNDExpr(t, {}).getId(t); }, SymbolicNDExpr::isa},
      {"UnaryMinus", [](SymbolicExprTable& t) { return SymbolicUnaryMinusExpr(t, t.get(0)).getId(t); },
       SymbolicUnaryMinusExpr::isa},
      {"Plus", [](SymbolicExprTable& t) { return SymbolicPlusExpr(t, t.get(0), t.get(1)).getId(t); },
       SymbolicPlusExpr::isa},
      {"Minus", [](SymbolicExprTable& t) { return SymbolicMinusExpr(t, t.get(0), t.get(1)).getId(t); },
       SymbolicMinusExpr::isa},
      {"MultiplyByExpr", [](SymbolicExprTable& t) { return SymbolicMultiplyExpr(t, t.get(0), t.get(2)).getId(t); },
       SymbolicMultiplyExpr::isa},
      {"MultiplyByIndex", [](SymbolicExprTable& t) { return SymbolicMultiplyExpr(t, 0u, 2u).getId(t); },
       SymbolicMultiplyExpr::isa},
      {"Divide", [](SymbolicExprTable& t) { return SymbolicDivideExpr(t, t.get(0), t.get(2)).getId(t); },
       SymbolicDivideExpr::isa},
      {"Modulo", [](SymbolicExprTable& t) { return SymbolicModuloExpr(t, t.get(0), t.get(2)).getId(t); },
       SymbolicModuloExpr::isa},
      {"Equal", [](SymbolicExprTable& t) { return SymbolicEqualExpr(t, t.get(0), t.get(1)).getId(t); },
       SymbolicEqualExpr::isa},
      {"GreaterThan", [](SymbolicExprTable& t) { return SymbolicGreaterThanExpr(t, t.get(0), t.get(1)).getId(t); },
       SymbolicGreaterThanExpr::isa},
      {"LessThan", [](SymbolicExprTable& t) { return SymbolicLessThanExpr(t, t.get(0), t.get(1)).getId(t); },
       SymbolicLessThanExpr::isa},
  };
}

INSTANTIATE_TEST_SUITE_P(AllClasses, HashConsing, testing::ValuesIn(builders()),
                         [](const testing::TestParamInfo<Builder>& info) { return std::string(info.param.name); });

TEST(HashConsingDistinguishes, KindsFieldsAndOperandOrder) {
  SymbolicExprTable t;
  const unsigned a = SymbolicString(t, "a").getId(t);
  const unsigned b = SymbolicString(t, "b").getId(t);
  std::vector<unsigned> ids = {SymbolicPlusExpr(t, a, b).getId(t),     SymbolicPlusExpr(t, b, a).getId(t),
                               SymbolicMinusExpr(t, a, b).getId(t),    SymbolicMultiplyExpr(t, a, b).getId(t),
                               SymbolicDivideExpr(t, a, b).getId(t),   SymbolicModuloExpr(t, a, b).getId(t),
                               SymbolicEqualExpr(t, a, b).getId(t),    SymbolicGreaterThanExpr(t, a, b).getId(t),
                               SymbolicLessThanExpr(t, a, b).getId(t), SymbolicNDExpr(t, {a, b}).getId(t),
                               SymbolicNDExpr(t, {b, a}).getId(t),     SymbolicNDExpr(t, {a}).getId(t),
                               SymbolicIntValue(t, 1).getId(t),        SymbolicString(t, "1").getId(t),
                               SymbolicUnaryMinusExpr(t, a).getId(t),  SymbolicIntValue(t, -1).getId(t)};
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::unique(ids.begin(), ids.end()), ids.end());
  EXPECT_EQ(t.size(), 2 + ids.size());
}

TEST(TableIndexes, OperandsAreEntriesOfTheirOwnAndComeFirst) {
  SymbolicExprTable t;
  SymbolicExprTable scratch;
  // Temporaries of another table are copied in, operands first.
  const unsigned sum = SymbolicPlusExpr(t, SymbolicString(scratch, "x"), SymbolicIntValue(scratch, 2)).getId(t);
  ASSERT_EQ(t.size(), 3u);
  EXPECT_EQ(symtest::text(t, 0), "x");
  EXPECT_EQ(symtest::text(t, 1), "2");
  EXPECT_EQ(sum, 2u);
  const auto& plus = static_cast<const SymbolicPlusExpr&>(t.get(sum));
  EXPECT_EQ(plus.getLHS(), 0u);
  EXPECT_EQ(plus.getRHS(), 1u);
  EXPECT_EQ(plus.getNumOperands(), 2u);
  EXPECT_EQ(scratch.size(), 0u);
}

TEST(TableIndexes, ManyEntriesStayDenseAndFindable) {
  SymbolicExprTable t;
  const unsigned n = SymbolicString(t, "n").getId(t);
  std::vector<unsigned> ids;
  for (int i = 0; i < 20000; ++i) {
    const unsigned k = SymbolicIntValue(t, i).getId(t);
    ids.push_back(SymbolicMultiplyExpr(t, n, k).getId(t));
  }
  EXPECT_EQ(t.size(), 1u + 2u * 20000u);
  for (int i = 0; i < 20000; i += 997) {
    const unsigned k = SymbolicIntValue(t, i).getId(t);
    EXPECT_EQ(SymbolicMultiplyExpr(t, n, k).getId(t), ids[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(t.size(), 1u + 2u * 20000u);
}

TEST(TableAccess, DivisionsGiveNumeratorAndDenominator) {
  SymbolicExprTable t;
  const unsigned i = SymbolicDivideExpr(t, SymbolicString(t, "a"), SymbolicIntValue(t, 2)).getId(t);
  ASSERT_TRUE(SymbolicDivideExpr::isa(t.get(i)));
  const auto& d = static_cast<const SymbolicDivideExpr&>(t.get(i));
  EXPECT_EQ(symtest::text(t, d.getNumerator()), "a");
  EXPECT_EQ(symtest::text(t, d.getDenominator()), "2");
}

TEST(TableAccess, DimensionsOfMultiDimensionalAndScalarEntries) {
  SymbolicExprTable t;
  const unsigned n = SymbolicString(t, "N").getId(t);
  const unsigned three = SymbolicIntValue(t, 3).getId(t);
  const SymbolicExpr& nd = t.get(SymbolicNDExpr(t, {n, three}).getId(t));
  EXPECT_EQ(nd.getNumDimensions(), 2u);
  EXPECT_EQ(nd.getDimension(0), n);
  EXPECT_EQ(nd.getDimension(1), three);
  EXPECT_RAISES(nd.getDimension(2), "QL:symbolic", "SymbolicExprDimensionOutOfRange", {"2", "2"});
  EXPECT_EQ(t.get(n).getNumDimensions(), 0u);
  EXPECT_RAISES(t.get(n).getDimension(0), "QL:symbolic", "SymbolicExprDimensionOutOfRange", {"0", "0"});
  EXPECT_EQ(t.get(SymbolicNDExpr(t, {n}).getId(t)).getNumDimensions(), 1u);
}

TEST(TableErrors, BadIndexesRaiseAndEnterNothing) {
  SymbolicExprTable t;
  SymbolicString(t, "a").getId(t);
  EXPECT_RAISES(t.get(1), "QL:symbolic", "SymbolicExprInvalidIndex", {"1", "1"});
  EXPECT_RAISES(SymbolicPlusExpr(t, 0u, 5u), "QL:symbolic", "SymbolicExprInvalidIndex", {"5", "1"});
  EXPECT_RAISES(SymbolicNDExpr(t, {0, 9}), "QL:symbolic", "SymbolicExprInvalidIndex", {"9", "1"});
  EXPECT_RAISES(SymbolicUnaryMinusExpr(t, 3u), "QL:symbolic", "SymbolicExprInvalidIndex", {"3", "1"});
  EXPECT_RAISES(t.get(0).getOperand(0), "QL:symbolic", "SymbolicExprOperandOutOfRange", {"0", "0"});
  EXPECT_EQ(t.size(), 1u);
}

TEST(TableFind, LooksUpWithoutEntering) {
  SymbolicExprTable t;
  const unsigned a = SymbolicString(t, "a").getId(t);
  EXPECT_FALSE(t.find(SymbolicUnaryMinusExpr(t, a)).has_value());
  EXPECT_EQ(t.find(SymbolicString(t, "a")), a);
  EXPECT_EQ(t.size(), 1u);
}

}  // namespace
