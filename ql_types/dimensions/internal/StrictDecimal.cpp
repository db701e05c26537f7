// The strict decimal conversion.
#include "ql_types/dimensions/internal/StrictDecimal.hpp"

#include <climits>
#include <cstdint>

namespace QLTypeSys::internal {

const char* BadCast::what() const noexcept { return "bad cast"; }

int strictDecimal(const std::string& text) {
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  if (i == text.size()) throw BadCast();
  std::int64_t value = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c < '0' || c > '9') throw BadCast();
    value = value * 10 + (c - '0');
    if (value > static_cast<std::int64_t>(INT_MAX) + 1) throw BadCast();  // stops before 64 bits could overflow
  }
  if (negative) value = -value;
  if (value < INT_MIN || value > INT_MAX) throw BadCast();
  return static_cast<int>(value);
}

bool isDigitsOnly(const std::string& text) {
  if (text.empty()) return false;
  for (const char c : text)
    if (c < '0' || c > '9') return false;
  return true;
}

}  // namespace QLTypeSys::internal
