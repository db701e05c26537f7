// UnitAliasInfo: what a second name for a unit or a prefix took from what it names.
#pragma once

namespace QLTypeSys {

/// Which texts an alias inherited; those texts belong to the aliased element, not to the alias.
class UnitAliasInfo {
 public:
  virtual ~UnitAliasInfo() = default;
  virtual bool isNameInherited() const = 0;
  virtual bool isSymbolInherited() const = 0;
  virtual bool isAsciiSymbolInherited() const = 0;
};

}  // namespace QLTypeSys
