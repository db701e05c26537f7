// UnitTable: registration, lookups by id and text, text forms, comparison and conversion by id.
#include "ql_types/units/UnitTable.hpp"

#include <ostream>
#include <utility>
#include <vector>

#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/PhysModUnitsObserver.hpp"
#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

namespace {

namespace msg = qlmsg::unit;

// The built-in set: two placeholder units whose ids become -1 and 0 once. Only its size is read.
const std::vector<std::unique_ptr<Unit>>& builtInUnits() {
  static const std::vector<std::unique_ptr<Unit>> units = [] {
    std::vector<std::unique_ptr<Unit>> list;
    for (int id : {-1, 0}) {
      list.push_back(UnitFactory::createUnit(-10, L"", L"", L"", L"", L"", ConversionFactor::unity, L"", {}, {}, false,
                                             UnitFactory::getDefaultAbstractUnit()));
      list.back()->setId(id);
    }
    return list;
  }();
  return units;
}

bool isNumber(const std::wstring& piece) {
  std::size_t i = (!piece.empty() && (piece[0] == L'-' || piece[0] == L'+')) ? 1 : 0;
  if (i == piece.size()) return false;
  for (; i < piece.size(); ++i)
    if (piece[i] < L'0' || piece[i] > L'9') return false;
  return true;
}

const std::wstring& textOf(const UnitBase& u, UnitTable::TextMode mode) {
  switch (mode) {
    case UnitTable::DisplayText:
      if (!u.getDisplayName().empty()) return u.getDisplayName();
      return u.getSymbol().empty() ? u.getName() : u.getSymbol();
    case UnitTable::NameText:
      return u.getName();
    case UnitTable::SymbolText:
      return u.getSymbol().empty() ? u.getName() : u.getSymbol();
    case UnitTable::AsciiText:
    default:
      return u.getAsciiSymbol().empty() ? u.getName() : u.getAsciiSymbol();
  }
}

}  // namespace

UnitTable::UnitTable() { initialize(); }

UnitTable::~UnitTable() = default;

int UnitTable::getNumBaseUnits() { return static_cast<int>(builtInUnits().size()) - 1; }

void UnitTable::initialize() {
  builtInUnits();
  int id = nextId();
  auto inherit = UnitFactory::createUnit(id, L"inherit", L"inherit", L"inherit", L"", L"", ConversionFactor::unity, L"",
                                         {}, {}, false, UnitFactory::getDefaultAbstractUnit());
  addUnit(L"inherit", inherit.release());
  id = nextId();
  std::unique_ptr<UnitBase> unitless(UnitFactory::getDefaultUnit().clone());
  unitless->setId(id);
  addUnit(L"unitless", unitless.release());
}

int UnitTable::nextId() const {
  if (units_.empty()) return -1;
  const int largest = units_.rbegin()->first;
  int next = 0;
  if (__builtin_add_overflow(largest, 1, &next)) qlRaise(msg::InvalidUnitId, static_cast<long long>(largest) + 1);
  return next;
}

int UnitTable::registerUnit(const char* expr) { return registerUnit(ConvertStdStringToUString(expr ? expr : "")); }

int UnitTable::registerUnit(const std::wstring& expr) {
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  std::wstring unitText;
  std::wstring abstractText;
  splitUnitExpr(expr, unitText, abstractText);  // kept: the outcome is not looked at, the texts are

  const UnitBase::UnitSet abstracts = db->getAbstractUnit(abstractText);
  if (abstracts.empty() && !abstractText.empty() && abstractText != L"unitless")
    qlRaise(msg::AbstractUnitNotInDatabase, abstractText);
  if (unitText != L"unitless" && unitText != L"inherit" && !UnitBase::isValidUnitExpr(unitText))
    qlRaise(msg::InvalidUnitExpression, expr);

  const auto known = idsByExpr_.find(expr);
  if (known != idsByExpr_.end() && units_.count(known->second) != 0) return known->second;

  const int id = nextId();
  const UnitBase& abstractUnit = abstracts.empty() ? UnitFactory::getDefaultAbstractUnit() : abstracts.begin()->get();
  const UnitBase::UnitSet found = db->getUnit(unitText, abstractUnit);
  std::unique_ptr<UnitBase> unit;
  bool composed = false;
  if (!found.empty()) {
    unit.reset(found.begin()->get().clone());
  } else {
    unit = UnitFactory::createUnit(id, composeUnitTexts(unitText, NameText), unitText,
                                   composeUnitTexts(unitText, SymbolText), composeUnitTexts(unitText, AsciiText),
                                   composeUnitTexts(unitText, DisplayText), ConversionFactor::unity, L"", {}, {}, false,
                                   abstractUnit);
    unit->parseExpressionAndGenerateAST();
    unit->checkValidity(true, StrictExponents);  // names of compositions need no check
    composed = true;
  }
  unit->setId(id);

  // Each entry is undone if a later one (or the whitelist) runs out of memory.
  UnitBase* raw = unit.get();
  units_.emplace(id, std::move(unit));
  bool hadText = false;
  int oldId = 0;
  bool marked = false;
  try {
    if (known != idsByExpr_.end()) {
      hadText = true;
      oldId = known->second;
      known->second = id;
    } else {
      idsByExpr_.emplace(expr, id);
    }
    if (!abstractText.empty()) marked = annotatedIds_.insert(id).second;
    if (composed) db->addWhitelistedUnits(*raw);
  } catch (...) {
    if (marked) annotatedIds_.erase(id);
    if (hadText)
      idsByExpr_[expr] = oldId;  // the node is there: no allocation
    else
      idsByExpr_.erase(expr);
    units_.erase(id);
    throw;
  }
  return id;
}

qlsvDiagnostic UnitTable::RegisterUnit(UnitTable* table, const std::string& blockText, const std::wstring& expr,
                                       int* id) {
  try {
    const int result = table->registerUnit(expr);
    if (id) *id = result;
    return nullptr;
  } catch (const fl::except::IException& e) {
    qlsvDiagnostic diag = qlsvCreateDiagnosticFromIException(e, true);
    if (!blockText.empty())
      diag = qlsvConcatenateDiagnostics(std::move(diag), qlMakeDiagnostic(msg::UnitErrorFromBlock, blockText), true);
    return diag;
  }
}

void UnitTable::addUnit(const std::wstring& expr, UnitBase* unit) {
  std::unique_ptr<UnitBase> owned(unit);
  if (!owned) qlRaise(msg::InvalidUnitId, -10);
  const int id = owned->getId();
  if (units_.count(id) != 0) qlRaise(msg::InvalidUnitId, id);
  auto placed = units_.emplace(id, std::move(owned)).first;
  try {
    idsByExpr_[expr] = id;
  } catch (...) {
    units_.erase(placed);
    throw;
  }
}

void UnitTable::removeUnit(const UnitBase* unit) {
  if (unit == nullptr) return;
  // The expr finds the id when the unit was registered under it; otherwise the object is searched for.
  int id = 0;
  bool found = false;
  auto byText = idsByExpr_.find(unit->getExpr());
  if (byText != idsByExpr_.end()) {
    auto it = units_.find(byText->second);
    if (it != units_.end() && it->second.get() == unit) {
      id = it->first;
      found = true;
    }
  }
  if (!found)
    for (const auto& entry : units_)
      if (entry.second.get() == unit) {
        id = entry.first;
        found = true;
        break;
      }
  if (!found) return;
  for (auto it = idsByExpr_.begin(); it != idsByExpr_.end();)
    it = it->second == id ? idsByExpr_.erase(it) : std::next(it);
  units_.erase(id);
}

UnitBase* UnitTable::getUnit(int id) {
  auto it = units_.find(id);
  return it == units_.end() ? nullptr : it->second.get();
}

const UnitBase* UnitTable::getUnit(int id) const {
  auto it = units_.find(id);
  return it == units_.end() ? nullptr : it->second.get();
}

UnitBase* UnitTable::getUnit(const std::wstring& expr) {
  auto it = idsByExpr_.find(expr);
  return it == idsByExpr_.end() ? nullptr : getUnit(it->second);
}

const UnitBase* UnitTable::getUnit(const std::wstring& expr) const {
  auto it = idsByExpr_.find(expr);
  return it == idsByExpr_.end() ? nullptr : getUnit(it->second);
}

int UnitTable::getUnitId(const std::wstring& expr) const {
  auto it = idsByExpr_.find(expr);
  return it == idsByExpr_.end() ? -10 : it->second;
}

void UnitTable::checkUnitId(int id) const {
  if (!isUnitIdValid(id)) qlRaise(msg::InvalidUnitId, id);
}

const UnitBase& UnitTable::unitAt(int id) const {
  checkUnitId(id);
  return *units_.find(id)->second;
}

std::wstring UnitTable::getUserSpecifiedUnitExpr(int id) const {
  for (const auto& entry : idsByExpr_)
    if (entry.second == id) return entry.first;
  return std::wstring();
}

UnitComparison UnitTable::equivalentUnits(int a, int b) const {
  if (a == b) return UnitsEquivalent;
  const auto builtIn = [](int id) { return id == -1 || id == 0; };
  if (builtIn(a) && builtIn(b)) return UnitlessInvolved;
  if (a != -1 && b != -1) return unitAt(a).equivalentTo(unitAt(b), StrictExponents);
  return InheritInvolved;
}

UnitNumericInfoForConversions UnitTable::getConversionInfo(int from, int to) const {
  return unitAt(from).getConversionInfo(unitAt(to), StrictExponents, false);
}

const UnitBase* UnitTable::abstractOf(const UnitBase& unit) {
  const auto* concrete = dynamic_cast<const Unit*>(&unit);
  return concrete ? &concrete->getAbstractUnit() : nullptr;
}

std::wstring UnitTable::getUnitNameExpr(int id) const {
  const UnitBase& u = unitAt(id);
  std::wstring text = u.getName();
  const UnitBase* a = abstractOf(u);
  if (a && annotatedIds_.count(id) != 0) text += L'@' + a->getName();
  return text;
}

std::wstring UnitTable::getUnitSymbolExpr(int id) const {
  const UnitBase& u = unitAt(id);
  std::wstring text = u.getSymbol();
  const UnitBase* a = abstractOf(u);
  if (a && annotatedIds_.count(id) != 0) text += L'@' + a->getSymbol();
  return text;
}

std::wstring UnitTable::getUnitAsciiSymbolExpr(int id) const {
  const UnitBase& u = unitAt(id);
  std::wstring text = u.getAsciiSymbol();
  const UnitBase* a = abstractOf(u);
  if (a && annotatedIds_.count(id) != 0) text += L'@' + a->getAsciiSymbol();
  return text;
}

std::wstring UnitTable::getUnitDispExpr(int id) const {
  const UnitBase& u = unitAt(id);
  std::wstring text = u.getDisplayName();
  const UnitBase* a = abstractOf(u);
  if (a && annotatedIds_.count(id) != 0) {
    text += L'<';
    for (wchar_t c : a->getDisplayName()) {
      if (c == L'_') text += L'\\';
      text += c;
    }
    text += L'>';
  }
  return text;
}

std::wstring UnitTable::getPhysModUnitForQuillonUnit(int id) const {
  return PhysModUnitsObserver::getObserver().translateToPhysMod(unitAt(id).getSymbol());
}

int UnitTable::getQuillonUnitForPhysModUnit(const std::wstring& text) {
  return registerUnit(PhysModUnitsObserver::getObserver().translateToQuillon(text));
}

void UnitTable::resetToBuiltin() {
  // The survivors' texts are gathered first, so running out of memory leaves the table whole.
  std::map<int, std::unique_ptr<UnitBase>> kept;
  auto it = units_.begin();
  for (int n = 0; n < 2 && it != units_.end(); ++n, ++it) kept.emplace(it->first, nullptr);
  std::unordered_map<std::wstring, int> texts;
  for (const auto& entry : idsByExpr_)
    if (kept.count(entry.second) != 0) texts.insert(entry);
  for (auto& entry : kept) entry.second = std::move(units_[entry.first]);
  units_.swap(kept);
  idsByExpr_.swap(texts);
}

void UnitTable::print(std::ostream& out) const {
  out << "UnitTable" << std::endl;
  out << "Number of Units : " << units_.size() << std::endl << std::endl;
  for (const auto& entry : units_) entry.second->print(out);
  out << std::endl;
}

qlsvDiagnostic UnitTable::errorCause(const UnitComparison& comparison) {
  switch (comparison) {
    case UnitsIncompatible:
      return qlMakeDiagnostic(msg::IncompatibleUnits);
    case UnitlessInvolved:
      return qlMakeDiagnostic(msg::UnitlessComparison);
    case ScalingFactorsDiffer:
      return qlMakeDiagnostic(msg::CanonicalScalingFactorDifference);
    case DimensionsDiffer:
      return qlMakeDiagnostic(msg::DimensionallyInequivalent);
    case OffsetsDiffer:
      return qlMakeDiagnostic(msg::DifferentOffsets);
    case UnitsReciprocal:
      return qlMakeDiagnostic(msg::ReciprocalUnits);
    default:
      return nullptr;
  }
}

bool UnitTable::isAValidUnit(const std::wstring& text) {
  return text == L"unitless" || UnitBase::isValidUnitExpr(text);
}

void UnitTable::validateUnitExpr(const std::wstring& text) {
  if (!isAValidUnit(text)) qlRaise(msg::InvalidUnitExpression, text);
}

std::wstring UnitTable::composeUnitTexts(const std::wstring& text, TextMode mode) {
  static const std::wstring cuts = L"()*/^";
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  std::wstring result;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t cut = text.find_first_of(cuts, start);
    const std::size_t end = cut == std::wstring::npos ? text.size() : cut;
    const std::wstring piece = text.substr(start, end - start);
    if (!piece.empty() && !isNumber(piece)) {
      const UnitBase::UnitSet units = db->getUnit(piece);
      result += units.size() == 1 ? textOf(units.begin()->get(), mode) : piece;
    } else {
      result += piece;
    }
    if (cut == std::wstring::npos) break;
    result += text[cut];
    start = cut + 1;
  }
  return result;
}

}  // namespace QLTypeSys
