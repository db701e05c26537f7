// Long and deep expressions. A flat sum or product of n terms is a tree n levels deep, and the API can nest
// anything without limit; every walker (printer, simplifier, factoring of divisions, structural order,
// copy, symbols) must take them without call depth, and in time about linear in their size. Sizes here
// are far past what crashed an 8 MB stack (or ASan's) when walkers recursed.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ql_types/symbolic/SymbolicExprCopy.hpp"
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"
#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprSymbols.hpp"
#include "support/ExpectRaises.hpp"
#include "symbolic/SymbolicTestSupport.hpp"

namespace {

using namespace QL;
using symtest::text;

// Under ASan frames are larger and everything slower: 20000 levels overflowed its stack before.
#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kLong = 20000;
#else
constexpr unsigned kLong = 100000;
#endif

// "x0 op x1 op ... op x(n-1)".
std::string chainText(const char* op, unsigned n, const char* prefix = "x") {
  std::string s;
  s.reserve(n * 8);
  for (unsigned k = 0; k < n; ++k) {
    if (k) s += op;
    s += prefix + std::to_string(k);
  }
  return s;
}

// The reference value of an entry of any depth: every reachable entry once, operands first (they have
// lower indexes), with C's integer rules; empty where the value is undefined or overflows.
std::optional<std::int64_t> evaluateDeep(const SymbolicExprTable& t, unsigned root, const symtest::Env& env) {
  std::vector<unsigned> nodes;
  std::vector<bool> seen(t.size(), false);
  std::vector<unsigned> stack{root};
  seen[root] = true;
  while (!stack.empty()) {
    const unsigned i = stack.back();
    stack.pop_back();
    nodes.push_back(i);
    for (unsigned k = 0; k < t.get(i).getNumOperands(); ++k)
      if (!seen[t.get(i).getOperand(k)]) {
        seen[t.get(i).getOperand(k)] = true;
        stack.push_back(t.get(i).getOperand(k));
      }
  }
  std::sort(nodes.begin(), nodes.end());
  std::map<unsigned, std::optional<std::int64_t>> v;
  for (const unsigned i : nodes) {
    const SymbolicExpr& e = t.get(i);
    std::optional<std::int64_t> a, b, r;
    if (e.getNumOperands() > 0) a = v.at(e.getOperand(0));
    if (e.getNumOperands() > 1) b = v.at(e.getOperand(1));
    std::int64_t x;
    switch (e.getKind()) {
      case SymbolicExprKind::IntValue:
        r = static_cast<const SymbolicIntValue&>(e).getValue();
        break;
      case SymbolicExprKind::String:
        r = env.at(static_cast<const SymbolicString&>(e).getName());
        break;
      case SymbolicExprKind::UnaryMinus:
        if (a && !__builtin_sub_overflow(std::int64_t{0}, *a, &x)) r = x;
        break;
      case SymbolicExprKind::Plus:
        if (a && b && !__builtin_add_overflow(*a, *b, &x)) r = x;
        break;
      case SymbolicExprKind::Minus:
        if (a && b && !__builtin_sub_overflow(*a, *b, &x)) r = x;
        break;
      case SymbolicExprKind::Multiply:
        if (a && b && !__builtin_mul_overflow(*a, *b, &x)) r = x;
        break;
      case SymbolicExprKind::Divide:
        if (a && b && *b != 0 && !(*a == INT64_MIN && *b == -1)) r = *a / *b;
        break;
      case SymbolicExprKind::Modulo:
        if (a && b && *b != 0) r = *b == -1 ? 0 : *a % *b;
        break;
      default:
        break;
    }
    v[i] = r;
  }
  return v.at(root);
}

unsigned simplified(SymbolicExprTable& t, unsigned i, bool& converged) {
  return SymbolicExprSimplify(t, 10).simplify(i, converged);
}

// Every walker over one entry: none may crash, and each answer is checked where it is known.
void walkAll(SymbolicExprTable& t, unsigned i, std::size_t names) {
  bool converged = false;
  const unsigned s = simplified(t, i, converged);
  EXPECT_TRUE(converged);
  EXPECT_EQ(SymbolicExprSimplify(t, 10).simplify(s), s);  // idempotent
  const std::string printed = text(t, s);
  EXPECT_FALSE(printed.empty());
  SymbolicExprFactorDivision factor(t);
  EXPECT_LT(factor(i), t.size());
  SymbolicExprTable other;
  const unsigned copied = SymbolicExprCopy(t, other).copy(i);
  EXPECT_EQ(text(other, copied), text(t, i));
  std::vector<std::string> symbols;
  SymbolicExprSymbols{t}(i, symbols);
  EXPECT_EQ(symbols.size(), names);
}

class FlatChains : public testing::TestWithParam<const char*> {};

TEST_P(FlatChains, ArePrintedSimplifiedCopiedAndFactored) {
  SymbolicExprTable t;
  const std::string input = chainText(GetParam(), kLong);
  const unsigned i = SymbolicExprParser{t}(input);
  EXPECT_EQ(text(t, i), input);  // printing gives the parsed text back
  walkAll(t, i, kLong);
}

INSTANTIATE_TEST_SUITE_P(EachOperator, FlatChains, testing::Values("+", "-", "*", "/", "%"),
                         [](const testing::TestParamInfo<const char*>& info) {
                           return std::string(info.param[0] == '+'   ? "Sum"
                                              : info.param[0] == '-' ? "Difference"
                                              : info.param[0] == '*' ? "Product"
                                              : info.param[0] == '/' ? "Quotient"
                                                                     : "Remainder");
                         });

TEST(FlatChains, SumsOfDistinctNamesMeetWhateverTheirOrder) {
  SymbolicExprTable t;
  std::vector<std::string> names;
  for (unsigned k = 0; k < kLong; ++k) names.push_back("n" + std::to_string(k));
  std::string forward, backward;
  for (unsigned k = 0; k < kLong; ++k) {
    forward += (k ? "+" : "") + names[k];
    backward += (k ? "+" : "") + names[kLong - 1 - k];
  }
  SymbolicExprSimplify simplify(t, 10);
  const unsigned a = simplify.simplify(SymbolicExprParser{t}(forward));
  const unsigned b = simplify.simplify(SymbolicExprParser{t}(backward));
  EXPECT_EQ(a, b);
  std::sort(names.begin(), names.end());  // the canonical order of names is by their bytes
  std::string sorted;
  for (const auto& n : names) sorted += (sorted.empty() ? "" : "+") + n;
  EXPECT_EQ(text(t, a), sorted);
}

TEST(FlatChains, LongSumsCollectTheirTerms) {
  SymbolicExprTable t;
  // a + b + a + b + ... - a: the count of each name, whatever the length.
  std::string input;
  for (unsigned k = 0; k < kLong; ++k) input += k % 2 ? "+b" : (k ? "+a" : "a");
  input += "-a";
  EXPECT_EQ(text(t, SymbolicExprSimplify(t, 10).simplify(SymbolicExprParser{t}(input))),
            "a*" + std::to_string(kLong / 2 - 1) + "+b*" + std::to_string(kLong / 2));
}

TEST(FlatChains, DivisionsOfLongSumsAreOrderedByStructure) {
  // Two divisions of long sums that differ only in their last name: ordering them follows the sums down.
  SymbolicExprTable t;
  const unsigned n = kLong;
  const std::string a = "(" + chainText("+", n) + "+p)/y";
  const std::string b = "(" + chainText("+", n) + "+q)/y";
  SymbolicExprSimplify simplify(t, 10);
  const unsigned ab = simplify.simplify(SymbolicExprParser{t}(a + "+" + b));
  const unsigned ba = simplify.simplify(SymbolicExprParser{t}(b + "+" + a));
  EXPECT_EQ(ab, ba);
}

// Nestings the parser refuses past 500 levels but the API builds freely.
struct Nesting {
  const char* name;
  std::function<unsigned(SymbolicExprTable&, unsigned, unsigned)> wrap;  // (table, inner, level)
  unsigned depth;
  std::size_t names;  // distinct names at that depth
};

void PrintTo(const Nesting& n, std::ostream* os) { *os << n.name; }

class DeepNesting : public testing::TestWithParam<Nesting> {};

TEST_P(DeepNesting, IsWalkedWithoutCallDepth) {
  SymbolicExprTable t;
  unsigned e = SymbolicString(t, "a").getId(t);
  for (unsigned k = 0; k < GetParam().depth; ++k) e = GetParam().wrap(t, e, k);
  walkAll(t, e, GetParam().names);
}

unsigned name(SymbolicExprTable& t, unsigned k) { return SymbolicString(t, "b" + std::to_string(k)).getId(t); }

INSTANTIATE_TEST_SUITE_P(
    Shapes, DeepNesting,
    testing::Values(
        Nesting{"Negations",
                [](SymbolicExprTable& t, unsigned e, unsigned) { return SymbolicUnaryMinusExpr(t, e).getId(t); }, kLong,
                1},
        Nesting{
            "RightDeepSums",
            [](SymbolicExprTable& t, unsigned e, unsigned k) { return SymbolicPlusExpr(t, name(t, k), e).getId(t); },
            kLong, kLong + 1},
        Nesting{
            "RightDeepQuotients",
            [](SymbolicExprTable& t, unsigned e, unsigned k) { return SymbolicDivideExpr(t, name(t, k), e).getId(t); },
            kLong, kLong + 1},
        // ((e - b) * 1 + b) at every level: sums and products nested, whose value stays e.
        Nesting{
            "ProductsOfSums",
            [](SymbolicExprTable& t, unsigned e, unsigned k) {
              const unsigned difference = SymbolicMinusExpr(t, e, name(t, k % 3)).getId(t);
              const unsigned one = SymbolicIntValue(t, 1).getId(t);
              return SymbolicPlusExpr(t, SymbolicMultiplyExpr(t, difference, one).getId(t), name(t, k % 3)).getId(t);
            },
            kLong / 4, 4},
        Nesting{"Sizes", [](SymbolicExprTable& t, unsigned e, unsigned) { return SymbolicNDExpr(t, {e}).getId(t); },
                kLong, 1},
        Nesting{"Relations",
                [](SymbolicExprTable& t, unsigned e, unsigned k) {
                  return SymbolicEqualExpr(t, e, name(t, k % 2)).getId(t);
                },
                kLong, 3}),
    [](const testing::TestParamInfo<Nesting>& info) { return std::string(info.param.name); });

TEST(DeepNesting, SumsProductsAndQuotientsSimplifyAtAnyDepth) {
  // ((e - b) * 2 + b) / 2 at every level, for which the reference evaluator gives the value.
  SymbolicExprTable t;
  unsigned e = SymbolicString(t, "a").getId(t);
  const unsigned two = SymbolicIntValue(t, 2).getId(t);
  for (unsigned k = 0; k < kLong / 4; ++k) {
    const unsigned b = name(t, k % 3);
    const unsigned twice = SymbolicMultiplyExpr(t, SymbolicMinusExpr(t, e, b).getId(t), two).getId(t);
    e = SymbolicDivideExpr(t, SymbolicPlusExpr(t, twice, b).getId(t), two).getId(t);
  }
  const unsigned s = SymbolicExprSimplify(t, 10).simplify(e);
  for (const std::int64_t v : {-3, 0, 5}) {
    const symtest::Env env{{"a", v}, {"b0", 1}, {"b1", 2}, {"b2", -4}};
    EXPECT_EQ(evaluateDeep(t, s, env), evaluateDeep(t, e, env)) << v;
  }
}

TEST(DeepNesting, EvenNegationsCancel) {
  SymbolicExprTable t;
  unsigned e = SymbolicString(t, "a").getId(t);
  for (unsigned k = 0; k < kLong; ++k) e = SymbolicUnaryMinusExpr(t, e).getId(t);
  EXPECT_EQ(text(t, e), std::string(kLong, '-') + "a");
  EXPECT_EQ(text(t, SymbolicExprSimplify(t, 10).simplify(e)), "a");
}

// Powers: squaring n times is n entries, and the exponent 2^n is checked, never wrapped.
unsigned squared(SymbolicExprTable& t, unsigned times, bool simplifyEachStep) {
  unsigned e = SymbolicString(t, "N").getId(t);
  for (unsigned k = 0; k < times; ++k) {
    e = SymbolicMultiplyExpr(t, e, e).getId(t);
    if (simplifyEachStep) e = SymbolicExprSimplify(t, 10).simplify(e);
  }
  return e;
}

std::size_t count(const std::string& s, char c) { return static_cast<std::size_t>(std::count(s.begin(), s.end(), c)); }

TEST(Powers, UpToTheBoundAreWrittenOutAndBeyondStayAsWritten) {
  SymbolicExprTable t;
  SymbolicExprSimplify simplify(t, 10);
  std::string power64 = "N";
  for (int k = 1; k < 64; ++k) power64 += "*N";
  EXPECT_EQ(text(t, simplify.simplify(SymbolicExprParser{t}("N*(N*N)"))), "N*N*N");
  EXPECT_EQ(text(t, simplify.simplify(SymbolicExprParser{t}(power64))), power64);
  EXPECT_EQ(text(t, simplify.simplify(SymbolicExprParser{t}("(" + power64 + ")*(N*a)"))),
            power64 + "*(N*a)");  // N^65 is past the bound: the product stays as written
}

TEST(Powers, RepeatedSquaringGrowsTheTableByASmallStepEach) {
  SymbolicExprTable t;
  const unsigned e = squared(t, 16, true);
  EXPECT_LT(t.size(), 200u);
  EXPECT_EQ(count(text(t, e), 'N'), std::size_t{1} << 16);
  // Evaluated at N = -1 and 1 the value is 1: the unfolded form is still the same product.
  EXPECT_EQ(symtest::evaluate(t, e, {{"N", -1}}), 1);
  const unsigned before = t.size();
  const unsigned far = squared(t, 100, true);
  EXPECT_LT(t.size() - before, 300u);
  // 2^100 names cannot be printed: refused with a diagnostic, not exhausted memory.
  EXPECT_RAISES(text(t, far), "QL:symbolic", "SymbolicExprTextTooLong",
                {std::to_string(SymbolicExprPrinter::kMaxTextLength)});
}

TEST(Powers, ExponentsPastTheirRangeLeaveTheProductAsWritten) {
  // Squared without simplifying in between, then simplified once: 2^40 passes an exponent's 32 bits and
  // 2^70 the 64 bits of a count; both give the product back as it was built.
  for (const unsigned times : {40u, 70u}) {
    SymbolicExprTable t;
    const unsigned e = squared(t, times, false);
    bool converged = false;
    EXPECT_EQ(SymbolicExprSimplify(t, 10).simplify(e, converged), e) << times;
    EXPECT_TRUE(converged);
  }
}

TEST(Powers, SumsDoubledPastTheirRangeStayAsWritten) {
  for (const unsigned times : {20u, 40u, 70u}) {
    SymbolicExprTable t;
    unsigned e = SymbolicString(t, "N").getId(t);
    for (unsigned k = 0; k < times; ++k) e = SymbolicPlusExpr(t, e, e).getId(t);
    const unsigned s = SymbolicExprSimplify(t, 10).simplify(e);
    if (times == 20)
      EXPECT_EQ(text(t, s), "N*1048576");
    else
      EXPECT_EQ(s, e) << times;  // 2^40 does not fit an int, and 2^70 not even the count
  }
}

}  // namespace
