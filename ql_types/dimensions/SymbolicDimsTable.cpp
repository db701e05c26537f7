// The symbolic dimension table: built-ins, registration, lookups and text forms.
#include "ql_types/dimensions/SymbolicDimsTable.hpp"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <ostream>

#include "ql_types/dimensions/internal/StrictDecimal.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprCopy.hpp"
#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprSymbols.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QLTypeSys {

namespace {
constexpr unsigned kSimplifyLimit = 10;
}

SymbolicDimsTable::SymbolicDimsTable() : exprTbl_(new QL::SymbolicExprTable) {
  try {
    // The built-ins go through the virtual registration; here that is this table's own form, and after a
    // reset it is the derived table's.
    initialize();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    constraints_ = new SymbolicDimsConstraints(this);
  } catch (...) {
    delete exprTbl_;
    throw;
  }
}

SymbolicDimsTable::~SymbolicDimsTable() {
  delete constraints_;
  delete exprTbl_;
}

QLBlock const* SymbolicDimsTable::getOriginalBlock(QLBlock const* block) const { return block; }

void SymbolicDimsTable::initialize() {
  registerSymbolicDims("INHERIT", nullptr);
  registerSymbolicDims("NOSYMBOLIC", nullptr);
}

void SymbolicDimsTable::resetToBuiltin() {
  // The new table and store are made in full before the old ones go, so that a failure (memory included)
  // leaves this table as it was. Unlike the constructor, the new store is made before the built-ins;
  // their ids come out the same.
  std::unique_ptr<QL::SymbolicExprTable> exprs(new QL::SymbolicExprTable);
  QL::SymbolicExprTable* const oldExprs = exprTbl_;
  SymbolicDimsConstraints* const oldConstraints = constraints_;
  std::unique_ptr<SymbolicDimsConstraints> constraints;
  // The store and the virtual registration read the expressions through this table, so they are switched
  // over for the time it takes, and back if anything throws.
  exprTbl_ = exprs.get();
  try {
    constraints.reset(new SymbolicDimsConstraints(this));
    constraints_ = constraints.get();
    initialize();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
  } catch (...) {
    exprTbl_ = oldExprs;
    constraints_ = oldConstraints;
    throw;
  }
  exprTbl_ = exprs.release();
  constraints_ = constraints.release();
  displayStrings_.clear();
  delete oldConstraints;
  delete oldExprs;
}

int SymbolicDimsTable::registerSymbolicDims(int value) {
  return tableIdx2SymbDimsId(QL::SymbolicIntValue(*exprTbl_, value).getId(*exprTbl_));
}

int SymbolicDimsTable::registerSymbolicDims(char const* const text, QLBlock const* block) {
  const char* s = text ? text : "";  // null reads as the empty text
  char* end = nullptr;
  const int savedErrno = errno;
  std::strtol(s, &end, 0);
  errno = savedErrno;
  // deliberate: whatever strtol at base 0 takes whole is a number, then read again strictly as decimal, so
  // "0x10", " 5", "" and out-of-range numbers throw std::bad_cast instead of becoming names
  if (end != nullptr && *end == '\0') return registerSymbolicDims(internal::strictDecimal(s));
  return tableIdx2SymbDimsId(QL::SymbolicString(*exprTbl_, s).getId(*exprTbl_));
}

int SymbolicDimsTable::registerSymbolicDims(std::vector<std::string> const& dims, QLBlock const* block) {
  std::vector<unsigned> indexes;
  indexes.reserve(dims.size());
  for (const std::string& d : dims) {
    // Digits only make an integer; a sign makes a name here, unlike in the one-text form.
    if (internal::isDigitsOnly(d))
      indexes.push_back(QL::SymbolicIntValue(*exprTbl_, internal::strictDecimal(d)).getId(*exprTbl_));
    else
      indexes.push_back(QL::SymbolicString(*exprTbl_, d).getId(*exprTbl_));
  }
  return tableIdx2SymbDimsId(QL::SymbolicNDExpr(*exprTbl_, std::move(indexes)).getId(*exprTbl_));
}

int SymbolicDimsTable::registerSymbolicDimsExpr(char const* const text, QLBlock const* block) {
  return tableIdx2SymbDimsId(QL::SymbolicExprParser{*exprTbl_}(text));
}

bool SymbolicDimsTable::isAValidSymbolicDims(char const* text) {
  return text != nullptr && qlIsValidANSICIdentifier(text, true);
}

void SymbolicDimsTable::validateSymbolicDimsExpr(char const* text) {
  if (!isAValidSymbolicDims(text)) qlRaise(qlmsg::general::InvalidDataType, text ? text : "");
}

int SymbolicDimsTable::importSymbolicDims(SymbolicDimsTable const& other, int id) {
  return tableIdx2SymbDimsId(QL::SymbolicExprCopy(*other.exprTbl_, *exprTbl_).copy(symbDimsId2TableIdx(id)));
}

boost::optional<bool> SymbolicDimsTable::equalSymbolicDims(char const* const a, char const* const b) {
  QL::SymbolicExprSimplify simplify(*exprTbl_, kSimplifyLimit);
  const int x = tableIdx2SymbDimsId(simplify.simplify(QL::SymbolicExprParser{*exprTbl_}(a)));
  const int y = tableIdx2SymbDimsId(simplify.simplify(QL::SymbolicExprParser{*exprTbl_}(b)));
  if (constraints_->isEqual(x, y) || constraints_->isEqual(y, x)) return true;
  return boost::none;  // deliberate: never false; not known equal says nothing about being different
}

boost::optional<int> SymbolicDimsTable::getValueOf(int id) const {
  const unsigned index = symbDimsId2TableIdx(id);
  if (index >= getNumSymbolicDimss()) return boost::none;
  const QL::SymbolicExpr& e = getSymbolicExpr(index);
  if (!QL::SymbolicIntValue::isa(e)) return boost::none;
  return static_cast<const QL::SymbolicIntValue&>(e).getValue();
}

SymbolicDims SymbolicDimsTable::getSymbolicDims(int id) const {
  // A handle may build entries, which the table allows through its constant front as well.
  return SymbolicDims(const_cast<SymbolicDimsTable*>(this), id);
}

SymbolicDims SymbolicDimsTable::getSymbolicDims(char const* text) { return SymbolicDimsString(this, text ? text : ""); }

SymbolicDims SymbolicDimsTable::getSymbolicDimsAt(unsigned int index) {
  return SymbolicDims(this, tableIdx2SymbDimsId(index));
}

int SymbolicDimsTable::getSymbolicDimsId(std::string const& text) const {
  if (internal::isDigitsOnly(text))
    return tableIdx2SymbDimsId(QL::SymbolicIntValue(*exprTbl_, internal::strictDecimal(text)).getId(*exprTbl_));
  return tableIdx2SymbDimsId(QL::SymbolicString(*exprTbl_, text).getId(*exprTbl_));
}

unsigned int SymbolicDimsTable::getNumSymbolicDimss() const { return exprTbl_ ? exprTbl_->size() : 0; }

bool SymbolicDimsTable::hasSymbolicDims() const { return getNumSymbolicDimss() > 2; }

bool SymbolicDimsTable::isSymbolicDimsIdValid(int id) const {
  return id >= -1 && std::int64_t{id} <= std::int64_t{getNumSymbolicDimss()} - 2;
}

bool SymbolicDimsTable::isaSymbolicDimension(int id) const {
  return id >= 1 && std::int64_t{id} <= std::int64_t{getNumSymbolicDimss()} - 2;
}

void SymbolicDimsTable::checkSymbolicDimsId(int id) const {
  if (!isSymbolicDimsIdValid(id)) qlRaise(qlmsg::general::InvalidDataTypeId, id);
}

char const* SymbolicDimsTable::getDisplayString(int id) {
  const unsigned index = symbDimsId2TableIdx(id);
  displayStrings_.resize(exprTbl_->size());
  if (index >= displayStrings_.size()) exprTbl_->get(index);  // raises: no entry there
  std::string& slot = displayStrings_[index];
  if (slot.empty()) slot = getSymbolicDims(id).toString();
  return slot.c_str();
}

void SymbolicDimsTable::getSymbolicDimensions(int id, std::vector<std::string>& out) const {
  out.clear();
  if (getNumSymbolicDimss() == 0) return;
  const SymbolicDims dims = getSymbolicDims(id);
  for (unsigned i = 0, n = dims.getNumDimensions(); i < n; ++i) out.push_back(dims.getDimension(i).getExpr());
}

void SymbolicDimsTable::getSymbolicDimsSymbols(int id, std::vector<std::string>& out) const {
  out.clear();
  QL::SymbolicExprSymbols{*exprTbl_}(symbDimsId2TableIdx(id), out);
}

QL::SymbolicExpr const& SymbolicDimsTable::getSymbolicExpr(int id) const {
  return getSymbolicExpr(symbDimsId2TableIdx(id));
}

QL::SymbolicExpr const& SymbolicDimsTable::getSymbolicExpr(unsigned int index) const { return exprTbl_->get(index); }

QL::SymbolicExprTable& SymbolicDimsTable::exprTbl() const { return *exprTbl_; }

void SymbolicDimsTable::print(std::ostream& os) const {
  const unsigned n = getNumSymbolicDimss();
  os << "SymbolicDimsTable\nNumber of SymbolicDimss : " << n << "\n\n";
  for (unsigned i = 2; i < n; ++i) SymbolicDims(const_cast<SymbolicDimsTable*>(this), tableIdx2SymbDimsId(i)).print(os);
  os << '\n';
}

}  // namespace QLTypeSys
