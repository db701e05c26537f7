// PhysModUnitsObserver: translation between the unit expressions of the physical-modelling toolset and ours.
//
// The physical-modelling side announces its units (a name, the expression it is defined by, a scale and an
// offset), possibly before the unit database exists. Once active, the observer sorts each announced name
// into exactly one of: translated (paired with the symbol of a catalogue unit of the same scale and offset),
// incompatible (the catalogue knows the name with another scale or offset) or unknown. The unit database
// also enters fixed pairs while it loads. Expressions are then translated term by term.
#pragma once

#include <boost/core/noncopyable.hpp>
#include <memory>
#include <string>

namespace QLTypeSys {

namespace internal {
class PhysModTables;
}

/// The door through which the physical-modelling toolset announces its units.
class PhysModUnitsObserverInterface {
 public:
  /// Records the announcement; once the observer is active, sorts the name at once.
  void operator()(const std::string& physModUnit, const std::string& baseExpr, double scale, double offset);
};

/// The process-wide translation tables; created on first use.
class PhysModUnitsObserver : private boost::noncopyable {
 public:
  static PhysModUnitsObserver& getObserver();
  ~PhysModUnitsObserver();

  /// Records an announcement (texts as given) and, when active, sorts its name.
  void announce(const std::wstring& physModUnit, const std::wstring& baseExpr, double scale, double offset);
  /// Pairs a physical-modelling symbol with a unit symbol.
  void addTranslation(const std::wstring& physModSymbol, const std::wstring& unitSymbol);
  /// True sorts every announcement in order; false forgets translations and both sets, keeping announcements.
  void setActive(bool active);
  bool isActive() const { return active_; }

  /// Our expression for a physical-modelling one; raises "PhysModUnitIncompatible" or "PhysModUnitUnknown"
  /// with text. A term with no pair and in neither set gives an empty piece.
  std::wstring translateToQuillon(const std::wstring& text) const;
  /// The physical-modelling expression for ours; raises "QuillonUnitToPhysModUnitUnknown" with text.
  std::wstring translateToPhysMod(const std::wstring& text) const;

  /// The unit symbol paired with a physical-modelling name, or empty.
  std::wstring getTranslation(const std::wstring& physModSymbol) const;
  bool isIncompatible(const std::wstring& physModUnit) const;
  bool isUnknown(const std::wstring& physModUnit) const;

  /// Equal within the relative tolerance 1e-05; two zeros are equal, one zero is not.
  static bool nearlyEqual(double a, double b);

 private:
  PhysModUnitsObserver();
  void checkRegistration(const std::wstring& physModUnit, const std::wstring& baseExpr, double scale, double offset);

  std::unique_ptr<internal::PhysModTables> tables_;
  bool active_ = false;
};

}  // namespace QLTypeSys
