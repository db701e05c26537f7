// SymbolicDimsTable: the registry of one model's symbolic dimensions.
//
// It turns the texts, numbers and expressions of a model into small integer ids, answers questions about
// them, and is the front of the constraint store. An id is an index of the expression table minus 1: -1 is
// "INHERIT", 0 is "NOSYMBOLIC", and every other entry (sub-expressions too) has an id from 1 up. Entries
// are unique, so comparing sizes comes down to comparing ids. Not thread-safe.
//
// Copies are member by member and share the expressions and the store, so only one of them may be
// destroyed; resetToBuiltin invalidates every id held from before.
#pragma once

#include <boost/function/function_fwd.hpp>
#include <boost/optional/optional.hpp>
#include <iosfwd>
#include <string>
#include <vector>

#include "ql_types/dimensions/SymbolicDimsConstraints.hpp"
#include "ql_types/dimensions/symbolicdims.hpp"

class qlsvDiagnosticImpl;

namespace QL {
class SymbolicExpr;
class SymbolicExprTable;
}  // namespace QL

namespace QLTypeSys {

class SymbolicDimsTable {
 public:
  /// A table with the two built-ins.
  SymbolicDimsTable();
  // Member-wise: the copy shares the expressions and the store; destroy only one.
  SymbolicDimsTable(SymbolicDimsTable const&) = default;
  SymbolicDimsTable& operator=(SymbolicDimsTable const&) = default;

 private:
  /// The block that block stands for; a derived table may map blocks. The base returns its argument.
  virtual QLBlock const* getOriginalBlock(QLBlock const* block) const;

 public:
  virtual ~SymbolicDimsTable();
  /// Back to the two built-ins, with a new expression table and an empty store. On a failure (memory
  /// included) the table is left as it was.
  virtual void resetToBuiltin();
  /// A multi-dimensional size: digits-only elements are integers, anything else (signs too) a name. The
  /// block is ignored. Throws std::bad_cast for a digits-only element out of range.
  virtual int registerSymbolicDims(std::vector<std::string> const& dims, QLBlock const* block);
  /// A number (whatever strtol reads whole at base 0) or else a name, unchecked. The block is ignored. A
  /// number that is not plain decimal ("0x10", " 5", "", out of range) throws std::bad_cast.
  virtual int registerSymbolicDims(char const* const text, QLBlock const* block);
  /// An expression text, entered as parsed; parse errors of "QL:symbolic" pass through. The block is ignored.
  virtual int registerSymbolicDimsExpr(char const* const text, QLBlock const* block);

  /// The entry of an integer.
  int registerSymbolicDims(int value);

  /// Whether text can name a dimension: an identifier of letters, digits and underscores.
  static bool isAValidSymbolicDims(char const* text);

  /// The id in this table of the entry id of other, copied with all its parts.
  int importSymbolicDims(SymbolicDimsTable const& other, int id);
  /// True if the two expression texts are known equal, else empty: never false, as not being known equal
  /// says nothing about being different.
  boost::optional<bool> equalSymbolicDims(char const* const a, char const* const b);
  /// The integer of id, if its entry is an integer; empty too for an id without an entry.
  boost::optional<int> getValueOf(int id) const;

  /// A handle on id, with no check.
  SymbolicDims getSymbolicDims(int id) const;
  /// The same; it makes getSymbolicDims(0) on a table that is not constant mean id 0, not a null name.
  SymbolicDims getSymbolicDims(int id) { return static_cast<SymbolicDimsTable const&>(*this).getSymbolicDims(id); }
  /// A handle on the name text (never a number), entered if new.
  SymbolicDims getSymbolicDims(char const* text);
  /// A handle on the entry at a table index.
  SymbolicDims getSymbolicDimsAt(unsigned int index);
  /// The id of a number (digits only) or a name, entered if new although the table is constant.
  int getSymbolicDimsId(std::string const& text) const;
  /// The number of entries, built-ins included.
  unsigned int getNumSymbolicDimss() const;
  /// Whether there are entries besides the two built-ins.
  bool hasSymbolicDims() const;
  /// Whether id is -1 or above and has an entry.
  bool isSymbolicDimsIdValid(int id) const;
  /// Whether id is a real entry: 1 or above, with an entry.
  bool isaSymbolicDimension(int id) const;
  /// Raises InvalidDataTypeId of "QuillonTypes:general" unless isSymbolicDimsIdValid(id).
  void checkSymbolicDimsId(int id) const;

  /// The text of id, cached; the pointer stays good until an entry is added and this is called again.
  char const* getDisplayString(int id);
  /// One text per dimension of id into out (nothing for a size of 0 dimensions).
  void getSymbolicDimensions(int id, std::vector<std::string>& out) const;
  /// The names that occur in id into out, each once, in order of appearance.
  void getSymbolicDimsSymbols(int id, std::vector<std::string>& out) const;
  /// The expression of id.
  QL::SymbolicExpr const& getSymbolicExpr(int id) const;
  /// The expressions of this table.
  QL::SymbolicExprTable& exprTbl() const;

  qlsvDiagnosticImpl* getErrorQueue() const { return errorQueue_; }
  void setErrorQueue(qlsvDiagnosticImpl* const queue) { errorQueue_ = queue; }

  /// Writes the size and every entry after the built-ins.
  void print(std::ostream& os) const;

  /// The table index of an id: id + 1.
  static unsigned int symbDimsId2TableIdx(int id) { return static_cast<unsigned int>(id) + 1u; }
  /// The id of a table index: index - 1.
  static int tableIdx2SymbDimsId(unsigned int index) { return static_cast<int>(index - 1u); }

  // Constraints. The add operations drop a fact silently when an id is not a real entry (the built-ins
  // included), and record it under getOriginalBlock(block).

  /// id equals value.
  void addEqualConstraint(int id, int value, QLBlock const* block);
  /// a equals b.
  void addEqualRelation(int a, int b, QLBlock const* block);
  /// id is greater than value.
  void addGreaterThanConstraint(int id, int value, QLBlock const* block);
  /// a is greater than b.
  void addGreaterThanRelation(int a, int b, QLBlock const* block);
  /// id is less than value.
  void addLessThanConstraint(int id, int value, QLBlock const* block);
  /// id lies between min and max.
  void addRange(int id, int min, int max, QLBlock const* const block);
  /// The known bounds of id.
  SymbDimsRange getRange(int id) const;
  /// Whether a and b are known equal.
  bool hasEqualRelation(int a, int b) const;
  /// Whether a is known greater than b.
  bool hasGreaterThanRelation(int a, int b) const;
  /// Whether id is known to be exactly value.
  bool hasEqualConstraint(int id, int value) const;
  /// Whether id is known greater than value.
  bool hasGreaterThanConstraint(int id, int value) const;
  /// Whether id is known less than value.
  bool hasLessThanConstraint(int id, int value) const;
  /// See SymbolicDimsConstraints.
  void getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  void getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const;
  void getSymbolicDimsConstraints(std::vector<int>& out) const;
  void getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const;
  void getSymbolicDimsConstraints(QLBlock const* const block, std::vector<int>& out) const;
  void getSymbolicDimsConstraints(QLBlock const* const block,
                                  boost::function<QLBlock const*(QLBlock const*)> const& original,
                                  std::vector<int>& out) const;

 protected:
  /// Raises InvalidDataType of "QuillonTypes:general" unless isAValidSymbolicDims(text).
  static void validateSymbolicDimsExpr(char const* text);

 private:
  /// Registers "INHERIT" and "NOSYMBOLIC", in that order, so that their ids are -1 and 0.
  void initialize();
  QL::SymbolicExpr const& getSymbolicExpr(unsigned int index) const;

  qlsvDiagnosticImpl* errorQueue_ = nullptr;
  QL::SymbolicExprTable* exprTbl_;                  // owned (shared with copies)
  SymbolicDimsConstraints* constraints_ = nullptr;  // owned (shared with copies)
  std::vector<std::string> displayStrings_;         // one slot per entry, empty until asked for
};

namespace SymbolicDimsServices::Const {

/// The output size of a constant from the dimension texts of its parameter. Nothing happens without texts.
/// Otherwise, without asVector the id is that of the multi-dimensional size of the texts; with asVector
/// there must be two texts, one of them "1", and the id is that of the other one (a row or column of one
/// size is that size), else InvalidSymbolicDimensionSpec is raised.
void ComputeOutput(SymbolicDimsTable& table, QLBlock const* block, std::vector<std::string> const& dims, int& outputId,
                   bool asVector);

}  // namespace SymbolicDimsServices::Const

}  // namespace QLTypeSys
