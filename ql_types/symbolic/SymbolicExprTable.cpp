// The table: entries, their hashes, and the open-addressing index that keeps them unique.
#include "ql_types/symbolic/SymbolicExprTable.hpp"

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/symbolic/internal/Hash.hpp"

namespace QL {

namespace {
constexpr std::size_t kInitialSlots = 64;  // a power of two; the table doubles from here
}

SymbolicExprTable::SymbolicExprTable() : slots_(kInitialSlots, 0) {}

SymbolicExprTable::~SymbolicExprTable() = default;

const SymbolicExpr& SymbolicExprTable::get(unsigned index) const {
  if (index >= entries_.size()) qlRaise(qlmsg::symbolic::SymbolicExprInvalidIndex, index, entries_.size());
  return *entries_[index];
}

std::size_t SymbolicExprTable::hashOf(const SymbolicExpr& expr) const {
  return internal::hashMix(expr.hashFields(), static_cast<std::uint64_t>(expr.getKind()));
}

std::optional<unsigned> SymbolicExprTable::lookup(const SymbolicExpr& expr, std::size_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t s = hash & mask;; s = (s + 1) & mask) {
    const unsigned slot = slots_[s];
    if (slot == 0) return std::nullopt;
    const SymbolicExpr& e = *entries_[slot - 1];
    if (hashes_[slot - 1] == hash && e.getKind() == expr.getKind() && e.sameFields(expr)) return slot - 1;
  }
}

std::optional<unsigned> SymbolicExprTable::find(const SymbolicExpr& expr) const {
  if (expr.table_ == this && expr.index_ != SymbolicExpr::npos) return expr.index_;
  return lookup(expr, hashOf(expr));
}

namespace {

// Room for one more element, growing geometrically, so that the push that follows cannot throw.
template <class V>
void reserveOneMore(V& v) {
  if (v.size() == v.capacity()) v.reserve(v.empty() ? 16 : 2 * v.size());
}

}  // namespace

unsigned SymbolicExprTable::enter(const SymbolicExpr& expr) {
  const std::size_t hash = hashOf(expr);
  if (std::optional<unsigned> found = lookup(expr, hash)) return *found;
  // Everything that can throw comes first: a failure (memory included) leaves the table as it was, since
  // spare capacity and a rehashed index change nothing that can be seen.
  reserveOneMore(entries_);
  reserveOneMore(hashes_);
  // Keep the load at most 1/2: linear probing stays short, and a free slot always ends a probe.
  if ((entries_.size() + 1) * 2 > slots_.size()) grow();
  const unsigned index = static_cast<unsigned>(entries_.size());
  std::unique_ptr<SymbolicExpr> copy = expr.clone();
  copy->table_ = this;
  copy->index_ = index;
  entries_.push_back(std::move(copy));
  hashes_.push_back(hash);
  const std::size_t mask = slots_.size() - 1;
  std::size_t s = hash & mask;
  while (slots_[s] != 0) s = (s + 1) & mask;
  slots_[s] = index + 1;
  return index;
}

void SymbolicExprTable::truncate(unsigned size) noexcept {
  // The entries removed are the latest, and every probe of an earlier entry stops before their slots
  // (it was placed when they were not there), so freeing their slots keeps the index right.
  const std::size_t mask = slots_.size() - 1;
  while (entries_.size() > size) {
    const unsigned last = static_cast<unsigned>(entries_.size() - 1);
    std::size_t s = hashes_[last] & mask;
    while (slots_[s] != last + 1) s = (s + 1) & mask;
    slots_[s] = 0;
    entries_.pop_back();
    hashes_.pop_back();
  }
}

void SymbolicExprTable::grow() {
  std::vector<unsigned> slots(slots_.size() * 2, 0);
  const std::size_t mask = slots.size() - 1;
  for (unsigned i = 0; i < entries_.size(); ++i) {
    std::size_t s = hashes_[i] & mask;
    while (slots[s] != 0) s = (s + 1) & mask;
    slots[s] = i + 1;
  }
  slots_.swap(slots);
}

}  // namespace QL
