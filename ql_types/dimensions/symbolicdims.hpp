// Symbolic dimension values: a signal size that is a name or an expression instead of a number.
//
// A SymbolicDims is a handle of two words on an entry of a SymbolicDimsTable: the table and the entry's id,
// which is the entry's index in the table's expression table minus 1 (-1 "INHERIT", 0 "NOSYMBOLIC", real
// entries from 1). The expression table keeps expressions unique, so two handles are equal exactly when
// their ids are, and the comparison never looks at the tables. The arithmetic builds new entries in the
// left operand's table; nothing here checks ids (SymbolicDimsTable::checkSymbolicDimsId does), and an id
// without an entry raises the expression library's error at the first use.
//
// The table is in SymbolicDimsTable.hpp and the constraint store in SymbolicDimsConstraints.hpp.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace QL {
class SymbolicExprPrinterPredicate;
class SymbolicExprTable;
}  // namespace QL

namespace QLTypeSys {

class SymbolicDimsTable;

/// A symbolic size: a handle on an entry of a SymbolicDimsTable. Copied member by member.
class SymbolicDims {
 public:
  /// A handle on id of table, with no check of the id.
  SymbolicDims(SymbolicDimsTable& table, int id) : table_(&table), id_(id) {}
  /// A handle on id of table, with no check of the id; a null table raises std::invalid_argument at first use.
  SymbolicDims(SymbolicDimsTable* const table, int id) : table_(table), id_(id) {}

  /// The id in the table.
  int getId() const { return id_; }
  /// Whether the ids are equal; the tables are not compared.
  bool operator==(SymbolicDims const& other) const { return id_ == other.id_; }
  /// Whether the ids differ.
  bool operator!=(SymbolicDims const& other) const { return id_ != other.id_; }

  /// The simplified sum; other's id is read in this handle's table.
  SymbolicDims operator+(SymbolicDims const& other) const;
  /// The simplified difference; other's id is read in this handle's table.
  SymbolicDims operator-(SymbolicDims const& other) const;
  /// The simplified product; other's id is read in this handle's table.
  SymbolicDims operator*(SymbolicDims const& other) const;
  /// The simplified quotient; other's id is read in this handle's table.
  SymbolicDims operator/(SymbolicDims const& other) const;
  /// The simplified remainder; other's id is read in this handle's table.
  SymbolicDims operator%(SymbolicDims const& other) const;
  /// The negation, not simplified: the negation of 5 is an entry "-(5)", not the integer -5.
  SymbolicDims operator-() const;

  /// The number of dimensions; 0 for anything not multi-dimensional.
  unsigned int getNumDimensions() const;
  /// Dimension i; a size of 0 dimensions is its own dimension, whatever i is.
  SymbolicDims getDimension(unsigned int i) const;
  /// The product of all dimensions; a size of one dimension or none is returned as it is.
  SymbolicDims getSize() const;
  /// The simplified product of the first n dimensions (dimension 0 alone for n of 0 or 1).
  SymbolicDims getSize(unsigned int n) const;

  /// Same as toString().
  std::string getExpr() const;
  /// The text, with "INHERIT" and "NOSYMBOLIC" empty.
  std::string getExprWithEmptyInherit() const;
  /// The text, names printed as written.
  std::string toString() const;
  /// The text, names printed by predicate.
  std::string toString(QL::SymbolicExprPrinterPredicate const& predicate) const;
  /// Writes "SymbolicDims : '<text>'" and a line end.
  void print(std::ostream& os) const;

 protected:
  /// The table, checked for null.
  SymbolicDimsTable& table() const;
  /// The table's expressions.
  QL::SymbolicExprTable& exprs() const;

 private:
  SymbolicDimsTable* table_;  // not owned
  int id_;
};

/// The entry of an integer.
class SymbolicDimsIntValue : public SymbolicDims {
 public:
  SymbolicDimsIntValue(SymbolicDimsTable& table, int value);
  SymbolicDimsIntValue(SymbolicDimsTable* const table, int value);
};

/// The entry of a name, kept as written.
class SymbolicDimsString : public SymbolicDims {
 public:
  SymbolicDimsString(SymbolicDimsTable& table, std::string const& name);
  SymbolicDimsString(SymbolicDimsTable* const table, std::string const& name);
};

/// The multi-dimensional entry whose dimensions are the given ids.
class SymbolicDimsND : public SymbolicDims {
 public:
  SymbolicDimsND(SymbolicDimsTable& table, std::vector<int> const& ids);
  SymbolicDimsND(SymbolicDimsTable* const table, std::vector<int> const& ids);
};

}  // namespace QLTypeSys
