// Alias types: forwarding to the end of the chain.
#include "ql_types/datatypes/AliasDataType.hpp"

#include "ql_types/platform/Diagnostic.hpp"

namespace QLTypeSys {

namespace msg = qlmsg::general;

AliasDataType::AliasDataType(int id, const std::string& name, DataTypeSource source, const DataType* aliasedTo,
                             const DataType* aliasedThruTo)
    : DataType(id, name, source), aliasedToType_(aliasedTo), aliasedThruToType_(aliasedThruTo) {}

AliasDataType::AliasDataType(DataType* source, const DataType* aliasedTo, const DataType* aliasedThruTo)
    : DataType(source->getId(), source->getName(), source->getDataTypeSource()),
      aliasedToType_(aliasedTo),
      aliasedThruToType_(aliasedThruTo) {
  DataType::setInterface(source->getInterface());
}

AliasDataType::~AliasDataType() = default;

int AliasDataType::getSize() const { return aliasedThruToType_->getSize(); }
void AliasDataType::setSize(int) { qlRaise(msg::CannotSetDataTypeSizeOfAlias, getName()); }
DataTypeConvertBetweenFcn AliasDataType::getConvertBetweenFcn() const {
  return aliasedThruToType_->getConvertBetweenFcn();
}
DataTypeIsPositiveFcn AliasDataType::getIsPositiveFcn() const { return aliasedThruToType_->getIsPositiveFcn(); }
DataTypeIsNegativeFcn AliasDataType::getIsNegativeFcn() const { return aliasedThruToType_->getIsNegativeFcn(); }
DataTypeGreaterThanFcn AliasDataType::getGreaterThanFcn() const { return aliasedThruToType_->getGreaterThanFcn(); }
DataTypeGreaterEqualFcn AliasDataType::getGreaterEqualFcn() const { return aliasedThruToType_->getGreaterEqualFcn(); }
void AliasDataType::setConvertBetweenFcn(DataTypeConvertBetweenFcn) {
  qlRaise(msg::CannotSetDataTypeConvertBetweenOfAlias, getName());
}
void AliasDataType::setGreaterThanFcn(DataTypeGreaterThanFcn) {
  qlRaise(msg::CannotSetDataTypeGreaterThanOfAlias, getName());
}
void AliasDataType::setGreaterEqualFcn(DataTypeGreaterEqualFcn) {
  qlRaise(msg::CannotSetDataTypeGreaterEqualOfAlias, getName());
}
void AliasDataType::setIsNegativeFcn(DataTypeIsNegativeFcn) {
  qlRaise(msg::CannotSetDataTypeIsNegativeOfAlias, getName());
}
void AliasDataType::setIsPositiveFcn(DataTypeIsPositiveFcn) {
  qlRaise(msg::CannotSetDataTypeIsPositiveOfAlias, getName());
}
int AliasDataType::getIdAliasedTo() const { return aliasedToType_->getId(); }
int AliasDataType::getIdAliasedThruTo() const { return aliasedThruToType_->getId(); }
HostToTargetFcn AliasDataType::getHostToTargetFcn() const { return aliasedThruToType_->getHostToTargetFcn(); }
TargetToHostFcn AliasDataType::getTargetToHostFcn() const { return aliasedThruToType_->getTargetToHostFcn(); }
int AliasDataType::getTargetSize() const { return aliasedThruToType_->getTargetSize(); }
// Deliberately silent: clients may repeat these on an alias, to no effect.
void AliasDataType::setHostToTargetFcn(HostToTargetFcn) {}
void AliasDataType::setTargetToHostFcn(TargetToHostFcn) {}
void AliasDataType::setTargetSize(int) {}
void AliasDataType::setDefaultGround(bool) {}
int AliasDataType::getStorageId() const { return aliasedThruToType_->getStorageId(); }
void AliasDataType::setStorageId(int) { qlRaise(msg::CannotSetDataTypeStorageIdOfAlias, getName()); }
const void* AliasDataType::getGround() const { return aliasedThruToType_->getGround(); }
void AliasDataType::setGround(const void*) { qlRaise(msg::CannotSetDataTypeGroundOfAlias, getName()); }
bool AliasDataType::getDefaultGround() const { return aliasedThruToType_->getDefaultGround(); }
const void* AliasDataType::getProperties() const { return aliasedThruToType_->getProperties(); }
void AliasDataType::setProperties(const void*) { qlRaise(msg::CannotSetDataTypePropertiesOfAlias, getName()); }
int AliasDataType::getPropertiesSize() const { return aliasedThruToType_->getPropertiesSize(); }
void AliasDataType::setPropertiesSize(int) { qlRaise(msg::CannotSetDataTypePropertiesSizeOfAlias, getName()); }
bool AliasDataType::isIntDataType() const { return aliasedThruToType_->isIntDataType(); }
bool AliasDataType::isUnsignedIntDataType() const { return aliasedThruToType_->isUnsignedIntDataType(); }
bool AliasDataType::isSignedIntDataType() const { return aliasedThruToType_->isSignedIntDataType(); }
bool AliasDataType::isSignedDataType() const { return aliasedThruToType_->isSignedDataType(); }
bool AliasDataType::isAtomic() const { return aliasedThruToType_->isAtomic(); }
void AliasDataType::setIsAtomic(bool) { qlRaise(msg::CannotSetDataTypeIsAtomicOfAlias, getName()); }
bool AliasDataType::groundHasNonZeroStoredValue() const { return aliasedThruToType_->groundHasNonZeroStoredValue(); }
void AliasDataType::setGroundHasNonZeroStoredValue(bool) {
  qlRaise(msg::CannotSetDataTypeGroundHasNonZeroOfAlias, getName());
}
std::vector<int> AliasDataType::dependsOn() const { return {getIdAliasedTo()}; }
bool AliasDataType::getIsAliasToLocked() const { return true; }
void AliasDataType::updateAliasedToType(DataType* type) { aliasedToType_ = type; }
void AliasDataType::updateAliasedThruToType(DataType* type) { aliasedThruToType_ = type; }
void AliasDataType::setIdAliasedTo(int) {}
void AliasDataType::setIdAliasedThruTo(int) {}

}  // namespace QLTypeSys
