// Numeric conversion of value vectors between the nine built-in types (ids 0 to 8: double, single,
// int8, uint8, int16, uint16, int32, uint32, boolean) under an overflow and a rounding mode.
//
// Every pair of types has a row of kernels, one per combination of the modes that matter for it.
// A caller picks the kernel once with utGetQlBuiltinDtypeConvFcn and runs it over a whole vector,
// so no mode is tested per element. Ids must already be resolved to built-in ids: nothing here
// checks them. Kernels keep no state and may run on any thread over disjoint buffers.
#pragma once

#include <array>

#include "ql_types/fixpt/fxpModes.hpp"

/// A conversion kernel. Writes exactly dstLength elements (pairs when dstComplex) to dst, reading
/// src with a step of 0 (broadcast) for a source of one element. Returns false only when
/// checkLossless is set, the kernel has a back-comparison pass and some element changed value.
/// The last four arguments are never read: every kernel is specific to its types and modes.
/// The kernels to boolean from the eight other types ignore dstComplex and write one byte per element.
/// boolean to boolean is the uint8 to uint8 copy (the matrix shares it), so it honours dstComplex like
/// every copy: two bytes per element, the imaginary byte copied from a complex source or zero.
using builtinConvFcn = bool (*)(void const* src, void* dst, unsigned int srcLength, unsigned int dstLength,
                                bool srcComplex, bool dstComplex, bool checkLossless, int srcId, int dstId,
                                fxpModeOverflow_tag overflow, fxpModeRounding_tag rounding);

/// Non-zero where the overflow mode selects among a pair's kernels; index srcId * 9 + dstId.
extern const std::array<unsigned char, 81> builtinConvUsesOverflow;
/// Non-zero where the rounding mode selects among a pair's kernels; index srcId * 9 + dstId.
extern const std::array<unsigned char, 81> builtinConvUsesRounding;
/// The row of kernels of each pair, holding a kernel at overflowSelector + 2 x roundingSelector.
extern const std::array<builtinConvFcn const*, 81> builtinConvRows;

/// The kernel for a pair of built-in ids and the modes. Modes a pair doesn't use are ignored, and
/// FXP_ROUND_AS_ZERO selects as FXP_ROUND_ZERO. Rounding 5 or 6 on a pair that uses rounding, and
/// ids outside 0..8, are the caller's error and not checked.
builtinConvFcn utGetQlBuiltinDtypeConvFcn(int srcId, int dstId, fxpModeOverflow_tag overflow,
                                          fxpModeRounding_tag rounding);

/// Looks up the kernel and runs it. Note the argument order: each buffer is followed by its own
/// length, id and complexity, unlike the kernel signature.
bool qlConvertBuiltInDTypeVectWithCheck(void const* src, unsigned int srcLength, int srcId, bool srcComplex, void* dst,
                                        unsigned int dstLength, int dstId, bool dstComplex,
                                        fxpModeOverflow_tag overflow, fxpModeRounding_tag rounding, bool checkLossless);
