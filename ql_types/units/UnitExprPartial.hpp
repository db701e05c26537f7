// The partial entry of the unit expression language, for auto-complete while a user types.
//
// A text is *well formed so far* when it is well-formed UTF-16 and some continuation (more text typed
// after it) makes it a complete entry. A complete entry is an expression that parseUnitExpr accepts,
// optionally followed by "@" and an abstract unit name: one or more graphic characters other than
// "@*/^()+-", with white space allowed before and after the name but not inside it. So "", "km/",
// "(m*", "m^-", "1/(s", "m@" and "m/s@vel" are well formed so far, while "m//", "*m", "m)", "m^1.5",
// "m^99999999999", "m/@v", "m@v/" and "m@a b" are not: no continuation mends them. A text ending in half a
// surrogate pair is not well-formed UTF-16, and so not well formed so far.
#pragma once

#include <string>

namespace QLTypeSys {

/// Whether text is well formed so far (see above). Whatever the answer, left receives the text before the
/// first "@" (all of it when there is none) and right the text after that "@" less surrounding white space
/// (empty when there is none). Never throws for malformed UTF-16: such text is not well formed.
bool parsePartialUnitExpr(const std::wstring& text, std::wstring& left, std::wstring& right);

}  // namespace QLTypeSys
