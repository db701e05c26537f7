// Structure and bus types: a DataType with a list of elements, each of which may itself be a
// structure, with optional array dimensions.
//
// Clients build structures: registerStructDataType gives an empty one, setNumElements makes
// the element records, and the client fills each record and sets the three element counts
// (numbering of one instance: see StructElementAccess.hpp). The summary flags and the element
// caches are computed lazily and never invalidated: fill a structure first, read it afterwards.
#pragma once

#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "ql_types/datatypes/DataType.hpp"

namespace QLTypeSys {
class DataTypeTable;
}

/// One element of a structure.
class StructElement {
 public:
  StructElement() = default;
  ~StructElement();
  StructElement(const StructElement&) = delete;
  StructElement& operator=(const StructElement&) = delete;

  const std::string& getName() const { return name_; }
  /// A null name is taken as "".
  void setName(const char* name) { name_ = name ? name : ""; }
  void setName(const std::string& name) { name_ = name; }
  int getDataTypeId() const { return dataTypeId_; }
  void setDataTypeId(int id) { dataTypeId_ = id; }
  int getUnitId() const { return unitId_; }
  void setUnitId(int id) { unitId_ = id; }
  int getSymbDimsId() const { return symbDimsId_; }
  void setSymbDimsId(int id) { symbDimsId_ = id; }
  int getNumDimensions() const { return numDimensions_; }
  void setNumDimensions(int n) { numDimensions_ = n; }
  const int* getDimensions() const { return dimensions_; }
  /// Takes ownership of a utMalloc-family array; it is freed with utFree.
  void setDimensions(int* dimensions) { dimensions_ = dimensions; }
  int getOffset() const { return offset_; }
  void setOffset(int offset) { offset_ = offset; }
  int getVarDimsOffset() const { return varDimsOffset_; }
  void setVarDimsOffset(int offset) { varDimsOffset_ = offset; }
  /// 1 means complex.
  int getSignalType() const { return signalType_; }
  void setSignalType(int v) { signalType_ = v; }
  /// 1 means frame based.
  int getSamplingMode() const { return samplingMode_; }
  void setSamplingMode(int v) { samplingMode_ = v; }
  /// 1 means variable dimensions.
  int getDimensionsMode() const { return dimensionsMode_; }
  void setDimensionsMode(int v) { dimensionsMode_ = v; }
  double getMin() const { return min_; }
  void setMin(double v) { min_ = v; }
  double getMax() const { return max_; }
  void setMax(double v) { max_ = v; }
  /// Whether a minimum is given: anything but minus infinity by bit pattern (NaN counts).
  bool getMinSpec() const;
  /// Whether a maximum is given: anything but plus infinity by bit pattern (NaN counts).
  bool getMaxSpec() const;

 private:
  std::string name_;
  int dataTypeId_ = -10;
  int unitId_ = -1;
  int symbDimsId_ = 0;
  int numDimensions_ = 0;
  int* dimensions_ = nullptr;
  int offset_ = -1;
  int varDimsOffset_ = -1;
  int signalType_ = -1;
  int samplingMode_ = -1;
  int dimensionsMode_ = -1;
  double min_ = -std::numeric_limits<double>::infinity();  // none
  double max_ = std::numeric_limits<double>::infinity();   // none
};

/// One node of a structure's depth-first element cache.
struct DFSElementCache {
  DFSElementCache() = default;
  ~DFSElementCache();
  DFSElementCache(const DFSElementCache&) = delete;
  DFSElementCache& operator=(const DFSElementCache&) = delete;

  StructElement* element = nullptr;
  bool owned = false;  ///< this entry made the element and deletes it
  int offset = -1;
  int varDimsOffset = -1;
};

/// A structure type. Its id is its own storage id and its qualifier is 4.
class StructDataType : public QLTypeSys::DataType {
 public:
  StructDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source);
  ~StructDataType() override;

  /// The data type ids of the elements, in order, repeats kept.
  std::vector<int> dependsOn() const override;

  virtual int getNumElements() const;
  /// Makes n default elements; meant for an empty structure.
  virtual void setNumElements(int n);
  virtual int getNumFlatElements() const;
  virtual void setNumFlatElements(int n);
  virtual int getNumRawElements() const;
  virtual void setNumRawElements(int n);
  virtual int getNumDFSElements() const;
  virtual void setNumDFSElements(int n);
  virtual const std::vector<StructElement*>& getElements() const;
  /// The depth-first index of flat index f, for any instance of the structure.
  virtual int getDFSIdxFromFlatIdx(int f) const;
  /// The flat index of depth-first index d, or -1 when d is not a leaf.
  virtual int getFlatIdxFromDFSIdx(const int& d) const;
  virtual void setDFSIdxFromFlatIdx(const std::vector<int>& list);
  virtual const qlChecksumValue& getDtChecksumValue() const;
  virtual void setDtChecksumValue(const qlChecksumValue& value);
  virtual bool isBusType() const;

  int getElementSymbDimsId(int i) const { return elements_[static_cast<std::size_t>(i)]->getSymbDimsId(); }
  void setElementSymbDimsId(int i, int id) { elements_[static_cast<std::size_t>(i)]->setSymbDimsId(id); }
  void emitPaddingInCode(bool emit) { emitPadding_ = emit ? 1 : 0; }
  /// True only when set to emit; unset gives false.
  bool emitPaddingInCode() const { return emitPadding_ == 1; }
  bool hasFrameBasedElements() const { return hasFrameBasedElements_; }
  bool hasVarDims() const { return hasVarDims_; }
  bool hasAOB() const { return hasAOB_; }
  bool hasComplexData() const { return hasComplexData_; }
  /// Computes the four summary flags once, nested structures included.
  void createCacheForFrequentlyAccessedProperties(const QLTypeSys::DataTypeTable* table);
  bool isFlatElementCacheEmpty() const { return dfsIdxFromFlatIdx_.empty(); }
  /// The cache entry of depth-first node idx, made if missing.
  DFSElementCache& getCachedElement(int idx);

 private:
  int numFlatElements_ = 0;
  int numRawElements_ = 0;
  int numDFSElements_ = 0;
  std::vector<int> dfsIdxFromFlatIdx_;
  std::vector<StructElement*> elements_;
  qlChecksumValue dtChecksumValue_ = {{0, 0, 0, 0}};
  int emitPadding_ = -1;
  bool cachedPropertiesValid_ = false;
  bool hasFrameBasedElements_ = false;
  bool hasVarDims_ = false;
  bool hasAOB_ = false;
  bool hasComplexData_ = false;
  std::unordered_map<int, DFSElementCache> elementCache_;
  bool computingProperties_ = false;     // guards a structure that contains itself
  std::vector<StructElement*> retired_;  // records replaced by setNumElements
};

/// A structure that also records the common minimum and maximum of its leaves. Each limit is
/// one double with three states: the "no limit" infinity, the opposite infinity for "leaves
/// differ", or the common value.
class BusDataType : public StructDataType {
 public:
  BusDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source);
  ~BusDataType() override;

  bool isBusType() const override;

  void setSameMinValForAllLeaf(double v) { sameMinValForAllLeaf_ = v; }
  void setSameMaxValForAllLeaf(double v) { sameMaxValForAllLeaf_ = v; }
  double getSameMinValForAllLeaf() const { return sameMinValForAllLeaf_; }
  double getSameMaxValForAllLeaf() const { return sameMaxValForAllLeaf_; }
  void setNotHaveSameMinValForAllLeaf();
  void setNotHaveSameMaxValForAllLeaf();
  bool getHasSameMinValForAllLeaf() const;
  bool getHasSameMaxValForAllLeaf() const;
  bool hasLeafWithSpecMin() const;
  bool hasLeafWithSpecMax() const;
  bool hasLeafWithSpecMinMax() const { return hasLeafWithSpecMin() || hasLeafWithSpecMax(); }

 private:
  double sameMinValForAllLeaf_ = -std::numeric_limits<double>::infinity();
  double sameMaxValForAllLeaf_ = std::numeric_limits<double>::infinity();
};

/// Whether id is a bus: false for -1; otherwise its through type is a structure that is a bus.
bool DtGetDataTypeIsBus(const QLTypeSys::DataTypeTable* table, int id);
/// The checksum of the through type of id, which must be a structure.
const qlChecksumValue& DtGetStructDataTypeChecksum(const QLTypeSys::DataTypeTable* table, int id);
/// Sets the checksum of the through type of id, which must be a structure.
void DtSetStructDataTypeChecksum(QLTypeSys::DataTypeTable* table, int id, const qlChecksumValue& value);
