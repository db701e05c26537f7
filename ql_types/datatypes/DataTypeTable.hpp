// DataTypeTable: the registry of one model's data types.
//
// It hands out integer ids, owns every type object, knows the fifteen predefined types from
// birth and decides what happens when a name is registered twice. Virtual operations let a
// subclass change the registration policy and the diagnostic settings. Not thread-safe.
//
// Ids: -10 no type, -1 "auto", 0-8 the numeric types, 9-13 the internal types, 14 and up the
// clients' types. The entry of id i sits at vector position i + 1.
#pragma once

#include <boost/shared_ptr.hpp>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "ql_types/datatypes/BuiltinTypes.hpp"
#include "ql_types/datatypes/ClientDataTypeCheckCallback.hpp"
#include "ql_types/datatypes/DataType.hpp"
#include "ql_types/fixpt/fxpDataTypeProp.hpp"
#include "ql_types/platform/Diagnostic.hpp"

/// The handle passed to value functions; its first word leads to the table.
struct _qlDataTypeAccess_tag {
  void* table;
  void* reserved[7];
};

/// How strictly a kind of finding is reported.
enum BDErrorValue : int {
  BDErrorValueNone = 0,     ///< not reported
  BDErrorValueWarning = 1,  ///< reported as a warning
  BDErrorValueError = 2,    ///< reported as an error
};

/// Whether net slopes of fixed-point arithmetic may be computed with a division.
enum FxpUseDivisionForNetSlopeComputation : int {
  FxpUseDivisionForNetSlopeComputationOff = 0,
  FxpUseDivisionForNetSlopeComputationOn = 1,
};

/// State of the licence check for alias types.
enum LicensedForAliasTypes : int {
  LicensedForAliasTypesNotChecked = -1,
  LicensedForAliasTypesNo = 0,
  LicensedForAliasTypesYes = 1,
};

class StructDataType;

namespace QLTypeSys {

namespace internal {
class NameIndex;
}

/// The table's private name index, owned and copied with the table.
class DataTypeNameIndexHandle {
 public:
  DataTypeNameIndexHandle();
  DataTypeNameIndexHandle(const DataTypeNameIndexHandle& other);
  DataTypeNameIndexHandle& operator=(const DataTypeNameIndexHandle& other);
  ~DataTypeNameIndexHandle();
  internal::NameIndex& operator*() const { return *index_; }
  internal::NameIndex* operator->() const { return index_.get(); }

 private:
  std::unique_ptr<internal::NameIndex> index_;
};

class DataTypeTable {
 public:
  DataTypeTable();
  // Member-wise: the copy shares the type objects and the access record; destroy only one.
  DataTypeTable(const DataTypeTable&) = default;
  DataTypeTable& operator=(const DataTypeTable&) = default;

  virtual ~DataTypeTable();
  /// Back to the fifteen predefined types; the clients' changes to those stay.
  virtual void resetToBuiltin();
  virtual int registerDataType(const char* name, DataTypeSource source, const char* blockPath);
  virtual int registerAliasDataType(const char* name, DataTypeSource source, int idAliasedTo, const char* blockPath);
  virtual int registerStructDataType(const char* name, DataTypeSource source, const char* blockPath);
  /// Whether a repeated name simply returns the existing id (after the source check).
  virtual bool shortCircuitRegistration(DataTypeSource source);
  virtual BDErrorValue getParameterUnderflowDiagnostic() const;
  virtual BDErrorValue getParameterOverflowDiagnostic() const;
  virtual BDErrorValue getParameterPrecisionLossDiagnostic() const;
  virtual BDErrorValue getFixptConstUnderflowDiagnostic() const;
  virtual BDErrorValue getFixptConstOverflowDiagnostic() const;
  virtual BDErrorValue getFixptConstPrecisionLossDiagnostic() const;
  virtual BDErrorValue getDataOverflowDiagnostic() const;
  virtual BDErrorValue getDataSaturationDiagnostic() const;
  virtual FxpUseDivisionForNetSlopeComputation getUseIntDivNetSlopeOpt() const;
  virtual void print(std::ostream& os) const;
  /// Properties of the through type of id; name is ignored.
  virtual const void* getDataTypeProperties(const char* name, int id) const;
  virtual const char* getEnumTypeStringFromValue(int id, int value) const;

 protected:
  virtual void registerBuiltInDataType(DataType* type, int id);
  virtual void registerInternalExtraDataType(DataType* type, int id);

 public:
  /// Catches what registerDataType raises and returns it as a diagnostic; null on success.
  static qlsvDiagnostic RegisterDataType(DataTypeTable* table, const char* blockPath, const char* name,
                                         DataTypeSource source, int* idOut);

  // --- lookups ----------------------------------------------------------------------------
  DataType* getDataType(int id) { return types_[static_cast<std::size_t>(id + 1)]; }
  const DataType* getDataType(int id) const { return types_[static_cast<std::size_t>(id + 1)]; }
  DataType* getDataType(const char* name);
  const DataType* getDataType(const char* name) const;
  DataType* getDataTypeAt(unsigned index) { return types_[index]; }
  const DataType* getDataTypeAt(unsigned index) const { return types_[index]; }
  int getDataTypeId(const char* name) const;
  int getNumDataTypes() const { return static_cast<int>(types_.size()); }
  static int getNumBuiltInDataTypes() { return kNumBuiltinTypes; }
  bool isDataTypeIdValid(int id) const { return id >= -1 && id < getNumDataTypes() - 1; }  // no overflow at INT_MAX
  bool isDataTypeIdValid_NotAuto(int id) const { return id != -1 && isDataTypeIdValid(id); }
  void checkDataTypeId(int id) const;
  static bool checkForBuiltInDataType(int id) { return id == -1 || isBuiltinTypeId(id); }
  static bool isPredefinedDataType(int id) { return id >= 9 && id <= 13; }
  static int getBuiltInDataTypeSize(int id);
  static const fxpDataTypeProp* getBuiltinDataTypeProperties(int id);
  static const char* getNameOfBuiltInDataType(int id);
  static int getBuiltInDataType(const char* name);
  static int getBuiltInDataType(const std::wstring& name);
  static bool nameOfBuiltInDataType(const char* name) { return getBuiltInDataType(name) != -10; }
  static bool nameOfBuiltInDataType(const std::wstring& name) { return getBuiltInDataType(name) != -10; }
  static bool isAValidDataType(const char* name);
  /// True for intrinsic fixed-point names such as "sfix16_En3" or "fltu32"; *bits gets the width.
  static bool isInstrinsicFixptName(const char* name, int* bits);

  // --- classification through alias chains -----------------------------------------------
  bool IsDataTypeNumericNonBoolean(int id) const;
  bool IsDataTypeNumericOrBoolean(int id) const;
  bool IsFixptDataType(int id) const;
  bool IsFixptDTNotScaledDouble(int id) const;
  bool IsStructType(int id) const;
  bool isEnumType(int id) const;
  /// Summary flags of a structure entry (see StructDataType::createCacheForFrequentlyAccessedProperties).
  bool doesBusDTHaveAoB(int id) const;
  bool doesBusDTHaveComplexData(int id) const;
  bool doesBusDTHaveFrameBasedElements(int id) const;
  bool doesBusDTHaveVarDims(int id) const;
  /// The id under which values of the type are logged.
  int getDataTypeLoggingId(int id) const;

  // --- aliases and storage -----------------------------------------------------------------
  /// Turns a plain registered type into an alias of idAliasedTo, keeping its id.
  void setDataTypeIdAliasedTo(int id, int idAliasedTo);
  /// Sets the built-in storage of a plain type, once.
  void setDataTypeStorageId(int id, int storageId);
  int getDataTypeIdAliasedTo(int id) const;
  int getDTypeIdAliasedThruTo(int id) const;
  int getDataTypeIdAliasedThruToWithCheckForBuiltInDataType(int id) const;
  /// The through type of a valid id; raises "InvalidDataTypeId" otherwise.
  DataType* getDataTypeAliasedThruTo(int id);
  const DataType* getDataTypeAliasedThruTo(int id) const;
  /// The nearest type both ids alias to, or -10. Uses the entries' visit flags.
  int getDataTypeIdCommonAncestor(int a, int b) const;

  // --- values of any type, through its value functions (ids are not checked) --------------
  void convertToUsingDstId(int dstId, int srcId, int n, const void* src, const void* extra, void* dst);
  void convertToUsingSrcId(int dstId, int srcId, int n, const void* src, const void* extra, void* dst);
  /// 1 on success, 0 on any raised failure (whose reason is dropped).
  int convertToUsingSrcIdWithStatus(int dstId, int srcId, int n, const void* src, const void* extra, void* dst);
  void isPositive(int id, int n, const void* src, const void* extra, void* result);
  int isPositiveWithStatus(int id, int n, const void* src, const void* extra, void* result);
  void isNegative(int id, int n, const void* src, const void* extra, void* result);
  void greaterThan(int id, int n, const void* a, const void* b, const void* extra, void* result);
  void greaterEqual(int id, int n, const void* a, const void* b, const void* extra, void* result);
  /// Whether any element (any part, if complex) is not zero: as numbers for "double" and
  /// "single", byte for byte against the type's ground for every other id.
  bool checkIfNonZeroArray(const void* values, int n, int id, bool isComplex) const;
  /// "fixdt('name')", "Enum: name", "Bus: name" or the name, by the entry's own kind.
  std::string getDTACompliantString(int id) const;

  // --- other state -------------------------------------------------------------------------
  void setErrorQueue(qlsvDiagnosticImpl* queue) { errorQueue_ = queue; }
  qlsvDiagnosticImpl* getErrorQueue() const { return errorQueue_; }
  unsigned getLastAliasedTypeWarnedAbout() const { return lastAliasedTypeWarnedAbout_; }
  void setLastAlisedTypeWarnedAbout(unsigned id) { lastAliasedTypeWarnedAbout_ = id; }
  void setClientDataTypeCheckCallback(const boost::shared_ptr<ClientDataTypeCheckCallback>& cb) { callback_ = cb; }
  boost::shared_ptr<ClientDataTypeCheckCallback> getClientDataTypeCheckCallback() const { return callback_; }
  _qlDataTypeAccess_tag* getDataTypeAccess() const { return access_; }
  /// Replaces the record without freeing the old one.
  void setDataTypeAccess(_qlDataTypeAccess_tag* access) { access_ = access; }
  LicensedForAliasTypes getLicensedForAliasTypes() const { return licensedForAliasTypes_; }
  void setLicensedForAliasTypes(LicensedForAliasTypes value) { licensedForAliasTypes_ = value; }
  void registerLargeAtomicIntSize(int bits) { largeAtomicIntSizes_.push_back(bits); }
  void clearLargeAtomicIntSizes() { largeAtomicIntSizes_.clear(); }
  /// "rtt_<n>" in the table's buffer, overwritten by the next call; not registered.
  const char* generateAnonymousTypeName();

  /// The process-wide row of a predefined type, id -1 to 13.
  static const DataType& builtInRow(int id);

 protected:
  void addDataType(DataType* type);
  /// Deletes the object and closes the gap; only safe on the last entry.
  void removeDataType(DataType* type);
  void replaceDataType(DataType* oldType, DataType* newType);
  static void validateDataTypeName(const char* name);
  void verifyDataTypeSourcesMatch(DataTypeSource source, int id);

 private:
  void initialize();
  static void initializeBuiltInDataTypes();
  /// Size, storage, test id and the five functions of a predefined row.
  static void copyRowFields(DataType* type, const DataType& row);
  void initializeFixptDataTypeAtomicity(DataType* type, int bits);
  bool alreadyAliasedToDirectlyOrIndirectly(int start, int id) const;
  /// Steps 4 to 7 of every registration: append, ask the callback, replace a shadowed name.
  int finishRegistration(DataType* type, DataType* previous, const char* blockPath);
  // Lookups by name answer exactly as a scan in vector order would, in constant time on average.
  void indexInsert(std::size_t position);
  void indexErase(std::size_t position);
  void rebuildNameIndex();

  boost::shared_ptr<ClientDataTypeCheckCallback> callback_;
  std::vector<DataType*> types_;
  int anonymousCounter_ = 0;
  char anonymousName_[32] = {};
  _qlDataTypeAccess_tag* access_ = nullptr;
  LicensedForAliasTypes licensedForAliasTypes_ = LicensedForAliasTypesNotChecked;
  qlsvDiagnosticImpl* errorQueue_ = nullptr;  // clients set it before they read it
  unsigned lastAliasedTypeWarnedAbout_ = 0;
  std::vector<int> largeAtomicIntSizes_;
  DataTypeNameIndexHandle nameIndex_;
};

}  // namespace QLTypeSys

/// 14: the numeric and internal predefined types, "auto" not counted.
int DAGetNumQLDataTypes();
