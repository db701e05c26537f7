// UnitPrefix: a named scale (kilo, micro) that a unit may admit, and UnitPrefixAlias, a second name for one.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "ql_types/units/ConversionFactor.hpp"
#include "ql_types/units/UnitAliasInfo.hpp"

namespace QLTypeSys {

class UnitSystem;

/// A prefix: four texts, a factor and the unit systems it belongs to.
class UnitPrefix {
 public:
  /// Orders references to prefixes by compare.
  struct ConstRefComparator {
    bool operator()(const UnitPrefix& a, const UnitPrefix& b) const { return a.compare(b) < 0; }
  };
  using PrefixSet = std::set<std::reference_wrapper<const UnitPrefix>, ConstRefComparator>;

  UnitPrefix(std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
             ConversionFactor factor);
  UnitPrefix(const UnitPrefix&) = default;
  UnitPrefix& operator=(const UnitPrefix&) = delete;

  virtual ~UnitPrefix();
  virtual const std::vector<UnitSystem*>& getUnitSystems() const;
  /// A heap copy of the same class; the caller owns it.
  virtual UnitPrefix* clone() const;
  virtual bool isAliased() const;

  const std::wstring& getName() const { return name_; }
  const std::wstring& getSymbol() const { return symbol_; }
  const std::wstring& getAsciiSymbol() const { return asciiSymbol_; }
  const std::wstring& getDisplayName() const { return displayName_; }
  const ConversionFactor& getConversionFactor() const { return conversionFactor_; }
  void setName(const std::wstring& name) { name_ = name; }
  void setSymbol(const std::wstring& symbol) { symbol_ = symbol; }
  void setAsciiSymbol(const std::wstring& asciiSymbol) { asciiSymbol_ = asciiSymbol; }
  void addOwnerUnitSystem(UnitSystem* system);
  /// Looks the system up in the unit database; an unknown name is ignored.
  void addOwnerUnitSystem(const std::wstring& systemName);
  /// Does nothing: a prefix has no expression to check.
  void checkValidity() const {}

  /// Name, symbol, ASCII symbol, then (kept: reversed) the factor: the lesser factor sorts after.
  int compare(const UnitPrefix& other) const;
  /// Whether the factors are equal.
  bool equivalent(const UnitPrefix& other) const;
  bool operator==(const UnitPrefix& other) const { return compare(other) == 0; }
  bool operator!=(const UnitPrefix& other) const { return compare(other) != 0; }
  bool operator<(const UnitPrefix& other) const { return compare(other) < 0; }

 private:
  std::wstring name_;
  std::wstring symbol_;
  std::wstring asciiSymbol_;
  std::wstring displayName_;
  ConversionFactor conversionFactor_;
  std::vector<UnitSystem*> unitSystems_;
};

/// A second name for a prefix, with its factor.
class UnitPrefixAlias : public UnitPrefix, public UnitAliasInfo {
 public:
  UnitPrefixAlias(std::wstring name, std::wstring symbol, std::wstring asciiSymbol, std::wstring displayName,
                  const UnitPrefix& aliasedPrefix, bool nameInherited, bool symbolInherited, bool asciiSymbolInherited);
  UnitPrefixAlias* clone() const override;
  bool isAliased() const override;
  bool isNameInherited() const override { return nameInherited_; }
  bool isSymbolInherited() const override { return symbolInherited_; }
  bool isAsciiSymbolInherited() const override { return asciiSymbolInherited_; }
  const UnitPrefix& getAliasedPrefix() const { return aliasedPrefix_; }

 private:
  const UnitPrefix& aliasedPrefix_;
  bool nameInherited_;
  bool symbolInherited_;
  bool asciiSymbolInherited_;
};

}  // namespace QLTypeSys
