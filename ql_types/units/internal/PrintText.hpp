// UTF-8 of a unit's text for print operations, which must not fail on text that is not valid UTF-16.
#pragma once

#include <stdexcept>
#include <string>

#include "ql_types/platform/Text.hpp"

namespace QLTypeSys {
namespace internal {

/// The UTF-8 form; a code unit that is not part of valid UTF-16 becomes "?".
inline std::string printableUtf8(const std::wstring& text) {
  try {
    return ConvertUStringToStdString(text);
  } catch (const std::out_of_range&) {
    std::wstring cleaned;
    cleaned.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto u = static_cast<unsigned long>(text[i]);
      const bool high = u >= 0xD800 && u <= 0xDBFF, low = u >= 0xDC00 && u <= 0xDFFF;
      if (high && i + 1 < text.size() && static_cast<unsigned long>(text[i + 1]) >= 0xDC00 &&
          static_cast<unsigned long>(text[i + 1]) <= 0xDFFF) {
        cleaned += text[i];
        cleaned += text[++i];
      } else if (high || low || u > 0xFFFF) {
        cleaned += L'?';
      } else {
        cleaned += text[i];
      }
    }
    return ConvertUStringToStdString(cleaned);
  }
}

}  // namespace internal
}  // namespace QLTypeSys
