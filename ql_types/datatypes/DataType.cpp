// Data type objects and their set-once rules.
#include "ql_types/datatypes/DataType.hpp"

#include <cstring>
#include <ostream>

#include "ql_types/datatypes/BuiltinTypes.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/HostArray.hpp"
#include "ql_types/platform/Memory.hpp"

namespace QLTypeSys {

namespace msg = qlmsg::general;

DataType::DataType(int id, const std::string& name, DataTypeSource source)
    : id_(id), name_(name), source_(source), storageId_(id) {}

DataType::~DataType() {
  utFree(ground_);
  utFree(properties_);
  qxDestroyArray(interface_);
  name_.clear();
}

int DataType::getId() const { return id_; }
const std::string& DataType::getName() const { return name_; }
DataTypeSource DataType::getDataTypeSource() const { return source_; }
int DataType::getSize() const { return size_; }

void DataType::setSize(int n) {
  const int old = size_;
  if (old != -1 && old != n && getId() != 8) qlRaise(msg::CannotModifyDataTypeSize, name_, old);
  if (n <= 0) qlRaise(msg::InvalidDataTypeSize, name_, n);
  if (old == -1 || old != n) {
    // The new ground comes first, so that running out of memory leaves size and ground as they were.
    auto* ground = static_cast<unsigned char*>(utCalloc(2, static_cast<std::size_t>(n)));
    if (!ground) qlRaise(msg::MemoryAllocErr);
    // Only boolean gets here with a ground already there.
    utFree(ground_);
    ground_ = ground;
  }
  size_ = n;
  // Kept on purpose: repeating the size marks the ground default again and reopens setGround.
  setDefaultGround(true);
  setIsAliasToLocked(true);
}

void DataType::setAliasedToLocked(bool locked) { aliasedToLocked_ = locked; }
bool DataType::getAliasedToLocked() const { return aliasedToLocked_; }

DataTypeConvertBetweenFcn DataType::getConvertBetweenFcn() const { return convertBetweenFcn_; }
DataTypeIsPositiveFcn DataType::getIsPositiveFcn() const { return isPositiveFcn_; }
DataTypeIsNegativeFcn DataType::getIsNegativeFcn() const { return isNegativeFcn_; }
DataTypeGreaterThanFcn DataType::getGreaterThanFcn() const { return greaterThanFcn_; }
DataTypeGreaterEqualFcn DataType::getGreaterEqualFcn() const { return greaterEqualFcn_; }

namespace {
// The family rule of the five value-function setters.
template <class Fcn, int A, int B>
void setOnce(DataType& type, Fcn& slot, Fcn fcn, const resource_core::MsgKey<A>& aliasKey,
             const resource_core::MsgKey<B>& inconsistentKey) {
  if (type.getIdAliasedTo() != -10) qlRaise(aliasKey, type.getName());
  if (slot == nullptr) {
    slot = fcn;
    type.setAliasedToLocked(true);
  } else if (slot != fcn) {
    qlRaise(inconsistentKey, type.getName());
  }
}
}  // namespace

void DataType::setConvertBetweenFcn(DataTypeConvertBetweenFcn fcn) {
  setOnce(*this, convertBetweenFcn_, fcn, msg::CannotSetDataTypeConvertBetweenOfAlias,
          msg::InconsistentDataTypeConvertBetweenFcn);
}
void DataType::setGreaterThanFcn(DataTypeGreaterThanFcn fcn) {
  setOnce(*this, greaterThanFcn_, fcn, msg::CannotSetDataTypeGreaterThanOfAlias,
          msg::InconsistentDataTypeGreaterThanFcn);
}
void DataType::setGreaterEqualFcn(DataTypeGreaterEqualFcn fcn) {
  setOnce(*this, greaterEqualFcn_, fcn, msg::CannotSetDataTypeGreaterEqualOfAlias,
          msg::InconsistentDataTypeGreaterEqualFcn);
}
void DataType::setIsNegativeFcn(DataTypeIsNegativeFcn fcn) {
  setOnce(*this, isNegativeFcn_, fcn, msg::CannotSetDataTypeIsNegativeOfAlias, msg::InconsistentDataTypeIsNegativeFcn);
}
void DataType::setIsPositiveFcn(DataTypeIsPositiveFcn fcn) {
  setOnce(*this, isPositiveFcn_, fcn, msg::CannotSetDataTypeIsPositiveOfAlias, msg::InconsistentDataTypeIsPositiveFcn);
}

int DataType::getIdAliasedTo() const { return -10; }
int DataType::getIdAliasedThruTo() const { return getId(); }

HostToTargetFcn DataType::getHostToTargetFcn() const { return hostToTargetFcn_; }
TargetToHostFcn DataType::getTargetToHostFcn() const { return targetToHostFcn_; }
int DataType::getTargetSize() const { return targetSize_; }

// Both target setters raise the same key, with its capital C, and neither locks the type.
void DataType::setHostToTargetFcn(HostToTargetFcn fcn) {
  if (hostToTargetFcn_ && hostToTargetFcn_ != fcn) qlRaise(msg::InConsistentTargetToHostFcn);
  hostToTargetFcn_ = fcn;
}
void DataType::setTargetToHostFcn(TargetToHostFcn fcn) {
  if (targetToHostFcn_ && targetToHostFcn_ != fcn) qlRaise(msg::InConsistentTargetToHostFcn);
  targetToHostFcn_ = fcn;
}
void DataType::setTargetSize(int size) { targetSize_ = size; }

int DataType::getStorageId() const { return storageId_; }
void DataType::setStorageId(int id) { storageId_ = id; }
int DataType::getIdAliasedToForTesting() const { return idAliasedToForTesting_; }
void DataType::setIdAliasedToForTesting(int id) { idAliasedToForTesting_ = id; }

const void* DataType::getGround() const { return ground_; }

void DataType::setGround(const void* value) {
  if (getIdAliasedTo() != -10) qlRaise(msg::CannotSetDataTypeGroundOfAlias, name_);
  const int size = getSize();
  if (size == -1) qlRaise(msg::CannotSetGroundRepBeforeSettingSize, name_);
  if (!ground_) qlRaise(msg::MemoryAllocErr);  // the size was stored but its ground could not be had
  const auto n = static_cast<std::size_t>(size);
  std::vector<unsigned char> zeros;
  if (!value) {  // a null value stands for the all-zero ground
    zeros.assign(n, 0);
    value = zeros.data();
  }
  if (!getDefaultGround()) {
    if (std::memcmp(ground_, value, n) == 0) return;
    qlRaise(msg::CannotModifyDataTypeGroundRepresentation, name_);
  }
  std::memcpy(ground_, value, n);
  std::memcpy(ground_ + n, value, n);
  setDefaultGround(false);
  setAliasedToLocked(true);
}

bool DataType::getDefaultGround() const { return defaultGround_; }
void DataType::setDefaultGround(bool isDefault) { defaultGround_ = isDefault; }
const void* DataType::getProperties() const { return properties_; }

void DataType::setProperties(const void* value) {
  if (getIdAliasedTo() != -10) qlRaise(msg::CannotSetDataTypePropertiesOfAlias, name_);
  const int size = getPropertiesSize();
  if (value != nullptr && size == 0) qlRaise(msg::CannotSetPropertiesBeforeSettingSize, name_);
  if (getProperties() != nullptr) {
    if (value && std::memcmp(getProperties(), value, static_cast<std::size_t>(size)) == 0) return;
    qlRaise(msg::CannotModifyDataTypeProperties, name_);
  }
  // A null value copies nothing: the block stays absent, and the type is locked all the same.
  if (value != nullptr) {
    void* block = utMalloc(static_cast<std::size_t>(size));
    if (!block) qlRaise(msg::MemoryAllocErr);
    std::memcpy(block, value, static_cast<std::size_t>(size));
    properties_ = block;
  }
  setAliasedToLocked(true);
}

int DataType::getPropertiesSize() const { return propertiesSize_; }

void DataType::setPropertiesSize(int n) {
  if (getIdAliasedTo() != -10) qlRaise(msg::CannotSetDataTypePropertiesSizeOfAlias, name_);
  if (propertiesSize_ != 0 && propertiesSize_ != n)
    qlRaise(msg::CannotModifyDataTypePropertiesSize, name_, propertiesSize_, n);
  if (n < 0) qlRaise(msg::InvalidDataTypePropertiesSize, name_, n);
  if (propertiesSize_ == 0) {
    utFree(properties_);
    properties_ = nullptr;
    propertiesSize_ = n;
    setAliasedToLocked(true);
  }
}

CG::Type* DataType::getCGType() const { return cgType_; }
void DataType::setCGType(CG::Type* type) { cgType_ = type; }

bool DataType::isIntDataType() const { return isDataTypeIntDT(getId()); }
bool DataType::isUnsignedIntDataType() const { return isDataTypeUnsignedIntDT(getId()); }
bool DataType::isSignedIntDataType() const { return isDataTypeSignedIntDT(getId()); }
bool DataType::isSignedDataType() const { return isDataTypeSignedDT(getId()); }
bool DataType::isSignedFixptDT() const { return isDataTypeSignedFixptDT(getName().c_str(), getId()); }

const std::uint32_t* DataType::getChecksumElements() const { return checksumElements_; }
void DataType::setChecksumElements(const std::uint32_t* words) { std::memcpy(checksumElements_, words, 16); }

qxArray_tag* DataType::getInterface() const { return interface_; }

void DataType::setInterface(qxArray_tag* array) {
  if (array == interface_) return;  // releasing first could free the array we are asked to keep
  qxDestroyArray(interface_);
  interface_ = nullptr;
  if (array) {
    array->flags &= ~qxFLAG_TEMPORARY;
    qxAddReference(array);
    interface_ = array;
  }
}

bool DataType::getIsType(DataTypeQualifier qualifier) const { return qualifier_ == qualifier; }
DataTypeQualifier DataType::getType() const { return qualifier_; }
void DataType::setType(DataTypeQualifier qualifier) { qualifier_ = qualifier; }

void DataType::print(std::ostream& os) const {
  os << "DataType : '" << getName() << "'" << std::endl;
  os << "ID : " << getId() << std::endl;
  os << "Size : " << getSize() << std::endl;
  os << "Storage ID : " << getStorageId() << std::endl;
  os << "DataTypeQualifier : " << static_cast<int>(qualifier_) << std::endl;
  os << std::endl;
}

std::ostream& operator<<(std::ostream& os, const DataType& type) {
  type.print(os);
  return os;
}

bool DataType::isAtomic() const { return isAtomic_; }
void DataType::setIsAtomic(bool atomic) { isAtomic_ = atomic; }
bool DataType::groundHasNonZeroStoredValue() const { return groundHasNonZeroStoredValue_; }
void DataType::setGroundHasNonZeroStoredValue(bool nonZero) { groundHasNonZeroStoredValue_ = nonZero; }
std::vector<int> DataType::dependsOn() const { return {}; }

bool DataType::getVisitFlag() const { return visitFlag_; }
void DataType::setVisitFlag(bool flag) const { visitFlag_ = flag; }
bool DataType::getIsAliasToLocked() const { return aliasedToLocked_; }
void DataType::setIsAliasToLocked(bool locked) { aliasedToLocked_ = locked; }
void DataType::updateAliasedToType(DataType*) {}
void DataType::updateAliasedThruToType(DataType*) {}

bool DataType::isDataTypeBoolDT(int id) { return isBuiltinTypeId(id) && kBuiltinTypes[id].isBoolean; }
bool DataType::isDataTypeFloatDT(int id) { return isBuiltinTypeId(id) && kBuiltinTypes[id].isFloat; }
bool DataType::isDataTypeIntDT(int id) { return isBuiltinTypeId(id) && kBuiltinTypes[id].isInteger; }
bool DataType::isDataTypeSignedIntDT(int id) { return isDataTypeIntDT(id) && kBuiltinTypes[id].isSigned(); }
bool DataType::isDataTypeUnsignedIntDT(int id) { return isDataTypeIntDT(id) && !kBuiltinTypes[id].isSigned(); }
bool DataType::isDataTypeSignedDT(int id) { return isBuiltinTypeId(id) && kBuiltinTypes[id].isSigned(); }

bool DataType::isDataTypeSignedFixptDT(const char* name, int id) {
  if (isDataTypeBoolDT(id)) return isDataTypeSignedDT(id);
  // Deliberately only the prefix: "fltu16" counts as signed.
  return !(name && std::strncmp(name, "ufix", 4) == 0) && !isDataTypeUnsignedIntDT(id);
}

BuiltInDataType::BuiltInDataType() : BuiltInDataType(-10, "", DataTypeSourceBuiltIn) {}
BuiltInDataType::BuiltInDataType(int id, const std::string& name, DataTypeSource source) : DataType(id, name, source) {
  qualifier_ = DataTypeQualifierBuiltIn;
}
BuiltInDataType::~BuiltInDataType() = default;

AutoDataType::AutoDataType() : BuiltInDataType(-1, "auto", DataTypeSourceBuiltIn) {
  size_ = 8;
  storageId_ = -1;
  idAliasedToForTesting_ = -1;
  const DataType& dbl = DataTypeTable::builtInRow(0);
  convertBetweenFcn_ = dbl.getConvertBetweenFcn();
  isPositiveFcn_ = dbl.getIsPositiveFcn();
  isNegativeFcn_ = dbl.getIsNegativeFcn();
  greaterThanFcn_ = dbl.getGreaterThanFcn();
  greaterEqualFcn_ = dbl.getGreaterEqualFcn();
}
AutoDataType::~AutoDataType() = default;

void AutoDataType::setSize(int) {}
void AutoDataType::setConvertBetweenFcn(DataTypeConvertBetweenFcn) {}
void AutoDataType::setGreaterThanFcn(DataTypeGreaterThanFcn) {}
void AutoDataType::setGreaterEqualFcn(DataTypeGreaterEqualFcn) {}
void AutoDataType::setIsNegativeFcn(DataTypeIsNegativeFcn) {}
void AutoDataType::setIsPositiveFcn(DataTypeIsPositiveFcn) {}
void AutoDataType::setStorageId(int) {}
void AutoDataType::setGround(const void*) {}
void AutoDataType::setDefaultGround(bool) {}
void AutoDataType::setProperties(const void*) {}
void AutoDataType::setPropertiesSize(int) {}
void AutoDataType::setCGType(CG::Type*) {}

}  // namespace QLTypeSys
