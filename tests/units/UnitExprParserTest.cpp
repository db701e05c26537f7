// The unit expression grammar: the listed readings, every failing form, names of other scripts, white
// space of several kinds, malformed UTF-16, limits, the split at "@", and a random round trip.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ql_types/units/UnitExprParser.hpp"
#include "units/fuzz/UnitExprFuzzBody.hpp"

namespace {

using namespace QLTypeSys;

using Terms = std::vector<std::pair<std::wstring, Exponent>>;

UnitExprAST ast(const Terms& terms) {
  UnitExprAST a;
  for (const auto& t : terms) {
    a.names.push_back(t.first);
    a.exponents.push_back(t.second);
  }
  return a;
}

std::string narrow(const std::wstring& w) {
  std::string s;
  for (wchar_t c : w) {
    if (c >= 32 && c < 127) {
      s += static_cast<char>(c);
    } else {
      char buf[16];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
      s += buf;
    }
  }
  return s;
}

}  // namespace

namespace QLTypeSys {
void PrintTo(const UnitExprAST& a, std::ostream* os) {
  *os << "{";
  for (std::size_t i = 0; i < a.names.size(); ++i) *os << narrow(a.names[i]) << a.exponents[i] << " ";
  *os << "value " << a.value << "}";
}
}  // namespace QLTypeSys

namespace {

struct Reading {
  const wchar_t* text;
  Terms terms;
};

void PrintTo(const Reading& r, std::ostream* os) { *os << '"' << narrow(r.text) << '"'; }

class Parses : public testing::TestWithParam<Reading> {};

TEST_P(Parses, ToTheseTerms) {
  UnitExprAST got;
  got.value = 42;
  ASSERT_TRUE(parseUnitExpr(GetParam().text, got));
  EXPECT_EQ(got, ast(GetParam().terms));
}

const Exponent one(1, 0);

INSTANTIATE_TEST_SUITE_P(
    Readings, Parses,
    testing::Values(
        Reading{L"kg*m/s^2", {{L"kg", one}, {L"m", one}, {L"s", Exponent(0, 2)}}},
        Reading{L"m/m", {{L"m", Exponent(1, 1)}}}, Reading{L"m*m", {{L"m", Exponent(2, 0)}}},
        Reading{L"(m/s)^2", {{L"m", Exponent(2, 0)}, {L"s", Exponent(0, 2)}}},
        Reading{L"(m/s)^-1", {{L"m", Exponent(0, 1)}, {L"s", Exponent(1, 0)}}},
        Reading{L"1/(m*s)", {{L"m", Exponent(0, 1)}, {L"s", Exponent(0, 1)}}},
        Reading{L"a^(2)", {{L"a", Exponent(2, 0)}}}, Reading{L"a^(-2)", {{L"a", Exponent(0, 2)}}},
        Reading{L"a^-2", {{L"a", Exponent(0, 2)}}}, Reading{L"a^+3", {{L"a", Exponent(3, 0)}}},
        Reading{L"a^2^3", {{L"a", Exponent(6, 0)}}}, Reading{L"a^-1^-1", {{L"a", Exponent(1, 0)}}}, Reading{L"m^0", {}},
        Reading{L"m^0*s", {{L"s", one}}}, Reading{L"(m/m)^-1", {{L"m", Exponent(1, 1)}}}, Reading{L"1", {{L"1", one}}},
        Reading{L"2^3", {{L"2", Exponent(3, 0)}}}, Reading{L" m ", {{L"m", one}}},
        Reading{L"1/s", {{L"s", Exponent(0, 1)}}}, Reading{L"5/s", {{L"s", Exponent(0, 1)}}},
        Reading{L"-5/s", {{L"s", Exponent(0, 1)}}}, Reading{L"(5)/s", {{L"s", Exponent(0, 1)}}},
        Reading{L"(5)", {{L"5", one}}}, Reading{L"5x/s", {{L"5x", one}, {L"s", Exponent(0, 1)}}},
        Reading{L"99999999999/s", {{L"99999999999", one}, {L"s", Exponent(0, 1)}}},
        Reading{L"1/s/s*s", {{L"s", Exponent(1, 2)}}}, Reading{L"((m))", {{L"m", one}}},
        Reading{L"N*m/(kg*m/s^2)",
                {{L"N", one}, {L"m", Exponent(1, 1)}, {L"kg", Exponent(0, 1)}, {L"s", Exponent(2, 0)}}},
        Reading{L"m_1.5", {{L"m_1.5", one}}}, Reading{L"a^2147483647", {{L"a", Exponent(2147483647, 0)}}},
        Reading{L"a^-2147483647", {{L"a", Exponent(0, 2147483647)}}}, Reading{L"a^007", {{L"a", Exponent(7, 0)}}},
        Reading{L"a^-00000000000000000000000000002", {{L"a", Exponent(0, 2)}}},
        // Other scripts and signs: Greek, CJK, degree, ohm, micro, Cyrillic.
        Reading{L"\u03A9*\u00B5m", {{L"\u03A9", one}, {L"\u00B5m", one}}}, Reading{L"\u00B0C", {{L"\u00B0C", one}}},
        Reading{L"\u2126/\u03BCs", {{L"\u2126", one}, {L"\u03BCs", Exponent(0, 1)}}},
        Reading{L"\u7C73/\u79D2^2", {{L"\u7C73", one}, {L"\u79D2", Exponent(0, 2)}}},
        Reading{L"\u043C\u0435\u0442\u0440", {{L"\u043C\u0435\u0442\u0440", one}}},
        // A character whose low byte is "(" is a letter, not a parenthesis.
        Reading{L"\u0128", {{L"\u0128", one}}}, Reading{L"a\u012A", {{L"a\u012A", one}}},
        // A pair of surrogates is one character of a name.
        Reading{L"\xD835\xDC00x", {{L"\xD835\xDC00x", one}}},
        // White space of several kinds between tokens.
        Reading{L"\tkg\u00A0*\u3000m /\ts ^ 2 ", {{L"kg", one}, {L"m", one}, {L"s", Exponent(0, 2)}}},
        Reading{L"\u2003(\u2028m\u2029)\u205F^\u00A0(\u3000-2\t)", {{L"m", Exponent(0, 2)}}},
        Reading{L"5 / s", {{L"s", Exponent(0, 1)}}}));

class Refuses : public testing::TestWithParam<const wchar_t*> {};

TEST_P(Refuses, AndLeavesTheAstAlone) {
  UnitExprAST got = ast({{L"keep", Exponent(4, 2)}});
  const UnitExprAST before = got;
  EXPECT_FALSE(parseUnitExpr(GetParam(), got));
  EXPECT_EQ(got, before);
}

INSTANTIATE_TEST_SUITE_P(FailingForms, Refuses,
                         testing::Values(L"", L"   ", L"m*", L"*m", L"m^", L"m^1.5", L"m+s", L"m@", L"m@V", L"m/",
                                         L"(m", L"m)", L"()", L"m^a", L"m^(2", L"m^- 2", L"m^ -2x", L"- 5/s", L"-m",
                                         L"+m", L"m s", L"k\u00A0m", L"m\u3000s", L"m\ts", L"m^99999999999",
                                         L"m^2147483648", L"m^-2147483648", L"m^65536^65536", L"m^2147483647*m",
                                         L"m^(1)(2)", L"m**s", L"m//s", L"5/", L"/s", L"^2", L"m^-", L"(5/(5/(5/x",
                                         L"a\u0007b", L"\u0085", L"m/\u0085s^", L"1/2/", L"m^2^"));

TEST(UnitExprLimits, NestingUpToTheLimit) {
  std::wstring deep = std::wstring(kMaxUnitExprNesting, L'(') + L"m" + std::wstring(kMaxUnitExprNesting, L')');
  UnitExprAST got;
  ASSERT_TRUE(parseUnitExpr(deep, got));
  EXPECT_EQ(got, ast({{L"m", one}}));
  deep = L"(" + deep + L")";
  EXPECT_FALSE(parseUnitExpr(deep, got));
  // Far past the limit: refused without descending.
  EXPECT_FALSE(parseUnitExpr(std::wstring(100000, L'(') + L"m" + std::wstring(100000, L')'), got));
}

TEST(UnitExprLimits, NestedQuotientsParseOnce) {
  // Each level would be parsed twice by plain backtracking: 2^60 steps. The parse is linear.
  std::wstring text;
  for (int i = 0; i < 60; ++i) text += L"(5/";
  text += L"x";
  UnitExprAST got;
  EXPECT_FALSE(parseUnitExpr(text, got));
  text += std::wstring(60, L')');
  ASSERT_TRUE(parseUnitExpr(text, got));
  // x is inverted once per level: 60 inversions swap the counts back.
  EXPECT_EQ(got, ast({{L"x", Exponent(1, 0)}}));
}

TEST(UnitExprLimits, LongFlatExpressions) {
  std::wstring text = L"m";
  for (int i = 0; i < 20000; ++i) text += L"*m";
  UnitExprAST got;
  ASSERT_TRUE(parseUnitExpr(text, got));
  EXPECT_EQ(got, ast({{L"m", Exponent(20001, 0)}}));
}

struct Malformed {
  std::wstring text;
  const char* message;
};

TEST(UnitExprUtf16, MalformedTextRaises) {
  const std::vector<Malformed> cases = {
      {std::wstring(L"\xD800") + L"m", "Misplaced UTF-16 surrogate U+"},  // lone high at the start
      {std::wstring(L"m") + L"\xD800" + L"*s", "Misplaced UTF-16 surrogate U+"},
      {std::wstring(L"m*s") + L"\xD800", "Misplaced UTF-16 surrogate U+"},
      {std::wstring(L"\xDC00") + L"m", "Misplaced UTF-16 surrogate U+"},  // lone low
      {std::wstring(L"m") + L"\xDC00" + L"s", "Misplaced UTF-16 surrogate U+"},
      {std::wstring(L"m") + L"\xDC00", "Misplaced UTF-16 surrogate U+"},
      {std::wstring(L"\xD800\xD800\xDC00"), "Misplaced UTF-16 surrogate U+"},
      {std::wstring(L"*)") + L"\xDC00", "Misplaced UTF-16 surrogate U+"},  // even after a parse would fail
      {std::wstring(1, static_cast<wchar_t>(0x1F600)), "Invalid UTF-16 code unit in wide text"},
  };
  for (const Malformed& c : cases) {
    SCOPED_TRACE(narrow(c.text));
    UnitExprAST got;
    std::wstring u, a;
    for (int entry = 0; entry < 2; ++entry) {
      try {
        if (entry == 0)
          parseUnitExpr(c.text, got);
        else
          splitUnitExpr(c.text, u, a);
        ADD_FAILURE() << "no exception";
      } catch (const std::out_of_range& e) {
        EXPECT_EQ(std::string(e.what()).rfind(c.message, 0), 0u) << e.what();
      }
    }
  }
}

struct Split {
  const wchar_t* text;
  bool matched;
  const wchar_t* unit;
  const wchar_t* abstract;
};

void PrintTo(const Split& s, std::ostream* os) { *os << '"' << narrow(s.text) << '"'; }

class Splits : public testing::TestWithParam<Split> {};

TEST_P(Splits, AtTheAt) {
  std::wstring u = L"old", a = L"old";
  EXPECT_EQ(splitUnitExpr(GetParam().text, u, a), GetParam().matched);
  EXPECT_EQ(u, GetParam().unit);
  EXPECT_EQ(a, GetParam().abstract);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Splits,
    testing::Values(Split{L"km/h", true, L"km/h", L""}, Split{L"km/h@velocity", true, L"km/h", L"velocity"},
                    Split{L"  m/s  @  speed  ", true, L"m/s", L"speed"}, Split{L"m/s@", true, L"m/s", L""},
                    Split{L"m s@V", true, L"m", L""}, Split{L"m@V/s", true, L"m", L"V"},
                    Split{L"m@a b", true, L"m", L"a"}, Split{L"", false, L"", L""}, Split{L"   ", false, L"", L""},
                    Split{L"@V", false, L"", L""}, Split{L"\u00B0C@\u6E29\u5EA6", true, L"\u00B0C", L"\u6E29\u5EA6"},
                    Split{L"m@@V", true, L"m", L""}, Split{L"m\u3000@\u00A0V", true, L"m", L"V"},
                    Split{L"(m*s)^2@x", true, L"(m*s)^2", L"x"}));

// Printing a random AST as text and parsing it again gives the same AST.
class Printer {
 public:
  explicit Printer(std::mt19937& rng) : rng_(rng) {}

  // A random expression text and the AST it must give, built by the same merge rules from parts.
  std::wstring expression(int depth, UnitExprAST& out) {
    std::wstring text;
    UnitExprAST acc;
    const int n = pick(1, 4);
    for (int i = 0; i < n; ++i) {
      UnitExprAST f;
      std::wstring ft = factor(depth, f);
      if (i == 0) {
        if (pick(0, 5) == 0) {  // "1/factor"
          text = ws() + std::to_wstring(pick(-3, 9)) + ws() + L"/" + ws() + ft;
          raise(f, -1);
          acc = f;
        } else {
          text = ft;
          acc = f;
        }
        continue;
      }
      if (pick(0, 1) == 0) {
        text += ws() + L"*" + ws() + ft;
        merge(acc, f);
      } else {
        text += ws() + L"/" + ws() + ft;
        raise(f, -1);
        merge(acc, f);
      }
    }
    out = acc;
    return text;
  }

 private:
  std::wstring factor(int depth, UnitExprAST& out) {
    std::wstring text;
    if (depth > 0 && pick(0, 3) == 0) {
      text = L"(" + ws() + expression(depth - 1, out) + ws() + L")";
    } else {
      const std::wstring name = randomName();
      out = UnitExprAST();
      out.names.push_back(name);
      out.exponents.push_back(Exponent::one);
      text = name;
    }
    const int powers = pick(0, 2) == 0 ? pick(1, 2) : 0;
    for (int i = 0; i < powers; ++i) {
      const int v = pick(-3, 3);
      text += ws() + L"^" + ws() + (pick(0, 1) ? std::to_wstring(v) : L"(" + ws() + std::to_wstring(v) + ws() + L")");
      raise(out, v);
    }
    return text;
  }

  std::wstring randomName() {
    static const std::vector<std::wstring> names = {L"m", L"s",   L"kg", L"\u00B0C", L"\u03A9", L"\u00B5m", L"\u7C73",
                                                    L"N", L"rad", L"1a", L"2x",      L"m_2",    L"\u6E29.a"};
    return names[pick(0, static_cast<int>(names.size()) - 1)];
  }

  std::wstring ws() {
    static const std::vector<std::wstring> spaces = {L"", L"", L"", L" ", L"\t", L"\u00A0", L"\u3000"};
    return spaces[pick(0, static_cast<int>(spaces.size()) - 1)];
  }

  static void raise(UnitExprAST& a, int v) {
    if (v == 0) {
      a = UnitExprAST();
      return;
    }
    for (Exponent& e : a.exponents) e = e * Exponent(v);
  }

  static void merge(UnitExprAST& left, const UnitExprAST& right) {
    for (std::size_t i = 0; i < right.names.size(); ++i) {
      bool found = false;
      for (std::size_t j = 0; j < left.names.size(); ++j)
        if (left.names[j] == right.names[i]) {
          left.exponents[j] += right.exponents[i];
          found = true;
        }
      if (!found) {
        left.names.push_back(right.names[i]);
        left.exponents.push_back(right.exponents[i]);
      }
    }
  }

  int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
  std::mt19937& rng_;
};

// The text of an AST (shared with the fuzz target): x^p for counts (p, 0), x^-n for (0, n), x^p/x^n for
// both. Parsing never gives counts (0, 0), so every AST the parser can give has a text.
std::wstring print(const UnitExprAST& a) { return qlfuzz::printAst(a); }

TEST(UnitExprRoundTrip, RandomTextsGiveTheirAst) {
  std::mt19937 rng(5318008);
  Printer printer(rng);
  for (int i = 0; i < 3000; ++i) {
    UnitExprAST expected;
    const std::wstring text = printer.expression(3, expected);
    SCOPED_TRACE(narrow(text));
    UnitExprAST got;
    ASSERT_TRUE(parseUnitExpr(text, got));
    ASSERT_EQ(got, expected);
    if (got.names.empty()) continue;
    UnitExprAST again;
    ASSERT_TRUE(parseUnitExpr(print(got), again)) << narrow(print(got));
    EXPECT_EQ(again, got);
  }
}

TEST(UnitExprRoundTrip, RandomAstsPrintAndParseBack) {
  std::mt19937 rng(271828);
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  const std::vector<wchar_t> letters = {L'm',      L's',      L'K',      L'g',      L'_',      L'.', L'7', L'\u00B0',
                                        L'\u03A9', L'\u00B5', L'\u7C73', L'\u79D2', L'\u0436', L'%', L'$', L'#'};
  for (int i = 0; i < 3000; ++i) {
    UnitExprAST a;
    const int terms = pick(1, 6);
    for (int t = 0; t < terms; ++t) {
      std::wstring name(1, letters[pick(0, 5)]);  // a letter first, so no name reads as a number
      for (int k = pick(0, 4); k > 0; --k) name += letters[pick(0, static_cast<int>(letters.size()) - 1)];
      if (std::find(a.names.begin(), a.names.end(), name) != a.names.end()) continue;
      int p = pick(0, 1000), n = pick(0, 3) == 0 ? pick(0, 1000) : 0;
      if (p == 0 && n == 0) p = 1;
      if (pick(0, 20) == 0) p = 2147483647;
      a.names.push_back(name);
      a.exponents.push_back(Exponent(p, n));
    }
    SCOPED_TRACE(narrow(print(a)));
    UnitExprAST got;
    ASSERT_TRUE(parseUnitExpr(print(a), got));
    EXPECT_EQ(got, a);
  }
}

}  // namespace

#include "ql_types/units/internal/UnitExprGrammarCost.hpp"

namespace {

TEST(UnitExprGrammar, FreshGrammarReadsAsTheSharedOne) {
  for (const wchar_t* text : {L"kg*m/s^2", L"(m/s)^-1", L"5/(m*s)", L"m^", L"\u00B0C", L"m^0", L"a b"}) {
    UnitExprAST shared, fresh;
    EXPECT_EQ(parseUnitExpr(text, shared), QLTypeSys::internal::parseUnitExprWithFreshGrammar(text, fresh));
    EXPECT_EQ(shared, fresh);
  }
}

}  // namespace

namespace {

TEST(UnitExprLimits, ManyDistinctNamesKeepTheirOrder) {
  // Long enough that merging looks names up by index rather than by scanning.
  std::wstring text = L"n0";
  UnitExprAST expected;
  expected.names.push_back(L"n0");
  expected.exponents.push_back(Exponent::one);
  for (int i = 1; i < 5000; ++i) {
    const bool divide = i % 3 == 0;
    text += (divide ? L"/n" : L"*n") + std::to_wstring(i);
    expected.names.push_back(L"n" + std::to_wstring(i));
    expected.exponents.push_back(divide ? Exponent(0, 1) : Exponent::one);
  }
  // Names seen before, after the index exists, add to their counts in place.
  text += L"*n7/n4999*(n1*n1)";
  expected.exponents[7] = Exponent(2, 0);
  expected.exponents[4999] = Exponent(1, 1);
  expected.exponents[1] = Exponent(3, 0);
  UnitExprAST got;
  ASSERT_TRUE(parseUnitExpr(text, got));
  EXPECT_EQ(got, expected);
}

}  // namespace
