// ConversionFactorFactory: conversion factors from numbers and from the unit database's texts.
//
// Texts are comma-separated fields with no other syntax, read by boost::lexical_cast (integers as long
// long, the exponent as int, reals as double, with its spellings of infinity and not-a-number). A field
// that does not read is no error: the factor keeps its defaults. A zero denominator throws
// boost::bad_rational, from numbers and from texts alike.
#pragma once

#include <string>

#include "ql_types/units/ConversionFactor.hpp"
#include "ql_types/units/ConversionFactorType.hpp"

namespace QLTypeSys {

/// Builds factors; every result is well defined.
class ConversionFactorFactory {
 public:
  /// A DoubleConversionFactor.
  static ConversionFactor createConversionFactor(double value);
  /// A DoubleAffineConversionFactor.
  static ConversionFactor createConversionFactor(double scale, double offset);
  /// A ScaledRational num/den·10^exponent, reduced and decimal-normalised.
  static ConversionFactor createConversionFactor(long long num, long long den, int exponent);
  /// A RationalAffineConversionFactor of scale num1/den1·10^exp1 and offset num2/den2·10^exp2.
  static ConversionFactor createConversionFactor(long long num1, long long den1, int exp1, long long num2,
                                                 long long den2, int exp2);
  /// The factor a database text of the given type describes; an unknown type gives a copy of unity.
  /// Text that is not valid UTF-16 reads as no fields at all (the defaults).
  static ConversionFactor createConversionFactor(const std::wstring& text, ConversionFactorType type);
};

}  // namespace QLTypeSys
