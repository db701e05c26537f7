// ConversionFactor: the value handle every unit and prefix holds, around a ConversionFactorImpl.
//
// A factor says how a value in one unit relates to the same value in a reference unit. Copies clone the
// implementation, so handles never share numbers. Combining an affine factor with a reciprocal one, or
// raising an affine factor to a net power other than 1, gives an empty handle without any report (the
// unit layer keeps such combinations from arising); an empty handle may be copied, assigned, raised to
// the int 1 and destroyed, and every other operation on it raises "QuillonTypes:Unit"
// "UndefinedConversionFactor" instead of touching a missing implementation.
#pragma once

#include "ql_types/units/ConversionFactorImpl.hpp"
#include "ql_types/units/Exponent.hpp"

namespace QLTypeSys {

/// A conversion factor and whether it is well defined; copies are deep.
class ConversionFactor {
 public:
  /// A ScaledRational 1/1·10^0, well defined.
  ConversionFactor();
  ConversionFactor(const ConversionFactor& other);
  /// Clones the source before it lets go of its own implementation, so self-assignment is safe.
  ConversionFactor& operator=(const ConversionFactor& other);
  virtual ~ConversionFactor();

  /// A clone of impl, well defined.
  explicit ConversionFactor(const ConversionFactorImpl& impl);
  /// A clone of impl with the flag as given.
  ConversionFactor(const ConversionFactorImpl& impl, bool wellDefined);
  /// Adopts impl (which may be null: an empty factor), well defined.
  explicit ConversionFactor(ConversionFactorImpl* impl);
  /// Adopts impl with the flag as given.
  ConversionFactor(ConversionFactorImpl* impl, bool wellDefined);

  /// Well defined exactly when both operands are.
  ConversionFactor operator*(const ConversionFactor& other) const;
  /// Well defined exactly when both operands are. Always double arithmetic.
  ConversionFactor operator/(const ConversionFactor& other) const;
  ConversionFactor& operator*=(const ConversionFactor& other);
  ConversionFactor operator-() const;
  /// The int 1 gives a plain copy (even of an empty factor); anything else goes to the implementation.
  ConversionFactor operator^(int n) const;
  /// Always goes to the implementation, which raises to the net value (no shortcut for counts (1, 0)).
  ConversionFactor operator^(Exponent e) const;

  bool operator==(const ConversionFactor& other) const;
  bool operator!=(const ConversionFactor& other) const;
  bool operator<(const ConversionFactor& other) const;

  double operator()() const;
  double toDouble() const;
  double getOffset() const;
  bool isAffine() const;
  bool isReciprocal() const;
  /// The implementation.
  const ConversionFactorImpl& getFactor() const;
  /// Whether there is no implementation (the result of an undefined combination).
  bool isEmpty() const { return impl_ == nullptr; }

  bool isWellDefined() const { return wellDefined_; }
  void setWellDefined(bool wellDefined) { wellDefined_ = wellDefined; }

  /// 1/1·10^0, built during static initialisation.
  static const ConversionFactor unity;
  /// 0/1·10^0, built during static initialisation.
  static const ConversionFactor zero;

 private:
  const ConversionFactorImpl& impl() const;

  ConversionFactorImpl* impl_;
  bool wellDefined_;
};

}  // namespace QLTypeSys
