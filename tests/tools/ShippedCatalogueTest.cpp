// The shipped catalogue under data/: it passes the writer's checks, its factors read back to the intended
// classes, every unit's factor composed with the library's arithmetic agrees with an independent double
// computation (so no exact product wrapped), a few published values come out exact, and no stored symbol
// or name also reads as a prefix plus another unit, except the listed ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ql_types/platform/Text.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/ConversionFactorImpl.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ud_writer/UdWriter.hpp"

namespace {

using namespace QLTypeSys;
using namespace QLTypeSys::udwriter;

const Catalogue& shipped() {
  static const Catalogue cat = [] {
    Catalogue c;
    std::vector<Problem> problems;
    readCatalogueDirectory(QL_TYPES_DATA_DIR, c, problems);
    validateCatalogue(c, problems);
    for (const auto& p : problems) ADD_FAILURE() << formatProblem(p);
    return c;
  }();
  return cat;
}

ConversionFactor factorOf(const FactorText& f) {
  return ConversionFactorFactory::createConversionFactor(ConvertStdStringToUString(f.text),
                                                         static_cast<ConversionFactorType>(f.type));
}

TEST(ShippedCatalogue, CountsAndCoverage) {
  const Catalogue& cat = shipped();
  EXPECT_GE(cat.units.size() + cat.aliases.size(), 450u);
  EXPECT_EQ(cat.prefixes.size(), 32u);
  std::set<std::string> prefixes, systems, provenances, abstracts;
  for (const auto& p : cat.prefixes) prefixes.insert(p.name);
  for (const char* p : {"quecto", "ronto", "ronna", "quetta", "micro", "deca", "kibi", "yobi"})
    EXPECT_EQ(prefixes.count(p), 1u) << p;
  for (const auto& s : cat.systems) systems.insert(s.name);
  for (const char* s : {"SI", "English", "CGS"}) EXPECT_EQ(systems.count(s), 1u) << s;
  for (const auto& p : cat.provenances) provenances.insert(p.name);
  EXPECT_EQ(provenances.count("Unknown"), 1u);
  for (const auto& a : cat.abstractUnits) abstracts.insert(a.name);
  for (const char* a : {"fuelEconomy", "fuelConsumption", "torque", "massDensity", "volumetricFlowRate", "dataRate"})
    EXPECT_EQ(abstracts.count(a), 1u) << a;
  ASSERT_EQ(cat.reciprocals.size(), 1u);
  EXPECT_EQ(cat.reciprocals[0].a, "fuelEconomy");
  EXPECT_EQ(cat.reciprocals[0].b, "fuelConsumption");
  EXPECT_GE(cat.translations.size(), 10u);
  for (const auto& u : cat.units) {
    EXPECT_FALSE(u.provenances.empty()) << u.name;
    EXPECT_FALSE(u.systems.empty()) << u.name;
  }
  for (const auto& a : cat.aliases) EXPECT_FALSE(a.provenances.empty()) << a.name;
}

TEST(ShippedCatalogue, EveryExpressionParses) {
  for (const auto& u : shipped().units) {
    UnitExprAST ast;
    EXPECT_TRUE(parseUnitExpr(ConvertStdStringToUString(u.expression), ast)) << u.name << ": " << u.expression;
    EXPECT_FALSE(ast.names.empty()) << u.name;
  }
  for (const auto& a : shipped().abstractUnits) {
    UnitExprAST ast;
    EXPECT_TRUE(parseUnitExpr(ConvertStdStringToUString(a.expression), ast)) << a.name;
  }
}

// The units whose factor is a double: measured or irrational values, and 2^70 and 2^80, which no 64-bit
// rational holds. Anything else must stay exact; a new double has to be added here on purpose.
const std::set<std::string> kDoubleFactors = {"degree",           "dalton",          "bel",        "lambert",
                                              "oersted",          "gilbert",         "parsec",     "circularMil",
                                              "boilerHorsepower", "waterHorsepower", "footlambert"};

TEST(ShippedCatalogue, FactorsReadBackToTheirClass) {
  std::set<std::string> doubles;
  for (const auto& u : shipped().units) {
    const ConversionFactor f = factorOf(u.factor);
    const ConversionFactorImpl& impl = f.getFactor();
    switch (u.factor.type) {
      case 2:
      case 3:
        EXPECT_NE(dynamic_cast<const ScaledRational*>(&impl), nullptr) << u.name;
        break;
      case 4:
        EXPECT_NE(dynamic_cast<const RationalAffineConversionFactor*>(&impl), nullptr) << u.name;
        EXPECT_TRUE(f.isAffine()) << u.name;
        break;
      case 1:
        EXPECT_NE(dynamic_cast<const DoubleConversionFactor*>(&impl), nullptr) << u.name;
        doubles.insert(u.name);
        break;
      default:
        ADD_FAILURE() << u.name << " has factor type " << u.factor.type;
    }
  }
  EXPECT_EQ(doubles, kDoubleFactors);
  for (const auto& p : shipped().prefixes) {
    const bool beyond64 = p.name == "zebi" || p.name == "yobi";
    EXPECT_EQ(p.factor.type == 1, beyond64) << p.name;
    EXPECT_GT(factorOf(p.factor).toDouble(), 0.0);
  }
}

// Composes every unit's factor to the fundamental units twice: with the library's exact arithmetic and in
// plain doubles. They must agree, which they would not if an exact product had wrapped.
class Composed {
 public:
  Composed() {
    const Catalogue& cat = shipped();
    for (const auto& p : cat.prefixes) {
      prefixExact_.emplace(p.symbol, factorOf(p.factor));
      prefixExact_.emplace(p.ascii, factorOf(p.factor));
      prefixAdmitted_.emplace(p.symbol, p.name);
      prefixAdmitted_.emplace(p.ascii, p.name);
    }
    for (const auto& a : cat.prefixAliases) {
      prefixExact_.emplace(a.symbol, prefixExact_.at(prefixSymbolOf(a.prefix)));
      prefixAdmitted_.emplace(a.symbol, a.prefix);
    }
    std::map<std::string, std::set<std::string>> sets;
    for (const auto& s : cat.prefixSets) sets[s.name] = {s.prefixes.begin(), s.prefixes.end()};
    for (const char* f : {"kg", "m", "s", "A", "K", "mol", "cd", "b"}) entry(f, ConversionFactor(), 1.0, {});
    for (const auto& u : cat.units) {
      ConversionFactor exact;
      double approx = 1.0;
      UnitExprAST ast;
      parseUnitExpr(ConvertStdStringToUString(u.expression), ast);
      for (size_t i = 0; i < ast.names.size(); ++i) {
        const std::string term = ConvertUStringToStdString(ast.names[i]);
        const int e = ast.exponents[i].getNet();
        const auto& [tf, td] = lookup(term);
        if (e != 0) {
          exact = exact * (tf ^ e);
          approx *= std::pow(td, e);
        }
      }
      const ConversionFactor own = factorOf(u.factor);
      const bool affine = own.isAffine();
      if (!affine) {
        exact = exact * own;
        approx *= own.toDouble();
      }
      std::set<std::string> admitted;
      for (const auto& s : u.prefixSets) admitted.insert(sets[s].begin(), sets[s].end());
      entry(u.name, exact, approx, admitted);
      entry(u.symbol, exact, approx, admitted);
      entry(u.ascii, exact, approx, admitted);
    }
  }

  const std::pair<ConversionFactor, double>& lookup(const std::string& term) {
    const auto it = units_.find(term);
    if (it != units_.end()) return it->second;
    for (size_t n = term.size() - 1; n > 0; --n) {
      const auto p = prefixExact_.find(term.substr(0, n));
      const auto u = units_.find(term.substr(n));
      if (p == prefixExact_.end() || u == units_.end()) continue;
      if (admits_[term.substr(n)].count(prefixAdmitted_.at(term.substr(0, n))) == 0) continue;
      auto [pos, fresh] =
          units_.emplace(term, std::make_pair(p->second * u->second.first, p->second.toDouble() * u->second.second));
      return pos->second;
    }
    ADD_FAILURE() << "no reading of " << term;
    static const std::pair<ConversionFactor, double> none{ConversionFactor(), 1.0};
    return none;
  }

  std::map<std::string, std::pair<ConversionFactor, double>> units_;

 private:
  std::string prefixSymbolOf(const std::string& name) const {
    for (const auto& p : shipped().prefixes)
      if (p.name == name) return p.symbol;
    return "";
  }
  // A catalogue row hides a built-in unit of the same symbol, as an exact reading comes first.
  void entry(const std::string& key, const ConversionFactor& f, double d, const std::set<std::string>& admitted) {
    units_.insert_or_assign(key, std::make_pair(f, d));
    admits_.insert_or_assign(key, admitted);
  }
  std::map<std::string, ConversionFactor> prefixExact_;
  std::map<std::string, std::string> prefixAdmitted_;
  std::map<std::string, std::set<std::string>> admits_;
};

TEST(ShippedCatalogue, ExactCompositionAgreesWithDoubles) {
  Composed c;
  for (const auto& u : shipped().units) {
    const auto& [exact, approx] = c.units_.at(u.name);
    EXPECT_NEAR(exact.toDouble() / approx, 1.0, 1e-12) << u.name << " " << exact.toDouble() << " vs " << approx;
  }
}

// An independent exact reference: n/d times ten to e in 128-bit integers, in a canonical form (d free of
// the factors 2 and 5, n free of trailing zeros), so that equal values have equal fields.
struct Exact {
  __int128 n = 1, d = 1;
  int e = 0;
  bool ok = true;
};

bool fits(__int128 v) { return v < ((__int128)1 << 120) && v > -((__int128)1 << 120); }

Exact canonical(Exact x) {
  if (!x.ok) return x;
  __int128 a = x.n < 0 ? -x.n : x.n, b = x.d;
  while (b != 0) {
    const __int128 t = a % b;
    a = b;
    b = t;
  }
  if (a > 1) {
    x.n /= a;
    x.d /= a;
  }
  while (x.d % 2 == 0 && fits(x.n * 5)) x.n *= 5, x.d /= 2, --x.e;
  while (x.d % 5 == 0 && fits(x.n * 2)) x.n *= 2, x.d /= 5, --x.e;
  while (x.n != 0 && x.n % 10 == 0) x.n /= 10, ++x.e;
  return x;
}

Exact times(Exact a, const Exact& b) {
  if (!a.ok || !b.ok || !fits(a.n * b.n) || !fits(a.d * b.d)) return Exact{1, 1, 0, false};
  return canonical(Exact{a.n * b.n, a.d * b.d, a.e + b.e, true});
}

Exact power(const Exact& a, int k) {
  Exact r;
  const Exact base = k >= 0 ? a : Exact{a.d, a.n, -a.e, a.ok};
  for (int i = 0; i < (k >= 0 ? k : -k); ++i) r = times(r, base);
  return r;
}

Exact exactOf(const FactorText& f) {
  if (f.type != 2 && f.type != 3) return Exact{1, 1, 0, false};
  long long n = 0, d = 1;
  int e = 0;
  if (f.type == 2) std::sscanf(f.text.c_str(), "%lld,%lld", &n, &d);
  if (f.type == 3) std::sscanf(f.text.c_str(), "%lld,%lld,%d", &n, &d, &e);
  return canonical(Exact{n, d, e, true});
}

TEST(ShippedCatalogue, ExactUnitsStayExact) {
  const Catalogue& cat = shipped();
  Composed lib;
  std::map<std::string, Exact> ref, prefixRef;
  std::map<std::string, std::set<std::string>> admits;
  std::map<std::string, std::string> prefixName;
  std::map<std::string, std::set<std::string>> sets;
  for (const auto& s : cat.prefixSets) sets[s.name] = {s.prefixes.begin(), s.prefixes.end()};
  for (const auto& p : cat.prefixes) {
    prefixRef[p.symbol] = prefixRef[p.ascii] = exactOf(p.factor);
    prefixName[p.symbol] = prefixName[p.ascii] = p.name;
  }
  for (const char* f : {"kg", "m", "s", "A", "K", "mol", "cd", "b"}) ref[f] = Exact{};
  int checked = 0;
  std::set<std::string> rounded;
  for (const auto& u : cat.units) {
    Exact acc = exactOf(u.factor);
    UnitExprAST ast;
    parseUnitExpr(ConvertStdStringToUString(u.expression), ast);
    for (size_t i = 0; i < ast.names.size(); ++i) {
      const std::string t = ConvertUStringToStdString(ast.names[i]);
      Exact term{1, 1, 0, false};
      if (ref.count(t)) {
        term = ref[t];
      } else {
        for (size_t n = 1; n < t.size(); ++n) {
          const std::string ps = t.substr(0, n), us = t.substr(n);
          if (prefixRef.count(ps) && ref.count(us) && admits[us].count(prefixName[ps]))
            term = times(prefixRef[ps], ref[us]);
        }
      }
      acc = times(acc, power(term, ast.exponents[i].getNet()));
    }
    std::set<std::string> admitted;
    for (const auto& s : u.prefixSets) admitted.insert(sets[s].begin(), sets[s].end());
    for (const auto& key : {u.name, u.symbol, u.ascii}) {
      ref[key] = acc;
      admits[key] = admitted;
    }
    if (!acc.ok) continue;
    const auto* sr = dynamic_cast<const ScaledRational*>(&lib.units_.at(u.name).first.getFactor());
    ASSERT_NE(sr, nullptr) << u.name << " is exact but composes to a double";
    const Exact got = canonical(Exact{sr->getNumerator(), sr->getDenominator(), sr->getExponent(), true});
    if (!(got.n == acc.n && got.d == acc.d && got.e == acc.e)) {
      // Products pass through doubles: a product of more than 53 bits comes out rounded.
      rounded.insert(u.name);
      const double want = (double)acc.n / (double)acc.d * std::pow(10.0, acc.e);
      EXPECT_NEAR(sr->toDouble() / want, 1.0, 1e-15) << u.name;
    }
    ++checked;
  }
  EXPECT_GT(checked, 200);
  // c^2 x 1e-5 (the esu of resistance, capacitance, inductance) has 17 significant digits, and the product
  // 3048 x 44482216152605 behind the foot pound-force (and the horsepower built on it) has 57 bits.
  const std::set<std::string> expected = {"statohm",        "statfarad",      "stathenry", "statmho",
                                          "footPoundForce", "poundForceFoot", "horsepower"};
  EXPECT_EQ(rounded, expected);
}

// Published exact values, composed through the catalogue: each must be a ScaledRational equal to the
// value, field by field (so exactly, not within a tolerance).
struct Published {
  const char* unit;
  long long num, den;
  int exp;
};

TEST(ShippedCatalogue, PublishedValuesAreExact) {
  Composed c;
  const Published cases[] = {
      {"inch", 254, 1, -4},
      {"foot", 3048, 1, -4},
      {"yard", 9144, 1, -4},
      {"mile", 1609344, 1, -3},
      {"nauticalMile", 1852, 1, 0},
      {"pound", 45359237, 1, -8},
      {"ounce", 45359237, 16, -8},
      {"gallon", 3785411784LL, 1, -12},
      {"imperialGallon", 454609, 1, -8},
      {"poundForce", 44482216152605LL, 1, -13},
      {"standardAtmosphere", 101325, 1, 0},
      {"calorie", 4184, 1, -3},
      {"calorieIT", 41868, 1, -4},
      {"britishThermalUnit", 105505585262LL, 1, -8},
      {"electronvolt", 1602176634, 1, -28},
      {"hour", 3600, 1, 0},
      {"litre", 1, 1, -3},
      {"acre", 40468564224LL, 1, -7},
      {"wattHour", 3600, 1, 0},
      {"knot", 1852, 3600, 0},
      {"milePerHour", 44704, 1, -5},
      {"kilocalorie", 4184, 1, 0},
      {"torr", 101325, 76, -1},
      {"byte", 8, 1, 0},
  };
  for (const auto& p : cases) {
    const ConversionFactor& f = c.units_.at(p.unit).first;
    const auto* sr = dynamic_cast<const ScaledRational*>(&f.getFactor());
    ASSERT_NE(sr, nullptr) << p.unit;
    EXPECT_TRUE(f == ConversionFactorFactory::createConversionFactor(p.num, p.den, p.exp))
        << p.unit << ": " << sr->getNumerator() << "/" << sr->getDenominator() << "e" << sr->getExponent();
  }
}

TEST(ShippedCatalogue, TemperatureScalesMeetAtKnownPoints) {
  // value in kelvin = scale * value + offset
  auto toKelvin = [](const char* name, double v) {
    for (const auto& u : shipped().units) {
      if (u.name != name) continue;
      const ConversionFactor f = factorOf(u.factor);
      return f.toDouble() * v + f.getOffset();
    }
    return -1.0;
  };
  EXPECT_DOUBLE_EQ(toKelvin("degreeCelsius", 0.0), 273.15);
  EXPECT_DOUBLE_EQ(toKelvin("degreeFahrenheit", 32.0), 273.15);
  EXPECT_DOUBLE_EQ(toKelvin("degreeFahrenheit", 212.0), 373.15);
  EXPECT_DOUBLE_EQ(toKelvin("degreeRankine", 491.67), 273.15);
}

// Texts stored as a symbol (or name) that also read as prefix + the symbol (or name) of a unit admitting
// that prefix. Each is listed with why it is harmless.
const std::set<std::string> kDoubleReadings = {
    // Aliases of the very prefixed unit their text spells: both readings are the same unit.
    "centipoise",   "centistokes", "gigahertz", "kilohertz", "kiloelectronvolt",
    "kilowattHour", "megahertz",   "millibar",  "kilogram"};

TEST(ShippedCatalogue, NoSymbolReadsTwoWays) {
  const Catalogue& cat = shipped();
  std::map<std::string, std::string> prefixBySymbol, prefixByName;
  for (const auto& p : cat.prefixes) {
    prefixBySymbol[p.symbol] = p.name;
    prefixBySymbol[p.ascii] = p.name;
    prefixByName[p.name] = p.name;
  }
  for (const auto& a : cat.prefixAliases) {
    prefixBySymbol[a.symbol] = a.prefix;
    prefixBySymbol[a.ascii] = a.prefix;
    prefixByName[a.name] = a.prefix;
  }
  std::map<std::string, std::set<std::string>> sets;
  for (const auto& s : cat.prefixSets) sets[s.name] = {s.prefixes.begin(), s.prefixes.end()};
  std::map<std::string, std::set<std::string>> admitsBySymbol, admitsByName;
  std::set<std::string> storedSymbols, storedNames;
  for (const auto& u : cat.units) {
    std::set<std::string> admitted;
    for (const auto& s : u.prefixSets) admitted.insert(sets[s].begin(), sets[s].end());
    admitsBySymbol[u.symbol] = admitsBySymbol[u.ascii] = admitted;
    admitsByName[u.name] = admitted;
    storedSymbols.insert({u.symbol, u.ascii});
    storedNames.insert(u.name);
  }
  for (const auto& a : cat.aliases) {
    if (!a.symbol.empty()) storedSymbols.insert(a.symbol);
    if (!a.ascii.empty()) storedSymbols.insert(a.ascii);
    storedNames.insert(a.name);
  }
  std::set<std::string> found;
  auto scan = [&](const std::set<std::string>& texts, const std::map<std::string, std::string>& prefixes,
                  const std::map<std::string, std::set<std::string>>& admits) {
    for (const auto& t : texts) {
      for (const auto& [ps, pname] : prefixes) {
        if (ps.empty() || ps.size() >= t.size() || t.compare(0, ps.size(), ps) != 0) continue;
        const auto u = admits.find(t.substr(ps.size()));
        if (u != admits.end() && u->second.count(pname)) found.insert(t);
      }
    }
  };
  scan(storedSymbols, prefixBySymbol, admitsBySymbol);
  scan(storedNames, prefixByName, admitsByName);
  EXPECT_EQ(found, kDoubleReadings);
}

}  // namespace
