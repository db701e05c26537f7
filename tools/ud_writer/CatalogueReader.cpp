// Reads the catalogue source: one row per line, a keyword, then fields separated by "|". The format is
// described in data/README.md. Factors are written as people read them and turned into stored texts here.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numeric>
#include <sstream>

#include "ud_writer/UdWriter.hpp"

namespace QLTypeSys {
namespace udwriter {

namespace {

std::string trim(const std::string& s) {
  const char* ws = " \t\r\n";
  const auto b = s.find_first_not_of(ws);
  if (b == std::string::npos) return "";
  const auto e = s.find_last_not_of(ws);
  return s.substr(b, e - b + 1);
}

std::vector<std::string> splitFields(const std::string& s, char sep) {
  std::vector<std::string> out;
  std::string cur;
  for (char c : s) {
    if (c == sep) {
      out.push_back(trim(cur));
      cur.clear();
    } else {
      cur += c;
    }
  }
  out.push_back(trim(cur));
  return out;
}

std::vector<std::string> splitWords(const std::string& s) {
  std::vector<std::string> out;
  std::istringstream in(s);
  std::string w;
  while (in >> w) {
    if (w != "-") out.push_back(w);
  }
  return out;
}

std::string dashEmpty(const std::string& s) { return s == "-" ? std::string() : s; }

// An exact factor: num/den times ten to exp, kept reduced, with overflow checked.
struct Exact {
  long long num = 1, den = 1;
  int exp = 0;
};

bool reduceInto(__int128 n, __int128 d, Exact& out) {
  if (d < 0) {
    n = -n;
    d = -d;
  }
  __int128 a = n < 0 ? -n : n, b = d;
  while (b != 0) {
    const __int128 t = a % b;
    a = b;
    b = t;
  }
  if (a > 1) {
    n /= a;
    d /= a;
  }
  const __int128 lim = std::numeric_limits<long long>::max();
  if (n > lim || n < -lim || d > lim) return false;
  out.num = static_cast<long long>(n);
  out.den = static_cast<long long>(d);
  return true;
}

// "0.45359237", "1e-3", "254e-4", "1024": digits with an optional point and an optional exponent.
bool parseDecimal(const std::string& s, long long& mantissa, int& exp) {
  mantissa = 0;
  exp = 0;
  size_t i = 0;
  bool neg = false;
  if (i < s.size() && (s[i] == '-' || s[i] == '+')) neg = s[i++] == '-';
  bool digits = false, point = false;
  for (; i < s.size(); ++i) {
    const char c = s[i];
    if (c >= '0' && c <= '9') {
      digits = true;
      if (__builtin_mul_overflow(mantissa, 10LL, &mantissa) || __builtin_add_overflow(mantissa, c - '0', &mantissa))
        return false;
      if (point) --exp;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (!digits) return false;
  if (i < s.size()) {
    if (s[i] != 'e' && s[i] != 'E') return false;
    const std::string rest = s.substr(i + 1);
    if (rest.empty() || rest.size() > 4) return false;
    char* end = nullptr;
    const long e = std::strtol(rest.c_str(), &end, 10);
    if (*end != '\0') return false;
    exp += static_cast<int>(e);
  }
  if (neg) mantissa = -mantissa;
  return true;
}

// Product of terms "a", "a/b", separated by "*", each a decimal.
bool parseExact(const std::string& text, Exact& out) {
  Exact acc;
  for (const auto& term : splitFields(text, '*')) {
    const auto parts = splitFields(term, '/');
    if (parts.size() > 2) return false;
    long long m = 0;
    int e = 0;
    if (!parseDecimal(parts[0], m, e)) return false;
    __int128 n = static_cast<__int128>(acc.num) * m, d = acc.den;
    long long expSum = static_cast<long long>(acc.exp) + e;
    if (parts.size() == 2) {
      long long m2 = 0;
      int e2 = 0;
      if (!parseDecimal(parts[1], m2, e2) || m2 == 0) return false;
      d *= m2;
      expSum -= e2;
    }
    if (!reduceInto(n, d, acc)) return false;
    if (expSum > 400 || expSum < -400) return false;
    acc.exp = static_cast<int>(expSum);
  }
  // Fold tens of the numerator and denominator into the exponent, so the stored text is short.
  while (acc.num != 0 && acc.num % 10 == 0) {
    acc.num /= 10;
    ++acc.exp;
  }
  while (acc.den % 10 == 0) {
    acc.den /= 10;
    --acc.exp;
  }
  out = acc;
  return true;
}

// An exact factor with the exponent folded into numerator or denominator (affine texts have no exponent).
bool foldExponent(const Exact& x, long long& num, long long& den) {
  __int128 n = x.num, d = x.den;
  for (int i = 0; i < x.exp; ++i) {
    n *= 10;
    if (n > std::numeric_limits<long long>::max() || n < -std::numeric_limits<long long>::max()) return false;
  }
  for (int i = 0; i > x.exp; --i) {
    d *= 10;
    if (d > std::numeric_limits<long long>::max()) return false;
  }
  Exact r;
  if (!reduceInto(n, d, r)) return false;
  num = r.num;
  den = r.den;
  return true;
}

bool parseReal(const std::string& s, double& v) {
  if (s.empty()) return false;
  errno = 0;
  char* end = nullptr;
  v = std::strtod(s.c_str(), &end);
  return *end == '\0' && errno == 0;
}

}  // namespace

bool parseFactorSource(const std::string& raw, FactorText& out, std::string& error) {
  const std::string text = trim(raw);
  if (text.rfind("reciprocal", 0) == 0) {
    const std::string v = trim(text.substr(10));
    double d = 0;
    if (!parseReal(v, d)) {
      error = "reciprocal factor \"" + text + "\" is not one real number";
      return false;
    }
    out = {6, v};
    return true;
  }
  if (!text.empty() && text[0] == '~') {
    const auto parts = splitFields(text.substr(1), ',');
    double a = 0, b = 0;
    if (parts.size() == 1 && parseReal(parts[0], a)) {
      out = {1, parts[0]};
      return true;
    }
    if (parts.size() == 2 && parseReal(parts[0], a) && parseReal(parts[1], b)) {
      out = {5, parts[0] + "," + parts[1]};
      return true;
    }
    error = "measured factor \"" + text + "\" is not a real number (or scale, offset)";
    return false;
  }
  if (text.rfind("affine", 0) == 0) {
    const auto parts = splitFields(text.substr(6), '+');
    Exact s, o;
    long long sn = 0, sd = 1, on = 0, od = 1;
    if (parts.size() != 2 || !parseExact(parts[0], s) || !parseExact(parts[1], o) || !foldExponent(s, sn, sd) ||
        !foldExponent(o, on, od)) {
      error = "affine factor \"" + text + "\" is not \"affine <exact scale> + <exact offset>\"";
      return false;
    }
    out = {4, std::to_string(sn) + "," + std::to_string(sd) + "," + std::to_string(on) + "," + std::to_string(od)};
    return true;
  }
  Exact x;
  if (!parseExact(text, x)) {
    error = "factor \"" + text + "\" is not exact (write \"~value\" for a measured one)";
    return false;
  }
  if (x.exp == 0)
    out = {2, std::to_string(x.num) + "," + std::to_string(x.den)};
  else
    out = {3, std::to_string(x.num) + "," + std::to_string(x.den) + "," + std::to_string(x.exp)};
  return true;
}

void readCatalogueText(const std::string& text, const std::string& fileName, Catalogue& cat,
                       std::vector<Problem>& problems) {
  std::istringstream in(text);
  std::string line;
  int lineNo = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    const auto hash = line.find('#');
    if (hash != std::string::npos) line.erase(hash);
    line = trim(line);
    if (line.empty()) continue;
    const SourceLocation where{fileName, lineNo};
    auto fail = [&](const std::string& m) { problems.push_back({where, m}); };
    const auto sp = line.find_first_of(" \t");
    const std::string keyword = line.substr(0, sp);
    const std::string rest = sp == std::string::npos ? "" : trim(line.substr(sp));
    auto fieldsBetween = [&](size_t lo, size_t hi, std::vector<std::string>& f) {
      f = splitFields(rest, '|');
      if (f.size() < lo || f.size() > hi) {
        fail(keyword + " needs " + std::to_string(lo) + (lo == hi ? "" : " to " + std::to_string(hi)) +
             " fields separated by \"|\", found " + std::to_string(f.size()));
        return false;
      }
      return true;
    };
    auto factorOf = [&](const std::string& s, FactorText& out) {
      std::string err;
      if (!parseFactorSource(s, out, err)) {
        fail(err);
        return false;
      }
      return true;
    };
    std::vector<std::string> f;
    if (keyword == "system") {
      if (rest.empty() || rest.find_first_of(" \t|") != std::string::npos) {
        fail("system needs one name");
        continue;
      }
      cat.systems.push_back({where, rest});
    } else if (keyword == "provenance") {
      if (!fieldsBetween(8, 8, f)) continue;
      ProvenanceRow r{where, f[0], f[1], dashEmpty(f[2]), f[3], f[4], 0, dashEmpty(f[6]), dashEmpty(f[7])};
      if (!r.urls.empty() && r.urls.back() != ',') r.urls += ',';  // every link is read up to its comma
      char* end = nullptr;
      r.year = static_cast<int>(std::strtol(f[5].c_str(), &end, 10));
      if (f[5].empty() || *end != '\0') fail("provenance year \"" + f[5] + "\" is not an integer");
      cat.provenances.push_back(r);
    } else if (keyword == "abstract" || keyword == "prefixset") {
      const auto eq = rest.find('=');
      if (eq == std::string::npos) {
        fail(keyword + " needs \"name = ...\"");
        continue;
      }
      const std::string name = trim(rest.substr(0, eq)), value = trim(rest.substr(eq + 1));
      if (keyword == "abstract")
        cat.abstractUnits.push_back({where, name, value});
      else
        cat.prefixSets.push_back({where, name, splitWords(value)});
    } else if (keyword == "reciprocal") {
      if (!fieldsBetween(3, 3, f)) continue;
      ReciprocalRow r{where, f[0], f[1], {}};
      if (factorOf(f[2], r.factor)) cat.reciprocals.push_back(r);
    } else if (keyword == "prefix" || keyword == "prefixalias") {
      if (!fieldsBetween(6, 7, f)) continue;
      const std::string ascii = f[2] == "=" ? f[1] : f[2];
      const std::string display = f.size() > 6 ? f[6] : f[0];
      if (keyword == "prefix") {
        PrefixRow r{where, f[0], f[1], ascii, display, {}, splitWords(f[4]), splitWords(f[5])};
        if (factorOf(f[3], r.factor)) cat.prefixes.push_back(r);
      } else {
        cat.prefixAliases.push_back(
            {where, f[0], f[1], dashEmpty(ascii), display, f[3], splitWords(f[4]), splitWords(f[5])});
      }
    } else if (keyword == "unit") {
      if (!fieldsBetween(9, 10, f)) continue;
      UnitRow r;
      r.where = where;
      r.name = f[0];
      r.symbol = f[1];
      r.ascii = f[2] == "=" ? f[1] : f[2];
      r.expression = f[4];
      r.abstractUnit = f[5];
      r.prefixSets = splitWords(f[6]);
      r.systems = splitWords(f[7]);
      r.provenances = splitWords(f[8]);
      r.display = f.size() > 9 ? f[9] : f[0];
      if (factorOf(f[3], r.factor)) cat.units.push_back(r);
    } else if (keyword == "alias") {
      if (!fieldsBetween(6, 7, f)) continue;
      UnitAliasRow r;
      r.where = where;
      r.name = f[0];
      r.symbol = dashEmpty(f[1]);
      r.ascii = f[2] == "=" ? r.symbol : dashEmpty(f[2]);
      const auto target = splitWords(f[3]);
      if (target.empty() || target.size() > 2) {
        fail("alias target must be \"unit\" or \"prefix unit\"");
        continue;
      }
      r.target = target.back();
      if (target.size() == 2) r.prefix = target[0];
      r.systems = splitWords(f[4]);
      r.provenances = splitWords(f[5]);
      r.display = f.size() > 6 ? f[6] : f[0];
      cat.aliases.push_back(r);
    } else if (keyword == "physmod") {
      if (!fieldsBetween(2, 2, f)) continue;
      cat.translations.push_back({where, f[0], f[1]});
    } else {
      fail("unknown keyword \"" + keyword + "\"");
    }
  }
}

void readCatalogueDirectory(const std::string& dir, Catalogue& cat, std::vector<Problem>& problems) {
  std::vector<std::filesystem::path> files;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
    if (entry.path().extension() == ".txt") files.push_back(entry.path());
  }
  if (ec) {
    problems.push_back({{dir, 0}, "cannot read the directory: " + ec.message()});
    return;
  }
  std::sort(files.begin(), files.end());
  for (const auto& p : files) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    readCatalogueText(text.str(), p.filename().string(), cat, problems);
  }
}

std::string formatProblem(const Problem& p) {
  return p.where.file + ":" + std::to_string(p.where.line) + ": " + p.message;
}

}  // namespace udwriter
}  // namespace QLTypeSys
