// PhysModUnitsObserver: announcements, their sorting against the catalogue, and term-by-term translation.
#include "ql_types/units/PhysModUnitsObserver.hpp"

#include <boost/bimap.hpp>
#include <boost/bimap/multiset_of.hpp>
#include <cmath>
#include <set>
#include <stdexcept>
#include <tuple>
#include <unordered_set>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {
namespace internal {

struct Registration {
  std::wstring physModUnit;
  std::wstring baseExpr;
  double scale;
  double offset;
};

// A total order even for NaN (which sorts after every number), so the set stays well formed.
struct RegistrationLess {
  static std::tuple<bool, double> key(double v) { return {std::isnan(v), std::isnan(v) ? 0.0 : v}; }
  bool operator()(const Registration& a, const Registration& b) const {
    return std::tie(a.physModUnit, a.baseExpr) < std::tie(b.physModUnit, b.baseExpr) ||
           (std::tie(a.physModUnit, a.baseExpr) == std::tie(b.physModUnit, b.baseExpr) &&
            std::make_tuple(key(a.scale), key(a.offset)) < std::make_tuple(key(b.scale), key(b.offset)));
  }
};

class PhysModTables {
 public:
  // left: physical-modelling symbol, right: unit symbol; equal keys keep their order of entry, so the
  // first pair entered for a name is the one found.
  using Translations =
      boost::bimaps::bimap<boost::bimaps::multiset_of<std::wstring>, boost::bimaps::multiset_of<std::wstring>>;

  std::set<Registration, RegistrationLess> registrations;
  Translations translations;
  std::unordered_set<std::wstring> incompatibleUnits;
  std::unordered_set<std::wstring> unknownUnits;
};

}  // namespace internal

namespace {

namespace msg = qlmsg::unit;

// Pieces joined by "*", each followed by "^n" when its net exponent is not 1.
template <class Lookup>
std::wstring translate(const UnitExprAST& ast, Lookup lookup) {
  std::wstring result;
  for (std::size_t i = 0; i < ast.names.size(); ++i) {
    if (i > 0) result += L'*';
    result += lookup(ast.names[i]);
    const int net = ast.exponents[i].getNet();
    if (net != 1) result += L'^' + std::to_wstring(net);
  }
  return result;
}

}  // namespace

void PhysModUnitsObserverInterface::operator()(const std::string& physModUnit, const std::string& baseExpr,
                                               double scale, double offset) {
  PhysModUnitsObserver::getObserver().announce(ConvertStdStringToUString(physModUnit),
                                               ConvertStdStringToUString(baseExpr), scale, offset);
}

PhysModUnitsObserver::PhysModUnitsObserver() : tables_(std::make_unique<internal::PhysModTables>()) {}
PhysModUnitsObserver::~PhysModUnitsObserver() = default;

PhysModUnitsObserver& PhysModUnitsObserver::getObserver() {
  static PhysModUnitsObserver observer;
  return observer;
}

void PhysModUnitsObserver::announce(const std::wstring& physModUnit, const std::wstring& baseExpr, double scale,
                                    double offset) {
  tables_->registrations.insert(internal::Registration{physModUnit, baseExpr, scale, offset});
  if (active_) checkRegistration(physModUnit, baseExpr, scale, offset);
}

void PhysModUnitsObserver::addTranslation(const std::wstring& physModSymbol, const std::wstring& unitSymbol) {
  tables_->translations.insert(internal::PhysModTables::Translations::value_type(physModSymbol, unitSymbol));
}

void PhysModUnitsObserver::setActive(bool active) {
  active_ = active;
  if (active) {
    for (const internal::Registration& r : tables_->registrations)
      checkRegistration(r.physModUnit, r.baseExpr, r.scale, r.offset);
  } else {
    tables_->translations.clear();
    tables_->incompatibleUnits.clear();
    tables_->unknownUnits.clear();
  }
}

bool PhysModUnitsObserver::nearlyEqual(double a, double b) {
  if (a == 0.0 && b == 0.0) return true;
  if (a == 0.0 || b == 0.0) return false;
  return std::fabs(1.0 - a / b) < 1e-05;
}

void PhysModUnitsObserver::checkRegistration(const std::wstring& p, const std::wstring& baseExpr, double scale,
                                             double offset) {
  internal::PhysModTables& t = *tables_;
  if (t.translations.left.find(p) != t.translations.left.end() || t.incompatibleUnits.count(p) != 0 ||
      t.unknownUnits.count(p) != 0)
    return;
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  const UnitBase::UnitSet found = db->getUnit(p);
  if (found.empty()) {
    t.unknownUnits.insert(p);
    return;
  }
  std::unique_ptr<Unit> temp;
  try {
    temp = UnitFactory::createUnit(-10, p, baseExpr, L"", L"", L"", ConversionFactor::unity, L"", {}, {}, false,
                                   UnitFactory::getDefaultAbstractUnit());
    temp->parseExpressionAndGenerateAST();
  } catch (const fl::except::IException&) {
    // An expression the catalogue cannot resolve names nothing we could pair it with.
    t.unknownUnits.insert(p);
    return;
  } catch (const std::out_of_range&) {
    t.unknownUnits.insert(p);
    return;
  }
  const ConversionFactor& b = temp->getInternalBaseConversionFactor();
  if (b.isEmpty() || b.isReciprocal()) return;
  const double wantedScale = b.toDouble() * scale;
  const double wantedOffset = b.isAffine() ? offset + b.getOffset() : offset;
  const UnitBase* match = nullptr;
  for (const UnitBase& u : found)
    if (u.dimensionallyEquivalentWithUnit(*temp, NetExponents)) {
      match = &u;
      break;
    }
  if (match == nullptr) {
    t.unknownUnits.insert(p);
    return;
  }
  const ConversionFactor& f = match->getInternalBaseConversionFactor();
  if (f.isEmpty() || f.isReciprocal() || !nearlyEqual(wantedScale, f.toDouble()) ||
      !nearlyEqual(wantedOffset, f.isAffine() ? f.getOffset() : 0.0)) {
    t.incompatibleUnits.insert(p);
    return;
  }
  addTranslation(p, match->getAsciiSymbol());
}

std::wstring PhysModUnitsObserver::translateToQuillon(const std::wstring& text) const {
  UnitExprAST ast;
  if (!parseUnitExpr(text, ast) || ast.names.empty()) qlRaise(msg::PhysModUnitIncompatible, text);
  const internal::PhysModTables& t = *tables_;
  return translate(ast, [&](const std::wstring& name) -> std::wstring {
    auto it = t.translations.left.find(name);
    if (it != t.translations.left.end()) return it->second;
    if (t.incompatibleUnits.count(name) != 0) qlRaise(msg::PhysModUnitIncompatible, text);
    if (t.unknownUnits.count(name) != 0) qlRaise(msg::PhysModUnitUnknown, text);
    return std::wstring();
  });
}

std::wstring PhysModUnitsObserver::translateToPhysMod(const std::wstring& text) const {
  UnitExprAST ast;
  // kept: a text that does not parse translates to nothing instead of being reported.
  parseUnitExpr(text, ast);
  const internal::PhysModTables& t = *tables_;
  return translate(ast, [&](const std::wstring& name) -> std::wstring {
    auto it = t.translations.right.find(name);
    if (it == t.translations.right.end()) qlRaise(msg::QuillonUnitToPhysModUnitUnknown, text);
    return it->second;
  });
}

std::wstring PhysModUnitsObserver::getTranslation(const std::wstring& physModSymbol) const {
  auto it = tables_->translations.left.find(physModSymbol);
  return it == tables_->translations.left.end() ? std::wstring() : it->second;
}

bool PhysModUnitsObserver::isIncompatible(const std::wstring& name) const {
  return tables_->incompatibleUnits.count(name) != 0;
}

bool PhysModUnitsObserver::isUnknown(const std::wstring& name) const { return tables_->unknownUnits.count(name) != 0; }

}  // namespace QLTypeSys
