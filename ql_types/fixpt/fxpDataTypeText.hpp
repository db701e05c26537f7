// Text forms of fxpDataTypeProp: the constructor expression that rebuilds a type in the host,
// the identifier that names it, and two diagnostic dumps.
//
// The text functions return pointers into a process-wide cache: a text is computed at most
// once per distinct record and form, and the pointer stays valid until the process ends.
// The cache has no lock: calls must not run concurrently.
#pragma once

#include <string>

#include "ql_types/fixpt/fxpDataTypeProp.hpp"

namespace FxpDT {

/// Which constructor name to write.
enum baseCtorPrefer : int {
  baseCtorNumerictype = 0,  ///< "numerictype("
  baseCtorFixdt = 1,        ///< "fixdt(" (any value but 0), except for scaled doubles
};

/// Which scaling arguments to write.
enum scalingRepPrefer : int {
  scalingRepBinaryPoint = 0,  ///< fraction length when the factor is 1 and the bias 0
  scalingRepSlopeBias = 1,    ///< always slope and bias
  scalingRepNone = 2,         ///< no scaling arguments
};

}  // namespace FxpDT

/// The constructor expression of a record, e.g. "fixdt(1,16,3)".
std::string const* fxpDataTypeToConstructorString(fxpDataTypeProp const& prop, FxpDT::baseCtorPrefer base,
                                                  FxpDT::scalingRepPrefer scaling);
/// The identifier of a record, e.g. "sfix16_En3" or "int16".
std::string const* fxpDataTypeToIdentifierString(fxpDataTypeProp const* const prop);
/// Multi-line dump of a record on standard output.
void displayFxpDTP(fxpDataTypeProp const* prop);
/// One-line dump of a record on standard output.
void displayFxpDTPFlat(fxpDataTypeProp const* prop);
/// When condition is false, prints "Data Type Assertion" and the record; returns condition.
bool fxpDtpPreAssert(bool condition, fxpDataTypeProp const* prop);
