// UnitDatabase: the one process-wide catalogue of units, abstract units, prefixes and unit systems.
//
// The first getUnitDatabase creates it with its fundamental units and fills it through the loader: by
// default the package loader (loadUnitDatabase, reading <install path>/toolbox/quillon/ql_types/ud);
// setLoader replaces it, e.g. with a test catalogue. Lookups answer every reading of a text: the
// unit stored under that name or symbol, and prefixed readings ("km" is kilo applied to metre when metre
// admits kilo), whose composite units are made on first request and kept. Nothing here takes a lock:
// the first call must happen on one thread, and the whole catalogue belongs to one thread after that.
#pragma once

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ql_types/unitdb/UnitProvenance.hpp"
#include "ql_types/unitdb/UnitSystem.hpp"
#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitBase.hpp"
#include "ql_types/units/UnitPrefix.hpp"

namespace QLTypeSys {

namespace internal {
template <class T>
class UnitIndex;
class FundamentalUnits;
class CompositeStore;
class ProvenanceStore;
}  // namespace internal

/// The catalogue of units; one instance per process, built on first use.
class UnitDatabase : private boost::noncopyable {
 public:
  /// Fills a freshly created (or cleared) catalogue; given the file path the package loader will read.
  using Loader = std::function<void(UnitDatabase& database, const std::wstring& path)>;

  virtual ~UnitDatabase();
  /// "UnitDatabase" and the counts (the third line repeats the abstract units' label, kept as the tool
  /// prints it) with the number of unit systems.
  virtual void print(std::ostream& out) const;

  /// The singleton, created and loaded on first call (and again after clearAll).
  static UnitDatabase* getUnitDatabase();
  /// Replaces the loader that the next load calls and returns the previous one; an empty loader loads nothing.
  static Loader setLoader(Loader loader);
  /// The default loader: reads the package file at the path given (loadUnitDatabase).
  static Loader packageLoader();

  /// Stores a clone of a unit, unit alias or abstract unit. Warns "UnitAlreadyInDatabase" for an equal
  /// element (the first stays); throws "SimilarInstanceThere" when a name or symbol is taken.
  void addUnit(const UnitBase& unit);
  /// Stores a clone of a prefix or prefix alias, by the rules of addUnit.
  void addUnitPrefix(const UnitPrefix& prefix);
  /// Appends a copy; names are not checked for duplicates.
  void addUnitSystem(const UnitSystem& system);
  /// Declares two abstract units (or the abstract units of two units) reciprocal with the given constant.
  /// The pair is kept in the order of compare, ties leaving b first; a second declaration replaces the first.
  void addReciprocalAbstractUnits(const UnitBase& a, const UnitBase& b, const ConversionFactor& factor);

  /// Every unit that text names: stored names and symbols, and prefixed readings through the longest
  /// stored prefix (prefix names with unit names, prefix symbols with unit symbols).
  UnitBase::UnitSet getUnit(const std::wstring& text) const;
  /// getUnit(text) less the units of another abstract unit; the default abstract unit keeps all.
  UnitBase::UnitSet getUnit(const std::wstring& text, const UnitBase& abstractUnit) const;
  /// Abstract units by name and symbol.
  UnitBase::UnitSet getAbstractUnit(const std::wstring& text) const;
  /// Prefixes and prefix aliases by name and symbol.
  UnitPrefix::PrefixSet getUnitPrefix(const std::wstring& text) const;
  /// The first unit system of that name, or null.
  UnitSystem* getUnitSystem(const std::wstring& name) const;
  const std::vector<UnitSystem*>& getAllUnitSystems() const { return unitSystems_; }

  UnitBase::UnitSet getAllUnits() const;
  UnitBase::UnitSet getAllAbstractUnits() const;
  UnitPrefix::PrefixSet getAllPrefixes() const;
  unsigned int getNumUnits() const;
  unsigned int getNumAbstractUnits() const;
  unsigned int getNumPrefixes() const;
  unsigned int getNumUnitSystems() const;

  /// Two units whose abstract units, or two abstract units, that are declared reciprocal.
  bool areUnitsReciprocals(const UnitBase& a, const UnitBase& b) const;
  /// The declared constant of such a pair, the same for both orders, or nothing.
  boost::optional<ConversionFactor> getReciprocalConversionFactor(const UnitBase& a, const UnitBase& b) const;

  /// The symbol of the index-th fundamental abstract unit in the order of compare; from 8 on, the empty text.
  const std::wstring& getFundamentalAbstractUnitSymbol(unsigned int index) const;
  /// The symbol of the index-th fundamental unit in the order of compare; from 8 on, the empty text.
  const std::wstring& getFundamentalUnitSymbol(unsigned int index) const;
  /// Adds the fundamental abstract units (and unitfree) whose symbol, ASCII symbol or name is text.
  void addMatchingFundamentalAbstractUnitToList(const std::wstring& text, UnitBase::UnitSet& set) const;
  /// Adds the fundamental units whose symbol, ASCII symbol or name is text.
  void addMatchingFundamentalUnitToList(const std::wstring& text, UnitBase::UnitSet& set) const;

  /// References to stored provenances.
  using ProvenanceList = std::vector<std::reference_wrapper<const UnitProvenance>>;
  /// References to stored units, in the order they were appended.
  using UnitList = std::vector<std::reference_wrapper<const UnitBase>>;

  /// Stores a provenance under its identifier; an identifier already there keeps its first provenance.
  void addUnitProvenance(UnitProvenance&& provenance);
  /// Enters the pair (unit symbol, provenance identifier) in the provenance relation; a repeated pair is
  /// kept once. The loader calls this for units and aliases.
  void addUnitProvenanceMapping(const std::wstring& unitSymbol, const std::wstring& provenanceID);
  /// The provenance of that identifier: one element, or none.
  ProvenanceList getUnitProvenance(const std::wstring& identifier) const;
  const std::unordered_map<std::wstring, UnitProvenance>& getAllUnitProvenances() const;
  /// Appends the provenances of the unit's symbol (in order of entry), or the provenance "Unknown" when it has none.
  /// Throws std::out_of_range when that is needed and the catalogue holds no "Unknown".
  void appendProvenancesForUnit(const UnitBase& unit, ProvenanceList& out) const;
  /// Inserts the first unit found for each symbol the provenance defines, or the dummy unit when none.
  void appendUnitsForProvenance(const UnitProvenance& provenance, UnitBase::UnitSet& out) const;
  /// Counts, for every ordered pair of distinct fundamental terms of the unit, one more unit holding both.
  void addWhitelistedUnits(const UnitBase& unit);
  /// Appends the partners of the words, the partner seen most often with them last (ties in order of
  /// entry). A partner's weight is the sum of its counts with each word.
  void getWhitelistedUnits(UnitList& out, const std::vector<std::wstring>& words) const;

  /// Empties the catalogue (the fundamental units stay); the next getUnitDatabase loads again. References
  /// into the catalogue from before are invalid afterwards.
  void clearAll();

  /// Where the package file lies below the install path.
  static const std::wstring unitDBPath;

 protected:
  UnitDatabase();
  /// Reads the unit database package at path into the catalogue. Never throws for a bad or incomplete
  /// file: what is wrong is reported as one chain of warnings, and what could be read stays.
  void loadUnitDatabase(const std::wstring& path);

 private:
  using UnitRef = std::reference_wrapper<const UnitBase>;
  struct RefPairLess {
    bool operator()(const std::pair<UnitRef, UnitRef>& a, const std::pair<UnitRef, UnitRef>& b) const;
  };
  struct PrefixHash {
    std::size_t operator()(const std::reference_wrapper<const UnitPrefix>& p) const;
  };
  struct PrefixEqual {
    bool operator()(const std::reference_wrapper<const UnitPrefix>& a,
                    const std::reference_wrapper<const UnitPrefix>& b) const;
  };

  const UnitBase& getCompositeUnit(const UnitPrefix& prefix, const Unit& unit) const;
  void addPrefixedReadings(const std::wstring& text, bool byName, UnitBase::UnitSet& result) const;
  bool orderedAbstractPair(const UnitBase& a, const UnitBase& b, std::pair<UnitRef, UnitRef>& out) const;

  /// Calls the current loader.
  void runLoader(const std::wstring& path);

  void clearAllUnits();
  void clearAllAbstractUnits();
  void clearAllCompositeUnits();
  void clearAllPrefixes();
  void clearAllUnitSystems();
  void clearAllUnitProvenances();

  static std::unique_ptr<UnitDatabase> _unit_database_;

  std::vector<UnitSystem*> unitSystems_;
  std::unordered_multimap<std::reference_wrapper<const UnitPrefix>, UnitRef, PrefixHash, PrefixEqual> prefixUsers_;
  std::unique_ptr<internal::UnitIndex<UnitBase>> units_;
  std::unique_ptr<internal::UnitIndex<UnitBase>> abstractUnits_;
  std::unique_ptr<internal::UnitIndex<UnitPrefix>> prefixes_;
  std::unique_ptr<internal::CompositeStore> composites_;
  std::unique_ptr<internal::FundamentalUnits> fundamentals_;
  std::unique_ptr<internal::ProvenanceStore> provenance_;
  std::map<std::pair<UnitRef, UnitRef>, ConversionFactor, RefPairLess> reciprocals_;
  bool loaded_ = false;
};

}  // namespace QLTypeSys
