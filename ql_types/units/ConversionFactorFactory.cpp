// ConversionFactorFactory: numbers and database texts to factors.
#include "ql_types/units/ConversionFactorFactory.hpp"

#include <stdexcept>
#include <vector>

#include "ql_types/platform/Text.hpp"

namespace QLTypeSys {

ConversionFactor ConversionFactorFactory::createConversionFactor(double value) {
  return ConversionFactor(new DoubleConversionFactor(value), true);
}

ConversionFactor ConversionFactorFactory::createConversionFactor(double scale, double offset) {
  return ConversionFactor(new DoubleAffineConversionFactor(scale, offset), true);
}

ConversionFactor ConversionFactorFactory::createConversionFactor(long long num, long long den, int exponent) {
  return ConversionFactor(new ScaledRational(num, den, exponent), true);
}

ConversionFactor ConversionFactorFactory::createConversionFactor(long long num1, long long den1, int exp1,
                                                                 long long num2, long long den2, int exp2) {
  return ConversionFactor(
      new RationalAffineConversionFactor(ScaledRational(num1, den1, exp1), ScaledRational(num2, den2, exp2)), true);
}

ConversionFactor ConversionFactorFactory::createConversionFactor(const std::wstring& text, ConversionFactorType type) {
  std::wstring wide = text;
  if (type == RationalFactor) wide += L",0";  // read as numerator, denominator, exponent 0
  std::vector<std::string> fields;
  try {
    fields = delimited_string_to_vector(ConvertUStringToStdString(wide), ",", 0);
  } catch (const std::out_of_range&) {
    fields.clear();  // not UTF-16: no field reads, the defaults stay
  }
  switch (type) {
    case DoubleFactor:
      return ConversionFactor(new DoubleConversionFactor(fields), true);
    case RationalFactor:
    case ScaledRationalFactor:
      return ConversionFactor(new ScaledRational(fields), true);
    case RationalAffineFactor:
      return ConversionFactor(new RationalAffineConversionFactor(fields), true);
    case DoubleAffineFactor:
      return ConversionFactor(new DoubleAffineConversionFactor(fields), true);
    case DoubleReciprocalFactor:
      return ConversionFactor(new DoubleReciprocalConversionFactor(fields), true);
  }
  return ConversionFactor::unity;
}

}  // namespace QLTypeSys
