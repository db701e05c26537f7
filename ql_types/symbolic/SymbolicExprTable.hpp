// The table that owns symbolic expressions and keeps them unique.
//
// Entries get dense indexes from 0 in the order they are entered and are never removed, so an index
// stays good for the table's life. Uniqueness is hash-consing: each entry's hash is kept beside it and an
// open-addressing index over the entries finds the structurally equal one in expected constant time.
// Since operands are indexes of entries that are themselves unique, structural equality is shallow.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "ql_types/symbolic/SymbolicExpr.hpp"

namespace QL {

/// The expressions of one model: unique, indexed densely from 0, never removed.
class SymbolicExprTable {
 public:
  SymbolicExprTable();
  ~SymbolicExprTable();
  // Entries point back at their table, so a table cannot be copied or moved.
  SymbolicExprTable(const SymbolicExprTable&) = delete;
  SymbolicExprTable& operator=(const SymbolicExprTable&) = delete;

  /// The number of entries.
  unsigned size() const { return static_cast<unsigned>(entries_.size()); }
  /// The entry at index; raises SymbolicExprInvalidIndex when there is none.
  const SymbolicExpr& get(unsigned index) const;
  /// The index of the entry equal to expr, if there is one; enters nothing. The operands of expr must be
  /// indexes of this table.
  std::optional<unsigned> find(const SymbolicExpr& expr) const;

 private:
  friend class SymbolicExpr;
  friend class SymbolicExprParser;

  /// The index of the entry equal to expr, which is built on this table, entering a copy if needed. On a
  /// failure (memory included) the table is as it was.
  unsigned enter(const SymbolicExpr& expr);
  /// Removes the entries from index size on, latest first: the undo of a parse that failed half-way.
  void truncate(unsigned size) noexcept;
  std::size_t hashOf(const SymbolicExpr& expr) const;
  std::optional<unsigned> lookup(const SymbolicExpr& expr, std::size_t hash) const;
  void grow();

  std::vector<std::unique_ptr<SymbolicExpr>> entries_;
  std::vector<std::size_t> hashes_;  // hashes_[i] is the hash of entries_[i]
  std::vector<unsigned> slots_;      // open addressing: entry index + 1, 0 for a free slot
};

}  // namespace QL
