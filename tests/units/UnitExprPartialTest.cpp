// The partial entry: a table of typed texts, every prefix of valid entries, and a brute-force check that
// any text some short continuation completes is called well formed, and none that nothing completes is.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitExprPartial.hpp"

namespace {

using namespace QLTypeSys;

struct Typed {
  const wchar_t* text;
  bool wellFormed;
  const wchar_t* left;
  const wchar_t* right;
};

class PartialEntry : public testing::TestWithParam<Typed> {};

TEST_P(PartialEntry, SaysWhetherTypingCanGoOn) {
  std::wstring left = L"old", right = L"old";
  EXPECT_EQ(parsePartialUnitExpr(GetParam().text, left, right), GetParam().wellFormed);
  EXPECT_EQ(left, GetParam().left);
  EXPECT_EQ(right, GetParam().right);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PartialEntry,
    testing::Values(
        Typed{L"", true, L"", L""}, Typed{L"k", true, L"k", L""}, Typed{L"km/", true, L"km/", L""},
        Typed{L"km/h", true, L"km/h", L""}, Typed{L"(m*", true, L"(m*", L""}, Typed{L"((", true, L"((", L""},
        Typed{L"m^", true, L"m^", L""}, Typed{L"m^-", true, L"m^-", L""}, Typed{L"m^(", true, L"m^(", L""},
        Typed{L"m^(-2", true, L"m^(-2", L""}, Typed{L"1/(s", true, L"1/(s", L""}, Typed{L"-", true, L"-", L""},
        Typed{L"-5", true, L"-5", L""}, Typed{L"(-5", true, L"(-5", L""}, Typed{L"+", true, L"+", L""},
        Typed{L"m ", true, L"m ", L""}, Typed{L"m\u3000*\u00A0", true, L"m\u3000*\u00A0", L""},
        Typed{L"\u00B0", true, L"\u00B0", L""}, Typed{L"m@", true, L"m", L""}, Typed{L"m/s@vel", true, L"m/s", L"vel"},
        Typed{L"m/s @ vel ", true, L"m/s ", L"vel"}, Typed{L"(m/s)^2@\u901F\u5EA6", true, L"(m/s)^2", L"\u901F\u5EA6"},
        // Nothing typed after these can mend them.
        Typed{L"m//", false, L"m//", L""}, Typed{L"*m", false, L"*m", L""}, Typed{L"m)", false, L"m)", L""},
        Typed{L"m^1.5", false, L"m^1.5", L""}, Typed{L"m^99999999999", false, L"m^99999999999", L""},
        Typed{L"m^- ", false, L"m^- ", L""}, Typed{L"- 5", false, L"- 5", L""}, Typed{L"m+", false, L"m+", L""},
        Typed{L"k m", false, L"k m", L""}, Typed{L"m^65536^65536", false, L"m^65536^65536", L""},
        Typed{L"m/@v", false, L"m/", L"v"}, Typed{L"@", false, L"", L""}, Typed{L"m@v/", false, L"m", L"v/"},
        Typed{L"m@a b", false, L"m", L"a b"}, Typed{L"m@a@", false, L"m", L"a@"},
        Typed{L"a\u0007", false, L"a\u0007", L""}));

TEST(PartialEntryUtf16, MalformedIsNotWellFormed) {
  std::wstring left, right;
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(L"m") + L"\xD800", left, right));
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(L"\xDC00") + L"m", left, right));
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(L"m@") + L"\xDC00", left, right));
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(1, static_cast<wchar_t>(0x1F600)), left, right));
  EXPECT_TRUE(parsePartialUnitExpr(L"\xD835\xDC00", left, right));  // a whole pair is a character
}

TEST(PartialEntryLimits, DeepNestingCannotComplete) {
  std::wstring left, right;
  EXPECT_TRUE(parsePartialUnitExpr(std::wstring(kMaxUnitExprNesting, L'('), left, right));
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(kMaxUnitExprNesting + 1, L'('), left, right));
  EXPECT_FALSE(parsePartialUnitExpr(std::wstring(200000, L'('), left, right));
}

// Reference: a complete entry over the test alphabet (names of m, 1, V; no other white space than ' ').
bool isCompleteEntry(const std::wstring& text) {
  const std::size_t at = text.find(L'@');
  UnitExprAST ast;
  if (!parseUnitExpr(text.substr(0, at), ast)) return false;
  if (at == std::wstring::npos) return true;
  std::wstring right = text.substr(at + 1);
  const std::size_t b = right.find_first_not_of(L' ');
  if (b == std::wstring::npos) return false;
  const std::size_t e = right.find_last_not_of(L' ');
  for (std::size_t i = b; i <= e; ++i)
    if (std::wstring(L"@*/^()+- ").find(right[i]) != std::wstring::npos) return false;
  return true;
}

TEST(PartialEntryProperty, PrefixesOfCompleteEntriesAreWellFormed) {
  const std::vector<std::wstring> entries = {
      L"kg*m/s^2",       L"(m/s)^-1@velocity", L"1/(m*s)", L" -5 / ( s ^ ( -2 ) ) ", L"a^(+2)^3*b",  L"((m))@ v ",
      L"\u00B0C@\u6E29", L"N*m/(kg*m/s^2)",    L"5x/s",    L"(5/(5/(x)))",           L"m^2147483647"};
  for (const std::wstring& e : entries) {
    ASSERT_TRUE(isCompleteEntry(e));
    for (std::size_t n = 0; n <= e.size(); ++n) {
      std::wstring left, right;
      EXPECT_TRUE(parsePartialUnitExpr(e.substr(0, n), left, right)) << "prefix " << n << " of entry";
    }
  }
}

TEST(PartialEntryProperty, AgreesWithBruteForceCompletion) {
  const std::wstring alphabet = L"m1V()*/^- @";
  std::vector<std::wstring> suffixes = {L""};
  for (int len = 1; len <= 2; ++len) {
    const std::size_t from = suffixes.size();
    for (std::size_t i = 0; i < from; ++i)
      if (static_cast<int>(suffixes[i].size()) == len - 1)
        for (wchar_t c : alphabet) suffixes.push_back(suffixes[i] + c);
  }
  std::mt19937 rng(4242);
  int completable = 0, hopeless = 0;
  for (int i = 0; i < 400; ++i) {
    std::wstring text;
    const int len = std::uniform_int_distribution<int>(1, 6)(rng);
    for (int k = 0; k < len; ++k)
      text += alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(rng)];
    std::wstring left, right;
    const bool wellFormed = parsePartialUnitExpr(text, left, right);
    bool found = false;
    for (const std::wstring& s : suffixes) {
      // Each short suffix as it is and with the groups it leaves open closed.
      std::wstring candidate = text + s;
      int open = 0;
      for (wchar_t c : candidate) open += c == L'(' ? 1 : c == L')' ? -1 : 0;
      if (isCompleteEntry(candidate) || (open > 0 && isCompleteEntry(candidate + std::wstring(open, L')')))) {
        found = true;
        break;
      }
    }
    // A completion within two characters and closing parentheses proves the text well formed; when the partial entry
    // says a text is not, no continuation at all may complete it, so none of these may either.
    if (found) {
      EXPECT_TRUE(wellFormed) << "completable text refused: " << std::string(text.begin(), text.end());
      ++completable;
    } else if (!wellFormed) {
      ++hopeless;
    }
  }
  EXPECT_GT(completable, 25);
  EXPECT_GT(hopeless, 25);
}

}  // namespace
