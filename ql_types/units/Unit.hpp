// Unit: a way of measuring an abstract unit (metre measures length). CompositeUnit is a prefix applied to
// a unit (kilometre), made by the unit database when a lookup first asks for it; UnitAlias is a second
// name for a unit, sharing its expression, factor and fundamental map.
#pragma once

#include <string>
#include <vector>

#include "ql_types/units/UnitAliasInfo.hpp"
#include "ql_types/units/UnitBase.hpp"
#include "ql_types/units/UnitPrefix.hpp"

namespace QLTypeSys {

class UnitSystem;

/// A concrete unit of an abstract unit, with the prefixes it admits.
class Unit : public UnitBase {
 public:
  Unit(int id, std::wstring name, std::wstring expr, std::wstring symbol, std::wstring asciiSymbol,
       std::wstring displayName, ConversionFactor factor, const UnitBase& abstractUnit);

  UnitType getUnitType() const override;
  Unit* clone() const override;
  bool isCompatibleWith(const UnitBase& other, ExponentUsage usage) const override;
  bool isReciprocalOf(const UnitBase& other) const override;
  UnitComparison equivalentTo(const UnitBase& other, ExponentUsage usage) const override;
  const std::wstring& getFundamentalSymbol(unsigned int index) const override;
  /// A unit of the database (prefixed readings included) or a fundamental one; raises "UnitNotInDatabase".
  const UnitBase& lookupTerm(const std::wstring& name) const override;
  std::string uniqueId() const override;
  void checkDimensionalConsistency(ExponentUsage usage) const override;
  int compareTemplate(const UnitBase& other) const override;
  UnitNumericInfoForConversions conversionInfoTo(const UnitBase& other, ExponentUsage usage, bool flag) const override;

  virtual const UnitBase& getAbstractUnit() const;
  virtual const std::vector<UnitSystem*>& getUnitSystems() const;
  virtual const UnitPrefix::PrefixSet& getPrefixes() const;
  /// Adds the first prefix of that name or symbol in the unit database; silent when there is none.
  virtual void addPrefixByName(const std::wstring& name);
  virtual void addPrefix(const UnitPrefix& prefix);
  virtual bool hasPrefix(const UnitPrefix& prefix) const;
  virtual const std::wstring& getSubUnit() const;
  virtual void setSubUnit(const std::wstring& subUnit);
  virtual void setUnitFlag(bool flag);
  virtual bool getUnitFlag() const;

  void addUnitSystem(UnitSystem* system) { unitSystems_.push_back(system); }

 protected:
  Unit(const Unit&) = default;

 private:
  const UnitBase* abstractUnit_;
  std::vector<UnitSystem*> unitSystems_;
  UnitPrefix::PrefixSet prefixes_;
  std::wstring subUnit_;
  bool unitFlag_ = false;
};

/// A prefix applied to a unit; a prefix standing alone has the dummy unit as its base.
class CompositeUnit : public Unit {
 public:
  /// Texts are the prefix's followed by the unit's; factor the product of the two; base factor the prefix
  /// factor times the unit's base factor.
  CompositeUnit(const UnitPrefix& prefix, const Unit& baseUnit);

  CompositeUnit* clone() const override;
  bool isPrefixOnly() const override;
  bool isPrefixedUnit() const override;
  const ExprMap& getFundamentalUnitsExprAST() const override;
  const std::vector<UnitSystem*>& getUnitSystems() const override;
  const UnitPrefix::PrefixSet& getPrefixes() const override;
  bool hasPrefix(const UnitPrefix& prefix) const override;
  const std::wstring& getSubUnit() const override;
  void setSubUnit(const std::wstring& subUnit) override;
  void setUnitFlag(bool flag) override;
  bool getUnitFlag() const override;

  const UnitPrefix& getPrefix() const { return *prefix_; }
  const Unit& getBaseUnit() const { return *baseUnit_; }

 private:
  const UnitPrefix* prefix_;
  const Unit* baseUnit_;
  bool prefixOnly_;
};

/// A second name for a unit.
class UnitAlias : public Unit, public UnitAliasInfo {
 public:
  UnitAlias(std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
            const Unit& aliasedUnit, bool nameInherited, bool symbolInherited, bool asciiSymbolInherited);

  UnitAlias* clone() const override;
  bool isPrefixOnly() const override;
  bool isPrefixedUnit() const override;
  bool isAliased() const override;
  const ConversionFactor& getInternalBaseConversionFactor() const override;
  const ExprMap& getFundamentalUnitsExprAST() const override;
  const std::vector<UnitSystem*>& getUnitSystems() const override;
  const UnitPrefix::PrefixSet& getPrefixes() const override;
  bool hasPrefix(const UnitPrefix& prefix) const override;
  const std::wstring& getSubUnit() const override;
  void setSubUnit(const std::wstring& subUnit) override;
  void setUnitFlag(bool flag) override;
  bool getUnitFlag() const override;
  bool isNameInherited() const override { return nameInherited_; }
  bool isSymbolInherited() const override { return symbolInherited_; }
  bool isAsciiSymbolInherited() const override { return asciiSymbolInherited_; }

  const Unit& getAliasedUnit() const { return *aliasedUnit_; }

 private:
  const Unit* aliasedUnit_;
  bool nameInherited_;
  bool symbolInherited_;
  bool asciiSymbolInherited_;
};

}  // namespace QLTypeSys
