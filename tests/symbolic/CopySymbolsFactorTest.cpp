// Copying between tables, the names of an expression, and the factoring of divisions.
#include <gtest/gtest.h>

#include "ql_types/symbolic/SymbolicExprCopy.hpp"
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"
#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprSymbols.hpp"
#include "symbolic/SymbolicTestSupport.hpp"

namespace {

using namespace QL;
using symtest::text;

// The number of distinct entries reachable from index: what a copy into an empty table must enter.
unsigned reachable(const SymbolicExprTable& t, unsigned index) {
  std::vector<bool> seen(t.size());
  std::vector<unsigned> stack{index};
  unsigned n = 0;
  while (!stack.empty()) {
    const unsigned i = stack.back();
    stack.pop_back();
    if (seen[i]) continue;
    seen[i] = true;
    ++n;
    for (unsigned k = 0; k < t.get(i).getNumOperands(); ++k) stack.push_back(t.get(i).getOperand(k));
  }
  return n;
}

TEST(Copy, PreservesStructureAndEntersEachPartOnce) {
  std::mt19937 rng(5);
  symtest::GenOptions options;
  options.maxDepth = 6;
  for (int n = 0; n < 200; ++n) {
    SymbolicExprTable source, target;
    const unsigned e = symtest::randomExpr(source, rng, options);
    SymbolicExprCopy copy(source, target);
    const unsigned c = copy(e);
    ASSERT_EQ(text(target, c), text(source, e));
    ASSERT_EQ(target.size(), reachable(source, e));
    ASSERT_EQ(copy(e), c);
    ASSERT_EQ(SymbolicExprCopy(target, source)(c), e);  // and back, onto what was there
  }
}

TEST(Copy, MergesWithWhatTheTargetHolds) {
  SymbolicExprTable source, target;
  SymbolicExprParser parse(source);
  const unsigned nd = SymbolicNDExpr(source, {parse("N")}).getId(source);
  const unsigned product = SymbolicMultiplyExpr(source, parse("a+b"), nd).getId(source);
  const unsigned e = SymbolicDivideExpr(source, product, parse("a+b")).getId(source);
  const unsigned held = SymbolicExprParser{target}("b+(a+b)");
  const unsigned size = target.size();  // b, a, a+b, b+(a+b)
  const unsigned c = SymbolicExprCopy(source, target)(e);
  EXPECT_EQ(text(target, c), "(a+b)*[N]/(a+b)");
  EXPECT_EQ(target.size(), size + 4);  // N, [N], (a+b)*[N], and the division
  EXPECT_EQ(text(target, held), "b+(a+b)");
  // getId of an entry of another table copies in the same way.
  EXPECT_EQ(source.get(e).getId(target), c);
  EXPECT_EQ(target.size(), size + 4);
}

TEST(Copy, ToItsOwnTableIsTheIdentity) {
  SymbolicExprTable t;
  const unsigned e = SymbolicExprParser{t}("a*b");
  EXPECT_EQ(SymbolicExprCopy(t, t)(e), e);
  EXPECT_EQ(t.size(), 3u);
}

struct Names {
  const char* input;
  std::vector<std::string> names;
};

void PrintTo(const Names& n, std::ostream* os) { *os << '"' << n.input << '"'; }

class Symbols : public testing::TestWithParam<Names> {};

TEST_P(Symbols, ListsEachNameOnceInOrderOfFirstOccurrence) {
  SymbolicExprTable t;
  std::vector<std::string> names;
  SymbolicExprSymbols{t}(SymbolicExprParser{t}(GetParam().input), names);
  EXPECT_EQ(names, GetParam().names);
}

INSTANTIATE_TEST_SUITE_P(Texts, Symbols,
                         testing::Values(Names{"b+a*b+c", {"b", "a", "c"}}, Names{"3*4", {}}, Names{"N", {"N"}},
                                         Names{"(x+y)*(x+y)-z", {"x", "y", "z"}},
                                         Names{"-(q%p)/(p-r)", {"q", "p", "r"}},
                                         Names{"INHERIT+NOSYMBOLIC", {"INHERIT", "NOSYMBOLIC"}}));

TEST(SymbolsOf, MultiDimensionalEntriesAndRelationsAppendingToAList) {
  SymbolicExprTable t;
  SymbolicExprParser parse(t);
  const unsigned nd = SymbolicNDExpr(t, {parse("M"), parse("3"), parse("N*M")}).getId(t);
  const unsigned rel = SymbolicGreaterThanExpr(t, nd, parse("K")).getId(t);
  std::vector<std::string> names{"N"};
  SymbolicExprSymbols{t}(rel, names);
  EXPECT_EQ(names, (std::vector<std::string>{"N", "M", "K"}));
}

struct Factoring {
  const char* input;
  const char* expected;
};

void PrintTo(const Factoring& f, std::ostream* os) { *os << '"' << f.input << '"'; }

class FactorDivision : public testing::TestWithParam<Factoring> {};

TEST_P(FactorDivision, BringsTheDivisionToTheTop) {
  SymbolicExprTable t;
  const unsigned i = SymbolicExprFactorDivision(t)(SymbolicExprParser{t}(GetParam().input));
  EXPECT_EQ(text(t, i), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, FactorDivision,
                         testing::Values(Factoring{"a/2+b", "(a+b*2)/2"}, Factoring{"(a/2)*3", "a*3/2"},
                                         Factoring{"a/(b/c)", "a*c/b"}, Factoring{"a/2+b/4", "(a*2+b)/4"},
                                         Factoring{"a/2-b/2", "(a-b)/2"}, Factoring{"a/2", "a/2"},
                                         Factoring{"a+b", "a+b"}, Factoring{"a/2-a/2", "0"},
                                         Factoring{"-(a/2)", "-a/2"}, Factoring{"(a*4)/2", "a*2"},
                                         Factoring{"b/(a*2)*a", "b/2"}, Factoring{"(a+b)/(a+b)", "1"},
                                         Factoring{"a/-2", "-a/2"}, Factoring{"a%(b/2)+c/3", "(c+a%(b/2)*3)/3"},
                                         Factoring{"a/0+b/2", "(b+a/0*2)/2"}));

TEST(FactorDivisionRandom, EqualsTheInputWhereverItsDivisionsAreExact) {
  std::mt19937 rng(9);
  symtest::GenOptions options;
  options.remainders = false;
  options.minInt = 1;  // small positive divisors make exact samples common
  options.maxInt = 4;
  int compared = 0;
  for (int n = 0; n < 400; ++n) {
    SymbolicExprTable t;
    const unsigned e = symtest::randomExpr(t, rng, options);
    const unsigned f = SymbolicExprFactorDivision(t)(e);
    // At most one division, at the top, apart from divisions by zero.
    const SymbolicExpr& top = t.get(f);
    std::vector<unsigned> stack;
    for (unsigned k = 0; k < top.getNumOperands(); ++k) stack.push_back(top.getOperand(k));
    while (!stack.empty()) {
      const SymbolicExpr& x = t.get(stack.back());
      stack.pop_back();
      const bool byZero = SymbolicDivideExpr::isa(x) && symtest::evaluate(t, x.getOperand(1), {}) == 0;
      ASSERT_TRUE(!SymbolicDivideExpr::isa(x) || byZero) << text(t, e) << " -> " << text(t, f);
      for (unsigned k = 0; k < x.getNumOperands(); ++k) stack.push_back(x.getOperand(k));
    }
    for (int k = 0; k < 10; ++k) {
      const symtest::Env env = symtest::randomEnv(rng, options.names, -6, 12);
      symtest::EvalNotes notes;
      const auto before = symtest::evaluate(t, e, env, &notes);
      if (!before || notes.inexactDivision) continue;
      ++compared;
      ASSERT_EQ(symtest::evaluate(t, f, env), before) << text(t, e) << " -> " << text(t, f);
    }
  }
  EXPECT_GT(compared, 1000);
}

}  // namespace
