// Alias types: a named second identity of another type.
//
// An alias has an id and a name of its own and forwards nearly every question to the type at
// the end of its chain (aliasedThruToType); it also keeps the type one step away
// (aliasedToType). Setters that would define the alias raise; a few harmless ones do nothing.
#pragma once

#include "ql_types/datatypes/DataType.hpp"

namespace QLTypeSys {

class AliasDataType : public DataType {
 public:
  AliasDataType(int id, const std::string& name, DataTypeSource source, const DataType* aliasedTo,
                const DataType* aliasedThruTo);
  /// Takes id, name and source from source and shares its interface array.
  AliasDataType(DataType* source, const DataType* aliasedTo, const DataType* aliasedThruTo);
  ~AliasDataType() override;

  int getSize() const override;
  void setSize(int n) override;
  DataTypeConvertBetweenFcn getConvertBetweenFcn() const override;
  DataTypeIsPositiveFcn getIsPositiveFcn() const override;
  DataTypeIsNegativeFcn getIsNegativeFcn() const override;
  DataTypeGreaterThanFcn getGreaterThanFcn() const override;
  DataTypeGreaterEqualFcn getGreaterEqualFcn() const override;
  void setConvertBetweenFcn(DataTypeConvertBetweenFcn fcn) override;
  void setGreaterThanFcn(DataTypeGreaterThanFcn fcn) override;
  void setGreaterEqualFcn(DataTypeGreaterEqualFcn fcn) override;
  void setIsNegativeFcn(DataTypeIsNegativeFcn fcn) override;
  void setIsPositiveFcn(DataTypeIsPositiveFcn fcn) override;
  int getIdAliasedTo() const override;
  int getIdAliasedThruTo() const override;
  HostToTargetFcn getHostToTargetFcn() const override;
  TargetToHostFcn getTargetToHostFcn() const override;
  int getTargetSize() const override;
  void setHostToTargetFcn(HostToTargetFcn fcn) override;
  void setTargetToHostFcn(TargetToHostFcn fcn) override;
  void setTargetSize(int size) override;
  int getStorageId() const override;
  void setStorageId(int id) override;
  const void* getGround() const override;
  void setGround(const void* value) override;
  bool getDefaultGround() const override;
  void setDefaultGround(bool isDefault) override;
  const void* getProperties() const override;
  void setProperties(const void* value) override;
  int getPropertiesSize() const override;
  void setPropertiesSize(int n) override;
  bool isIntDataType() const override;
  bool isUnsignedIntDataType() const override;
  bool isSignedIntDataType() const override;
  bool isSignedDataType() const override;
  bool isAtomic() const override;
  void setIsAtomic(bool atomic) override;
  bool groundHasNonZeroStoredValue() const override;
  void setGroundHasNonZeroStoredValue(bool nonZero) override;
  std::vector<int> dependsOn() const override;

 protected:
  bool getIsAliasToLocked() const override;
  void updateAliasedToType(DataType* type) override;
  void updateAliasedThruToType(DataType* type) override;

 public:
  /// Both accept and ignore their argument.
  virtual void setIdAliasedTo(int id);
  virtual void setIdAliasedThruTo(int id);

 protected:
  const DataType* getAliasedToType() const { return aliasedToType_; }
  const DataType* getAliasedThruToType() const { return aliasedThruToType_; }

 private:
  const DataType* aliasedToType_;
  const DataType* aliasedThruToType_;
};

}  // namespace QLTypeSys
