// One fuzz input through parseUnitExpr, splitUnitExpr and parsePartialUnitExpr, with the properties that
// must hold between them. Shared by the libFuzzer target and the replay test of the normal suite, so a
// kept input fails both in the same way.
//
// Input bytes become UTF-16 text so that seeds stay readable: well-formed UTF-8 is decoded, 0xFF followed by
// two bytes is one raw code unit (little-endian, for lone surrogates), and any other byte is its own unit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitExprPartial.hpp"

namespace qlfuzz {

inline std::wstring fuzzInputToText(const std::uint8_t* data, std::size_t size) {
  std::wstring text;
  auto push = [&text](std::uint32_t cp) {
    if (cp >= 0x10000) {
      cp -= 0x10000;
      text += static_cast<wchar_t>(0xD800 + (cp >> 10));
      text += static_cast<wchar_t>(0xDC00 + (cp & 0x3FF));
    } else {
      text += static_cast<wchar_t>(cp);
    }
  };
  std::size_t i = 0;
  while (i < size) {
    const std::uint8_t b = data[i];
    if (b == 0xFF && i + 2 < size) {
      text += static_cast<wchar_t>(data[i + 1] | (data[i + 2] << 8));
      i += 3;
      continue;
    }
    const std::size_t len = b >= 0xF0 && b <= 0xF4 ? 4 : b >= 0xE0 ? 3 : b >= 0xC2 && b <= 0xDF ? 2 : 1;
    std::uint32_t cp = len == 4 ? b & 0x07u : len == 3 ? b & 0x0Fu : len == 2 ? b & 0x1Fu : b;
    bool ok = len > 1 && b < 0xF5 && i + len <= size;
    for (std::size_t k = 1; ok && k < len; ++k) {
      ok = (data[i + k] & 0xC0) == 0x80;
      cp = (cp << 6) | (data[i + k] & 0x3Fu);
    }
    ok = ok && !(len == 3 && (cp < 0x800 || (cp >= 0xD800 && cp <= 0xDFFF))) &&
         !(len == 4 && (cp < 0x10000 || cp > 0x10FFFF));
    if (ok) {
      push(cp);
      i += len;
    } else {
      push(b);
      ++i;
    }
  }
  return text;
}

inline bool isWellFormedUtf16(const std::wstring& t) {
  for (std::size_t i = 0; i < t.size(); ++i) {
    const auto u = static_cast<std::uint32_t>(t[i]);
    if (u > 0xFFFF || (u >= 0xDC00 && u <= 0xDFFF)) return false;
    if (u >= 0xD800 && u <= 0xDBFF) {
      if (i + 1 >= t.size() || static_cast<std::uint32_t>(t[i + 1]) < 0xDC00 ||
          static_cast<std::uint32_t>(t[i + 1]) > 0xDFFF)
        return false;
      ++i;
    }
  }
  return true;
}

// The text of an AST that parses back to it: x^p, x^-n or x^p/x^n per term.
inline std::wstring printAst(const QLTypeSys::UnitExprAST& a) {
  std::wstring text;
  for (std::size_t i = 0; i < a.names.size(); ++i) {
    if (i != 0) text += L"*";
    const auto& e = a.exponents[i];
    const std::wstring& x = a.names[i];
    if (e.getNegative() == 0)
      text += x + L"^" + std::to_wstring(e.getPositive());
    else if (e.getPositive() == 0)
      text += x + L"^-" + std::to_wstring(e.getNegative());
    else
      text += x + L"^" + std::to_wstring(e.getPositive()) + L"/" + x + L"^" + std::to_wstring(e.getNegative());
  }
  return text;
}

/// Runs one input; returns "" when every property held, otherwise what failed.
inline std::string runUnitExprFuzzInput(const std::uint8_t* data, std::size_t size) {
  using namespace QLTypeSys;
  const std::wstring text = fuzzInputToText(data, size);
  const bool wellFormedUtf16 = isWellFormedUtf16(text);

  UnitExprAST ast;
  bool parsed = false;
  try {
    parsed = parseUnitExpr(text, ast);
    if (!wellFormedUtf16) return "parseUnitExpr accepted malformed UTF-16 without raising";
  } catch (const std::out_of_range&) {
    if (wellFormedUtf16) return "parseUnitExpr raised on well-formed UTF-16";
  }

  std::wstring unitPart, abstractPart;
  try {
    splitUnitExpr(text, unitPart, abstractPart);
    if (!wellFormedUtf16) return "splitUnitExpr accepted malformed UTF-16 without raising";
  } catch (const std::out_of_range&) {
    if (wellFormedUtf16) return "splitUnitExpr raised on well-formed UTF-16";
  }

  std::wstring left, right;
  const bool partial = parsePartialUnitExpr(text, left, right);
  if (partial && !wellFormedUtf16) return "malformed UTF-16 called well formed";

  if (parsed) {
    if (ast.names.size() != ast.exponents.size()) return "names and exponents differ in length";
    if (ast.value != 0) return "an expression carries a value";
    for (std::size_t i = 0; i < ast.names.size(); ++i) {
      if (ast.names[i].empty()) return "empty name";
      if (ast.names[i].find_first_of(L"@*/^()+-") != std::wstring::npos) return "operator inside a name";
      if (ast.exponents[i].getPositive() < 0 || ast.exponents[i].getNegative() < 0) return "negative count";
      if (ast.exponents[i] == Exponent::zero) return "counts (0, 0)";
      for (std::size_t j = 0; j < i; ++j)
        if (ast.names[j] == ast.names[i]) return "a name listed twice";
    }
    // A complete expression is also well formed so far, with nothing right of an "@".
    if (!partial || left != text || !right.empty()) return "a parsed text is not well formed so far";
    // Its printed form parses back to the same terms.
    if (!ast.names.empty()) {
      UnitExprAST again;
      if (!parseUnitExpr(printAst(ast), again) || again != ast) return "printed AST does not parse back";
    }
  }
  return "";
}

}  // namespace qlfuzz
