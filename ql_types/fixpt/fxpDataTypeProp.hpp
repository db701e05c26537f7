// fxpDataTypeProp: how a number is represented (fixed point, scaled double, double, single
// or boolean) and, for the first two, its signedness, word length and scaling.
//
// A stored integer Q stands for SlopeAdjustmentFactor * 2^FixedExponent * Q + Bias. The record
// is plain data: it allocates nothing, throws nothing and may be copied freely. It stores
// whatever it is given; validateFxpDTProp says whether the values are good.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>

/// The kind of number a record describes.
enum fxpModeDataType : std::uint32_t {
  FXP_DT_FIXPT = 0,          ///< fixed-point integer storage
  FXP_DT_SCALED_DOUBLE = 1,  ///< fixed-point description carried in a double
  FXP_DT_DOUBLE = 2,         ///< IEEE double
  FXP_DT_SINGLE = 3,         ///< IEEE single
  FXP_DT_BOOLEAN = 4,        ///< boolean
};

/// Per-type data type override setting; other values are carried unchanged.
enum fxpDataTypeDTOMode : std::int32_t {
  FXP_DTO_DEFAULT = 0,  ///< the value of every factory and default
  FXP_DTO_OFF = 1,      ///< data type override is off for this type
};

class fxpDataTypeProp {
 public:
  fxpModeDataType DataTypeMode;
  std::uint32_t Signedness;  ///< 1 signed, 0 unsigned, anything else unspecified
  std::int32_t WordLength;
  std::int32_t FixedExponent;
  double SlopeAdjustmentFactor;
  double Bias;
  fxpDataTypeDTOMode DataTypeOverride;

  // --- construction -----------------------------------------------------------------------

  /// Signed 16-bit fixed point with trivial scaling.
  constexpr fxpDataTypeProp() : fxpDataTypeProp(FXP_DT_FIXPT, 1u, 16, 1.0, 0, 0.0, FXP_DTO_DEFAULT) {}
  /// Mode, signedness, word length and override of other; scaling as given, not normalised.
  constexpr fxpDataTypeProp(const fxpDataTypeProp& other, double saf, int exponent, double bias)
      : DataTypeMode(other.DataTypeMode),
        Signedness(other.Signedness),
        WordLength(other.WordLength),
        FixedExponent(exponent),
        SlopeAdjustmentFactor(saf),
        Bias(bias),
        DataTypeOverride(other.DataTypeOverride) {}
  /// Every field as given, not normalised.
  constexpr fxpDataTypeProp(fxpModeDataType mode, unsigned int signedness, int wordLength, double saf, int exponent,
                            double bias, fxpDataTypeDTOMode dto)
      : DataTypeMode(mode),
        Signedness(signedness),
        WordLength(wordLength),
        FixedExponent(exponent),
        SlopeAdjustmentFactor(saf),
        Bias(bias),
        DataTypeOverride(dto) {}
  constexpr fxpDataTypeProp(fxpModeDataType mode, unsigned int signedness, unsigned int wordLength, double saf,
                            int exponent, double bias, fxpDataTypeDTOMode dto)
      : fxpDataTypeProp(mode, signedness, static_cast<int>(wordLength), saf, exponent, bias, dto) {}
  constexpr fxpDataTypeProp(fxpModeDataType mode, bool isSigned, int wordLength, double saf, int exponent, double bias,
                            fxpDataTypeDTOMode dto)
      : fxpDataTypeProp(mode, isSigned ? 1u : 0u, wordLength, saf, exponent, bias, dto) {}
  constexpr fxpDataTypeProp(fxpModeDataType mode, bool isSigned, unsigned int wordLength, double saf, int exponent,
                            double bias, fxpDataTypeDTOMode dto)
      : fxpDataTypeProp(mode, isSigned ? 1u : 0u, static_cast<int>(wordLength), saf, exponent, bias, dto) {}
  /// Fixed point with a binary point: exponent = -fractionLength.
  constexpr fxpDataTypeProp(bool isSigned, int wordLength, int fractionLength)
      : fxpDataTypeProp(FXP_DT_FIXPT, isSigned, wordLength, 1.0, -fractionLength, 0.0, FXP_DTO_DEFAULT) {}
  constexpr fxpDataTypeProp(bool isSigned, unsigned int wordLength, int fractionLength)
      : fxpDataTypeProp(isSigned, static_cast<int>(wordLength), fractionLength) {}
  /// Fixed point with scaling as given, not normalised.
  constexpr fxpDataTypeProp(bool isSigned, int wordLength, double saf, int exponent, double bias)
      : fxpDataTypeProp(FXP_DT_FIXPT, isSigned, wordLength, saf, exponent, bias, FXP_DTO_DEFAULT) {}
  constexpr fxpDataTypeProp(bool isSigned, unsigned int wordLength, double saf, int exponent, double bias)
      : fxpDataTypeProp(isSigned, static_cast<int>(wordLength), saf, exponent, bias) {}
  /// Fixed point with a total slope, split as setTotalSlope does.
  fxpDataTypeProp(bool isSigned, int wordLength, double totalSlope, double bias)
      : fxpDataTypeProp(isSigned, wordLength, 0) {
    setTotalSlope(totalSlope);
    Bias = bias;
  }
  fxpDataTypeProp(bool isSigned, unsigned int wordLength, double totalSlope, double bias)
      : fxpDataTypeProp(isSigned, static_cast<int>(wordLength), totalSlope, bias) {}

  static constexpr fxpDataTypeProp doubleDataType() {
    return fxpDataTypeProp(FXP_DT_DOUBLE, 1u, 64, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  }
  static constexpr fxpDataTypeProp singleDataType() {
    return fxpDataTypeProp(FXP_DT_SINGLE, 1u, 32, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  }
  static constexpr fxpDataTypeProp booleanDataType() {
    return fxpDataTypeProp(FXP_DT_BOOLEAN, 0u, 8, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  }

  // --- reading ----------------------------------------------------------------------------

  constexpr fxpModeDataType getMode() const { return DataTypeMode; }
  constexpr unsigned int getSignedness() const { return Signedness; }
  constexpr int getWordLength() const { return WordLength; }
  constexpr unsigned int getUWordLength() const { return static_cast<unsigned int>(WordLength); }
  constexpr int getFixedExponent() const { return FixedExponent; }
  constexpr double getSlopeAdjustmentFactor() const { return SlopeAdjustmentFactor; }
  constexpr double getBias() const { return Bias; }
  constexpr fxpDataTypeDTOMode getDataTypeOverride() const { return DataTypeOverride; }
  /// Derived lengths and powers are computed in 64 bits and saturate at the int limits, so a record holding
  /// any field values gives a defined answer (e.g. the fraction length of exponent INT_MIN is INT_MAX).
  constexpr int getFractionLength() const { return saturate(-static_cast<long long>(FixedExponent)); }
  double getTotalSlope() const { return std::ldexp(SlopeAdjustmentFactor, FixedExponent); }
  constexpr int getWordLengthNonSign() const { return isSigned() ? saturate(WordLength - 1LL) : WordLength; }
  constexpr unsigned int getUWordLengthNonSign() const { return static_cast<unsigned int>(getWordLengthNonSign()); }
  /// Power of two of the most significant bit.
  constexpr int getPow2WtMSBit() const { return saturate(WordLength - 1LL + FixedExponent); }
  constexpr int getPow2WtMSNonSignBit() const {
    return saturate(WordLength - 1LL + FixedExponent - (isSigned() ? 1 : 0));
  }

  // --- writing ----------------------------------------------------------------------------

  void setBias(double bias) { Bias = bias; }
  void setDataTypeOverride(fxpDataTypeDTOMode dto) { DataTypeOverride = dto; }
  void setFixedExponent(int exponent) { FixedExponent = exponent; }
  void setSignedness(unsigned int signedness) { Signedness = signedness; }
  void setSlopeAdjustmentFactor(double saf) { SlopeAdjustmentFactor = saf; }
  void setWordLength(int wordLength) { WordLength = wordLength; }
  void setWordLength(unsigned int wordLength) { WordLength = static_cast<int>(wordLength); }
  /// The exponent is -fractionLength; a fraction length of INT_MIN gives the exponent INT_MAX.
  void setFractionLength(int fractionLength) { FixedExponent = saturate(-static_cast<long long>(fractionLength)); }
  void setIsSigned(bool isSigned) { Signedness = isSigned ? 1u : 0u; }
  /// Binary-point scaling: factor 1, bias 0.
  void setScaling(int fractionLength) {
    setFractionLength(fractionLength);
    SlopeAdjustmentFactor = 1.0;
    Bias = 0.0;
  }
  /// The one setter that normalises: the factor is brought into [1, 2) by powers of two.
  void setScaling(double saf, int exponent, double bias) {
    Bias = bias;
    normalizeScaling(&saf, &exponent);
    SlopeAdjustmentFactor = saf;
    FixedExponent = exponent;
  }
  void setScaling(double totalSlope, double bias) { setTotalSlopeBias(totalSlope, bias); }
  void setTotalSlopeBias(double totalSlope, double bias) {
    setTotalSlope(totalSlope);
    Bias = bias;
  }
  /// Splits the slope with frexp: factor 2m, exponent e - 1. Accepts negative slopes too.
  void setTotalSlope(double totalSlope) {
    int e = 0;
    const double m = std::frexp(totalSlope, &e);
    SlopeAdjustmentFactor = 2.0 * m;
    FixedExponent = e - 1;
  }
  void setScalingTrivial() {
    FixedExponent = 0;
    SlopeAdjustmentFactor = 1.0;
    Bias = 0.0;
  }
  void normalizeScaling() { normalizeScaling(&SlopeAdjustmentFactor, &FixedExponent); }
  /// Brings *saf into [1, 2) keeping *saf * 2^*exponent exactly; zero, negative, NaN and
  /// infinite factors are left as they are, and so are both when the exponent would pass the int range.
  static void normalizeScaling(double* saf, int* exponent);

  // --- mode changes -----------------------------------------------------------------------

  void changeFixptToScaledDoubles() {
    if (DataTypeMode == FXP_DT_FIXPT) DataTypeMode = FXP_DT_SCALED_DOUBLE;
  }
  void changeScaledDoublesToFixpt() {
    if (DataTypeMode == FXP_DT_SCALED_DOUBLE) DataTypeMode = FXP_DT_FIXPT;
  }
  void changeIfBooleanToUint8() {
    if (DataTypeMode == FXP_DT_BOOLEAN) *this = fxpDataTypeProp(FXP_DT_FIXPT, 0u, 8, 1.0, 0, 0.0, FXP_DTO_DEFAULT);
  }

  // --- predicates -------------------------------------------------------------------------

  constexpr bool isFixedPoint() const { return DataTypeMode == FXP_DT_FIXPT; }
  constexpr bool isScaledDouble() const { return DataTypeMode == FXP_DT_SCALED_DOUBLE; }
  constexpr bool isDouble() const { return DataTypeMode == FXP_DT_DOUBLE; }
  constexpr bool isSingle() const { return DataTypeMode == FXP_DT_SINGLE; }
  constexpr bool isBoolean() const { return DataTypeMode == FXP_DT_BOOLEAN; }
  constexpr bool isFixptOrScaledDouble() const { return isFixedPoint() || isScaledDouble(); }
  constexpr bool isFixptOrBoolean() const { return isFixedPoint() || isBoolean(); }
  constexpr bool isFloat() const { return isDouble() || isSingle(); }
  constexpr bool isKnownMode() const { return static_cast<std::uint32_t>(DataTypeMode) <= 4u; }

  constexpr bool isSigned() const { return Signedness == 1u; }
  constexpr bool isSignednessWordLengthEqual(unsigned int signedness, int wordLength) const {
    return Signedness == signedness && WordLength == wordLength;
  }
  constexpr bool isSignednessWordLengthEqual(unsigned int signedness, unsigned int wordLength) const {
    return Signedness == signedness && getUWordLength() == wordLength;
  }
  constexpr bool isWordLengthGreaterThan(int wordLength) const { return WordLength > wordLength; }
  constexpr bool isWordLengthGreaterThan(unsigned int wordLength) const { return getUWordLength() > wordLength; }
  constexpr bool isZeroFixedExponent() const { return FixedExponent == 0; }
  constexpr bool isZeroBias() const { return Bias == 0.0; }
  constexpr bool isUnitSlopeAdjustmentFactor() const { return SlopeAdjustmentFactor == 1.0; }
  constexpr bool isUnitSlopeAdjustmentFactorZeroBias() const { return isUnitSlopeAdjustmentFactor() && isZeroBias(); }
  /// Tests the fields; a factor of 2 with exponent -1 is not a unit slope here.
  constexpr bool isUnitTotalSlope() const { return isZeroFixedExponent() && isUnitSlopeAdjustmentFactor(); }
  constexpr bool isScalingTrivial() const { return isScalingTrivial(SlopeAdjustmentFactor, FixedExponent, Bias); }
  static constexpr bool isScalingTrivial(double saf, int exponent, double bias) {
    return exponent == 0 && saf == 1.0 && bias == 0.0;
  }

  // --- comparison: DataTypeOverride never takes part ---------------------------------------

  constexpr bool isEqual(const fxpDataTypeProp& o) const { return isEqualMode(o) && isEqualIgnoreMode(o); }
  /// Same mode; for double, single and boolean nothing else matters.
  constexpr bool isEqualConceptual(const fxpDataTypeProp& o) const {
    if (!isEqualMode(o)) return false;
    if (isDouble() || isSingle() || isBoolean()) return true;
    return isEqualIgnoreMode(o);
  }
  constexpr bool isEqualIgnoreScaling(const fxpDataTypeProp& o) const {
    return isEqualMode(o) && isEqualSignednessWordLength(o);
  }
  constexpr bool hasSameBias(const fxpDataTypeProp& o) const { return Bias == o.Bias; }
  constexpr bool hasSameSlopeAdjustmentFactor(const fxpDataTypeProp& o) const {
    return SlopeAdjustmentFactor == o.SlopeAdjustmentFactor;
  }

  // --- validation -------------------------------------------------------------------------

  static bool preValidateBias(double bias) { return std::isfinite(bias); }
  static bool preValidateSlopeAdjustmentFactor(double saf) { return std::isfinite(saf) && saf >= 1.0 && saf < 2.0; }
  static bool preValidateTotalSlope(double totalSlope) { return std::isfinite(totalSlope) && totalSlope > 0.0; }
  static constexpr bool preValidateWordLength(int wordLength) { return wordLength > 0; }
  static constexpr bool preValidateWordLength(unsigned int wordLength) { return wordLength != 0; }
  static bool preValidateCombo(fxpModeDataType mode, unsigned int signedness, int wordLength, double saf, int exponent,
                               double bias);
  static bool preValidateCombo(fxpModeDataType mode, unsigned int signedness, unsigned int wordLength, double saf,
                               int exponent, double bias);
  bool validateFxpDTProp() const {
    return preValidateCombo(DataTypeMode, Signedness, WordLength, SlopeAdjustmentFactor, FixedExponent, Bias);
  }

 protected:
  static constexpr int saturate(long long v) {
    return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v);
  }
  constexpr bool isEqualIgnoreMode(const fxpDataTypeProp& o) const {
    return isEqualSignednessWordLength(o) && isEqualScaling(o);
  }
  constexpr bool isEqualMode(const fxpDataTypeProp& o) const { return DataTypeMode == o.DataTypeMode; }
  constexpr bool isEqualScaling(const fxpDataTypeProp& o) const {
    return FixedExponent == o.FixedExponent && SlopeAdjustmentFactor == o.SlopeAdjustmentFactor && Bias == o.Bias;
  }
  constexpr bool isEqualSignednessWordLength(const fxpDataTypeProp& o) const {
    return Signedness == o.Signedness && WordLength == o.WordLength;
  }
};
