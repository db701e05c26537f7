// Long sums and repeated squaring through the table's public calls. A flat sum of n names is a tree n
// levels deep; the walkers behind these calls once recursed over it, and an 8 MB stack gave out at about
// 30000 names (4000 under ASan). Squaring a size n times once doubled the table at each step.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "DimensionsTestSupport.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "support/ExpectRaises.hpp"

namespace {

using QLTypeSys::SymbolicDims;
using QLTypeSys::SymbolicDimsIntValue;
using QLTypeSys::SymbolicDimsTable;

#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kTerms = 8000;     // twice what overflowed ASan's stack
constexpr unsigned kPrinted = 20000;  // the printer's frames are smaller
#else
constexpr unsigned kTerms = 30000;
constexpr unsigned kPrinted = 100000;
#endif

// "d0+d1+...", or the same names from the last to the first.
std::string sum(unsigned n, bool reversed = false) {
  std::string s;
  for (unsigned k = 0; k < n; ++k) s += (k ? "+d" : "d") + std::to_string(reversed ? n - 1 - k : k);
  return s;
}

std::size_t count(const std::string& s, char c) { return static_cast<std::size_t>(std::count(s.begin(), s.end(), c)); }

TEST(LongSizes, SumsOfManyNamesInAnyOrderAreKnownEqual) {
  SymbolicDimsTable t;
  const std::string forward = sum(kTerms);
  EXPECT_EQ(t.equalSymbolicDims(forward.c_str(), sum(kTerms, true).c_str()), boost::optional<bool>(true));
  EXPECT_EQ(t.equalSymbolicDims(forward.c_str(), (forward + "+1").c_str()), boost::none);
}

TEST(LongSizes, ALongSumPrintsCopiesAndListsItsNames) {
  SymbolicDimsTable t;
  const std::string text = sum(kPrinted);
  const int id = t.registerSymbolicDimsExpr(text.c_str(), nullptr);
  EXPECT_EQ(t.getDisplayString(id), text);
  EXPECT_EQ(t.getSymbolicDims(id).getExprWithEmptyInherit(), text);
  std::vector<std::string> names;
  t.getSymbolicDimsSymbols(id, names);
  EXPECT_EQ(names.size(), kPrinted);
  SymbolicDimsTable other;
  EXPECT_EQ(other.getDisplayString(other.importSymbolicDims(t, id)), text);
}

TEST(LongSizes, ArithmeticOnLongSums) {
  SymbolicDimsTable t;
  const SymbolicDims a = t.getSymbolicDims(t.registerSymbolicDimsExpr(sum(kTerms).c_str(), nullptr));
  const SymbolicDims b = t.getSymbolicDims(t.registerSymbolicDimsExpr(sum(kTerms, true).c_str(), nullptr));
  EXPECT_EQ((a - b).toString(), "0");
  EXPECT_TRUE(a + b == a * SymbolicDimsIntValue(t, 2));
  const std::string doubled = (a + b).toString();
  EXPECT_EQ(count(doubled, '*'), kTerms);  // "d0*2+d1*2+..."
}

TEST(LongSizes, ManyDimensionsMakeOneLongProduct) {
  SymbolicDimsTable t;
  std::vector<std::string> dims;
  for (unsigned k = 0; k < kTerms; ++k) dims.push_back("d" + std::to_string(k));
  const int nd = t.registerSymbolicDims(dims, nullptr);
  const SymbolicDims size = t.getSymbolicDims(nd).getSize();
  EXPECT_EQ(count(size.toString(), '*'), kTerms - 1);
  const int n = t.registerSymbolicDims("N", nullptr);
  t.addEqualRelation(nd, n, dimtest::block(1));  // the store works on the product
  EXPECT_TRUE(t.hasEqualRelation(n, nd));
  std::vector<int> ids;
  t.getSymbolicDimsConstraints(ids);
  EXPECT_EQ(ids.size(), 1u);
}

TEST(LongSizes, ConstraintsOnLongSums) {
  SymbolicDimsTable t;
  const std::string text = sum(kTerms);
  const int s = t.registerSymbolicDimsExpr(text.c_str(), nullptr);
  const int half = t.registerSymbolicDimsExpr("N/2", nullptr);
  t.addEqualRelation(half, s, dimtest::block(1));
  std::vector<QLTypeSys::SymbolicDimsCGConstraint> pairs;
  t.getEquivalentSymbolicDims(pairs);  // the division moves to the other side: (the sum) * 2 == N
  ASSERT_EQ(pairs.size(), 1u);
  EXPECT_EQ(count(t.getSymbolicDims(pairs[0].getLHSId()).toString(), '*'), kTerms);
  EXPECT_EQ(t.getSymbolicDims(pairs[0].getRHSId()).toString(), "N");
  EXPECT_RAISES(t.addGreaterThanRelation(half, s, nullptr), "QuillonTypes:Dimensions",
                "InconsistentSymbolicDimensionEqual", {"N/2", text, text});
}

TEST(RepeatedSquaring, SixteenSquaringsAddAFewEntriesEach) {
  SymbolicDimsTable t;
  SymbolicDims d = t.getSymbolicDims("N");
  for (int k = 0; k < 16; ++k) d = d * d;
  EXPECT_LT(t.getNumSymbolicDimss(), 200u);
  EXPECT_EQ(count(d.toString(), 'N'), std::size_t{1} << 16);
  // N^2 .. N^64 are written out; the square of N^64 stays a product of two equal factors.
  SymbolicDims e = t.getSymbolicDims("N");
  for (int k = 0; k < 7; ++k) e = e * e;
  const std::string n64 = (t.getSymbolicDims("N") * t.getSymbolicDims("N")).toString();
  EXPECT_EQ(n64, "N*N");
  EXPECT_EQ(e.toString().substr(0, 4), "N*N*");
  EXPECT_EQ(count(e.toString(), '('), 1u);  // "N*...*N*(N*...*N)"
}

TEST(RepeatedSquaring, ExponentsPastAnyRangeStayDefined) {
  SymbolicDimsTable t;
  SymbolicDims d = t.getSymbolicDims("N");
  for (int k = 0; k < 100; ++k) d = d * d;  // 2^100 passes every counter
  EXPECT_LT(t.getNumSymbolicDimss(), 400u);
  EXPECT_EQ((d - d).toString(), "0");  // still an expression the simplifier works with
  // Its text would be 2^100 names long: refused with a diagnostic.
  EXPECT_RAISES(d.toString(), "QL:symbolic", "SymbolicExprTextTooLong",
                {std::to_string(QL::SymbolicExprPrinter::kMaxTextLength)});
}

}  // namespace
