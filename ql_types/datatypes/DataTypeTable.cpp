// The data type table: predefined rows, registration, lookups, classification, reset.
#include "ql_types/datatypes/DataTypeTable.hpp"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>

#include "ql_types/datatypes/BuiltinTypes.hpp"
#include "ql_types/datatypes/StructDataType.hpp"
#include "ql_types/datatypes/internal/BuiltinValueFunctions.hpp"
#include "ql_types/datatypes/internal/NameIndex.hpp"
#include "ql_types/platform/Memory.hpp"
#include "ql_types/platform/Text.hpp"

namespace QLTypeSys {

namespace msg = qlmsg::general;

namespace {

// Properties of ids 0 to 8, filled at program start from the one list of built-in types.
const fxpDataTypeProp kBuiltInProperties[kNumBuiltinTypes] = {
#define QL_BUILTIN_PROPERTIES(id, Name, element, text, hostClass) kBuiltinTypes[id].properties,
    QL_BUILTIN_TYPES(QL_BUILTIN_PROPERTIES)
#undef QL_BUILTIN_PROPERTIES
};

struct InternalInfo {
  const char* name;
  int size;
};

constexpr InternalInfo kInternals[5] = {
    {"fcn_call", 0}, {"integer", 4}, {"pointer", 4}, {"action", 8}, {"timer_uint32_pair", 8},
};

// Process-wide rows: "auto" and ids 0-8 in one array (index id + 1), ids 9-13 in another.
struct Rows {
  BuiltInDataType builtIn[10];
  BuiltInDataType internal[5];
};

Rows& rows() {
  static Rows r;
  return r;
}

bool rowsInitialized = false;  // a plain flag: the first use must happen on one thread

}  // namespace

void DataTypeTable::initializeBuiltInDataTypes() {
  if (rowsInitialized) return;
  rowsInitialized = true;
  Rows& r = rows();
  for (int id = 0; id < kNumBuiltinTypes; ++id) {
    BuiltInDataType& row = r.builtIn[id + 1];
    row.size_ = kBuiltinTypes[id].size;
    row.storageId_ = id;
    row.groundHasNonZeroStoredValue_ = false;
    const internal::BuiltinValueFunctions& f = internal::builtinValueFunctions(id);
    row.convertBetweenFcn_ = f.convertBetween;
    row.isPositiveFcn_ = f.isPositive;
    row.isNegativeFcn_ = f.isNegative;
    row.greaterThanFcn_ = f.greaterThan;
    row.greaterEqualFcn_ = f.greaterEqual;
  }
  // The copy shares no buffer: an AutoDataType owns none.
  r.builtIn[0] = AutoDataType();
  for (int i = 0; i < 5; ++i) {
    BuiltInDataType& row = r.internal[i];
    row.size_ = kInternals[i].size;
    row.storageId_ = kNumBuiltinTypes + i;
  }
}

const DataType& DataTypeTable::builtInRow(int id) {
  initializeBuiltInDataTypes();
  return id < kNumBuiltinTypes ? rows().builtIn[id + 1] : rows().internal[id - kNumBuiltinTypes];
}

DataTypeNameIndexHandle::DataTypeNameIndexHandle() : index_(std::make_unique<internal::NameIndex>()) {}
DataTypeNameIndexHandle::DataTypeNameIndexHandle(const DataTypeNameIndexHandle& other)
    : index_(std::make_unique<internal::NameIndex>(*other.index_)) {}
DataTypeNameIndexHandle& DataTypeNameIndexHandle::operator=(const DataTypeNameIndexHandle& other) {
  if (this != &other) *index_ = *other.index_;
  return *this;
}
DataTypeNameIndexHandle::~DataTypeNameIndexHandle() = default;

void DataTypeTable::indexInsert(std::size_t position) { nameIndex_->insert(types_, position); }
void DataTypeTable::indexErase(std::size_t position) { nameIndex_->erase(types_, position); }
void DataTypeTable::rebuildNameIndex() { nameIndex_->rebuild(types_); }

DataTypeTable::DataTypeTable() {
  access_ = static_cast<_qlDataTypeAccess_tag*>(utCalloc(1, sizeof(_qlDataTypeAccess_tag)));
  if (!access_) throw std::bad_alloc();
  access_->table = this;
  try {
    initialize();
  } catch (...) {
    for (DataType* t : types_) delete t;
    utFree(access_);
    throw;
  }
}

void DataTypeTable::initialize() {
  initializeBuiltInDataTypes();
  registerDataType("auto", DataTypeSourceBuiltIn, nullptr);
  for (const BuiltinTypeTraits& b : kBuiltinTypes) registerDataType(b.name, DataTypeSourceBuiltIn, nullptr);
  for (const InternalInfo& i : kInternals) registerDataType(i.name, DataTypeSourceInternal, nullptr);
  const double zeroDouble = 0.0;
  const float zeroSingle = 0.0f;
  getDataType(0)->setGround(&zeroDouble);
  getDataType(1)->setGround(&zeroSingle);
}

DataTypeTable::~DataTypeTable() {
  for (DataType* t : types_) delete t;
  utFree(access_);
}

void DataTypeTable::resetToBuiltin() {
  for (std::size_t i = 0; i < 15 && i < types_.size(); ++i) {
    types_[i]->cgType_ = nullptr;
    types_[i]->targetToHostFcn_ = nullptr;
    types_[i]->hostToTargetFcn_ = nullptr;
  }
  anonymousCounter_ = 0;
  licensedForAliasTypes_ = LicensedForAliasTypesNotChecked;
  while (types_.size() > 15) {
    indexErase(types_.size() - 1);
    delete types_.back();
    types_.pop_back();
  }
  if (callback_) callback_->tableReset();
}

int DataTypeTable::registerDataType(const char* name, DataTypeSource source, const char* blockPath) {
  validateDataTypeName(name);
  DataType* previous = getDataType(name);
  if (previous && isDataTypeIdValid(previous->getId()) && shortCircuitRegistration(source)) {
    verifyDataTypeSourcesMatch(source, previous->getId());
    return previous->getId();
  }
  // Position decides what a registration makes, not the name.
  const int id = getNumDataTypes() - 1;
  std::unique_ptr<DataType> type;
  if (id == -1) {
    type = std::make_unique<AutoDataType>();
    registerBuiltInDataType(type.get(), -1);
  } else if (isBuiltinTypeId(id)) {
    type = std::make_unique<BuiltInDataType>(id, name, source);
    registerBuiltInDataType(type.get(), id);
  } else if (id <= 13) {
    type = std::make_unique<BuiltInDataType>(id, name, source);
    registerInternalExtraDataType(type.get(), id);
  } else {
    type = std::make_unique<DataType>(id, name, source);
    int bits = 0;
    if (isInstrinsicFixptName(name, &bits)) {
      type->setType(DataTypeQualifierFixpt);
      type->setIsAliasToLocked(true);
      initializeFixptDataTypeAtomicity(type.get(), bits);
    }
  }
  return finishRegistration(type.release(), previous, blockPath);
}

int DataTypeTable::registerStructDataType(const char* name, DataTypeSource source, const char* blockPath) {
  validateDataTypeName(name);
  DataType* previous = getDataType(name);
  if (previous && isDataTypeIdValid(previous->getId()) && shortCircuitRegistration(source)) {
    verifyDataTypeSourcesMatch(source, previous->getId());
    return previous->getId();
  }
  auto* type = new StructDataType(getNumDataTypes() - 1, name, source);
  return finishRegistration(type, previous, blockPath);
}

int DataTypeTable::finishRegistration(DataType* type, DataType* previous, const char* blockPath) {
  try {
    addDataType(type);
  } catch (...) {
    delete type;
    throw;
  }
  if (callback_) {
    try {
      callback_->dataTypeRegistered(type, blockPath);
    } catch (...) {
      removeDataType(type);
      throw;
    }
  }
  if (previous) replaceDataType(previous, type);
  return type->getId();
}

bool DataTypeTable::shortCircuitRegistration(DataTypeSource) { return true; }
BDErrorValue DataTypeTable::getParameterUnderflowDiagnostic() const { return BDErrorValueWarning; }
BDErrorValue DataTypeTable::getParameterOverflowDiagnostic() const { return BDErrorValueWarning; }
BDErrorValue DataTypeTable::getParameterPrecisionLossDiagnostic() const { return BDErrorValueWarning; }
BDErrorValue DataTypeTable::getFixptConstUnderflowDiagnostic() const { return BDErrorValueNone; }
BDErrorValue DataTypeTable::getFixptConstOverflowDiagnostic() const { return BDErrorValueNone; }
BDErrorValue DataTypeTable::getFixptConstPrecisionLossDiagnostic() const { return BDErrorValueNone; }
BDErrorValue DataTypeTable::getDataOverflowDiagnostic() const { return BDErrorValueWarning; }
BDErrorValue DataTypeTable::getDataSaturationDiagnostic() const { return BDErrorValueWarning; }
FxpUseDivisionForNetSlopeComputation DataTypeTable::getUseIntDivNetSlopeOpt() const {
  return FxpUseDivisionForNetSlopeComputationOff;
}

void DataTypeTable::print(std::ostream& os) const {
  os << "DataTypeTable" << std::endl;
  os << "Number of DataTypes : " << getNumDataTypes() << std::endl;
  os << std::endl;
  for (const DataType* t : types_) os << *t;
  os << std::endl;
}

const void* DataTypeTable::getDataTypeProperties(const char*, int id) const {
  return getDataTypeAliasedThruTo(id)->getProperties();
}

const char* DataTypeTable::getEnumTypeStringFromValue(int, int) const { return nullptr; }

void DataTypeTable::copyRowFields(DataType* type, const DataType& row) {
  type->size_ = row.size_;
  type->storageId_ = row.storageId_;
  type->idAliasedToForTesting_ = row.idAliasedToForTesting_;
  type->convertBetweenFcn_ = row.convertBetweenFcn_;
  type->isPositiveFcn_ = row.isPositiveFcn_;
  type->isNegativeFcn_ = row.isNegativeFcn_;
  type->greaterThanFcn_ = row.greaterThanFcn_;
  type->greaterEqualFcn_ = row.greaterEqualFcn_;
}

void DataTypeTable::registerBuiltInDataType(DataType* type, int id) {
  const DataType& row = builtInRow(id);
  copyRowFields(type, row);
  type->groundHasNonZeroStoredValue_ = row.groundHasNonZeroStoredValue_;
  type->ground_ = static_cast<unsigned char*>(utCalloc(2, static_cast<std::size_t>(type->size_)));
  if (!type->ground_) qlRaise(msg::MemoryAllocErr);
  type->defaultGround_ = true;
  if (id != -1) {
    type->properties_ = utMalloc(sizeof(fxpDataTypeProp));
    if (!type->properties_) qlRaise(msg::MemoryAllocErr);
    std::memcpy(type->properties_, &kBuiltInProperties[id], sizeof(fxpDataTypeProp));
    type->propertiesSize_ = static_cast<int>(sizeof(fxpDataTypeProp));
  }
  // The row's isAtomic is not copied: every built-in starts non-atomic.
  type->setIsAliasToLocked(true);
}

void DataTypeTable::registerInternalExtraDataType(DataType* type, int id) {
  copyRowFields(type, builtInRow(id));
  type->ground_ = static_cast<unsigned char*>(utCalloc(2, static_cast<std::size_t>(type->size_)));
  if (!type->ground_ && type->size_ > 0) qlRaise(msg::MemoryAllocErr);
  type->setDefaultGround(true);
  type->setIsAliasToLocked(true);
  type->setType(DataTypeQualifierInternal);
}

qlsvDiagnostic DataTypeTable::RegisterDataType(DataTypeTable* table, const char* blockPath, const char* name,
                                               DataTypeSource source, int* idOut) {
  try {
    *idOut = table->registerDataType(name, source, blockPath);
    return nullptr;
  } catch (const fl::except::IException& e) {
    qlsvDiagnostic diag = qlsvCreateDiagnosticFromIException(e, true);
    if (blockPath && *blockPath)
      diag =
          qlsvConcatenateDiagnostics(std::move(diag), qlMakeDiagnostic(msg::DataTypeErrorFromBlock, blockPath), true);
    return diag;
  }
}

DataType* DataTypeTable::getDataType(const char* name) {
  const std::size_t position = nameIndex_->find(types_, name ? name : "");
  return position == internal::NameIndex::npos ? nullptr : types_[position];
}

void DataTypeTable::addDataType(DataType* type) {
  types_.push_back(type);
  try {
    indexInsert(types_.size() - 1);
  } catch (...) {
    types_.pop_back();
    throw;
  }
}

const DataType* DataTypeTable::getDataType(const char* name) const {
  return const_cast<DataTypeTable*>(this)->getDataType(name);
}

int DataTypeTable::getDataTypeId(const char* name) const {
  const DataType* t = getDataType(name);
  return t ? t->getId() : -10;
}

void DataTypeTable::checkDataTypeId(int id) const {
  if (!isDataTypeIdValid(id)) qlRaise(msg::InvalidDataTypeId, id);
}

int DataTypeTable::getBuiltInDataTypeSize(int id) {
  initializeBuiltInDataTypes();
  return rows().builtIn[id + 1].getSize();
}

const fxpDataTypeProp* DataTypeTable::getBuiltinDataTypeProperties(int id) { return &kBuiltInProperties[id]; }

const char* DataTypeTable::getNameOfBuiltInDataType(int id) {
  return isBuiltinTypeId(id) ? kBuiltinTypes[id].name : nullptr;
}

int DataTypeTable::getBuiltInDataType(const char* name) {
  if (!name) return -10;
  for (int id = 0; id < kNumBuiltinTypes; ++id)
    if (std::strcmp(name, kBuiltinTypes[id].name) == 0) return id;
  return -10;
}

int DataTypeTable::getBuiltInDataType(const std::wstring& name) {
  for (int id = 0; id < kNumBuiltinTypes; ++id) {
    const char* n = kBuiltinTypes[id].name;
    if (name == std::wstring(n, n + std::strlen(n))) return id;
  }
  return -10;
}

bool DataTypeTable::isAValidDataType(const char* name) { return name && qlIsValidANSICIdentifier(name, true); }

bool DataTypeTable::isInstrinsicFixptName(const char* name, int* bits) {
  if (!name || std::strlen(name) <= 4) return false;
  const bool prefix = std::strncmp(name, "sfix", 4) == 0 || std::strncmp(name, "ufix", 4) == 0 ||
                      (std::strncmp(name, "flt", 3) == 0 && (name[3] == 's' || name[3] == 'u'));
  if (!prefix || !(name[4] >= '0' && name[4] <= '9')) return false;
  if (std::strstr(name + 4, "sfcn") || std::strstr(name + 4, "_OBS")) return false;
  // The width is read as atoi would, but checked: a width past the int range makes no intrinsic name.
  long long width = 0;
  for (const char* p = name + 4; *p >= '0' && *p <= '9'; ++p) {
    width = width * 10 + (*p - '0');
    if (width > INT_MAX) return false;
  }
  if (bits) *bits = static_cast<int>(width);
  return true;
}

void DataTypeTable::initializeFixptDataTypeAtomicity(DataType* type, int bits) {
  if (!type->getIsType(DataTypeQualifierFixpt)) return;
  bool atomic = false;
  if (bits == 8)
    atomic = getDataType(2)->isAtomic();
  else if (bits == 16)
    atomic = getDataType(4)->isAtomic();
  else if (bits == 32)
    atomic = getDataType(6)->isAtomic();
  else
    for (int size : largeAtomicIntSizes_) atomic = atomic || size == bits;
  type->setIsAtomic(atomic);
}

void DataTypeTable::validateDataTypeName(const char* name) {
  if (!name || !qlIsValidANSICIdentifier(name, true)) qlRaise(msg::InvalidDataType, name ? name : "");
}

void DataTypeTable::verifyDataTypeSourcesMatch(DataTypeSource source, int id) {
  if (source == DataTypeSourceAny) return;
  const DataType* t = getDataType(id);
  if (t->getDataTypeSource() != source) qlRaise(msg::DataType_SameNameAsExistingType, t->getName());
}

void DataTypeTable::removeDataType(DataType* type) {
  for (std::size_t i = types_.size(); i-- > 0;) {
    if (types_[i] != type) continue;
    const bool last = i + 1 == types_.size();
    if (last) indexErase(i);
    types_.erase(types_.begin() + static_cast<std::ptrdiff_t>(i));
    delete type;
    if (!last) rebuildNameIndex();  // later positions moved down
    return;
  }
}

void DataTypeTable::replaceDataType(DataType* oldType, DataType* newType) {
  const int oldId = oldType->getId();
  const auto position = static_cast<std::size_t>(oldId + 1);
  indexErase(position);
  types_[position] = newType;
  indexInsert(position);
  for (DataType* t : types_) {
    if (t->getIdAliasedTo() == -10) continue;
    if (t->getIdAliasedTo() == oldId) t->updateAliasedToType(newType);
    if (t->getIdAliasedThruTo() == oldId) t->updateAliasedThruToType(newType);
  }
  newType->id_ = oldId;
  newType->storageId_ = oldType->storageId_;
  indexErase(types_.size() - 1);
  types_.pop_back();
  delete oldType;
}

// --- classification -----------------------------------------------------------------------

bool DataTypeTable::IsDataTypeNumericNonBoolean(int id) const {
  if (id == -10) return false;
  const DataType* t = getDataTypeAliasedThruTo(id);
  const int thru = t->getId();
  if (thru == -1) return true;  // "auto" counts as numeric
  if (isBuiltinTypeId(thru)) return !kBuiltinTypes[thru].isBoolean;
  return t->getIsType(DataTypeQualifierFixpt);
}

bool DataTypeTable::IsDataTypeNumericOrBoolean(int id) const {
  if (id == -10) return false;
  const DataType* t = getDataTypeAliasedThruTo(id);
  return checkForBuiltInDataType(t->getId()) || t->getIsType(DataTypeQualifierFixpt);
}

bool DataTypeTable::IsFixptDataType(int id) const {
  return id != -10 && getDataTypeAliasedThruTo(id)->getIsType(DataTypeQualifierFixpt);
}

bool DataTypeTable::IsFixptDTNotScaledDouble(int id) const {
  if (id == -10) return false;
  const DataType* t = getDataTypeAliasedThruTo(id);
  return t->getIsType(DataTypeQualifierFixpt) && t->getName().compare(0, 3, "flt") != 0;
}

bool DataTypeTable::IsStructType(int id) const {
  return id != -1 && id != -10 && getDataTypeAliasedThruTo(id)->getIsType(DataTypeQualifierStruct);
}

bool DataTypeTable::isEnumType(int id) const {
  return id != -1 && id != -10 && getDataTypeAliasedThruTo(id)->getIsType(DataTypeQualifierEnum);
}

int DataTypeTable::getDataTypeLoggingId(int id) const {
  if (checkForBuiltInDataType(id)) return id;
  if (id == -10) return 0;
  if (getDataTypeAliasedThruTo(id)->getIsType(DataTypeQualifierEnum)) return getDataType(id)->getStorageId();
  return 0;  // aliases, fixed-point and structure types all log as "double"
}

const char* DataTypeTable::generateAnonymousTypeName() {
  std::snprintf(anonymousName_, sizeof anonymousName_, "rtt_%d", anonymousCounter_);
  ++anonymousCounter_;
  return anonymousName_;
}

}  // namespace QLTypeSys

int DAGetNumQLDataTypes() { return 14; }
