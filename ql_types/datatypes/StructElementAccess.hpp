// Element views: four ways to number what is inside a structure.
//
//   ImmediateElementAccess  direct elements of the structure
//   DFSElementAccess        nodes of the depth-first walk: the structure, nested structures,
//                           arrays of structures and leaves
//   FlatElementAccess       leaves only
//   RawElementAccess        raw scalar values: each leaf's width, doubled if complex
//
// Depth-first numbering of one instance of S: node 0 is S; a leaf (also a leaf array) is one
// node; a scalar nested structure T takes numDFSElements(T) nodes, its own first; a nested
// structure of width w > 1 takes 1 + w * numDFSElements(T): the array node, then each instance.
// Index numDFSElements(S) begins the next instance of S as a whole. Views are small values;
// what they compute is cached in the structures. No view checks its index.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ql_types/datatypes/StructDataType.hpp"

namespace QLTypeSys {

class DataTypeTable;

/// The common interface of the immediate, depth-first and flat views.
class StructElementAccess {
 public:
  StructElementAccess(const DataTypeTable* table, int id) : table_(table), id_(id) {}
  virtual ~StructElementAccess();
  virtual int getNumElements() const = 0;
  virtual const std::string& getName(int i) const = 0;
  virtual int getDataTypeId(int i) const = 0;
  virtual int getUnitId(int i) const = 0;
  virtual int getNumDimensions(int i) const = 0;
  virtual const int* getDimensions(int i) const = 0;
  virtual int getWidth(int i) const = 0;
  /// getWidth, doubled for a complex element.
  virtual int getComplexWidth(int i) const;
  virtual int getOffset(int i) const = 0;
  virtual int getVarDimsOffset(int i) const = 0;
  virtual int getSignalType(int i) const = 0;
  virtual int getSamplingMode(int i) const = 0;
  virtual int getDimensionsMode(int i) const = 0;
  virtual double getMin(int i) const = 0;
  virtual double getMax(int i) const = 0;
  virtual bool isIdxValid(int i) const = 0;

  /// The through type of the view's id.
  StructDataType* getStructType() const;
  /// The path as text: e.g. "a(2).b", or "(0).a(2).b" for a top-level path. Deliberately,
  /// a non-empty prefix is written twice.
  static std::string convertFullPathToString(const std::vector<std::pair<std::string, int>>& path,
                                             const std::string& prefix);

 protected:
  const DataTypeTable* table_;
  int id_;
};

/// Direct elements of the structure.
class ImmediateElementAccess : public StructElementAccess {
 public:
  using StructElementAccess::StructElementAccess;
  int getNumElements() const override;
  const std::string& getName(int i) const override;
  int getDataTypeId(int i) const override;
  int getUnitId(int i) const override;
  int getNumDimensions(int i) const override;
  const int* getDimensions(int i) const override;
  int getWidth(int i) const override;
  int getOffset(int i) const override;
  int getVarDimsOffset(int i) const override;
  int getSignalType(int i) const override;
  int getSamplingMode(int i) const override;
  int getDimensionsMode(int i) const override;
  double getMin(int i) const override;
  double getMax(int i) const override;
  bool isIdxValid(int i) const override;

  int getSymbDimsId(int i) const;
  bool getMinSpec(int i) const;
  bool getMaxSpec(int i) const;
  /// Every dimension is 1.
  bool isScalar(int i) const;
  /// Bytes between the end of element i and the start of the next (or of the structure's end).
  int getPadding(int i) const;
  /// Raw values of all elements before i.
  int getRawElementIdx(int i) const;
  /// Sets (never clears) the three flags from the elements, recursing into buses.
  void containsAoBOrVarDimsOrFrames(bool* aob, bool* varDims, bool* frames) const;

 private:
  const StructElement& element(int i) const;
};

/// Nodes of the depth-first walk.
class DFSElementAccess : public StructElementAccess {
 public:
  using StructElementAccess::StructElementAccess;
  int getNumElements() const override;
  const std::string& getName(int idx) const override;
  int getDataTypeId(int idx) const override;
  int getUnitId(int idx) const override;
  int getNumDimensions(int idx) const override;
  const int* getDimensions(int idx) const override;
  int getWidth(int idx) const override;
  int getOffset(int idx) const override;
  int getVarDimsOffset(int idx) const override;
  int getSignalType(int idx) const override;
  int getSamplingMode(int idx) const override;
  int getDimensionsMode(int idx) const override;
  double getMin(int idx) const override;
  double getMax(int idx) const override;
  bool isIdxValid(int idx) const override;

  int getSymbDimsId(int idx) const;
  /// The flat index of a leaf node, or -1.
  int getFlatElementIdx(int idx) const;
  /// Raw values of all leaves before node idx.
  int getRawElementIdx(int idx) const;
  /// Appends (name, index) pairs from the structure down to node idx; index -1 means none.
  void getFullPath(int idx, bool topLevel, std::vector<std::pair<std::string, int>>& path) const;
  std::wstring getFullPathAsString(int idx, bool topLevel) const;
  /// The structure that holds node idx directly, and the node's element index in it.
  void getImmediateParentDTypeIdAndOffset(int idx, int& parentId, int& elementIdx) const;
  /// Fills the structure's flat-to-depth-first list, once.
  void genFlatIdxToDFSIdxCache() const;

 protected:
  /// The element of node idx, memoised in the structure.
  const StructElement* getStructElement(int idx) const;

 private:
  void computeDataTypeIdAndIndex(int idx, int& elem, int& instance, int& typeId, int& base) const;
  bool isLeafType(int typeId) const;
};

/// Leaves only; each operation maps the flat index to a depth-first one.
class FlatElementAccess : public StructElementAccess {
 public:
  FlatElementAccess(const DataTypeTable* table, int id);
  FlatElementAccess(const FlatElementAccess& other);
  FlatElementAccess& operator=(const FlatElementAccess& other);
  ~FlatElementAccess() override;

  int getNumElements() const override;
  const std::string& getName(int i) const override;
  int getDataTypeId(int i) const override;
  int getUnitId(int i) const override;
  int getNumDimensions(int i) const override;
  const int* getDimensions(int i) const override;
  int getWidth(int i) const override;
  int getOffset(int i) const override;
  int getVarDimsOffset(int i) const override;
  int getSignalType(int i) const override;
  int getSamplingMode(int i) const override;
  int getDimensionsMode(int i) const override;
  double getMin(int i) const override;
  double getMax(int i) const override;
  bool isIdxValid(int i) const override;

  int getSymbDimsId(int i) const;
  void getFullPath(int i, bool topLevel, std::vector<std::pair<std::string, int>>& path) const;
  std::wstring getFullPathAsString(int i, bool topLevel) const;
  void getImmediateParentDTypeIdAndOffset(int i, int& parentId, int& elementIdx) const;

 private:
  int getDFSIdx(int i) const;
  DFSElementAccess* dfs_;
};

/// Raw scalar values: a leaf takes its width (twice if complex), a nested structure its width
/// times its own raw count.
class RawElementAccess {
 public:
  RawElementAccess(const DataTypeTable* table, int id) : table_(table), id_(id) {}
  int getNumElements() const;
  int getDataTypeId(int raw) const;
  int getUnitId(int raw) const;
  int getSymbDimsId(int raw) const;
  int getOffset(int raw) const;
  StructDataType* getStructType() const;

 private:
  bool isIdxValid(int raw) const;
  /// The direct element holding raw value raw, its type, and the raw index where it starts.
  void computeDataTypeIdAndIndex(int raw, int& elem, int& typeId, int& base) const;
  const StructElement& located(int raw, int& typeId, int& base) const;
  /// A field of the leaf element holding raw value raw, found through nested structures.
  int leafField(int raw, int (StructElement::*field)() const) const;

  const DataTypeTable* table_;
  int id_;
};

}  // namespace QLTypeSys
