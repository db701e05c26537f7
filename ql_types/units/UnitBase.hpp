// UnitBase: what every unit and abstract unit of the catalogue holds, and the order they are kept in.
//
// A unit keeps its defining expression twice in resolved form: the terms as written (unitsInfo) and the
// same expression reduced to fundamental units (fundamentalUnitsExprAST), with one accumulated factor to
// those fundamental units. Both maps are keyed by references to objects the unit database owns and are
// ordered by compare, the total order of units. Resolution (UnitResolution.cpp) fills them; comparison
// and conversion (UnitEquivalence.cpp) read them.
#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ql_types/units/ConversionFactor.hpp"
#include "ql_types/units/Exponent.hpp"
#include "ql_types/units/UnitNumericInfoForConversions.hpp"

namespace QLTypeSys {

class UnitBase;
class UnitSystem;

/// How two exponent maps are compared: 0 compares both counts of every term, anything else net values only.
enum ExponentUsage { StrictExponents = 0, NetExponents = 1 };

/// How two units differ; the integer values are what the rest of the tool stores.
enum UnitComparison {
  UnitsEquivalent = 0,
  UnitsIncompatible = 1,
  AbstractUnitsDiffer = 2,
  UnitlessInvolved = 3,
  InheritInvolved = 4,
  ScalingFactorsDiffer = 5,
  DimensionsDiffer = 6,
  OffsetsDiffer = 7,
  UnitsReciprocal = 8,
};

/// The base of abstract and concrete units; never instantiated on its own.
class UnitBase {
 public:
  /// 1 for UnitBase, 2 for AbstractUnit, 3 for Unit and its subclasses.
  using UnitType = int;

  /// Orders references to units by compare.
  struct ConstRefComparator {
    bool operator()(const UnitBase& a, const UnitBase& b) const { return a.compare(b) < 0; }
  };
  /// A term map: unit to exponent, ordered by compare.
  using ExprMap = std::map<std::reference_wrapper<const UnitBase>, Exponent, ConstRefComparator>;
  /// A set of units, ordered by compare.
  using UnitSet = std::set<std::reference_wrapper<const UnitBase>, ConstRefComparator>;

  UnitBase(const UnitBase&) = default;
  UnitBase& operator=(const UnitBase&) = delete;

  virtual UnitType getUnitType() const;
  /// A heap copy of the same class, maps included; the caller owns it.
  virtual UnitBase* clone() const = 0;
  virtual ~UnitBase();
  virtual void setId(int id);
  virtual int getId() const;
  /// Fills the two term maps and the base factor from expr; raises "ParsingError", "UnitNotInDatabase" or
  /// "AbstractUnitNotInDatabase". On a raise the unit is left as it was. An expr that is not well-formed
  /// UTF-16 throws std::out_of_range, as the parser does.
  virtual void parseExpressionAndGenerateAST();
  virtual bool isPrefixOnly() const;
  virtual bool isPrefixedUnit() const;
  virtual bool isAliased() const;
  /// "Unit : '<expr>'" and a line end.
  virtual void print(std::ostream& out) const;
  /// The factor from this unit to its fundamental units.
  virtual const ConversionFactor& getInternalBaseConversionFactor() const;
  /// The expression reduced to fundamental units.
  virtual const ExprMap& getFundamentalUnitsExprAST() const;
  /// Whether a connection to other is allowed at all.
  virtual bool isCompatibleWith(const UnitBase& other, ExponentUsage usage) const = 0;
  /// Whether the unit database declares the two reciprocal.
  virtual bool isReciprocalOf(const UnitBase& other) const = 0;
  /// How this unit differs from other.
  virtual UnitComparison equivalentTo(const UnitBase& other, ExponentUsage usage) const = 0;
  /// The symbol of the index-th fundamental (abstract) unit in the order of compare.
  virtual const std::wstring& getFundamentalSymbol(unsigned int index) const = 0;
  /// The unit a term of the expression stands for (the first when several match).
  virtual const UnitBase& lookupTerm(const std::wstring& name) const = 0;
  virtual std::string uniqueId() const = 0;
  /// Raises "DimensionallyInconsistent" when the unit does not measure its abstract unit.
  virtual void checkDimensionalConsistency(ExponentUsage usage) const = 0;
  /// The last step of compare, between units of one kind.
  virtual int compareTemplate(const UnitBase& other) const;
  /// The factor that takes a value in this unit to a value in other; raises "UnitsNotConvertible".
  virtual UnitNumericInfoForConversions conversionInfoTo(const UnitBase& other, ExponentUsage usage,
                                                         bool flag) const = 0;

  /// The total order of units: negative, zero or positive.
  int compare(const UnitBase& other) const;
  bool operator==(const UnitBase& other) const { return compare(other) == 0; }
  bool operator!=(const UnitBase& other) const { return compare(other) != 0; }
  bool operator<(const UnitBase& other) const { return compare(other) < 0; }

  const std::wstring& getName() const { return name_; }
  const std::wstring& getSymbol() const { return symbol_; }
  const std::wstring& getAsciiSymbol() const { return asciiSymbol_; }
  const std::wstring& getDisplayName() const { return displayName_; }
  const std::wstring& getExpr() const { return expr_; }
  const std::wstring& getDisplayString() const { return expr_; }
  const ConversionFactor& getConversionFactor() const { return conversionFactor_; }
  bool isConversionAccurate() const { return conversionAccurate_; }
  void setIsConversionAccurate(bool accurate) { conversionAccurate_ = accurate; }
  /// The terms as written.
  const ExprMap& getUnitsInfo() const { return unitsInfo_; }

  /// Whether the fundamental maps of the two are equal under usage.
  bool dimensionallyEquivalentWithUnit(const UnitBase& other, ExponentUsage usage) const;
  /// The conversion from this unit to other (see conversionInfoTo); flag is passed through.
  UnitNumericInfoForConversions getConversionInfo(const UnitBase& other, ExponentUsage usage, bool flag) const;
  /// Raises "AlphaNumericStringOnlyForName" for a bad name (unless skipped), then checks dimensions.
  void checkValidity(bool skipNameCheck, ExponentUsage usage) const;
  /// Adds, for each term, its fundamental map times its exponent to out. Raises "ParsingError" with expr
  /// when a count leaves the 32-bit range (out may then hold part of the terms).
  void getDimensionalExpr(ExprMap& out) const;
  /// Whether the unit can stand in a model of those unit systems: a unit of the catalogue when it has no
  /// systems or shares one; an expression when each of its terms does. Anything but a unit fits.
  bool isUnitCompatibleWithUnitSystems(const std::vector<UnitSystem*>& systems) const;
  /// One line per fundamental term: symbol, "^", net exponent.
  void displayCanonicalForm(std::ostream& out) const;

  /// a.isCompatibleWith(b, usage).
  static bool compatible(const UnitBase& a, const UnitBase& b, ExponentUsage usage);
  /// a.equivalentTo(b, usage).
  static UnitComparison equivalent(const UnitBase& a, const UnitBase& b, ExponentUsage usage);
  /// Whether two term maps are equal under usage; the net rule is deliberately weak (see the source).
  static bool exprMapsEqual(const ExprMap& left, const ExprMap& right, ExponentUsage usage);
  /// unit->uniqueId().
  static std::string getUniqueID(const UnitBase* unit);
  /// Whether type is 1.
  static bool isUnitBase(UnitType type) { return type == 1; }
  /// Letters and digits only (of any script); the empty text passes; bad UTF-16 fails.
  static bool isValidStringForUnitName(const std::wstring& text);
  /// Whether the unit database knows at least one unit of that text.
  static bool isValidUnitName(const std::wstring& text);
  /// Whether text parses and the unit database knows every term; dimensions are not checked.
  static bool isValidUnitExpr(const std::wstring& text);

 protected:
  UnitBase(int id, std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
           std::wstring expr, ConversionFactor factor);

  /// Multiplies the base factor by factor^e; unity or the exponent zero leave it alone.
  void updateBaseConversionFactor(const ConversionFactor& factor, Exponent e);
  /// Adds e to the entry of unit, inserting it if absent (wrapping counts; see addToExprASTChecked).
  static void addToExprAST(ExprMap& map, const UnitBase& unit, Exponent e);
  /// The same; false, and map unchanged, when a count would leave the 32-bit range.
  static bool addToExprASTChecked(ExprMap& map, const UnitBase& unit, Exponent e);

  // The fundamental units hold themselves in their maps; the database builds them through these.
  friend class FundamentalUnitsAccess;
  ExprMap& unitsInfoRef() { return unitsInfo_; }
  ExprMap& fundamentalRef() { return fundamentalUnitsExprAST_; }

 private:
  int id_;
  std::wstring name_;
  std::wstring symbol_;
  std::wstring asciiSymbol_;
  std::wstring reserved_;  // always empty: copied, read by nothing
  std::wstring displayName_;
  std::wstring expr_;
  ConversionFactor conversionFactor_;
  bool conversionAccurate_ = true;
  ExprMap unitsInfo_;
  ExprMap fundamentalUnitsExprAST_;
  ConversionFactor internalBaseConversionFactor_;
};

/// Writes print's text.
std::ostream& operator<<(std::ostream& out, const UnitBase& unit);

}  // namespace QLTypeSys
