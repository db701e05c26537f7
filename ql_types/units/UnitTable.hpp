// UnitTable: the per-model registry of unit expressions.
//
// A model speaks of units by integer id only. The table turns expression text into ids, keeps one unit
// object per distinct text (a clone of the catalogue's unit, or a unit composed from the expression), and
// answers for ids. Id -1 is "inherit", 0 "unitless", -10 the absence of an id. A failed registration leaves
// the table exactly as it was.
#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/units/UnitBase.hpp"
#include "ql_types/units/UnitNumericInfoForConversions.hpp"

namespace QLTypeSys {

/// The units of one model, by id.
class UnitTable {
 public:
  /// The four text forms composeUnitTexts can give.
  enum TextMode { DisplayText = 0, NameText = 1, SymbolText = 2, AsciiText = 3 };

  /// A table with its two built-ins.
  UnitTable();
  UnitTable(const UnitTable&) = delete;
  UnitTable& operator=(const UnitTable&) = delete;
  virtual ~UnitTable();

  /// Back to the two built-ins; annotated ids are kept, so a later id that repeats one inherits the mark.
  virtual void resetToBuiltin();
  /// registerUnit of the text widened from UTF-8 (null is the empty text).
  virtual int registerUnit(const char* expr);
  /// The id of expr, registering it when new. Raises "AbstractUnitNotInDatabase", "InvalidUnitExpression",
  /// or what resolving a composition raises; the table is then unchanged. Invalid UTF-16 throws
  /// std::out_of_range, as the parser does.
  virtual int registerUnit(const std::wstring& expr);
  /// "UnitTable", the count, and each unit.
  virtual void print(std::ostream& out) const;

  /// registerUnit(expr) into *id and null; or the diagnostic (joined with "UnitErrorFromBlock" when
  /// blockText is not empty) with *id untouched.
  static qlsvDiagnostic RegisterUnit(UnitTable* table, const std::string& blockText, const std::wstring& expr, int* id);

  /// Takes ownership of unit and files it under its id and expr. Raises "InvalidUnitId" (and deletes unit)
  /// when unit is null or its id is taken.
  void addUnit(const std::wstring& expr, UnitBase* unit);
  /// Deletes a unit of this table and drops its entries; a pointer the table does not hold is ignored.
  void removeUnit(const UnitBase* unit);

  UnitBase* getUnit(int id);
  const UnitBase* getUnit(int id) const;
  /// The unit registered under that exact text, or null.
  UnitBase* getUnit(const std::wstring& expr);
  const UnitBase* getUnit(const std::wstring& expr) const;
  /// The id registered under that exact text, or -10.
  int getUnitId(const std::wstring& expr) const;
  /// Raises "InvalidUnitId" with the id when it is not in the table.
  void checkUnitId(int id) const;
  bool isUnitIdValid(int id) const { return units_.count(id) != 0; }
  bool isUnitIdValid_NotInherit(int id) const { return id != -1 && isUnitIdValid(id); }
  int getNumUnits() const { return static_cast<int>(units_.size()); }
  /// The text the id was registered under, or empty.
  std::wstring getUserSpecifiedUnitExpr(int id) const;

  /// 0 for equal ids, 3 for inherit or unitless on both sides, 4 when one side inherits, otherwise the
  /// units' strict comparison. Raises "InvalidUnitId" for an id that is needed and absent.
  UnitComparison equivalentUnits(int a, int b) const;
  /// The scale and offset that take a value in unit from to a value in unit to; raises "InvalidUnitId" or
  /// "UnitsNotConvertible".
  UnitNumericInfoForConversions getConversionInfo(int from, int to) const;

  /// The unit's name, symbol or ASCII symbol; for an annotated id, "@" and the abstract unit's. These
  /// raise "InvalidUnitId" for an id not in the table.
  std::wstring getUnitNameExpr(int id) const;
  std::wstring getUnitSymbolExpr(int id) const;
  std::wstring getUnitAsciiSymbolExpr(int id) const;
  /// The unit's display name; for an annotated id, "<", the abstract unit's display name with "_" as "\_", ">".
  std::wstring getUnitDispExpr(int id) const;

  /// The physical-modelling expression of the unit's symbol; raises "QuillonUnitToPhysModUnitUnknown".
  std::wstring getPhysModUnitForQuillonUnit(int id) const;
  /// Registers the translation of a physical-modelling expression and returns its id.
  int getQuillonUnitForPhysModUnit(const std::wstring& text);

  qlsvDiagnosticImpl* getErrorQueue() const { return errorQueue_; }
  void setErrorQueue(qlsvDiagnosticImpl* queue) { errorQueue_ = queue; }

  /// The diagnostic that explains a comparison result; null for 0, 2 and 4.
  static qlsvDiagnostic errorCause(const UnitComparison& comparison);
  /// "unitless", or a text whose terms the unit database knows; "inherit" is not.
  static bool isAValidUnit(const std::wstring& text);
  /// Raises "InvalidUnitExpression" with text when isAValidUnit is false.
  static void validateUnitExpr(const std::wstring& text);
  static bool isPredefinedUnit(int) { return false; }
  static bool exprOfBaseUnit(const std::wstring&) { return false; }
  static int getBaseUnit(const std::wstring&) { return -10; }
  static std::wstring getExprOfBaseUnit(int) { return std::wstring(); }
  /// 1: the built-ins less one.
  static int getNumBaseUnits();
  /// Each piece of text between "()*/^" replaced by the mode's text of the one unit it names.
  static std::wstring composeUnitTexts(const std::wstring& text, TextMode mode);

 private:
  void initialize();
  /// The largest id plus one, -1 for an empty table; raises "InvalidUnitId" past the int range.
  int nextId() const;
  const UnitBase& unitAt(int id) const;
  /// The abstract unit of a unit, when it has one.
  static const UnitBase* abstractOf(const UnitBase& unit);

  std::map<int, std::unique_ptr<UnitBase>> units_;
  std::unordered_map<std::wstring, int> idsByExpr_;
  std::unordered_set<int> annotatedIds_;
  qlsvDiagnosticImpl* errorQueue_ = nullptr;  // not owned
};

}  // namespace QLTypeSys
