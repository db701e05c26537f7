// Overflow detection for built-in conversion: would converting these values leave the range of the
// destination? DataType's static CheckForOverflowDuringDataTypeConversion forwards here.
#pragma once

#include "ql_types/fixpt/fxpModes.hpp"

namespace QLTypeSys::detail {

/// True as soon as one of count values (2 x count parts when isComplex) of type srcId would leave
/// the range of dstId once rounded by rounding, which may be any of the seven modes. Reads src only,
/// never broadcasts, and answers false for pairs that cannot overflow, unknown ids, count < 1 and,
/// for float sources, rounding values outside 0..6.
bool checkForOverflowDuringDataTypeConversion(void const* src, int count, int srcId, bool isComplex, int dstId,
                                              fxpModeRounding_tag rounding);

}  // namespace QLTypeSys::detail
