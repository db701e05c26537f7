// The out-of-line operations of fxpDataTypeProp: normalisation and combined validation.
#include "ql_types/fixpt/fxpDataTypeProp.hpp"

#include <climits>

void fxpDataTypeProp::normalizeScaling(double* saf, int* exponent) {
  double s = *saf;
  if (s == 1.0) return;
  if (!(s > 0.0)) return;  // zero, negative or NaN stay as they are
  if (std::isinf(s)) return;
  // Most factors are one halving or doubling away from the range; try that before frexp.
  long long shift = 0;
  if (s >= 2.0) {
    s *= 0.5;
    shift = 1;
  } else if (s < 1.0) {
    s *= 2.0;
    shift = -1;
  }
  if (!(s >= 1.0 && s < 2.0)) {
    int e = 0;
    s = 2.0 * std::frexp(*saf, &e);  // exact, subnormals included
    shift = e - 1LL;
  }
  const long long newExponent = *exponent + shift;
  if (newExponent > INT_MAX || newExponent < INT_MIN) return;  // not representable: left as it was
  *saf = s;
  *exponent = static_cast<int>(newExponent);
}

namespace {
template <class WordLength>
bool validCombo(fxpModeDataType mode, unsigned int signedness, WordLength wordLength, double saf, int exponent,
                double bias) {
  switch (mode) {
    case FXP_DT_FIXPT:
    case FXP_DT_SCALED_DOUBLE:
      // Deliberately few limits: no upper word length, any exponent, any signedness.
      return fxpDataTypeProp::preValidateWordLength(wordLength) &&
             fxpDataTypeProp::preValidateSlopeAdjustmentFactor(saf) && fxpDataTypeProp::preValidateBias(bias);
    case FXP_DT_DOUBLE:
      return wordLength == 64 && signedness == 1u && fxpDataTypeProp::isScalingTrivial(saf, exponent, bias);
    case FXP_DT_SINGLE:
      return wordLength == 32 && signedness == 1u && fxpDataTypeProp::isScalingTrivial(saf, exponent, bias);
    case FXP_DT_BOOLEAN:
      return wordLength == 8 && signedness == 0u && fxpDataTypeProp::isScalingTrivial(saf, exponent, bias);
    default:
      return false;
  }
}
}  // namespace

bool fxpDataTypeProp::preValidateCombo(fxpModeDataType mode, unsigned int signedness, int wordLength, double saf,
                                       int exponent, double bias) {
  return validCombo(mode, signedness, wordLength, saf, exponent, bias);
}

bool fxpDataTypeProp::preValidateCombo(fxpModeDataType mode, unsigned int signedness, unsigned int wordLength,
                                       double saf, int exponent, double bias) {
  return validCombo(mode, signedness, wordLength, saf, exponent, bias);
}
