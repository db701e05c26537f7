// The units section of the demo: unit expressions parsed into terms and counts, and the exact factor of
// each expression to its base units, multiplied term by term as the unit table will.
#include <boost/rational.hpp>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>

#include "ql_types/platform/Text.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitExprPartial.hpp"

void showUnits();

namespace {

using namespace QLTypeSys;
using F = ConversionFactorFactory;

std::string utf8(const std::wstring& w) { return ConvertUStringToStdString(w); }

// A tiny stand-in for the unit catalogue: each name's exact factor to metres, seconds and kilograms.
const std::map<std::wstring, ConversionFactor>& catalogue() {
  static const std::map<std::wstring, ConversionFactor> units = {
      {L"m", F::createConversionFactor(1, 1, 0)},         {L"km", F::createConversionFactor(1000, 1, 0)},
      {L"s", F::createConversionFactor(1, 1, 0)},         {L"h", F::createConversionFactor(3600, 1, 0)},
      {L"min", F::createConversionFactor(60, 1, 0)},      {L"mi", F::createConversionFactor(1609344, 1000, 0)},
      {L"ft", F::createConversionFactor(3048, 10000, 0)}, {L"kg", F::createConversionFactor(1, 1, 0)},
      {L"g", F::createConversionFactor(1, 1000, 0)},      {L"\u00B5m", F::createConversionFactor(1, 1, -6)},
      {L"N", F::createConversionFactor(1, 1, 0)},         {L"in", F::createConversionFactor(254, 100, -2)},
  };
  return units;
}

// num/den·10^exp as one plain fraction, e.g. 1/36·10^1 as 5/18.
boost::rational<long long> plainFraction(const ScaledRational& r) {
  boost::rational<long long> q = r.getRational();
  for (int e = r.getExponent(); e > 0; --e) q *= 10;
  for (int e = r.getExponent(); e < 0; ++e) q /= 10;
  return q;
}

void showTerms(const std::wstring& text) {
  UnitExprAST ast;
  std::cout << "  " << std::left << std::setw(18) << ('"' + utf8(text) + '"');
  if (!parseUnitExpr(text, ast)) {
    std::cout << "does not parse\n";
    return;
  }
  if (ast.names.empty()) std::cout << "no terms";
  for (std::size_t i = 0; i < ast.names.size(); ++i)
    std::cout << utf8(ast.names[i]) << " " << ast.exponents[i] << (i + 1 < ast.names.size() ? ", " : "");
  std::cout << '\n';
}

void showFactor(const std::wstring& text) {
  UnitExprAST ast;
  if (!parseUnitExpr(text, ast)) return;
  ConversionFactor factor;  // unity
  for (std::size_t i = 0; i < ast.names.size(); ++i) factor *= catalogue().at(ast.names[i]) ^ ast.exponents[i];
  std::cout << "  " << std::left << std::setw(10) << utf8(text) << " = ";
  if (const auto* exact = dynamic_cast<const ScaledRational*>(&factor.getFactor()))
    std::cout << std::setw(22) << exact->toText() << " = " << plainFraction(*exact) << " exactly";
  else
    std::cout << "(double) " << factor.toDouble();
  const std::streamsize precision = std::cout.precision(17);
  std::cout << "  (" << factor.toDouble() << " as a double)\n";
  std::cout.precision(precision);
}

}  // namespace

void showUnits() {
  std::cout << "\n=== Unit expressions: terms and exponent counts ===\n";
  for (const wchar_t* text : {L"kg*m/s^2", L"m/m", L"(m/s)^-1", L"1/(m*s)", L"a^2^3", L"m^0", L"\u00B5m\u3000/\u00A0s",
                              L"\u00B0C", L"\u7C73/\u79D2^2", L"m^1.5", L"m+s"})
    showTerms(text);

  std::wstring unitPart, abstractPart;
  splitUnitExpr(L"km/h@velocity", unitPart, abstractPart);
  std::cout << "  \"km/h@velocity\" splits into \"" << utf8(unitPart) << "\" and \"" << utf8(abstractPart) << "\"\n";
  std::cout << "  while typing:";
  for (const wchar_t* typed : {L"km/", L"km/(h*", L"km//", L"km/h@vel", L"km/@"}) {
    std::wstring left, right;
    std::cout << " \"" << utf8(typed) << "\" " << (parsePartialUnitExpr(typed, left, right) ? "ok" : "never");
  }
  std::cout << '\n';

  std::cout << "\n=== Exact conversion factors, multiplied term by term ===\n";
  for (const wchar_t* text : {L"km/h", L"mi/h", L"ft/min", L"in^2", L"g*km/h^2", L"\u00B5m/s", L"km/h/(m/s)"})
    showFactor(text);
  const ConversionFactor kmh = catalogue().at(L"km") * (catalogue().at(L"h") ^ -1);
  const auto& exact = dynamic_cast<const ScaledRational&>(kmh.getFactor());
  std::cout << "  km/h as a factor of m/s: " << exact.toText() << ", that is " << plainFraction(exact)
            << (plainFraction(exact) == boost::rational<long long>(5, 18) ? " (5/18, as it should be)" : "") << '\n';
  const ConversionFactor celsius = F::createConversionFactor(L"1,1,27315,100", RationalAffineFactor);
  std::cout << "  degC to K: scale " << celsius.toDouble() << ", offset " << celsius.getOffset() << "; squared it is "
            << ((celsius ^ 2).isEmpty() ? "undefined" : "defined") << '\n';
}
