// Data type objects: one entry of a DataTypeTable.
//
// A type has an id, a name, a storage size, a ground (the bit pattern of its zero, for a real
// and an imaginary part), optional opaque properties and five optional value functions.
// Clients build a type up after registering it, and every property can be given once and
// afterwards only repeated with the same value. A type that has been given anything that
// defines it is locked and can no longer become an alias.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "ql_types/fixpt/fxpModes.hpp"

struct qxArray_tag;
struct ExternalSim_tag;
struct _qlDataTypeAccess_tag;
namespace CG {
class Type;
}

/// A checksum: four 32-bit words that clients store and read.
struct qlChecksumValue {
  std::uint32_t value[4];
};

namespace QLTypeSys {

/// Who registered a type. Values 2 and 3 are the clients' own.
enum DataTypeSource : int {
  DataTypeSourceBuiltIn = 0,
  DataTypeSourceInternal = 1,
  DataTypeSourceAny = 4,  ///< matches every stored source when a name is registered again
};

/// The kind of a type.
enum DataTypeQualifier : int {
  DataTypeQualifierBuiltIn = 0,
  DataTypeQualifierInternal = 1,
  DataTypeQualifierFixpt = 2,
  DataTypeQualifierEnum = 3,
  DataTypeQualifierStruct = 4,
  DataTypeQualifierOther = 5,
};

/// Value functions. Each takes the table's access record and a context text (always null
/// here), works on n elements and returns 1 on success, 0 on failure. Ids are through ids.
using DataTypeConvertBetweenFcn = int (*)(_qlDataTypeAccess_tag* access, const char* context, int dstId, int srcId,
                                          int n, const void* src, const void* extra, void* dst);
using DataTypeIsPositiveFcn = int (*)(_qlDataTypeAccess_tag* access, const char* context, int id, int n,
                                      const void* src, const void* extra, void* result);
using DataTypeIsNegativeFcn = DataTypeIsPositiveFcn;
using DataTypeGreaterThanFcn = int (*)(_qlDataTypeAccess_tag* access, const char* context, int id, int n, const void* a,
                                       const void* b, const void* extra, void* result);
using DataTypeGreaterEqualFcn = DataTypeGreaterThanFcn;

/// Converters between host values and an external target's bytes; stored, never called here.
using HostToTargetFcn = void (*)(ExternalSim_tag* sim, char* target, const void* host, int, int);
using TargetToHostFcn = void (*)(ExternalSim_tag* sim, void* host, const char* target, int, int);

class DataType {
 public:
  DataType(int id, const std::string& name, DataTypeSource source);
  // Member-wise: the copy shares ground, properties and interface with its source.
  DataType(const DataType&) = default;
  DataType& operator=(const DataType&) = default;

  virtual ~DataType();
  virtual int getId() const;
  virtual const std::string& getName() const;
  virtual DataTypeSource getDataTypeSource() const;
  /// Storage size in bytes; -1 until set.
  virtual int getSize() const;
  /// Sets the size once (boolean may change it); allocates a zero ground of 2n bytes.
  virtual void setSize(int n);
  virtual void setAliasedToLocked(bool locked);
  virtual bool getAliasedToLocked() const;
  virtual DataTypeConvertBetweenFcn getConvertBetweenFcn() const;
  virtual DataTypeIsPositiveFcn getIsPositiveFcn() const;
  virtual DataTypeIsNegativeFcn getIsNegativeFcn() const;
  virtual DataTypeGreaterThanFcn getGreaterThanFcn() const;
  virtual DataTypeGreaterEqualFcn getGreaterEqualFcn() const;
  virtual void setConvertBetweenFcn(DataTypeConvertBetweenFcn fcn);
  virtual void setGreaterThanFcn(DataTypeGreaterThanFcn fcn);
  virtual void setGreaterEqualFcn(DataTypeGreaterEqualFcn fcn);
  virtual void setIsNegativeFcn(DataTypeIsNegativeFcn fcn);
  virtual void setIsPositiveFcn(DataTypeIsPositiveFcn fcn);
  /// The type one step away, or -10 for a type that is not an alias.
  virtual int getIdAliasedTo() const;
  /// The last type of the alias chain; the type itself when it is not an alias.
  virtual int getIdAliasedThruTo() const;
  virtual HostToTargetFcn getHostToTargetFcn() const;
  virtual TargetToHostFcn getTargetToHostFcn() const;
  virtual int getTargetSize() const;
  virtual void setHostToTargetFcn(HostToTargetFcn fcn);
  virtual void setTargetToHostFcn(TargetToHostFcn fcn);
  virtual void setTargetSize(int size);
  virtual int getStorageId() const;
  virtual void setStorageId(int id);
  virtual int getIdAliasedToForTesting() const;
  virtual void setIdAliasedToForTesting(int id);
  /// The ground: twice getSize() bytes, real part then imaginary part.
  virtual const void* getGround() const;
  virtual void setGround(const void* value);
  virtual bool getDefaultGround() const;
  virtual void setDefaultGround(bool isDefault);
  virtual const void* getProperties() const;
  virtual void setProperties(const void* value);
  virtual int getPropertiesSize() const;
  virtual void setPropertiesSize(int n);
  virtual CG::Type* getCGType() const;
  virtual void setCGType(CG::Type* type);
  virtual bool isIntDataType() const;
  virtual bool isUnsignedIntDataType() const;
  virtual bool isSignedIntDataType() const;
  virtual bool isSignedDataType() const;
  virtual bool isSignedFixptDT() const;
  virtual const std::uint32_t* getChecksumElements() const;
  virtual void setChecksumElements(const std::uint32_t* words);
  virtual qxArray_tag* getInterface() const;
  /// Releases the array held, then shares the new one (its temporary flag cleared).
  virtual void setInterface(qxArray_tag* array);
  virtual bool getIsType(DataTypeQualifier qualifier) const;
  virtual DataTypeQualifier getType() const;
  virtual void setType(DataTypeQualifier qualifier);
  virtual void print(std::ostream& os) const;
  virtual bool isAtomic() const;
  virtual void setIsAtomic(bool atomic);
  virtual bool groundHasNonZeroStoredValue() const;
  virtual void setGroundHasNonZeroStoredValue(bool nonZero);
  /// Ids of the types this type needs.
  virtual std::vector<int> dependsOn() const;

 protected:
  virtual bool getVisitFlag() const;
  virtual void setVisitFlag(bool flag) const;
  virtual bool getIsAliasToLocked() const;
  virtual void setIsAliasToLocked(bool locked);
  virtual void updateAliasedToType(DataType* type);
  virtual void updateAliasedThruToType(DataType* type);

 public:
  bool needToRegisterIdentifier() const { return needToRegisterIdentifier_; }
  void doNotRegisterIdentifier() { needToRegisterIdentifier_ = false; }

  static bool isDataTypeBoolDT(int id);
  static bool isDataTypeFloatDT(int id);
  static bool isDataTypeIntDT(int id);
  static bool isDataTypeSignedIntDT(int id);
  static bool isDataTypeUnsignedIntDT(int id);
  static bool isDataTypeSignedDT(int id);
  /// Only the prefix "ufix" and the unsigned integer ids count as unsigned.
  static bool isDataTypeSignedFixptDT(const char* name, int id);

  /// Whether converting count values (twice that if complex) from srcId to dstId under the
  /// rounding mode would leave the destination's range. Reads the source only.
  static bool CheckForOverflowDuringDataTypeConversion(void const* src, int count, int srcId, bool isComplex, int dstId,
                                                       fxpModeRounding_tag rounding);

 protected:
  const DataType* getAliasedToType() const { return nullptr; }
  const DataType* getAliasedThruToType() const { return nullptr; }

  friend class DataTypeTable;

  int id_;
  std::string name_;
  DataTypeSource source_;
  int size_ = -1;
  bool isAtomic_ = false;
  bool groundHasNonZeroStoredValue_ = true;
  bool needToRegisterIdentifier_ = true;
  int storageId_;
  int idAliasedToForTesting_ = -10;
  unsigned char* ground_ = nullptr;
  bool defaultGround_ = false;
  void* properties_ = nullptr;
  int propertiesSize_ = 0;
  CG::Type* cgType_ = nullptr;
  qxArray_tag* interface_ = nullptr;
  DataTypeConvertBetweenFcn convertBetweenFcn_ = nullptr;
  DataTypeIsPositiveFcn isPositiveFcn_ = nullptr;
  DataTypeIsNegativeFcn isNegativeFcn_ = nullptr;
  DataTypeGreaterThanFcn greaterThanFcn_ = nullptr;
  DataTypeGreaterEqualFcn greaterEqualFcn_ = nullptr;
  std::uint32_t checksumElements_[4] = {0, 0, 0, 0};
  mutable bool visitFlag_ = false;
  DataTypeQualifier qualifier_ = DataTypeQualifierOther;
  bool aliasedToLocked_ = false;
  TargetToHostFcn targetToHostFcn_ = nullptr;
  HostToTargetFcn hostToTargetFcn_ = nullptr;
  int targetSize_ = 0;
};

/// Writes the type through print.
std::ostream& operator<<(std::ostream& os, const DataType& type);

/// One of the nine numeric types or a predefined internal type.
class BuiltInDataType : public DataType {
 public:
  BuiltInDataType();
  BuiltInDataType(int id, const std::string& name, DataTypeSource source);
  ~BuiltInDataType() override;
};

/// The type "auto": id -1, size 8, the functions of "double". No client can change it.
class AutoDataType : public BuiltInDataType {
 public:
  AutoDataType();
  ~AutoDataType() override;

  // These accept and ignore their argument, without error.
  void setSize(int n) override;
  void setConvertBetweenFcn(DataTypeConvertBetweenFcn fcn) override;
  void setGreaterThanFcn(DataTypeGreaterThanFcn fcn) override;
  void setGreaterEqualFcn(DataTypeGreaterEqualFcn fcn) override;
  void setIsNegativeFcn(DataTypeIsNegativeFcn fcn) override;
  void setIsPositiveFcn(DataTypeIsPositiveFcn fcn) override;
  void setStorageId(int id) override;
  void setGround(const void* value) override;
  void setDefaultGround(bool isDefault) override;
  void setProperties(const void* value) override;
  void setPropertiesSize(int n) override;
  void setCGType(CG::Type* type) override;
};

}  // namespace QLTypeSys
