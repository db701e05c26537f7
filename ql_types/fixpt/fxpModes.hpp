// The overflow and rounding modes of fixed-point arithmetic and of built-in conversion.
#pragma once

/// What happens to a value outside the destination's range.
enum fxpModeOverflow_tag : int {
  FXP_OVERFLOW_WRAP = 0,      ///< reduce modulo the word
  FXP_OVERFLOW_SATURATE = 1,  ///< clamp to the destination's limits
};

/// How a value between two representable ones is rounded.
enum fxpModeRounding_tag : int {
  FXP_ROUND_ZERO = 0,       ///< toward zero
  FXP_ROUND_NEAREST = 1,    ///< to nearest, ties toward positive infinity
  FXP_ROUND_CEIL = 2,       ///< toward positive infinity
  FXP_ROUND_FLOOR = 3,      ///< toward negative infinity
  FXP_ROUND_AS_ZERO = 4,    ///< treated exactly as FXP_ROUND_ZERO
  FXP_ROUND_HALF_AWAY = 5,  ///< to nearest, ties away from zero (overflow detection only)
  FXP_ROUND_HALF_EVEN = 6,  ///< to nearest, ties to even (overflow detection only)
};
