// The symbolic dimension table: built-ins, registration forms and their number rules, lookups, texts.
#include <gtest/gtest.h>

#include <sstream>
#include <typeinfo>

#include "DimensionsTestSupport.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "support/AllocationFailure.hpp"
#include "support/ExpectRaises.hpp"

using namespace QLTypeSys;

namespace {

TEST(DimsTableBuiltins, FreshTableHoldsInheritAndNosymbolic) {
  SymbolicDimsTable t;
  EXPECT_EQ(t.getNumSymbolicDimss(), 2u);
  EXPECT_FALSE(t.hasSymbolicDims());
  EXPECT_TRUE(t.isSymbolicDimsIdValid(-1));
  EXPECT_TRUE(t.isSymbolicDimsIdValid(0));
  EXPECT_FALSE(t.isSymbolicDimsIdValid(1));
  EXPECT_FALSE(t.isSymbolicDimsIdValid(-2));
  EXPECT_FALSE(t.isaSymbolicDimension(0));
  EXPECT_EQ(t.getSymbolicDimsId("INHERIT"), -1);
  EXPECT_EQ(t.getSymbolicDimsId("NOSYMBOLIC"), 0);
  EXPECT_EQ(t.getErrorQueue(), nullptr);
}

TEST(DimsTableBuiltins, ResetReturnsToTheBuiltinsAndAnEmptyStore) {
  SymbolicDimsTable t;
  const int n = t.registerSymbolicDims("N", nullptr);
  t.addRange(n, 3, 4, dimtest::block(1));
  t.resetToBuiltin();
  EXPECT_EQ(t.getNumSymbolicDimss(), 2u);
  EXPECT_EQ(t.getSymbolicDims(-1).toString(), "INHERIT");
  EXPECT_EQ(t.getSymbolicDims(0).toString(), "NOSYMBOLIC");
  std::vector<int> ids;
  t.getSymbolicDimsConstraints(ids);
  EXPECT_TRUE(ids.empty());
  EXPECT_EQ(t.registerSymbolicDims("N", nullptr), n);
  EXPECT_EQ(t.getRange(n), SymbDimsRange());
}

TEST(DimsTableBuiltins, ResetThatRunsOutOfMemoryLeavesTheTableAsItWas) {
  SymbolicDimsTable t;
  const int n = t.registerSymbolicDimsExpr("N+M*2", nullptr);
  const int m = t.registerSymbolicDims("M", nullptr);
  t.addGreaterThanRelation(n, m, dimtest::block(1));
  t.addRange(m, 2, 9, dimtest::block(2));
  const std::string text = t.getDisplayString(n);
  const std::vector<int> sizes{n, m};
  const std::vector<QLBlock const*> blocks{dimtest::block(1), dimtest::block(2)};
  const dimtest::Snapshot facts = dimtest::snapshot(t, sizes, blocks);  // enters the relations it lists
  const unsigned size = t.getNumSymbolicDimss();
  qltest::forEveryAllocationFailure([&] { t.resetToBuiltin(); },
                                    [&] {
                                      ASSERT_EQ(t.getNumSymbolicDimss(), size);
                                      EXPECT_EQ(t.getDisplayString(n), text);
                                      EXPECT_EQ(t.getSymbolicDims("M").getId(), m);
                                      EXPECT_TRUE(dimtest::snapshot(t, sizes, blocks) == facts);
                                    });
  EXPECT_EQ(t.getNumSymbolicDimss(), 2u);
  EXPECT_EQ(t.getSymbolicDims(-1).toString(), "INHERIT");
  std::vector<int> ids;
  t.getSymbolicDimsConstraints(ids);
  EXPECT_TRUE(ids.empty());
}

TEST(DimsTableBuiltins, ResetRegistersTheBuiltinsThroughTheVirtualForm) {
  struct Watching : SymbolicDimsTable {
    std::vector<std::string> seen;
    int registerSymbolicDims(char const* const text, QLBlock const* block) override {
      seen.emplace_back(text);
      return SymbolicDimsTable::registerSymbolicDims(text, block);
    }
  } t;
  EXPECT_TRUE(t.seen.empty());  // during construction the table's own form runs
  t.resetToBuiltin();
  EXPECT_EQ(t.seen, (std::vector<std::string>{"INHERIT", "NOSYMBOLIC"}));
}

TEST(DimsTableRegistration, NumberAndIntegerGiveOneEntry) {
  SymbolicDimsTable t;
  const int five = t.registerSymbolicDims("5", nullptr);
  EXPECT_EQ(five, t.registerSymbolicDims(5));
  EXPECT_EQ(t.getValueOf(five), 5);
  EXPECT_EQ(t.registerSymbolicDims("N", nullptr), t.registerSymbolicDims("N", nullptr));
  EXPECT_FALSE(t.getValueOf(t.registerSymbolicDims("N", nullptr)));
  EXPECT_TRUE(t.isaSymbolicDimension(five));
  EXPECT_TRUE(t.hasSymbolicDims());
}

// The one-text form: strtol at base 0 decides what is a number, then a strict decimal reading converts it.
struct NumberCase {
  const char* text;
  int value;  // the integer, when accepted
  bool refused;
};

void PrintTo(const NumberCase& c, std::ostream* os) { *os << '"' << c.text << '"'; }

class OneTextNumbers : public ::testing::TestWithParam<NumberCase> {};

TEST_P(OneTextNumbers, StrtolThenStrictDecimal) {
  // Why: a text strtol takes whole is a number and must then be plain decimal, so "0x10" never quietly
  // becomes 16 and " 5" never a name with a blank; the two readings are both required.
  SymbolicDimsTable t;
  const NumberCase& c = GetParam();
  if (c.refused) {
    try {
      t.registerSymbolicDims(c.text, nullptr);
      ADD_FAILURE() << "accepted '" << c.text << "'";
    } catch (const std::bad_cast& e) {
      EXPECT_STREQ(e.what(), "bad cast");
    }
    EXPECT_EQ(t.getNumSymbolicDimss(), 2u);
  } else {
    EXPECT_EQ(t.getValueOf(t.registerSymbolicDims(c.text, nullptr)), c.value);
  }
}

INSTANTIATE_TEST_SUITE_P(DimsTableRegistration, OneTextNumbers,
                         ::testing::Values(NumberCase{"0x10", 0, true}, NumberCase{" 5", 0, true},
                                           NumberCase{"", 0, true}, NumberCase{"99999999999", 0, true},
                                           NumberCase{"-2147483649", 0, true}, NumberCase{"\t-3", 0, true},
                                           NumberCase{"010", 10, false}, NumberCase{"+7", 7, false},
                                           NumberCase{"-3", -3, false}, NumberCase{"2147483647", 2147483647, false},
                                           NumberCase{"-2147483648", -2147483647 - 1, false}));

TEST(DimsTableRegistration, TextsStrtolDoesNotTakeWholeAreNamesUnchecked) {
  SymbolicDimsTable t;
  for (const char* text : {"5 ", "0x", "-", "N+1", "2fast", "a b"}) {
    const int id = t.registerSymbolicDims(text, nullptr);
    EXPECT_TRUE(QL::SymbolicString::isa(t.getSymbolicExpr(id))) << text;
    EXPECT_EQ(t.getSymbolicDims(id).toString(), text);
  }
}

TEST(DimsTableRegistration, NullTextReadsAsEmptyAndIsRefusedAsANumber) {
  SymbolicDimsTable t;
  EXPECT_THROW(t.registerSymbolicDims(static_cast<const char*>(nullptr), nullptr), std::bad_cast);
}

TEST(DimsTableRegistration, VectorFormTakesDigitsOnlyAsIntegers) {
  SymbolicDimsTable t;
  const int id = t.registerSymbolicDims(std::vector<std::string>{"N", "007", "0x10", "-3", "+4", ""}, nullptr);
  std::vector<std::string> dims;
  t.getSymbolicDimensions(id, dims);
  EXPECT_EQ(dims, (std::vector<std::string>{"N", "7", "0x10", "-3", "+4", ""}));
  EXPECT_TRUE(QL::SymbolicString::isa(t.getSymbolicExpr(t.getSymbolicDimsId("0x10"))));
  EXPECT_EQ(t.getValueOf(t.getSymbolicDims(id).getDimension(1).getId()), 7);
  EXPECT_FALSE(t.getValueOf(t.getSymbolicDims(id).getDimension(3).getId()));  // a sign makes a name here
  EXPECT_THROW(t.registerSymbolicDims(std::vector<std::string>{"N", "99999999999"}, nullptr), std::bad_cast);
}

TEST(DimsTableRegistration, VectorOfOneDigitIsMultiDimensionalNotTheInteger) {
  SymbolicDimsTable t;
  const int one = t.registerSymbolicDims(std::vector<std::string>{"4"}, nullptr);
  EXPECT_NE(one, t.registerSymbolicDims(4));
  EXPECT_EQ(t.getSymbolicDims(one).getNumDimensions(), 1u);
  EXPECT_FALSE(t.getValueOf(one));
  const int none = t.registerSymbolicDims(std::vector<std::string>{}, nullptr);
  EXPECT_EQ(t.getSymbolicDims(none).toString(), "[]");
}

TEST(DimsTableRegistration, ExpressionTextsEnterAsParsed) {
  SymbolicDimsTable t;
  const int n = t.registerSymbolicDims("N", nullptr);
  EXPECT_EQ(t.registerSymbolicDimsExpr("N", nullptr), n);
  EXPECT_EQ(t.registerSymbolicDimsExpr("(N)", nullptr), n);
  const int twice = t.registerSymbolicDimsExpr("2*N", nullptr);
  EXPECT_EQ(t.getSymbolicDims(twice).toString(), "2*N");  // not simplified to N*2
  EXPECT_NE(twice, t.registerSymbolicDimsExpr("N*2", nullptr));
  EXPECT_THROW(t.registerSymbolicDimsExpr("N+", nullptr), fl::except::IException);
  EXPECT_THROW(t.registerSymbolicDimsExpr(nullptr, nullptr), fl::except::IException);
}

TEST(DimsTableRegistration, IdsOfTextsAndHandlesOfNames) {
  SymbolicDimsTable t;
  EXPECT_EQ(t.getSymbolicDimsId("12"), t.registerSymbolicDims(12));
  EXPECT_EQ(t.getSymbolicDimsId("-12"), t.getSymbolicDims("-12").getId());  // a name: digits only count
  EXPECT_EQ(t.getSymbolicDims("12").toString(), "12");
  EXPECT_TRUE(QL::SymbolicString::isa(t.getSymbolicExpr(t.getSymbolicDims("12").getId())));
  EXPECT_EQ(t.getSymbolicDimsAt(2).getId(), 1);
  EXPECT_THROW(t.getSymbolicDimsId("99999999999"), std::bad_cast);
}

TEST(DimsTableRegistration, SubExpressionsHaveIdsToo) {
  SymbolicDimsTable t;
  const int e = t.registerSymbolicDimsExpr("A+B", nullptr);
  EXPECT_EQ(t.getNumSymbolicDimss(), 5u);
  EXPECT_EQ(e, 3);
  EXPECT_EQ(t.getSymbolicDimsId("A"), 1);
  EXPECT_TRUE(t.isaSymbolicDimension(2));
}

TEST(DimsTableValidity, NamesAndIds) {
  EXPECT_TRUE(SymbolicDimsTable::isAValidSymbolicDims("N_1"));
  EXPECT_FALSE(SymbolicDimsTable::isAValidSymbolicDims("1N"));
  EXPECT_FALSE(SymbolicDimsTable::isAValidSymbolicDims(""));
  EXPECT_FALSE(SymbolicDimsTable::isAValidSymbolicDims(nullptr));
  struct Exposed : SymbolicDimsTable {
    using SymbolicDimsTable::validateSymbolicDimsExpr;
  };
  EXPECT_NO_THROW(Exposed::validateSymbolicDimsExpr("N"));
  EXPECT_RAISES(Exposed::validateSymbolicDimsExpr("N+1"), "QuillonTypes:general", "InvalidDataType", {"N+1"});
  EXPECT_RAISES(Exposed::validateSymbolicDimsExpr(nullptr), "QuillonTypes:general", "InvalidDataType", {""});
  SymbolicDimsTable t;
  EXPECT_NO_THROW(t.checkSymbolicDimsId(-1));
  EXPECT_RAISES(t.checkSymbolicDimsId(1), "QuillonTypes:general", "InvalidDataTypeId", {"1"});
  EXPECT_RAISES(t.checkSymbolicDimsId(-2), "QuillonTypes:general", "InvalidDataTypeId", {"-2"});
  EXPECT_FALSE(t.isSymbolicDimsIdValid(2147483647));
  EXPECT_FALSE(t.getValueOf(2147483647));
  EXPECT_FALSE(t.getValueOf(-5));
}

TEST(DimsTableImport, CopiesWholeExpressionsAndMergesParts) {
  SymbolicDimsTable a;
  SymbolicDimsTable b;
  const int src = a.registerSymbolicDimsExpr("N*M+1", nullptr);
  const int m = b.registerSymbolicDims("M", nullptr);
  const int copied = b.importSymbolicDims(a, src);
  EXPECT_EQ(b.getSymbolicDims(copied).toString(), "N*M+1");
  EXPECT_EQ(b.getSymbolicDimsId("M"), m);
  EXPECT_EQ(b.importSymbolicDims(a, src), copied);
  EXPECT_EQ(a.importSymbolicDims(a, src), src);
  EXPECT_THROW(b.importSymbolicDims(a, 1000), fl::except::IException);
}

TEST(DimsTableEquality, EqualSymbolicDimsIsTrueOrUnknownNeverFalse) {
  // Why: not being known equal says nothing about being different, so the answer is never false, even for
  // sizes known ordered or for different integers.
  SymbolicDimsTable t;
  const int n = t.registerSymbolicDims("N", nullptr);
  const int m = t.registerSymbolicDims("M", nullptr);
  const int k = t.registerSymbolicDims("K", nullptr);
  t.addGreaterThanRelation(n, m, nullptr);
  t.addEqualRelation(k, n, nullptr);
  EXPECT_EQ(t.equalSymbolicDims("K", "N"), boost::optional<bool>(true));
  EXPECT_EQ(t.equalSymbolicDims("N*2", "2*N"), boost::optional<bool>(true));  // simplified first
  EXPECT_EQ(t.equalSymbolicDims("2+2", "4"), boost::optional<bool>(true));
  EXPECT_FALSE(t.equalSymbolicDims("N", "M").has_value());
  EXPECT_FALSE(t.equalSymbolicDims("3", "4").has_value());
  EXPECT_FALSE(t.equalSymbolicDims("K+1", "N+1").has_value());  // classes are of sizes, not of terms
  t.addEqualConstraint(m, 6, nullptr);
  EXPECT_EQ(t.equalSymbolicDims("6", "M"), boost::optional<bool>(true));
  EXPECT_THROW(t.equalSymbolicDims("N", "*"), fl::except::IException);
}

TEST(DimsTableTexts, DisplayStringsAreCachedPerEntry) {
  SymbolicDimsTable t;
  const int e = t.registerSymbolicDimsExpr("N*(M+1)", nullptr);
  const char* s = t.getDisplayString(e);
  EXPECT_STREQ(s, "N*(M+1)");
  EXPECT_EQ(t.getDisplayString(e), s);
  EXPECT_STREQ(t.getDisplayString(-1), "INHERIT");
  EXPECT_THROW(t.getDisplayString(50), fl::except::IException);
  EXPECT_THROW(t.getDisplayString(-3), fl::except::IException);
}

TEST(DimsTableTexts, DimensionsAndSymbols) {
  SymbolicDimsTable t;
  const int nd = t.registerSymbolicDims(std::vector<std::string>{"N", "3"}, nullptr);
  std::vector<std::string> out{"stale"};
  t.getSymbolicDimensions(nd, out);
  EXPECT_EQ(out, (std::vector<std::string>{"N", "3"}));
  t.getSymbolicDimensions(t.registerSymbolicDims("M", nullptr), out);
  EXPECT_TRUE(out.empty());
  out = {"stale"};
  t.getSymbolicDimsSymbols(t.registerSymbolicDimsExpr("B*A+B/C", nullptr), out);
  EXPECT_EQ(out, (std::vector<std::string>{"B", "A", "C"}));
  t.getSymbolicDimsSymbols(t.registerSymbolicDims(7), out);
  EXPECT_TRUE(out.empty());
}

TEST(DimsTableTexts, PrintListsEntriesAfterTheBuiltins) {
  SymbolicDimsTable t;
  t.registerSymbolicDimsExpr("N+1", nullptr);
  std::ostringstream os;
  t.print(os);
  EXPECT_EQ(os.str(),
            "SymbolicDimsTable\nNumber of SymbolicDimss : 5\n\n"
            "SymbolicDims : 'N'\nSymbolicDims : '1'\nSymbolicDims : 'N+1'\n\n");
}

class DimsConstantOutput : public ::testing::Test {
 protected:
  SymbolicDimsTable t;
  int out = -7;
};

TEST_F(DimsConstantOutput, WithoutTheFlagTheTextsFormOneSize) {
  SymbolicDimsServices::Const::ComputeOutput(t, nullptr, {}, out, true);
  EXPECT_EQ(out, -7);  // no texts, nothing happens
  SymbolicDimsServices::Const::ComputeOutput(t, nullptr, {"1", "N"}, out, false);
  EXPECT_EQ(t.getSymbolicDims(out).toString(), "[1,N]");
}

TEST_F(DimsConstantOutput, WithTheFlagTheOtherOfOneIsTheSize) {
  SymbolicDimsServices::Const::ComputeOutput(t, nullptr, {"1", "N"}, out, true);
  EXPECT_EQ(out, t.getSymbolicDimsId("N"));
  SymbolicDimsServices::Const::ComputeOutput(t, nullptr, {"8", "1"}, out, true);
  EXPECT_EQ(t.getValueOf(out), 8);
  SymbolicDimsServices::Const::ComputeOutput(t, nullptr, {"1", "1"}, out, true);
  EXPECT_EQ(t.getValueOf(out), 1);
}

TEST_F(DimsConstantOutput, WithTheFlagAnythingElseIsRefused) {
  for (const std::vector<std::string>& dims :
       {std::vector<std::string>{"N"}, {"N", "M"}, {"1", "N", "1"}, {"01", "N"}}) {
    EXPECT_RAISES(SymbolicDimsServices::Const::ComputeOutput(t, nullptr, dims, out, true), "QuillonTypes:Dimensions",
                  "InvalidSymbolicDimensionSpec", {""});
  }
  EXPECT_EQ(out, -7);
}

}  // namespace
