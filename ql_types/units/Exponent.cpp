// Exponent arithmetic: overflow builtins for the checked forms, unsigned arithmetic for the wrapping ones.
#include "ql_types/units/Exponent.hpp"

#include <cstdint>
#include <limits>
#include <ostream>

namespace QLTypeSys {

namespace {

int wrap(std::uint32_t u) {
  // Two's complement back to int without relying on implementation-defined narrowing.
  return u <= 0x7FFFFFFFu ? static_cast<int>(u) : static_cast<int>(u - 0x80000000u) + std::numeric_limits<int>::min();
}

std::uint32_t bits(int v) { return static_cast<std::uint32_t>(v); }

}  // namespace

const Exponent Exponent::one(1, 0);
const Exponent Exponent::zero(0, 0);

Exponent::Exponent(int v) : positive_(v >= 0 ? v : 0), negative_(v >= 0 ? 0 : wrap(0u - bits(v))) {}

int Exponent::getNet() const { return wrap(bits(positive_) - bits(negative_)); }

Exponent Exponent::operator+(const Exponent& other) const {
  return Exponent(wrap(bits(positive_) + bits(other.positive_)), wrap(bits(negative_) + bits(other.negative_)));
}

Exponent& Exponent::operator+=(const Exponent& other) { return *this = *this + other; }

Exponent Exponent::operator*(const Exponent& o) const {
  return Exponent(wrap(bits(positive_) * bits(o.positive_) + bits(negative_) * bits(o.negative_)),
                  wrap(bits(positive_) * bits(o.negative_) + bits(negative_) * bits(o.positive_)));
}

bool Exponent::checkedAdd(const Exponent& a, const Exponent& b, Exponent& out) {
  int p = 0, n = 0;
  if (__builtin_add_overflow(a.positive_, b.positive_, &p) || __builtin_add_overflow(a.negative_, b.negative_, &n))
    return false;
  out = Exponent(p, n);
  return true;
}

bool Exponent::checkedMultiply(const Exponent& a, const Exponent& b, Exponent& out) {
  int pp = 0, nn = 0, pn = 0, np = 0, p = 0, n = 0;
  if (__builtin_mul_overflow(a.positive_, b.positive_, &pp) || __builtin_mul_overflow(a.negative_, b.negative_, &nn) ||
      __builtin_mul_overflow(a.positive_, b.negative_, &pn) || __builtin_mul_overflow(a.negative_, b.positive_, &np) ||
      __builtin_add_overflow(pp, nn, &p) || __builtin_add_overflow(pn, np, &n))
    return false;
  out = Exponent(p, n);
  return true;
}

bool Exponent::checkedFromInt(int v, Exponent& out) {
  if (v == std::numeric_limits<int>::min()) return false;
  out = Exponent(v);
  return true;
}

std::ostream& operator<<(std::ostream& os, const Exponent& e) {
  return os << '(' << e.getPositive() << ',' << e.getNegative() << ')';
}

}  // namespace QLTypeSys
