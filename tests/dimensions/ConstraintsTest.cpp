// The constraint store: equality classes, orders, bounds, outputs for code generation and blocks. Tests
// named "Kept..." pin behaviour that looks wrong but is relied upon; each says why it must not be "fixed".
// The messages of refused facts are checked in RefusedFactsTest.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <stdexcept>

#include "DimensionsTestSupport.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/QlFeature.hpp"

using namespace QLTypeSys;
using dimtest::block;
using dimtest::texts;
using Strings = std::vector<std::string>;
using Blocks = std::vector<QLBlock const*>;

namespace {

class DimsStore : public ::testing::Test {
 protected:
  SymbolicDimsTable t;
  /// A name, an integer or an expression, entered as written.
  int s(const char* text) { return t.registerSymbolicDimsExpr(text, nullptr); }
  Strings equivalents() {
    std::vector<SymbolicDimsCGConstraint> v;
    t.getEquivalentSymbolicDims(v);
    return texts(t, v, "==");
  }
  Strings relations() {
    std::vector<int> ids;
    t.getSymbolicDimsConstraints(ids);
    Strings r = texts(t, ids);
    std::sort(r.begin(), r.end());  // the hash maps' order is no part of the contract
    return r;
  }
  Strings relationsOf(QLBlock const* b) {
    std::vector<int> ids;
    t.getSymbolicDimsConstraints(b, ids);
    return texts(t, ids);
  }
};

// Equality classes over the sizes A to E (ids 1 to 5): the joins in order, and the pairs code generation gets.
struct ClassCase {
  const char* name;
  std::vector<std::pair<char, char>> joins;
  Strings pairs;
};

void PrintTo(const ClassCase& c, std::ostream* os) { *os << c.name; }

class DimsClasses : public DimsStore, public ::testing::WithParamInterface<ClassCase> {};

TEST_P(DimsClasses, PairsUnderTheirRepresentatives) {
  for (const char* n : {"A", "B", "C", "D", "E"}) s(n);
  for (auto [a, b] : GetParam().joins) t.addEqualRelation(a - 'A' + 1, b - 'A' + 1, nullptr);
  EXPECT_EQ(equivalents(), GetParam().pairs);
  for (auto [a, b] : GetParam().joins) {
    EXPECT_TRUE(t.hasEqualRelation(a - 'A' + 1, b - 'A' + 1));
    EXPECT_TRUE(t.hasEqualRelation(1, b - 'A' + 1));  // every case ends as one class under A
  }
}

INSTANTIATE_TEST_SUITE_P(
    Joins, DimsClasses,
    ::testing::Values(
        ClassCase{"TwoClassesMerge", {{'C', 'D'}, {'A', 'B'}, {'D', 'B'}}, {"A==B", "A==C", "A==D", "C==D"}},
        // Kept: a join moves one step up the parent chain, not to the root, so E is paired with C
        // although A represents the class; code generation has always been given these pairs.
        ClassCase{
            "KeptSingleStepParent", {{'C', 'D'}, {'B', 'C'}, {'A', 'B'}, {'D', 'E'}}, {"A==B", "B==C", "C==D", "C==E"}},
        // Kept: the members of an absorbed class stay listed under its old representative.
        ClassCase{"KeptMembersUnderAbsorbedRepresentative", {{'B', 'C'}, {'A', 'B'}}, {"A==B", "B==C"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DimsStore, EqualityWithItselfOrWithItsProductDoesNothing) {
  const int n = s("N");
  const int nd = t.registerSymbolicDims(Strings{"N", "3"}, nullptr);
  const int product = (t.getSymbolicDims(n) * SymbolicDimsIntValue(t, 3)).getId();
  t.addEqualRelation(n, n, block(1));
  t.addEqualRelation(nd, product, block(1));
  EXPECT_TRUE(relations().empty());
  EXPECT_TRUE(relationsOf(block(1)).empty());
  EXPECT_TRUE(t.hasEqualRelation(nd, product));
}

TEST_F(DimsStore, EqualityWithAnIntegerBecomesARange) {
  const int n = s("N"), three = s("1+2");
  t.addEqualRelation(n, s("4"), block(1));
  EXPECT_EQ(t.getRange(n), SymbDimsRange(4, 4));
  EXPECT_TRUE(t.hasEqualRelation(n, s("4")));
  EXPECT_TRUE(t.hasEqualRelation(s("4"), n));
  EXPECT_TRUE(t.hasEqualConstraint(n, 4));
  EXPECT_EQ(equivalents(), (Strings{"N==4"}));
  EXPECT_EQ(relationsOf(block(1)), (Strings{"N==4"}));
  // An expression that would fold to an integer is not an integer entry: it joins a class like a name.
  t.addEqualRelation(s("M"), three, nullptr);
  EXPECT_EQ(t.getRange(three), SymbDimsRange());
}

TEST_F(DimsStore, OrdersAreTransitiveAndIntegersBecomeBounds) {
  const int n = s("N"), m = s("M"), k = s("K");
  t.addGreaterThanRelation(n, m, nullptr);
  t.addGreaterThanRelation(m, k, nullptr);
  EXPECT_TRUE(t.hasGreaterThanRelation(n, k));
  EXPECT_FALSE(t.hasGreaterThanRelation(k, n));
  t.addGreaterThanRelation(k, s("3"), nullptr);
  t.addGreaterThanRelation(s("10"), k, nullptr);
  EXPECT_EQ(t.getRange(k), SymbDimsRange(4, 9));
  EXPECT_TRUE(t.hasGreaterThanRelation(k, s("3")) && t.hasGreaterThanRelation(s("10"), k));
  EXPECT_FALSE(t.hasGreaterThanRelation(k, s("4")));
  EXPECT_TRUE(t.hasGreaterThanConstraint(k, 3) && t.hasLessThanConstraint(k, 10));
  EXPECT_FALSE(t.hasLessThanConstraint(k, 9));
  EXPECT_NO_THROW(t.addGreaterThanRelation(s("5"), s("2"), nullptr));
}

TEST_F(DimsStore, KeptSizeGreaterThanItselfIsAcceptedSilently) {
  // Why: blocks compare a size with itself ("N > N", "2 > 2") and that must not stop compilation; the
  // sameness test comes before every other.
  const int n = s("N");
  EXPECT_NO_THROW(t.addGreaterThanRelation(n, n, block(1)));
  EXPECT_NO_THROW(t.addGreaterThanRelation(s("2"), s("2"), block(1)));
  EXPECT_TRUE(relations().empty());
  EXPECT_FALSE(t.hasGreaterThanRelation(n, n));
}

TEST_F(DimsStore, KeptOrdersAreKnownOnlyToTheSizeTheyWereToldOf) {
  // Why: orders are looked up by size, not by class, so a fact about one member is not known to the others.
  const int n = s("N"), m = s("M"), k = s("K");
  t.addEqualRelation(n, k, nullptr);
  t.addGreaterThanRelation(k, m, nullptr);
  EXPECT_TRUE(t.hasGreaterThanRelation(k, m));
  EXPECT_FALSE(t.hasGreaterThanRelation(n, m));
}

TEST_F(DimsStore, LongChainsAndDiamondsOfOrdersAreWalkedWithoutRecursionOrRepeats) {
  std::vector<int> chain;
  chain.reserve(20000);
  for (int i = 0; i < 20000; ++i) chain.push_back(s(("S" + std::to_string(i)).c_str()));
  t.addRange(chain.back(), 7, 100, nullptr);
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) t.addGreaterThanRelation(chain[i], chain[i + 1], nullptr);
  EXPECT_TRUE(t.hasGreaterThanRelation(chain.front(), chain.back()));
  EXPECT_EQ(t.getRange(chain.front()).min, 7);
  EXPECT_THROW(t.addGreaterThanRelation(chain.back(), chain.front(), nullptr), fl::except::IException);
  // 40 layers of two, each size above both of the next layer: 2^40 paths, each size asked once.
  std::vector<std::pair<int, int>> layers;
  for (int i = 0; i < 40; ++i)
    layers.emplace_back(s(("L" + std::to_string(i)).c_str()), s(("R" + std::to_string(i)).c_str()));
  for (std::size_t i = 0; i + 1 < layers.size(); ++i)
    for (int hi : {layers[i].first, layers[i].second})
      for (int lo : {layers[i + 1].first, layers[i + 1].second}) t.addGreaterThanRelation(hi, lo, nullptr);
  EXPECT_FALSE(t.hasGreaterThanRelation(layers[0].first, s("Bottom")));
  EXPECT_TRUE(t.hasGreaterThanRelation(layers[0].first, layers.back().second));
}

TEST_F(DimsStore, RangesIntersectAndAreTestedOnlyAgainstStoredBounds) {
  const int n = s("N");
  t.addRange(n, 2, 10, nullptr);
  t.addRange(n, 5, 20, nullptr);
  EXPECT_EQ(t.getRange(n), SymbDimsRange(5, 10));
  t.addGreaterThanConstraint(n, 3, nullptr);  // weaker: nothing changes
  t.addLessThanConstraint(n, 8, nullptr);
  EXPECT_EQ(t.getRange(n), SymbDimsRange(5, 7));
  // A new range is never checked against itself: 5 to 3 on a fresh size is stored as it comes.
  EXPECT_NO_THROW(t.addRange(s("M"), 5, 3, nullptr));
  EXPECT_EQ(t.getRange(s("M")), SymbDimsRange(5, 3));
}

TEST_F(DimsStore, BoundsOfAMultiDimensionalSizeAreThoseOfItsProduct) {
  const int nd = t.registerSymbolicDims(Strings{"N", "3"}, nullptr);
  t.addRange(nd, 6, 30, nullptr);
  EXPECT_EQ(t.getRange(s("N*3")), SymbDimsRange(6, 30));
  EXPECT_EQ(relations(), (Strings{"N*3<31", "N*3>5"}));
}

TEST_F(DimsStore, KeptMinimumIsCarriedUpAsItIsAndMaximumNotDown) {
  // Why: bounds travel only upward through orders, and unchanged: above a size of minimum 4 the minimum shows
  // as 4 (not 5), and below a size of maximum 5 no maximum shows; code generation reads these bounds.
  const int a = s("A"), b = s("B"), c = s("C");
  t.addGreaterThanRelation(a, b, nullptr);
  t.addGreaterThanRelation(b, c, nullptr);
  t.addRange(c, 4, 10, nullptr);
  t.addRange(a, 1, 5, nullptr);
  EXPECT_EQ(t.getRange(a), SymbDimsRange(4, 5));
  EXPECT_EQ(t.getRange(b), SymbDimsRange(4, INT_MAX));
  EXPECT_EQ(t.getRange(c), SymbDimsRange(4, 10));
}

TEST_F(DimsStore, KeptRangesLeftUnderAnAbsorbedRepresentative) {
  // Why: classes do not merge their ranges; B's bounds stay under B once A represents the class, are no longer
  // seen through it, later bounds on the class are not checked against them, and both are still reported.
  const int a = s("A"), b = s("B");
  t.addRange(b, 3, 8, block(1));
  t.addEqualRelation(a, b, nullptr);
  EXPECT_EQ(t.getRange(b), SymbDimsRange());
  EXPECT_NO_THROW(t.addRange(a, 10, 20, nullptr));
  EXPECT_EQ(t.getRange(b), SymbDimsRange(10, 20));
  EXPECT_EQ(relations(), (Strings{"A<21", "A==B", "A>9", "B<9", "B>2"}));
}

// Outputs.

TEST_F(DimsStore, KeptLowerBoundsAtOrUnderTheDefaultMinimumAreNotReported) {
  // Why: a size of at least the default minimum (2) goes without saying, and code generation is not told.
  t.addRange(s("N"), 2, 9, nullptr);
  t.addRange(s("M"), 3, 9, nullptr);
  t.addRange(s("K"), 4, 4, nullptr);               // an equality, no order
  t.addGreaterThanConstraint(s("U"), 5, nullptr);  // no upper bound, no less-than
  EXPECT_EQ(relations(), (Strings{"K==4", "M<10", "M>2", "N<10", "U>5"}));
}

TEST_F(DimsStore, TheDefaultMinimumIsAFeatureReadEachTime) {
  QlFeature* f = QlFeature::find("SymbolicDimensionDefaultMinimum");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->getDescription(), "Default minimum for symbolic dimension");
  EXPECT_EQ(f->getGroup(), "Quillon[Dimensions]");
  EXPECT_EQ(f->getNumber(), 11111);
  EXPECT_EQ(f->getDefaultValue(), 2);
  const unsigned long reads = f->getReadCount();
  EXPECT_EQ(SymbDimsRange::defaultMin(), 2);
  EXPECT_EQ(f->getReadCount(), reads + 1);
  t.addRange(s("N"), 2, 9, nullptr);
  f->setValue(0);
  EXPECT_EQ(relations(), (Strings{"N<10", "N>1"}));
  f->reset();
  EXPECT_EQ(relations(), (Strings{"N<10"}));
}

TEST_F(DimsStore, RelationExpressionsOfEveryKind) {
  const int n = s("N"), m = s("M"), k = s("K");
  t.addEqualRelation(n, m, nullptr);
  t.addGreaterThanRelation(n, k, nullptr);
  t.addRange(k, 3, 9, nullptr);
  t.addRange(m, 7, 7, nullptr);  // the class's bounds, kept under its representative N
  EXPECT_EQ(relations(), (Strings{"K<10", "K>2", "N==7", "N==M", "N>K"}));
}

TEST_F(DimsStore, PairsAreSortedAndCarryBlocks) {
  const int a = s("A"), b = s("B"), c = s("C"), n = s("N"), m = s("M");
  t.addEqualRelation(c, a, block(2));
  t.addEqualRelation(a, b, block(1));
  t.addEqualConstraint(n, 6, block(3));
  t.addEqualConstraint(n, 6, block(1));
  std::vector<SymbolicDimsCGConstraint> v;
  t.getEquivalentSymbolicDims(v);
  ASSERT_EQ(texts(t, v, "=="), (Strings{"A==B", "A==C", "N==6"}));
  EXPECT_EQ(Blocks(v[0].begin(), v[0].end()), Blocks{block(1)});
  EXPECT_EQ(Blocks(v[1].begin(), v[1].end()), Blocks{block(2)});
  EXPECT_EQ(Blocks(v[2].begin(), v[2].end()), (Blocks{block(1), block(3)}));
  t.addRange(m, 1, 9, block(1));  // a lower bound above 0 is an order for code generation
  t.addRange(b, 0, 9, nullptr);
  t.getGreaterThanSymbolicDims(v);
  ASSERT_EQ(texts(t, v, ">"), (Strings{"M>0"}));
  EXPECT_EQ(v[0].getNumBlocks(), 1u);
}

TEST_F(DimsStore, KeptOrderBlocksAreReadUnderTheRightSide) {
  // Why: blocks of "x > y" are entered under x and read back under y, so a pair shows blocks only where its
  // right side is the left side of another; code generation has always received them this way.
  const int n = s("N"), m = s("M"), k = s("K");
  t.addGreaterThanRelation(n, m, block(1));
  t.addGreaterThanRelation(m, k, block(2));
  std::vector<SymbolicDimsCGConstraint> v;
  t.getGreaterThanSymbolicDims(v);
  ASSERT_EQ(texts(t, v, ">"), (Strings{"N>M", "M>K"}));
  EXPECT_EQ(Blocks(v[0].begin(), v[0].end()), Blocks{block(2)});
  EXPECT_EQ(v[1].getNumBlocks(), 0u);
  // The relation expressions carry them where they were entered.
  std::vector<SymbolicDimsConstraint> all;
  t.getSymbolicDimsConstraints(all);
  ASSERT_EQ(all.size(), 2u);
  for (const SymbolicDimsConstraint& c : all)
    EXPECT_EQ(Blocks(c.begin(), c.end()),
              Blocks{t.getSymbolicDims(c.getConstraintId()).toString() == "N>M" ? block(1) : block(2)});
}

// Divisions move to the other side of a pair.
struct DivisionCase {
  const char* lhs;
  const char* rhs;
  const char* pair;
};

void PrintTo(const DivisionCase& c, std::ostream* os) { *os << c.lhs << " == " << c.rhs; }

class DimsDivisions : public DimsStore, public ::testing::WithParamInterface<DivisionCase> {};

TEST_P(DimsDivisions, MoveToTheOtherSide) {
  const int l = s(GetParam().lhs), r = s(GetParam().rhs);
  t.addEqualRelation(l, r, nullptr);
  EXPECT_EQ(equivalents(), Strings{GetParam().pair});
}

INSTANTIATE_TEST_SUITE_P(Pairs, DimsDivisions,
                         ::testing::Values(DivisionCase{"a/2", "b/4", "a*2==b"}, DivisionCase{"a/6", "b/3", "a==b*2"},
                                           DivisionCase{"a/2", "b/2", "a==b"}, DivisionCase{"g/5", "h/7", "g*7==h*5"},
                                           DivisionCase{"x/n", "y/4", "x*4==n*y"}, DivisionCase{"c", "d/3", "c*3==d"},
                                           DivisionCase{"e/6", "f", "e==f*6"}, DivisionCase{"p/q", "r", "p==q*r"},
                                           DivisionCase{"a/2+b", "c", "a+b*2==c*2"}, DivisionCase{"a/0", "b/0", "0==0"},
                                           DivisionCase{"a-b", "c", "a-b==c"}));

TEST_F(DimsStore, DivisionsAlsoMoveInOrders) {
  t.addGreaterThanRelation(s("a/2"), s("b"), nullptr);
  std::vector<SymbolicDimsCGConstraint> v;
  t.getGreaterThanSymbolicDims(v);
  EXPECT_EQ(texts(t, v, ">"), (Strings{"a>b*2"}));
}

// Blocks.

TEST_F(DimsStore, BlocksListWhatTheyAssertedAndNullBlocksNothing) {
  const int n = s("N"), m = s("M"), k = s("K");
  t.addEqualRelation(n, m, block(1));
  t.addGreaterThanRelation(n, k, nullptr);
  t.addGreaterThanConstraint(k, 2, block(2));
  t.addLessThanConstraint(k, 9, block(2));
  t.addEqualConstraint(m, 5, block(1));
  t.addRange(k, 3, 8, block(3));  // ranges record no relation expression
  EXPECT_EQ(relationsOf(block(1)), (Strings{"N==M", "M==5"}));
  EXPECT_EQ(relationsOf(block(2)), (Strings{"K>2", "K<9"}));
  EXPECT_TRUE(relationsOf(block(3)).empty());
  EXPECT_TRUE(relationsOf(nullptr).empty());
  EXPECT_TRUE(t.hasGreaterThanRelation(n, k));  // the fact without an owner is kept
  std::vector<int> ids{42};
  t.getSymbolicDimsConstraints(block(1), dimtest::originalOf, ids);  // block 3 stands for block 1
  EXPECT_EQ(texts(t, ids), (Strings{"N==M", "M==5"}));
  t.getSymbolicDimsConstraints(block(3), dimtest::originalOf, ids);
  EXPECT_TRUE(ids.empty());
}

// An empty function throws when it is applied to a key, so only once some block has asserted a fact.
TEST_F(DimsStore, AnEmptyFunctionThrowsOnlyWhenThereIsABlockToMap) {
  boost::function<QLBlock const*(QLBlock const*)> none;
  std::vector<int> ids{42};
  t.getSymbolicDimsConstraints(block(1), none, ids);  // no facts: nothing to apply it to
  EXPECT_TRUE(ids.empty());
  const int n = s("N");
  const int m = s("M");
  t.addGreaterThanRelation(n, m, nullptr);  // a fact without an owner is under no key either
  ids = {42};
  t.getSymbolicDimsConstraints(block(1), none, ids);
  EXPECT_TRUE(ids.empty());
  t.addEqualConstraint(n, 5, block(2));
  ids = {42};
  try {
    t.getSymbolicDimsConstraints(block(1), none, ids);
    ADD_FAILURE() << "no throw";
  } catch (const boost::bad_function_call& e) {
    EXPECT_STREQ(e.what(), "call to empty boost::function");
  }
  EXPECT_EQ(ids, std::vector<int>{42});  // left as it was
}

TEST_F(DimsStore, TheTableDropsBuiltinsAndBadIdsSilently) {
  const int n = s("N");
  for (int bad : {-1, 0, 2, 1000, -5, INT_MAX, INT_MIN}) {
    t.addEqualRelation(n, bad, block(1));
    t.addEqualRelation(bad, n, block(1));
    t.addGreaterThanRelation(n, bad, block(1));
    t.addGreaterThanRelation(bad, n, block(1));
    t.addEqualConstraint(bad, 1, block(1));
    t.addGreaterThanConstraint(bad, 1, block(1));
    t.addLessThanConstraint(bad, 1, block(1));
    t.addRange(bad, 1, 2, block(1));
  }
  EXPECT_TRUE(relations().empty());
  EXPECT_THROW(t.getRange(1000), fl::except::IException);  // queries do not filter: the expression library raises
}

TEST(DimsStoreBlocks, TheTableRecordsTheOriginalBlock) {
  struct Mapping : SymbolicDimsTable {
   private:
    QLBlock const* getOriginalBlock(QLBlock const* b) const override { return dimtest::originalOf(b); }
  } t;
  t.addGreaterThanConstraint(t.registerSymbolicDims("N", nullptr), 3, block(3));
  std::vector<int> ids;
  t.getSymbolicDimsConstraints(block(3), ids);
  EXPECT_TRUE(ids.empty());
  t.getSymbolicDimsConstraints(block(1), ids);
  EXPECT_EQ(texts(t, ids), (Strings{"N>3"}));
}

TEST(DimsStoreDirect, TakesAnyIdOfItsTableAndRaisesForOthers) {
  SymbolicDimsTable t;
  SymbolicDimsConstraints store(&t);
  const int n = t.registerSymbolicDims("N", nullptr);
  store.addEqual(-1, n, nullptr);  // only the table filters the built-ins
  EXPECT_TRUE(store.isEqual(n, -1));
  EXPECT_THROW(store.addRange(5000, 1, 2, nullptr), fl::except::IException);
  EXPECT_THROW(store.isGreaterThan(n, -9), fl::except::IException);
  EXPECT_THROW(SymbolicDimsConstraints(nullptr), std::invalid_argument);
}

}  // namespace
