// Helpers of the symbolic tests: a reference evaluator with C's integer semantics and a generator of
// random expressions.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace symtest {

using Env = std::map<std::string, std::int64_t>;

/// What evaluation met besides the value.
struct EvalNotes {
  bool inexactDivision = false;  // some division had a remainder
};

/// The value of an entry under C's rules for / and % (truncation), in 64 bits; empty where the value is
/// undefined: a division or remainder by zero, an overflow, a name without a value, or a relation.
inline std::optional<std::int64_t> evaluate(const QL::SymbolicExprTable& t, unsigned i, const Env& env,
                                            EvalNotes* notes = nullptr) {
  using K = QL::SymbolicExprKind;
  const QL::SymbolicExpr& e = t.get(i);
  switch (e.getKind()) {
    case K::IntValue:
      return static_cast<const QL::SymbolicIntValue&>(e).getValue();
    case K::String: {
      auto it = env.find(static_cast<const QL::SymbolicString&>(e).getName());
      if (it == env.end()) return std::nullopt;
      return it->second;
    }
    case K::UnaryMinus: {
      auto a = evaluate(t, e.getOperand(0), env, notes);
      if (!a || *a == INT64_MIN) return std::nullopt;
      return -*a;
    }
    case K::Plus:
    case K::Minus:
    case K::Multiply:
    case K::Divide:
    case K::Modulo: {
      auto a = evaluate(t, e.getOperand(0), env, notes);
      auto b = evaluate(t, e.getOperand(1), env, notes);
      if (!a || !b) return std::nullopt;
      std::int64_t r;
      switch (e.getKind()) {
        case K::Plus:
          if (__builtin_add_overflow(*a, *b, &r)) return std::nullopt;
          return r;
        case K::Minus:
          if (__builtin_sub_overflow(*a, *b, &r)) return std::nullopt;
          return r;
        case K::Multiply:
          if (__builtin_mul_overflow(*a, *b, &r)) return std::nullopt;
          return r;
        default:
          if (*b == 0 || (*a == INT64_MIN && *b == -1)) return std::nullopt;
          if (notes && *a % *b != 0 && e.getKind() == K::Divide) notes->inexactDivision = true;
          return e.getKind() == K::Divide ? *a / *b : *a % *b;
      }
    }
    default:
      return std::nullopt;
  }
}

/// Knobs of the random expressions.
struct GenOptions {
  int maxDepth = 4;
  bool divisions = true;
  bool remainders = true;
  std::vector<std::string> names{"a", "b", "c"};
  int minInt = -3, maxInt = 6;
};

/// A random arithmetic expression entered in t (unsimplified).
inline unsigned randomExpr(QL::SymbolicExprTable& t, std::mt19937& rng, const GenOptions& o, int depth = 0) {
  std::uniform_int_distribution<int> pick(0, 9);
  const int r = depth >= o.maxDepth ? pick(rng) % 2 : pick(rng);
  if (r == 0) return QL::SymbolicIntValue(t, std::uniform_int_distribution<int>(o.minInt, o.maxInt)(rng)).getId(t);
  if (r == 1) {
    std::uniform_int_distribution<std::size_t> n(0, o.names.size() - 1);
    return QL::SymbolicString(t, o.names[n(rng)]).getId(t);
  }
  if (r == 2) return QL::SymbolicUnaryMinusExpr(t, randomExpr(t, rng, o, depth + 1)).getId(t);
  const unsigned l = randomExpr(t, rng, o, depth + 1);
  const unsigned rr = randomExpr(t, rng, o, depth + 1);
  switch (r) {
    case 3:
    case 4:
      return QL::SymbolicPlusExpr(t, l, rr).getId(t);
    case 5:
      return QL::SymbolicMinusExpr(t, l, rr).getId(t);
    case 6:
    case 7:
      return QL::SymbolicMultiplyExpr(t, l, rr).getId(t);
    case 8:
      if (o.divisions) return QL::SymbolicDivideExpr(t, l, rr).getId(t);
      return QL::SymbolicMultiplyExpr(t, l, rr).getId(t);
    default:
      if (o.remainders) return QL::SymbolicModuloExpr(t, l, rr).getId(t);
      return QL::SymbolicPlusExpr(t, l, rr).getId(t);
  }
}

/// A random binding of the names.
inline Env randomEnv(std::mt19937& rng, const std::vector<std::string>& names, int lo, int hi) {
  Env env;
  for (const auto& n : names) env[n] = std::uniform_int_distribution<int>(lo, hi)(rng);
  return env;
}

/// The text of an entry.
inline std::string text(const QL::SymbolicExprTable& t, unsigned i) { return QL::SymbolicExprPrinter()(t, i); }

}  // namespace symtest
