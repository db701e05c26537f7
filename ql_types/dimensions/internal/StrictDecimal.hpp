// The strict decimal conversion of registered numbers, and the bad_cast it throws.
//
// Registering a size reads a text first with strtol at base 0, which also takes hexadecimal, octal and
// leading blanks; whatever it takes whole is then read again by this conversion, which takes only an
// optional sign and decimal digits that fit an int. Texts the first reading takes and this one refuses
// throw, so that "0x10" never quietly becomes 16.
#pragma once

#include <string>
#include <typeinfo>

namespace QLTypeSys::internal {

/// The std::bad_cast of a refused number; its text is "bad cast".
class BadCast : public std::bad_cast {
 public:
  const char* what() const noexcept override;
};

/// The int of text: an optional '+' or '-' and one or more decimal digits, nothing else, in range. A
/// leading 0 is decimal. Throws BadCast otherwise.
int strictDecimal(const std::string& text);

/// Whether text is one or more decimal digits and nothing else.
bool isDigitsOnly(const std::string& text);

}  // namespace QLTypeSys::internal
