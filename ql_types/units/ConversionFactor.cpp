// The ConversionFactor handle: ownership, the well-defined flag, and the guard against empty factors.
#include "ql_types/units/ConversionFactor.hpp"

#include "ql_types/platform/Diagnostic.hpp"

namespace QLTypeSys {

namespace {
ConversionFactorImpl* cloneOrNull(const ConversionFactorImpl* impl) { return impl ? impl->clone() : nullptr; }
}  // namespace

// Built from parts rather than cloned from unity: other statics may default-construct a factor before
// unity itself exists.
ConversionFactor::ConversionFactor() : impl_(new ScaledRational(1, 1, 0)), wellDefined_(true) {}

ConversionFactor::ConversionFactor(const ConversionFactor& other)
    : impl_(cloneOrNull(other.impl_)), wellDefined_(other.wellDefined_) {}

ConversionFactor& ConversionFactor::operator=(const ConversionFactor& other) {
  ConversionFactorImpl* copy = cloneOrNull(other.impl_);
  delete impl_;
  impl_ = copy;
  wellDefined_ = other.wellDefined_;
  return *this;
}

ConversionFactor::~ConversionFactor() { delete impl_; }

ConversionFactor::ConversionFactor(const ConversionFactorImpl& impl) : impl_(impl.clone()), wellDefined_(true) {}
ConversionFactor::ConversionFactor(const ConversionFactorImpl& impl, bool wellDefined)
    : impl_(impl.clone()), wellDefined_(wellDefined) {}
ConversionFactor::ConversionFactor(ConversionFactorImpl* impl) : impl_(impl), wellDefined_(true) {}
ConversionFactor::ConversionFactor(ConversionFactorImpl* impl, bool wellDefined)
    : impl_(impl), wellDefined_(wellDefined) {}

const ConversionFactorImpl& ConversionFactor::impl() const {
  if (impl_ == nullptr) qlRaise(qlmsg::unit::UndefinedConversionFactor);
  return *impl_;
}

ConversionFactor ConversionFactor::operator*(const ConversionFactor& other) const {
  return ConversionFactor(impl() * other.impl(), wellDefined_ && other.wellDefined_);
}

ConversionFactor ConversionFactor::operator/(const ConversionFactor& other) const {
  return ConversionFactor(impl() / other.impl(), wellDefined_ && other.wellDefined_);
}

ConversionFactor& ConversionFactor::operator*=(const ConversionFactor& other) {
  ConversionFactorImpl* product = impl() * other.impl();
  delete impl_;
  impl_ = product;
  wellDefined_ = wellDefined_ && other.wellDefined_;
  return *this;
}

ConversionFactor ConversionFactor::operator-() const { return ConversionFactor(-impl(), wellDefined_); }

ConversionFactor ConversionFactor::operator^(int n) const {
  if (n == 1) return *this;
  return ConversionFactor(impl() ^ n, wellDefined_);
}

ConversionFactor ConversionFactor::operator^(Exponent e) const { return ConversionFactor(impl() ^ e, wellDefined_); }

bool ConversionFactor::operator==(const ConversionFactor& other) const { return impl() == other.impl(); }
bool ConversionFactor::operator!=(const ConversionFactor& other) const { return impl() != other.impl(); }
bool ConversionFactor::operator<(const ConversionFactor& other) const { return impl() < other.impl(); }

double ConversionFactor::operator()() const { return impl()(); }
double ConversionFactor::toDouble() const { return impl().toDouble(); }
double ConversionFactor::getOffset() const { return impl().getOffset(); }
bool ConversionFactor::isAffine() const { return impl().isAffine(); }
bool ConversionFactor::isReciprocal() const { return impl().isReciprocal(); }
const ConversionFactorImpl& ConversionFactor::getFactor() const { return impl(); }

const ConversionFactor ConversionFactor::unity(new ScaledRational(1, 1, 0), true);
const ConversionFactor ConversionFactor::zero(new ScaledRational(0, 1, 0), true);

}  // namespace QLTypeSys
