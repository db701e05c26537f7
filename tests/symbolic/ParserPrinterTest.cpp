// Printing and parsing: the texts of trees, round trips, error positions, and the predicate hook.
#include <gtest/gtest.h>

#include "ql_types/platform/IException.hpp"
#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "support/ExpectRaises.hpp"
#include "symbolic/SymbolicTestSupport.hpp"

namespace {

using namespace QL;
using symtest::text;

struct Reading {
  const char* input;
  const char* printed;
};

void PrintTo(const Reading& r, std::ostream* os) { *os << '"' << r.input << '"'; }

class ParseThenPrint : public testing::TestWithParam<Reading> {};

// What the parser built is exactly what the text says: printing it gives the same text less redundant
// parentheses and blanks.
TEST_P(ParseThenPrint, GivesTheFewestParentheses) {
  SymbolicExprTable t;
  SymbolicExprParser parse(t);
  const unsigned i = parse(GetParam().input);
  EXPECT_EQ(text(t, i), GetParam().printed);
  EXPECT_EQ(parse(text(t, i)), i);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParseThenPrint,
    testing::Values(Reading{"INHERIT", "INHERIT"}, Reading{"NOSYMBOLIC", "NOSYMBOLIC"}, Reading{"N*2", "N*2"},
                    Reading{"(A+B)*C", "(A+B)*C"}, Reading{"-N", "-N"}, Reading{"a+b*c", "a+b*c"},
                    Reading{"(a+b)+c", "a+b+c"}, Reading{"a+(b+c)", "a+(b+c)"}, Reading{"a-(b-c)", "a-(b-c)"},
                    Reading{"a-(b+c)", "a-(b+c)"}, Reading{"(a*b)*c", "a*b*c"}, Reading{"a*(b*c)", "a*(b*c)"},
                    Reading{"a/(b*c)", "a/(b*c)"}, Reading{"(a%b)*c", "a%b*c"}, Reading{"a*(b%c)", "a*(b%c)"},
                    Reading{"((a))", "a"}, Reading{"-(a+b)", "-(a+b)"}, Reading{"(-a)*b", "-a*b"},
                    Reading{"-(a*b)", "-(a*b)"}, Reading{"-5", "-5"}, Reading{"- 5", "-5"}, Reading{"-(5)", "-(5)"},
                    Reading{"--5", "--5"}, Reading{"-(-5)", "--5"}, Reading{"2--5", "2--5"}, Reading{"2-(-5)", "2--5"},
                    Reading{"a*-b", "a*-b"}, Reading{"-2147483648", "-2147483648"}, Reading{"2147483647", "2147483647"},
                    Reading{"007", "7"}, Reading{" \t a  +\nb_2 * _c ", "a+b_2*_c"}, Reading{"x1%3/y", "x1%3/y"}));

TEST(PrintOnly, MultiDimensionalEntriesAndRelations) {
  SymbolicExprTable t;
  SymbolicExprParser parse(t);
  const unsigned n = parse("N"), three = parse("3"), sum = parse("a+1");
  EXPECT_EQ(text(t, SymbolicNDExpr(t, {n, three}).getId(t)), "[N,3]");
  EXPECT_EQ(text(t, SymbolicNDExpr(t, {}).getId(t)), "[]");
  EXPECT_EQ(text(t, SymbolicMultiplyExpr(t, SymbolicNDExpr(t, {n, sum}), t.get(three)).getId(t)), "[N,a+1]*3");
  EXPECT_EQ(text(t, SymbolicEqualExpr(t, n, sum).getId(t)), "N==a+1");
  EXPECT_EQ(text(t, SymbolicGreaterThanExpr(t, n, three).getId(t)), "N>3");
  EXPECT_EQ(text(t, SymbolicLessThanExpr(t, sum, n).getId(t)), "a+1<N");
  // A temporary prints too, its operands read in its table.
  EXPECT_EQ(SymbolicExprPrinter()(SymbolicMinusExpr(t, n, sum)), "N-(a+1)");
}

TEST(PrintOnly, NegativeIntegersAndNegationsStayApart) {
  SymbolicExprTable t;
  const unsigned five = SymbolicIntValue(t, 5).getId(t);
  const unsigned negated = SymbolicUnaryMinusExpr(t, five).getId(t);
  const unsigned negative = SymbolicIntValue(t, -5).getId(t);
  EXPECT_NE(negated, negative);
  SymbolicExprParser parse(t);
  EXPECT_EQ(parse(text(t, negated)), negated);
  EXPECT_EQ(parse(text(t, negative)), negative);
}

class NameInAngles : public SymbolicExprPrinterPredicate {
 public:
  std::string name(const std::string& n) const override { return "<" + n + ">"; }
};

TEST(PrintOnly, ThePredicateDecidesHowNamesLook) {
  SymbolicExprTable t;
  const unsigned i = SymbolicExprParser{t}("a*(b+2)");
  EXPECT_EQ(SymbolicExprPrinter()(t, i, NameInAngles()), "<a>*(<b>+2)");
  EXPECT_EQ(SymbolicExprPrinter()(t, i, SymbolicExprPrinter::Predicate::instance()), "a*(b+2)");
}

TEST(RoundTrip, RandomTreesReadBackToTheSameIndex) {
  std::mt19937 rng(11);
  symtest::GenOptions options;
  options.maxDepth = 6;
  options.minInt = -12;
  for (int n = 0; n < 500; ++n) {
    SymbolicExprTable t;
    const unsigned e = symtest::randomExpr(t, rng, options);
    const unsigned size = t.size();
    const std::string printed = text(t, e);
    ASSERT_EQ(SymbolicExprParser{t}(printed), e) << printed;
    ASSERT_EQ(t.size(), size) << printed;
  }
}

struct BadText {
  const char* input;
  const char* key;
  std::vector<std::string> args;
};

void PrintTo(const BadText& b, std::ostream* os) { *os << '"' << b.input << '"'; }

class ParseErrors : public testing::TestWithParam<BadText> {};

TEST_P(ParseErrors, SayWhatAndWhereAndEnterNothing) {
  SymbolicExprTable t;
  SymbolicExprParser parse(t);
  parse("a+b");
  const unsigned size = t.size();
  EXPECT_RAISES(parse(GetParam().input), "QL:symbolic", GetParam().key, GetParam().args);
  EXPECT_EQ(t.size(), size);
}

const char* const kEnd = "the end of the text";

INSTANTIATE_TEST_SUITE_P(
    Positions, ParseErrors,
    testing::Values(BadText{"", "SymbolicExprExpectedOperand", {"1", "", kEnd}},
                    BadText{"   ", "SymbolicExprExpectedOperand", {"4", "   ", kEnd}},
                    BadText{"a+", "SymbolicExprExpectedOperand", {"3", "a+", kEnd}},
                    BadText{"*a", "SymbolicExprExpectedOperand", {"1", "*a", "'*'"}},
                    BadText{"c*d+(e+)", "SymbolicExprExpectedOperand", {"8", "c*d+(e+)", "')'"}},
                    BadText{"+a", "SymbolicExprExpectedOperand", {"1", "+a", "'+'"}},
                    BadText{"a b", "SymbolicExprExpectedOperator", {"3", "a b", "'b'"}},
                    BadText{"2N", "SymbolicExprExpectedOperator", {"2", "2N", "'N'"}},
                    BadText{"0x10", "SymbolicExprExpectedOperator", {"2", "0x10", "'x'"}},
                    BadText{"(a", "SymbolicExprExpectedClosingParenthesis", {"3", "(a", kEnd, "1"}},
                    BadText{"c*((a+b) d)", "SymbolicExprExpectedClosingParenthesis", {"10", "c*((a+b) d)", "'d'", "3"}},
                    BadText{"a)", "SymbolicExprUnmatchedParenthesis", {"2", "a)"}},
                    BadText{"a$b", "SymbolicExprInvalidCharacter", {"2", "a$b", "'$'"}},
                    BadText{"a+\x01", "SymbolicExprInvalidCharacter", {"3", "a+\x01", "the byte 0x01"}},
                    BadText{"a==b", "SymbolicExprInvalidCharacter", {"2", "a==b", "'='"}},
                    BadText{"2147483648", "SymbolicExprIntegerOutOfRange", {"1", "2147483648", "2147483648"}},
                    BadText{"1+-2147483649", "SymbolicExprIntegerOutOfRange", {"4", "1+-2147483649", "-2147483649"}},
                    BadText{"-(2147483648)", "SymbolicExprIntegerOutOfRange", {"3", "-(2147483648)", "2147483648"}},
                    BadText{"99999999999999999999999",
                            "SymbolicExprIntegerOutOfRange",
                            {"1", "99999999999999999999999", "99999999999999999999999"}}));

TEST(ParseLimits, NestingDeeperThanTheLimitIsRefused) {
  SymbolicExprTable t;
  SymbolicExprParser parse(t);
  const unsigned depth = SymbolicExprParser::kMaxDepth;
  std::string ok = std::string(depth, '(') + "a" + std::string(depth, ')');
  EXPECT_EQ(text(t, parse(ok)), "a");
  const std::string deep = std::string(depth + 1, '(') + "a" + std::string(depth + 1, ')');
  EXPECT_RAISES(parse(deep), "QL:symbolic", "SymbolicExprTooDeep", {std::to_string(depth + 1), deep, "500"});
  const std::string minus = std::string(depth + 1, '-') + "a";
  EXPECT_RAISES(parse(minus), "QL:symbolic", "SymbolicExprTooDeep", {std::to_string(depth + 1), minus, "500"});
  EXPECT_EQ(t.size(), 1u);
}

TEST(ParseErrorsAreUserErrors, HostsCatchThemAsIExceptions) {
  SymbolicExprTable t;
  try {
    SymbolicExprParser{t}("a+*b");
    FAIL() << "no error";
  } catch (const fl::except::IUserException& e) {
    EXPECT_STREQ(e.what(),
                 "Expected a name, a number, '-' or '(' at position 3 of the expression 'a+*b', but found '*'.");
  }
}

TEST(ParseNull, ReadsAsEmpty) {
  SymbolicExprTable t;
  EXPECT_RAISES(SymbolicExprParser{t}(static_cast<const char*>(nullptr)), "QL:symbolic", "SymbolicExprExpectedOperand",
                {"1", "", kEnd});
}

}  // namespace
