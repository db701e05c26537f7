// Text services of the host: UTF-8 and UTF-16 conversion, splitting, number formatting and
// character and identifier tests.
//
// Narrow strings are UTF-8. Wide strings hold UTF-16 code units, one per wchar_t, whatever
// the platform's wchar_t width.
#pragma once

#include <string>
#include <vector>

/// UTF-8 to UTF-16 code units. Lossless for valid text; an invalid sequence throws
/// std::out_of_range naming the bad code unit.
std::wstring ConvertStdStringToUString(const std::string& text);
/// UTF-16 code units to UTF-8. Lossless for valid text; a misplaced surrogate throws
/// std::out_of_range ("Misplaced UTF-16 surrogate U+...").
std::string ConvertUStringToStdString(const std::wstring& text);
/// The same as ConvertStdStringToUString.
std::wstring qlsvToUString(const std::string& text);

/// Splits text at every occurrence of any character of delimiters. With compress non-zero,
/// runs of delimiters count as one; with 0 every field is kept, empty ones included.
std::vector<std::string> delimited_string_to_vector(const std::string& text, const std::string& delimiters,
                                                    int compress);

/// The shortest decimal text that reads back as the same double, exponent written "E"
/// (e.g. "1.5", "-0.5", "1E-05"); "Inf", "-Inf" and "NaN" for the special values.
/// The flag is accepted for compatibility and changes nothing.
std::string qlsv_dtoa(double value, bool flag);
/// The shortest decimal text that an expression reads back as the same double
/// (e.g. "0.125", "1e+300"; "Inf", "-Inf", "NaN").
std::string qlsv_dtoa_fitools(double value);

/// Whether a UTF-16 code unit is a letter or a digit (Unicode classes, not only ASCII).
bool qlsvIsalphanum(wchar_t c);

/// Whether text is a valid ANSI C identifier: not empty, letters, digits and underscores,
/// not starting with a digit. The flag is accepted for compatibility and changes nothing.
bool qlIsValidANSICIdentifier(const char* text, bool flag);
