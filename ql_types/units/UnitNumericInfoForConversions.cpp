// UnitNumericInfoForConversions: a conversion factor read as scale, offset and inversion.
#include "ql_types/units/UnitNumericInfoForConversions.hpp"

namespace QLTypeSys {

UnitNumericInfoForConversions::UnitNumericInfoForConversions() : factor_(ConversionFactor::unity) {}
UnitNumericInfoForConversions::UnitNumericInfoForConversions(const ConversionFactor& factor) : factor_(factor) {}
double UnitNumericInfoForConversions::getScalingFactor() const { return factor_.toDouble(); }
double UnitNumericInfoForConversions::getOffset() const { return factor_.isAffine() ? factor_.getOffset() : 0.0; }
bool UnitNumericInfoForConversions::isInverted() const { return factor_.isReciprocal(); }
bool UnitNumericInfoForConversions::isTrivial() const {
  return !factor_.isAffine() && !factor_.isReciprocal() && factor_.toDouble() == 1.0;
}

}  // namespace QLTypeSys
