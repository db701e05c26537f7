// UnitNumericInfoForConversions: the numbers that turn a value in one unit into a value in another.
#pragma once

#include "ql_types/units/ConversionFactor.hpp"

namespace QLTypeSys {

/// One conversion factor, read as scale, offset and whether the relation is reciprocal.
class UnitNumericInfoForConversions {
 public:
  /// A copy of unity.
  UnitNumericInfoForConversions();
  explicit UnitNumericInfoForConversions(const ConversionFactor& factor);

  /// The scale; for a reciprocal relation, its constant (value_b = constant / value_a).
  double getScalingFactor() const;
  /// The offset of an affine factor, otherwise 0.0 (value_b = scale * value_a + offset).
  double getOffset() const;
  bool isInverted() const;
  /// Neither affine nor reciprocal, and a scale of exactly 1.0.
  bool isTrivial() const;
  const ConversionFactor& getConversionFactor() const { return factor_; }

 private:
  ConversionFactor factor_;
};

}  // namespace QLTypeSys
