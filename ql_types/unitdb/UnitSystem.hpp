// UnitSystem: a named family of units and prefixes (SI, US customary) that the unit database owns.
#pragma once

#include <iosfwd>
#include <string>

namespace QLTypeSys {

/// A unit system, known by its name alone.
class UnitSystem {
 public:
  /// Any name is accepted.
  explicit UnitSystem(std::wstring name) : name_(std::move(name)) {}
  UnitSystem(const UnitSystem& other) = default;
  UnitSystem& operator=(const UnitSystem&) = delete;
  virtual ~UnitSystem();
  virtual const std::wstring& getName() const;
  /// "Unit System: '<name>'" and a line end.
  virtual void print(std::ostream& out) const;

  /// Letters and digits only; the empty text is valid.
  static bool isValidStringForUnitSystemName(const std::wstring& text);
  /// Whether the unit database holds a unit system of that name.
  static bool isValidUnitSystemName(const std::wstring& name);

 private:
  std::wstring name_;
};

}  // namespace QLTypeSys
