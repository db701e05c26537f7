// UnitDatabase: the singleton's life (creation, loading, clearing) and the adding of elements.
#include "ql_types/unitdb/UnitDatabase.hpp"

#include <ostream>

#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/unitdb/internal/CompositeStore.hpp"
#include "ql_types/unitdb/internal/FundamentalUnits.hpp"
#include "ql_types/unitdb/internal/ProvenanceStore.hpp"
#include "ql_types/unitdb/internal/UnitIndex.hpp"
#include "ql_types/units/PhysModUnitsObserver.hpp"

namespace QLTypeSys {

std::unique_ptr<UnitDatabase> UnitDatabase::_unit_database_;
const std::wstring UnitDatabase::unitDBPath = L"/toolbox/quillon/ql_types/ud";

namespace {

UnitDatabase::Loader& loaderSlot() {
  static UnitDatabase::Loader loader = UnitDatabase::packageLoader();
  return loader;
}

}  // namespace

UnitDatabase::UnitDatabase()
    : units_(std::make_unique<internal::UnitIndex<UnitBase>>(false)),
      abstractUnits_(std::make_unique<internal::UnitIndex<UnitBase>>(false)),
      prefixes_(std::make_unique<internal::UnitIndex<UnitPrefix>>(true)),
      provenance_(std::make_unique<internal::ProvenanceStore>()) {}

UnitDatabase::~UnitDatabase() {
  // Composites and the prefix users refer into the indexes: they go first.
  composites_.reset();
  prefixUsers_.clear();
  reciprocals_.clear();
  for (UnitSystem* system : unitSystems_) delete system;
  unitSystems_.clear();
}

UnitDatabase* UnitDatabase::getUnitDatabase() {
  // Each step runs only if its object is missing, so a partly built instance is completed later.
  if (!_unit_database_) _unit_database_.reset(new UnitDatabase());
  UnitDatabase& db = *_unit_database_;
  if (!db.fundamentals_) db.fundamentals_ = std::make_unique<internal::FundamentalUnits>();
  if (!db.composites_) db.composites_ = std::make_unique<internal::CompositeStore>();
  if (!db.loaded_) {
    // Loaded first: the loader's own calls to getUnitDatabase must not start a second load.
    db.loaded_ = true;
    db.runLoader(fl::filesystem::get_install_path() + unitDBPath);
    PhysModUnitsObserver::getObserver().setActive(true);
  }
  return &db;
}

UnitDatabase::Loader UnitDatabase::setLoader(Loader loader) {
  Loader previous = std::move(loaderSlot());
  loaderSlot() = std::move(loader);
  return previous;
}

UnitDatabase::Loader UnitDatabase::packageLoader() {
  return [](UnitDatabase& db, const std::wstring& path) { db.loadUnitDatabase(path); };
}

void UnitDatabase::runLoader(const std::wstring& path) {
  // Copied: a loader may replace itself while it runs.
  Loader loader = loaderSlot();
  if (loader) loader(*this, path);
}

void UnitDatabase::addUnit(const UnitBase& unit) {
  switch (unit.getUnitType()) {
    case 3: {
      const UnitBase& stored = units_->add(unit);
      if (const auto* concrete = dynamic_cast<const Unit*>(&unit))
        for (const UnitPrefix& prefix : concrete->getPrefixes())
          prefixUsers_.emplace(std::cref(prefix), std::cref(stored));
      break;
    }
    case 2:
      abstractUnits_->add(unit);
      break;
    default:
      break;
  }
}

void UnitDatabase::addUnitPrefix(const UnitPrefix& prefix) { prefixes_->add(prefix); }

void UnitDatabase::addUnitSystem(const UnitSystem& system) {
  auto copy = std::make_unique<UnitSystem>(system);
  unitSystems_.push_back(copy.get());
  copy.release();
}

void UnitDatabase::addReciprocalAbstractUnits(const UnitBase& a, const UnitBase& b, const ConversionFactor& factor) {
  std::pair<UnitRef, UnitRef> key(std::cref(a), std::cref(b));
  if (!orderedAbstractPair(a, b, key)) return;
  reciprocals_.insert_or_assign(key, factor);
}

bool UnitDatabase::RefPairLess::operator()(const std::pair<UnitRef, UnitRef>& a,
                                           const std::pair<UnitRef, UnitRef>& b) const {
  const int first = a.first.get().compare(b.first.get());
  return first != 0 ? first < 0 : a.second.get().compare(b.second.get()) < 0;
}

std::size_t UnitDatabase::PrefixHash::operator()(const std::reference_wrapper<const UnitPrefix>& p) const {
  return std::hash<std::wstring>()(p.get().getName());
}

bool UnitDatabase::PrefixEqual::operator()(const std::reference_wrapper<const UnitPrefix>& a,
                                           const std::reference_wrapper<const UnitPrefix>& b) const {
  return a.get().compare(b.get()) == 0;
}

unsigned int UnitDatabase::getNumUnits() const { return static_cast<unsigned int>(units_->size()); }
unsigned int UnitDatabase::getNumAbstractUnits() const { return static_cast<unsigned int>(abstractUnits_->size()); }
unsigned int UnitDatabase::getNumPrefixes() const { return static_cast<unsigned int>(prefixes_->size()); }
unsigned int UnitDatabase::getNumUnitSystems() const { return static_cast<unsigned int>(unitSystems_.size()); }

void UnitDatabase::print(std::ostream& out) const {
  out << "UnitDatabase" << std::endl;
  out << "Number of Units : " << getNumUnits() << std::endl << std::endl << std::endl;
  out << "Number of Abstract Units : " << getNumAbstractUnits() << std::endl << std::endl << std::endl;
  // kept: the unit systems are printed under the abstract units' label, as the tool always has.
  out << "Number of Abstract Units : " << getNumUnitSystems() << std::endl << std::endl << std::endl;
}

void UnitDatabase::clearAllCompositeUnits() {
  if (composites_) composites_->map.clear();
  loaded_ = false;
}

void UnitDatabase::clearAllUnits() {
  provenance_->relation.clear();
  prefixUsers_.clear();
  units_->clear();
  loaded_ = false;
}

void UnitDatabase::clearAllUnitProvenances() {
  provenance_->relation.clear();
  provenance_->provenances.clear();
  loaded_ = false;
}

void UnitDatabase::clearAllAbstractUnits() {
  abstractUnits_->clear();
  loaded_ = false;
}

void UnitDatabase::clearAllPrefixes() {
  prefixes_->clear();
  loaded_ = false;
}

void UnitDatabase::clearAllUnitSystems() {
  for (UnitSystem* system : unitSystems_) delete system;
  unitSystems_.clear();
  loaded_ = false;
}

void UnitDatabase::clearAll() {
  // Composites first: they refer to units and prefixes.
  clearAllCompositeUnits();
  clearAllUnits();
  prefixUsers_.clear();
  clearAllAbstractUnits();
  reciprocals_.clear();
  clearAllPrefixes();
  prefixUsers_.clear();
  clearAllUnitSystems();
  clearAllUnitProvenances();
  PhysModUnitsObserver::getObserver().setActive(false);
  provenance_->partners.clear();
  provenance_->pairCounts.clear();
  loaded_ = false;
}

}  // namespace QLTypeSys
