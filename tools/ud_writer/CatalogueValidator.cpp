// Checks a catalogue before it is written: unique names and symbols, references to rows defined earlier
// (rows load in file order and may only use what is already loaded), factors that read back through the
// library's factory, expressions that parse with the library's parser, and each unit's dimensions against
// its abstract unit, resolved the way the loader will: exact name or symbol first, then the fundamental
// units, then a prefix reading.
#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <stdexcept>

#include "ql_types/platform/Text.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ud_writer/UdWriter.hpp"

namespace QLTypeSys {
namespace udwriter {

namespace {

using Dims = std::array<long long, 8>;  // kg m s A K mol cd bit

struct Resolved {
  Dims dims{};
  double scale = 1.0;
  bool affine = false;
  std::set<std::string> prefixes;  // prefix names admitted
};

const char* const kFundamentalAbstract[8][3] = {
    {"mass", "M", "M"},
    {"length", "L", "L"},
    {"time", "T", "T"},
    {"electric_current", "I", "I"},
    {"thermodynamic_temperature", "Temp", "\xC3\x8E\xCB\x9C"},
    {"amount_of_substance", "N", "N"},
    {"luminous_intensity", "J", "J"},
    {"memory", "memory", "memory"},
};
const char* const kFundamentalUnits[8][2] = {{"kg", "Kilogram"}, {"m", "Metres"},  {"s", "Seconds"},  {"A", "Amperes"},
                                             {"K", "Kelvin"},    {"mol", "Moles"}, {"cd", "Candela"}, {"b", "bits"}};

bool isPlainName(const std::string& s) {
  if (s.empty()) return false;
  for (unsigned char c : s) {
    if (!std::isalnum(c)) return false;
  }
  return true;
}

class Validator {
 public:
  Validator(const Catalogue& cat, std::vector<Problem>& problems) : cat_(cat), problems_(problems) {}

  void run() {
    for (const auto& s : cat_.systems) unique(systems_, s.name, s.where, "unit system");
    for (const auto& p : cat_.provenances) unique(provenances_, p.name, p.where, "provenance");
    if (provenances_.count("Unknown") == 0 && !cat_.provenances.empty())
      problems_.push_back({cat_.provenances.front().where, "the provenance \"Unknown\" is missing"});
    abstracts();
    for (const auto& r : cat_.reciprocals) {
      requireAbstract(r.a, r.where);
      requireAbstract(r.b, r.where);
      checkFactor(r.factor, r.where);
      if (r.factor.type != 6) problems_.push_back({r.where, "a reciprocal relation needs a \"reciprocal\" factor"});
    }
    prefixes();
    units();
    aliases();
    for (const auto& t : cat_.translations) {
      if (t.physmod.empty()) problems_.push_back({t.where, "empty physical-modelling symbol"});
      std::string prefix;
      // A stored unit, or a prefixed reading of one; the built-in units are not stored and do not count.
      const bool stored = units_.count(t.units) || (resolveTerm(t.units, prefix) != nullptr && !prefix.empty());
      if (!stored) problems_.push_back({t.where, "translation target \"" + t.units + "\" is not a unit symbol"});
    }
  }

 private:
  void unique(std::set<std::string>& seen, const std::string& key, const SourceLocation& w, const char* what) {
    if (key.empty()) return;
    if (!seen.insert(key).second) problems_.push_back({w, std::string("duplicate ") + what + " \"" + key + "\""});
  }

  void requireKnown(const std::set<std::string>& known, const std::vector<std::string>& names, const SourceLocation& w,
                    const char* what) {
    for (const auto& n : names) {
      if (known.count(n) == 0) problems_.push_back({w, std::string("unknown ") + what + " \"" + n + "\""});
    }
  }

  // Rows refer to abstract units by their row: the built-in ones are reached only through a row naming them.
  void requireAbstract(const std::string& n, const SourceLocation& w) {
    if (abstractRows_.count(n) == 0) problems_.push_back({w, "unknown abstract unit \"" + n + "\""});
  }

  // Reads the factor back through the library; returns its value as a double (1.0 when it does not read).
  double checkFactor(const FactorText& f, const SourceLocation& w) {
    if (f.type < 1 || f.type > 6) {
      problems_.push_back({w, "unknown factor type " + std::to_string(f.type)});
      return 1.0;
    }
    try {
      const ConversionFactor cf = ConversionFactorFactory::createConversionFactor(
          ConvertStdStringToUString(f.text), static_cast<ConversionFactorType>(f.type));
      const double v = cf.toDouble();
      if (!std::isfinite(v) || v == 0.0) problems_.push_back({w, "factor \"" + f.text + "\" is not a finite non-zero"});
      return v;
    } catch (const std::exception& e) {
      problems_.push_back({w, "factor \"" + f.text + "\" does not read: " + e.what()});
      return 1.0;
    }
  }

  bool parse(const std::string& expr, const SourceLocation& w, UnitExprAST& ast) {
    try {
      if (parseUnitExpr(ConvertStdStringToUString(expr), ast) && !ast.names.empty()) return true;
    } catch (const std::exception&) {
    }
    problems_.push_back({w, "expression \"" + expr + "\" does not parse"});
    return false;
  }

  // A symbol must read back as itself, one term to the power one, or nobody could write it in an expression.
  void requireSingleName(const std::string& text, const SourceLocation& w) {
    if (text.empty()) return;
    UnitExprAST ast;
    bool ok = false;
    try {
      const std::wstring wide = ConvertStdStringToUString(text);
      ok = parseUnitExpr(wide, ast) && ast.names.size() == 1 && ast.names[0] == wide &&
           ast.exponents[0].getPositive() == 1 && ast.exponents[0].getNegative() == 0;
    } catch (const std::exception&) {
    }
    if (!ok) problems_.push_back({w, "symbol \"" + text + "\" is not a single name of the expression language"});
  }

  void abstracts() {
    for (int i = 0; i < 8; ++i) {
      Dims d{};
      d[i] = 1;
      for (const char* n : kFundamentalAbstract[i]) abstractDims_[n] = d;
    }
    abstractDims_["unitfree"] = Dims{};
    for (const auto& a : cat_.abstractUnits) {
      if (!isPlainName(a.name))
        problems_.push_back({a.where, "abstract unit name \"" + a.name + "\" is not alphanumeric"});
      if (!abstractRows_.insert(a.name).second) {
        problems_.push_back({a.where, "duplicate abstract unit \"" + a.name + "\""});
        continue;
      }
      UnitExprAST ast;
      if (!parse(a.expression, a.where, ast)) continue;
      Dims d{};
      bool ok = true;
      for (size_t i = 0; i < ast.names.size(); ++i) {
        const std::string n = ConvertUStringToStdString(ast.names[i]);
        const auto it = abstractDims_.find(n);
        if (it == abstractDims_.end()) {
          problems_.push_back({a.where, "unknown abstract unit \"" + n + "\" in \"" + a.expression + "\""});
          ok = false;
          continue;
        }
        const long long e = ast.exponents[i].getNet();
        for (int k = 0; k < 8; ++k) d[k] += it->second[k] * e;
      }
      if (ok) abstractDims_[a.name] = d;
    }
  }

  void prefixes() {
    std::set<std::string> seenSymbols;
    for (const auto& p : cat_.prefixes) {
      unique(prefixNames_, p.name, p.where, "prefix name");
      unique(seenSymbols, p.symbol, p.where, "prefix symbol");
      if (p.ascii != p.symbol) unique(seenSymbols, p.ascii, p.where, "prefix symbol");
      requireSingleName(p.symbol, p.where);
      requireKnown(systems_, p.systems, p.where, "unit system");
      requireKnown(provenances_, p.provenances, p.where, "provenance");
      prefixBySymbol_[p.symbol] = p.name;
      if (!p.ascii.empty()) prefixBySymbol_.emplace(p.ascii, p.name);  // the symbol index holds ASCII forms too
      prefixByName_[p.name] = p.name;
      prefixScale_[p.name] = checkFactor(p.factor, p.where);
    }
    for (const auto& a : cat_.prefixAliases) {
      if (prefixNames_.count(a.prefix) == 0) problems_.push_back({a.where, "unknown prefix \"" + a.prefix + "\""});
      unique(prefixNames_, a.name, a.where, "prefix name");
      unique(seenSymbols, a.symbol, a.where, "prefix symbol");
      if (a.ascii != a.symbol) unique(seenSymbols, a.ascii, a.where, "prefix symbol");
      requireKnown(systems_, a.systems, a.where, "unit system");
      requireKnown(provenances_, a.provenances, a.where, "provenance");
      prefixBySymbol_[a.symbol] = a.prefix;
      if (!a.ascii.empty()) prefixBySymbol_.emplace(a.ascii, a.prefix);
      prefixByName_[a.name] = a.prefix;
    }
    for (const auto& s : cat_.prefixSets) {
      if (prefixSets_.count(s.name)) problems_.push_back({s.where, "duplicate prefix set \"" + s.name + "\""});
      requireKnown(prefixNames_, s.prefixes, s.where, "prefix");
      prefixSets_[s.name] = std::set<std::string>(s.prefixes.begin(), s.prefixes.end());
    }
  }

  // The loader's reading of a term: exact (name or symbol) first, then fundamental, then one prefix.
  const Resolved* resolveTerm(const std::string& t, std::string& prefixOut) {
    prefixOut.clear();
    if (auto it = units_.find(t); it != units_.end()) return &it->second;
    if (auto it = fundamental_.find(t); it != fundamental_.end()) return &it->second;
    for (int run = 0; run < 2; ++run) {
      const auto& table = run == 0 ? prefixByName_ : prefixBySymbol_;
      const auto& unitTable = run == 0 ? unitByName_ : unitBySymbol_;
      // Only the longest stored prefix at the start of the text is tried.
      std::string best;
      for (const auto& [ps, pname] : table) {
        if (ps.size() < t.size() && t.compare(0, ps.size(), ps) == 0 && ps.size() > best.size()) best = ps;
      }
      if (best.empty()) continue;
      const auto u = unitTable.find(t.substr(best.size()));
      if (u == unitTable.end()) continue;
      const Resolved& r = units_.at(u->second);
      if (r.prefixes.count(table.at(best))) {
        prefixOut = table.at(best);
        return &r;
      }
    }
    return nullptr;
  }

  void units() {
    for (int i = 0; i < 8; ++i) {
      Resolved r;
      r.dims[i] = 1;
      for (const char* n : kFundamentalUnits[i]) fundamental_[n] = r;
    }
    for (const auto& u : cat_.units) {
      if (!isPlainName(u.name)) problems_.push_back({u.where, "unit name \"" + u.name + "\" is not alphanumeric"});
      unique(unitNames_, u.name, u.where, "unit name or symbol");
      if (u.symbol.empty()) problems_.push_back({u.where, "a unit needs a symbol"});
      unique(unitNames_, u.symbol == u.name ? "" : u.symbol, u.where, "unit name or symbol");
      if (u.ascii != u.symbol && u.ascii != u.name) unique(unitNames_, u.ascii, u.where, "unit name or symbol");
      requireAbstract(u.abstractUnit, u.where);
      requireSingleName(u.symbol, u.where);
      requireSingleName(u.ascii, u.where);
      requireKnown(systems_, u.systems, u.where, "unit system");
      requireKnown(provenances_, u.provenances, u.where, "provenance");
      Resolved res;
      for (const auto& s : u.prefixSets) {
        const auto it = prefixSets_.find(s);
        if (it == prefixSets_.end())
          problems_.push_back({u.where, "unknown prefix set \"" + s + "\""});
        else
          res.prefixes.insert(it->second.begin(), it->second.end());
      }
      const double own = checkFactor(u.factor, u.where);
      res.affine = u.factor.type == 4 || u.factor.type == 5;
      UnitExprAST ast;
      bool ok = parse(u.expression, u.where, ast);
      if (ok) {
        for (size_t i = 0; i < ast.names.size(); ++i) {
          const std::string n = ConvertUStringToStdString(ast.names[i]);
          std::string prefix;
          const Resolved* t = resolveTerm(n, prefix);
          if (t == nullptr) {
            problems_.push_back({u.where, "unknown unit \"" + n + "\" in \"" + u.expression + "\""});
            ok = false;
            continue;
          }
          if (t->affine) {
            problems_.push_back({u.where, "the offset unit \"" + n + "\" cannot be a term of another unit"});
            ok = false;
          }
          const long long e = ast.exponents[i].getNet();
          for (int k = 0; k < 8; ++k) res.dims[k] += t->dims[k] * e;
          const double scale = t->scale * (prefix.empty() ? 1.0 : prefixScale_[prefix]);
          res.scale *= std::pow(scale, static_cast<double>(e));
        }
      }
      res.scale *= own;
      if (ok && abstractRows_.count(u.abstractUnit) && abstractDims_[u.abstractUnit] != res.dims)
        problems_.push_back(
            {u.where, "\"" + u.expression + "\" does not have the dimensions of \"" + u.abstractUnit + "\""});
      if (res.affine && (ast.names.size() != 1 || ast.exponents[0].getNet() != 1))
        problems_.push_back({u.where, "an offset unit must be one term to the power one"});
      units_[u.name] = res;
      unitByName_[u.name] = u.name;
      if (!u.symbol.empty()) {
        units_[u.symbol] = res;
        unitBySymbol_[u.symbol] = u.name;
      }
      if (!u.ascii.empty()) {
        units_[u.ascii] = res;
        unitBySymbol_.emplace(u.ascii, u.name);
      }
    }
  }

  void aliases() {
    for (const auto& a : cat_.aliases) {
      if (!isPlainName(a.name)) problems_.push_back({a.where, "alias name \"" + a.name + "\" is not alphanumeric"});
      unique(unitNames_, a.name, a.where, "unit name or symbol");
      unique(unitNames_, a.symbol == a.name ? "" : a.symbol, a.where, "unit name or symbol");
      if (a.ascii != a.symbol && a.ascii != a.name) unique(unitNames_, a.ascii, a.where, "unit name or symbol");
      requireKnown(systems_, a.systems, a.where, "unit system");
      requireKnown(provenances_, a.provenances, a.where, "provenance");
      requireSingleName(a.symbol, a.where);
      requireSingleName(a.ascii, a.where);
      const auto t = unitByName_.find(a.target);
      if (t == unitByName_.end() || units_.count(a.target) == 0) {
        problems_.push_back({a.where, "unknown unit \"" + a.target + "\" in an alias"});
        continue;
      }
      Resolved r = units_.at(a.target);
      if (!a.prefix.empty()) {
        if (prefixNames_.count(a.prefix) == 0) {
          problems_.push_back({a.where, "unknown prefix \"" + a.prefix + "\" in an alias"});
        } else if (r.prefixes.count(a.prefix) == 0) {
          problems_.push_back({a.where, "unit \"" + a.target + "\" does not admit the prefix \"" + a.prefix + "\""});
        }
      }
      r.prefixes.clear();
      units_[a.name] = r;
      if (!a.symbol.empty()) {
        units_[a.symbol] = r;
      }
      if (!a.ascii.empty()) {
        units_[a.ascii] = r;
      }
    }
  }

  const Catalogue& cat_;
  std::vector<Problem>& problems_;
  std::set<std::string> abstractRows_, systems_, provenances_, prefixNames_, unitNames_;
  std::map<std::string, Dims> abstractDims_;
  std::map<std::string, std::string> prefixBySymbol_, prefixByName_, unitByName_, unitBySymbol_;
  std::map<std::string, double> prefixScale_;
  std::map<std::string, std::set<std::string>> prefixSets_;
  std::map<std::string, Resolved> units_, fundamental_;
};

}  // namespace

void validateCatalogue(const Catalogue& cat, std::vector<Problem>& problems) { Validator(cat, problems).run(); }

}  // namespace udwriter
}  // namespace QLTypeSys
