// Text services: conversions through Boost's Unicode iterators, numbers through to_chars.
#include "ql_types/platform/Text.hpp"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/regex/pending/unicode_iterator.hpp>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cwctype>
#include <locale.h>

std::wstring ConvertStdStringToUString(const std::string& text) {
  using In = boost::u8_to_u32_iterator<std::string::const_iterator, std::uint32_t>;
  std::u16string utf16;
  using Out = boost::utf16_output_iterator<std::back_insert_iterator<std::u16string>>;
  Out out(std::back_inserter(utf16));
  for (In it(text.begin(), text.begin(), text.end()), end(text.end(), text.begin(), text.end()); it != end; ++it)
    *out++ = *it;
  return std::wstring(utf16.begin(), utf16.end());
}

std::string ConvertUStringToStdString(const std::wstring& text) {
  std::u16string utf16;
  utf16.reserve(text.size());
  for (wchar_t c : text) {
    const auto u = static_cast<std::uint32_t>(c);
    if (u > 0xFFFF) throw std::out_of_range("Invalid UTF-16 code unit in wide text");
    utf16.push_back(static_cast<char16_t>(u));
  }
  using In = boost::u16_to_u32_iterator<std::u16string::const_iterator, std::uint32_t>;
  std::string out8;
  using Out = boost::utf8_output_iterator<std::back_insert_iterator<std::string>>;
  Out out(std::back_inserter(out8));
  for (In it(utf16.begin(), utf16.begin(), utf16.end()), end(utf16.end(), utf16.begin(), utf16.end()); it != end;
       ++it)
    *out++ = *it;
  return out8;
}

std::wstring qlsvToUString(const std::string& text) { return ConvertStdStringToUString(text); }

std::vector<std::string> delimited_string_to_vector(const std::string& text, const std::string& delimiters,
                                                    int compress) {
  std::vector<std::string> out;
  if (text.empty()) return out;
  boost::split(out, text, boost::is_any_of(delimiters),
               compress ? boost::token_compress_on : boost::token_compress_off);
  return out;
}

namespace {
std::string shortest(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
  char buf[64];
  auto res = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, res.ptr);
}
}  // namespace

std::string qlsv_dtoa(double value, bool /*flag*/) {
  std::string s = shortest(value);
  for (char& c : s)
    if (c == 'e') c = 'E';
  return s;
}

std::string qlsv_dtoa_fitools(double value) { return shortest(value); }

bool qlsvIsalphanum(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  if (u < 0x80) return (u >= '0' && u <= '9') || ((u | 0x20) >= 'a' && (u | 0x20) <= 'z');
  if (u >= 0xD800 && u <= 0xDFFF) return false;  // half a surrogate pair is no character
  // C.UTF-8 classifies all of Unicode without touching the process's global locale.
  static locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  return utf8 != static_cast<locale_t>(nullptr) && iswalnum_l(static_cast<wint_t>(u), utf8) != 0;
}

bool qlIsValidANSICIdentifier(const char* text, bool /*flag*/) {
  if (!text || !*text) return false;
  auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
  if (!letter(text[0])) return false;
  for (const char* p = text + 1; *p; ++p)
    if (!letter(*p) && !(*p >= '0' && *p <= '9')) return false;
  return true;
}
