// Text services: UTF conversions, splitting, number texts and identifier tests.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "ql_types/platform/Text.hpp"

namespace {

TEST(TextConversion, RoundTripsEveryPlaneThroughUtf16) {
  const std::string text = "a\xc2\xb5\xe2\x84\xa6\xf0\x9f\x98\x80z";  // a µ Ω 😀 z
  const std::wstring wide = ConvertStdStringToUString(text);
  ASSERT_EQ(wide.size(), 6u);  // the emoji takes a surrogate pair
  EXPECT_EQ(static_cast<unsigned>(wide[1]), 0xB5u);
  EXPECT_EQ(static_cast<unsigned>(wide[3]), 0xD83Du);
  EXPECT_EQ(static_cast<unsigned>(wide[4]), 0xDE00u);
  EXPECT_EQ(ConvertUStringToStdString(wide), text);
  EXPECT_EQ(qlsvToUString("km/h"), L"km/h");
}

TEST(TextConversion, RandomCodePointsRoundTrip) {
  std::mt19937 rng(7);
  std::uniform_int_distribution<std::uint32_t> cp(1, 0x10FFFF);
  for (int round = 0; round < 200; ++round) {
    std::wstring wide;
    for (int i = 0; i < 20; ++i) {
      std::uint32_t c = cp(rng);
      if (c >= 0xD800 && c <= 0xDFFF) continue;
      if (c > 0xFFFF) {
        c -= 0x10000;
        wide.push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
        wide.push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
      } else {
        wide.push_back(static_cast<wchar_t>(c));
      }
    }
    EXPECT_EQ(ConvertStdStringToUString(ConvertUStringToStdString(wide)), wide);
  }
}

TEST(TextConversion, InvalidSequencesThrowInsteadOfGuessing) {
  EXPECT_THROW(ConvertUStringToStdString(std::wstring(1, static_cast<wchar_t>(0xD800))), std::out_of_range);
  EXPECT_THROW(ConvertStdStringToUString("\xff"), std::out_of_range);
  EXPECT_EQ(ConvertStdStringToUString(""), L"");
}

TEST(TextSplit, KeepsOrCompressesEmptyFields) {
  EXPECT_EQ(delimited_string_to_vector("1,2,,3", ",", 0), (std::vector<std::string>{"1", "2", "", "3"}));
  EXPECT_EQ(delimited_string_to_vector("1,2,,3", ",", 1), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_TRUE(delimited_string_to_vector("", ",", 0).empty());
  EXPECT_EQ(delimited_string_to_vector("x", ",", 0), std::vector<std::string>{"x"});
}

TEST(NumberText, ShortestTextsWithUpperCaseExponent) {
  EXPECT_EQ(qlsv_dtoa(1.5, false), "1.5");
  EXPECT_EQ(qlsv_dtoa(0.5, false), "0.5");
  EXPECT_EQ(qlsv_dtoa(-0.5, false), "-0.5");
  EXPECT_EQ(qlsv_dtoa(2.0, false), "2");
  EXPECT_EQ(qlsv_dtoa(1e-05, false), "1E-05");
  EXPECT_EQ(qlsv_dtoa(std::numeric_limits<double>::infinity(), false), "Inf");
  EXPECT_EQ(qlsv_dtoa(std::nan(""), false), "NaN");
  EXPECT_EQ(qlsv_dtoa_fitools(1e300), "1e+300");
}

TEST(NumberText, EveryTextReadsBackAsTheSameDouble) {
  std::mt19937_64 rng(11);
  for (int i = 0; i < 20000; ++i) {
    std::uint64_t bits = rng();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    if (!std::isfinite(v)) continue;
    EXPECT_EQ(std::strtod(qlsv_dtoa(v, false).c_str(), nullptr), v);
    EXPECT_EQ(std::strtod(qlsv_dtoa_fitools(v).c_str(), nullptr), v);
  }
  EXPECT_EQ(std::strtod(qlsv_dtoa(4.9406564584124654e-324, false).c_str(), nullptr), 4.9406564584124654e-324);
}

TEST(Identifiers, AnsiCIdentifierRule) {
  for (const char* good : {"a", "_", "A_1", "int32", "sfix16_En3", "_9"}) EXPECT_TRUE(qlIsValidANSICIdentifier(good, true)) << good;
  for (const char* bad : {"", "1a", "a-b", "a b", "a.b", "\xc2\xb5"}) EXPECT_FALSE(qlIsValidANSICIdentifier(bad, true)) << bad;
  EXPECT_FALSE(qlIsValidANSICIdentifier(nullptr, false));
}

TEST(Identifiers, AlphanumericWideCharacters) {
  EXPECT_TRUE(qlsvIsalphanum(L'a'));
  EXPECT_TRUE(qlsvIsalphanum(L'7'));
  EXPECT_TRUE(qlsvIsalphanum(static_cast<wchar_t>(0x00B5)));  // micro sign is a letter
  EXPECT_TRUE(qlsvIsalphanum(static_cast<wchar_t>(0x03A9)));  // Omega
  EXPECT_FALSE(qlsvIsalphanum(L'_'));
  EXPECT_FALSE(qlsvIsalphanum(L'/'));
  EXPECT_FALSE(qlsvIsalphanum(static_cast<wchar_t>(0x00B0)));  // degree sign
  EXPECT_FALSE(qlsvIsalphanum(static_cast<wchar_t>(0xD800)));
}

}  // namespace
