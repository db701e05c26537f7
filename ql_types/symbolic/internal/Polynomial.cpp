// Checked polynomial arithmetic.
#include "ql_types/symbolic/internal/Polynomial.hpp"

#include <algorithm>
#include <limits>

namespace QL {
namespace internal {

namespace {

std::uint64_t magnitude(std::int64_t v) {
  return v < 0 ? std::uint64_t(0) - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
}

std::uint64_t gcd(std::uint64_t a, std::uint64_t b) {
  while (b != 0) {
    const std::uint64_t t = a % b;
    a = b;
    b = t;
  }
  return a;
}

bool lessMono(const Term& a, const Term& b) { return a.mono < b.mono; }

}  // namespace

Poly constantPoly(std::int64_t c) {
  Poly p;
  if (c != 0) p.push_back(Term{{}, c});
  return p;
}

Poly atomPoly(unsigned atom) { return Poly{Term{{{atom, 1u}}, 1}}; }

bool isConstant(const Poly& p, std::int64_t& value) {
  if (p.empty()) {
    value = 0;
    return true;
  }
  if (p.size() == 1 && p[0].mono.empty()) {
    value = p[0].coef;
    return true;
  }
  return false;
}

bool normalize(Poly& p, std::size_t maxTerms) {
  std::sort(p.begin(), p.end(), lessMono);
  std::size_t out = 0;
  for (std::size_t i = 0; i < p.size();) {
    std::int64_t sum = p[i].coef;
    std::size_t j = i + 1;
    for (; j < p.size() && p[j].mono == p[i].mono; ++j)
      if (__builtin_add_overflow(sum, p[j].coef, &sum)) return false;
    if (sum != 0) {
      if (out != i) p[out].mono = std::move(p[i].mono);
      p[out].coef = sum;
      ++out;
    }
    i = j;
  }
  p.resize(out);
  return p.size() <= maxTerms;
}

bool appendScaled(Poly& acc, const Poly& p, std::int64_t factor) {
  if (p.size() > kMaxSumTerms || acc.size() > kMaxSumTerms - p.size()) return false;
  for (const Term& t : p) {
    std::int64_t c;
    if (__builtin_mul_overflow(t.coef, factor, &c)) return false;
    acc.push_back(Term{t.mono, c});
  }
  return true;
}

bool add(const Poly& a, const Poly& b, std::int64_t sign, Poly& out) {
  out = a;
  return appendScaled(out, b, sign) && normalize(out, kMaxSumTerms);
}

bool multiplyMonomials(const Monomial& a, const Monomial& b, Monomial& m) {
  m.clear();
  m.reserve(a.size() + b.size());
  std::size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    if (j == b.size() || (i < a.size() && a[i].first < b[j].first)) {
      m.push_back(a[i++]);
    } else if (i == a.size() || b[j].first < a[i].first) {
      m.push_back(b[j++]);
    } else {
      unsigned e;
      if (__builtin_add_overflow(a[i].second, b[j].second, &e)) return false;
      m.emplace_back(a[i].first, e);
      ++i;
      ++j;
    }
  }
  return true;
}

bool multiply(const Poly& a, const Poly& b, Poly& out) {
  out.clear();
  // A single term times a sum costs the sum's length; two sums cost the product of theirs.
  const bool linear = a.size() <= 1 || b.size() <= 1;
  const std::size_t limit = linear ? kMaxSumTerms : kMaxTerms;
  if (linear ? a.size() + b.size() > kMaxSumTerms + 1 : a.size() * b.size() > 4 * kMaxTerms) return false;
  out.reserve(a.size() * b.size());
  for (const Term& x : a)
    for (const Term& y : b) {
      std::int64_t c;
      if (__builtin_mul_overflow(x.coef, y.coef, &c)) return false;
      out.push_back(Term{{}, c});
      if (!multiplyMonomials(x.mono, y.mono, out.back().mono)) return false;
    }
  return normalize(out, limit);
}

namespace {

// c to the power m >= 1, checked.
bool power(std::int64_t c, std::int64_t m, std::int64_t& out) {
  if (c == 0 || c == 1) {
    out = c;
    return true;
  }
  if (c == -1) {
    out = (m & 1) ? -1 : 1;
    return true;
  }
  if (m >= 64) return false;  // |c| >= 2, so |c|^64 is out of range
  std::int64_t r = 1;
  for (std::int64_t k = 0; k < m; ++k)
    if (__builtin_mul_overflow(r, c, &r)) return false;
  out = r;
  return true;
}

}  // namespace

bool product(const std::vector<std::pair<const Poly*, std::int64_t>>& factors, Poly& out) {
  out.clear();
  for (const auto& f : factors)
    if (f.first->empty()) return true;  // a zero factor: the product is zero, however large the rest
  std::int64_t coef = 1;
  std::vector<std::pair<unsigned, std::uint64_t>> powers;
  Poly sums = constantPoly(1);
  for (const auto& [p, m] : factors) {
    if (m < 1) return false;
    if (p->size() == 1) {
      const Term& t = (*p)[0];
      std::int64_t c;
      if (!power(t.coef, m, c) || __builtin_mul_overflow(coef, c, &coef)) return false;
      for (const auto& [atom, e] : t.mono) {
        std::uint64_t x;
        if (__builtin_mul_overflow(std::uint64_t{e}, static_cast<std::uint64_t>(m), &x)) return false;
        powers.emplace_back(atom, x);
      }
      continue;
    }
    // A sum to the power m has at least m + 1 terms, so a large m is past the bound anyway.
    if (static_cast<std::uint64_t>(m) > kMaxTerms) return false;
    for (std::int64_t k = 0; k < m; ++k) {
      Poly next;
      if (!multiply(sums, *p, next)) return false;
      sums.swap(next);
    }
  }
  std::sort(powers.begin(), powers.end());
  Monomial mono;
  mono.reserve(powers.size());
  for (const auto& [atom, e] : powers) {
    if (!mono.empty() && mono.back().first == atom) {
      std::uint64_t x = std::uint64_t{mono.back().second} + e;
      if (x < e || x > std::numeric_limits<unsigned>::max()) return false;
      mono.back().second = static_cast<unsigned>(x);
    } else {
      if (e > std::numeric_limits<unsigned>::max()) return false;
      mono.emplace_back(atom, static_cast<unsigned>(e));
    }
  }
  return multiply(sums, Poly{Term{std::move(mono), coef}}, out);
}

std::size_t weight(const Poly& p) {
  std::size_t w = 0;
  for (const Term& t : p) w += 1 + t.mono.size();
  return w;
}

bool lessPoly(const Poly& a, const Poly& b) {
  if (a.size() != b.size()) return a.size() < b.size();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].mono != b[i].mono) return a[i].mono < b[i].mono;
    if (a[i].coef != b[i].coef) return a[i].coef < b[i].coef;
  }
  return false;
}

bool negate(Poly& p) {
  for (Term& t : p) {
    if (t.coef == std::numeric_limits<std::int64_t>::min()) return false;
    t.coef = -t.coef;
  }
  return true;
}

std::uint64_t content(const Poly& a, const Poly& b) {
  std::uint64_t g = 0;
  for (const Term& t : a) g = gcd(g, magnitude(t.coef));
  for (const Term& t : b) g = gcd(g, magnitude(t.coef));
  return g;
}

Monomial monomialGcd(const Poly& a, const Poly& b) {
  const Term* first = !a.empty() ? &a[0] : !b.empty() ? &b[0] : nullptr;
  if (!first) return {};
  Monomial m = first->mono;
  auto meet = [&m](const Monomial& x) {
    Monomial r;
    std::size_t j = 0;
    for (const auto& f : m) {
      while (j < x.size() && x[j].first < f.first) ++j;
      if (j < x.size() && x[j].first == f.first) r.emplace_back(f.first, std::min(f.second, x[j].second));
    }
    m.swap(r);
  };
  for (const Term& t : a) meet(t.mono);
  for (const Term& t : b) meet(t.mono);
  return m;
}

void divideExact(Poly& p, std::uint64_t g, const Monomial& m) {
  for (Term& t : p) {
    if (g > 1)
      t.coef = t.coef < 0 ? -static_cast<std::int64_t>(magnitude(t.coef) / g) : t.coef / static_cast<std::int64_t>(g);
    if (m.empty()) continue;
    Monomial r;
    std::size_t j = 0;
    for (const auto& f : t.mono) {
      while (j < m.size() && m[j].first < f.first) ++j;
      const unsigned e = (j < m.size() && m[j].first == f.first) ? f.second - m[j].second : f.second;
      if (e > 0) r.emplace_back(f.first, e);
    }
    t.mono.swap(r);
  }
  // Dividing every monomial by the same one keeps them distinct, and the order by atom index may change
  // only where a factor vanished; sort again to keep the invariant.
  std::sort(p.begin(), p.end(), lessMono);
}

}  // namespace internal
}  // namespace QL
