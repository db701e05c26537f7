// The four element views and the memoised depth-first lookups.
#include "ql_types/datatypes/StructElementAccess.hpp"

#include <cmath>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/datatypes/internal/StructLookup.hpp"
#include "ql_types/platform/Text.hpp"

namespace QLTypeSys {

using internal::structThrough;
using internal::widthOf;

namespace {
int kScalarDimensions[1] = {1};  // shared by every made-up element
}  // namespace

StructElementAccess::~StructElementAccess() = default;

int StructElementAccess::getComplexWidth(int i) const {
  return getSignalType(i) == 1 ? internal::saturatedProduct(2, getWidth(i)) : getWidth(i);
}

StructDataType* StructElementAccess::getStructType() const {
  return static_cast<StructDataType*>(const_cast<DataType*>(table_->getDataTypeAliasedThruTo(id_)));
}

std::string StructElementAccess::convertFullPathToString(const std::vector<std::pair<std::string, int>>& path,
                                                         const std::string& prefix) {
  std::string s = prefix;
  if (path.empty()) return s;
  std::size_t start = 0;
  if (path[0].first.empty()) {
    s += prefix + "(" + std::to_string(path[0].second) + ")";
    start = 1;
  } else if (!prefix.empty()) {
    s += prefix + ".";  // kept: the prefix appears twice
  }
  for (std::size_t i = start; i < path.size(); ++i) {
    if (i != 0) s += ".";
    s += path[i].first;
    if (path[i].second != -1) s += "(" + std::to_string(path[i].second) + ")";
  }
  return s;
}

// --- immediate ------------------------------------------------------------------------------

const StructElement& ImmediateElementAccess::element(int i) const {
  return *getStructType()->getElements()[static_cast<std::size_t>(i)];
}

int ImmediateElementAccess::getNumElements() const { return getStructType()->getNumElements(); }
const std::string& ImmediateElementAccess::getName(int i) const { return element(i).getName(); }
int ImmediateElementAccess::getDataTypeId(int i) const { return element(i).getDataTypeId(); }
int ImmediateElementAccess::getUnitId(int i) const { return element(i).getUnitId(); }
int ImmediateElementAccess::getSymbDimsId(int i) const { return element(i).getSymbDimsId(); }
int ImmediateElementAccess::getNumDimensions(int i) const { return element(i).getNumDimensions(); }
const int* ImmediateElementAccess::getDimensions(int i) const { return element(i).getDimensions(); }
int ImmediateElementAccess::getWidth(int i) const { return widthOf(element(i)); }
int ImmediateElementAccess::getOffset(int i) const { return element(i).getOffset(); }
int ImmediateElementAccess::getVarDimsOffset(int i) const { return element(i).getVarDimsOffset(); }
int ImmediateElementAccess::getSignalType(int i) const { return element(i).getSignalType(); }
int ImmediateElementAccess::getSamplingMode(int i) const { return element(i).getSamplingMode(); }
int ImmediateElementAccess::getDimensionsMode(int i) const { return element(i).getDimensionsMode(); }
double ImmediateElementAccess::getMin(int i) const { return element(i).getMin(); }
double ImmediateElementAccess::getMax(int i) const { return element(i).getMax(); }
bool ImmediateElementAccess::getMinSpec(int i) const { return element(i).getMinSpec(); }
bool ImmediateElementAccess::getMaxSpec(int i) const { return element(i).getMaxSpec(); }
bool ImmediateElementAccess::isIdxValid(int i) const { return i >= 0 && i < getNumElements(); }

bool ImmediateElementAccess::isScalar(int i) const {
  const StructElement& e = element(i);
  for (int d = 0; d < e.getNumDimensions(); ++d)
    if (e.getDimensions()[d] != 1) return false;
  return true;
}

int ImmediateElementAccess::getPadding(int i) const {
  const int nextStart = i + 1 < getNumElements() ? getOffset(i + 1) : getStructType()->getSize();
  const int size = internal::saturatedProduct(table_->getDataType(getDataTypeId(i))->getSize(), getComplexWidth(i));
  return internal::saturatedSum(static_cast<long long>(nextStart) - getOffset(i), -static_cast<long long>(size));
}

int ImmediateElementAccess::getRawElementIdx(int i) const {
  int raw = 0;
  for (int k = 0; k < i; ++k) {
    if (const StructDataType* nested = structThrough(table_, getDataTypeId(k)))
      raw = internal::saturatedSum(raw, internal::saturatedProduct(getWidth(k), nested->getNumRawElements()));
    else
      raw = internal::saturatedSum(raw, getComplexWidth(k));
  }
  return raw;
}

void ImmediateElementAccess::containsAoBOrVarDimsOrFrames(bool* aob, bool* varDims, bool* frames) const {
  for (int i = 0; i < getNumElements(); ++i) {
    if (getSamplingMode(i) == 1) *frames = true;
    if (getDimensionsMode(i) == 1) *varDims = true;
    const bool bus = DtGetDataTypeIsBus(table_, getDataTypeId(i));
    if (bus && (!isScalar(i) || getDimensionsMode(i) == 1)) *aob = true;
    if (*aob && *varDims && *frames) return;
    if (bus) ImmediateElementAccess(table_, getDataTypeId(i)).containsAoBOrVarDimsOrFrames(aob, varDims, frames);
  }
}

// --- depth-first ----------------------------------------------------------------------------

bool DFSElementAccess::isLeafType(int typeId) const { return structThrough(table_, typeId) == nullptr; }

void DFSElementAccess::computeDataTypeIdAndIndex(int idx, int& elem, int& instance, int& typeId, int& base) const {
  const StructDataType* s = getStructType();
  const int n = s->getNumDFSElements();
  const double q = n > 0 ? std::floor(static_cast<double>(idx) / n) : 0.0;
  if (idx == 0 || q > 0) {  // a whole instance of the structure
    elem = -1;
    instance = idx == 0 ? 0 : static_cast<int>(q);
    typeId = id_;
    base = idx == 0 ? -1 : static_cast<int>(q) * n;
    return;
  }
  int count = 0;
  const std::vector<StructElement*>& elements = s->getElements();
  for (std::size_t k = 0; k < elements.size(); ++k) {
    const StructElement& e = *elements[k];
    const StructDataType* nested = structThrough(table_, e.getDataTypeId());
    const int w = widthOf(e);
    const int instances = nested && w > 1 ? w : 1;
    for (int inst = 0; inst < instances; ++inst) {
      const bool arrayHead = nested && w > 1 && inst == 0;
      const int step = !nested ? 1 : internal::saturatedSum(nested->getNumDFSElements(), arrayHead ? 1 : 0);
      if (arrayHead && idx == count + 1LL) {  // the array node itself
        elem = static_cast<int>(k);
        instance = -1;
        typeId = e.getDataTypeId();
        base = -1;
        return;
      }
      if (idx <= static_cast<long long>(count) + step) {
        elem = static_cast<int>(k);
        instance = inst;
        typeId = e.getDataTypeId();
        base = !nested ? idx : internal::saturatedSum(count, arrayHead ? 2 : 1);
        return;
      }
      count = internal::saturatedSum(count, step);
    }
  }
  // Past what the counts allow: nothing is located.
  elem = -1;
  instance = 0;
  typeId = id_;
  base = -1;
}

const StructElement* DFSElementAccess::getStructElement(int idx) const {
  StructDataType* s = getStructType();
  DFSElementCache& entry = s->getCachedElement(idx);
  if (entry.element) return entry.element;
  int elem, instance, typeId, base;
  computeDataTypeIdAndIndex(idx, elem, instance, typeId, base);
  const std::vector<StructElement*>& elements = s->getElements();
  const bool arrayNode = base < 0 && elem != -1;
  const bool leaf = idx != 0 && elem != -1 && isLeafType(typeId);
  if (arrayNode || leaf) {  // the real element
    entry.element = elements[static_cast<std::size_t>(elem)];
  } else if (idx == 0) {  // the structure itself
    auto* root = new StructElement();
    root->setDataTypeId(id_);
    root->setNumDimensions(1);
    root->setDimensions(kScalarDimensions);
    root->setSignalType(0);
    root->setSamplingMode(0);
    root->setDimensionsMode(0);
    root->setUnitId(0);
    entry.element = root;
    entry.owned = true;
  } else if (idx == base && elem != -1) {  // node 0 of a nested instance
    const StructElement* nestedRoot = DFSElementAccess(table_, typeId).getStructElement(0);
    auto* made = new StructElement();
    made->setName(elements[static_cast<std::size_t>(elem)]->getName());
    made->setDataTypeId(nestedRoot->getDataTypeId());
    made->setNumDimensions(nestedRoot->getNumDimensions());
    made->setDimensions(const_cast<int*>(nestedRoot->getDimensions()));
    made->setMin(nestedRoot->getMin());
    made->setMax(nestedRoot->getMax());
    made->setUnitId(nestedRoot->getUnitId());
    made->setSignalType(0);
    made->setSamplingMode(0);
    made->setDimensionsMode(0);
    entry.element = made;
    entry.owned = true;
  } else if (base >= 0) {
    entry.element = const_cast<StructElement*>(DFSElementAccess(table_, typeId).getStructElement(idx - base));
  } else {
    return nullptr;  // nothing there
  }
  return entry.element;
}

int DFSElementAccess::getNumElements() const { return getStructType()->getNumDFSElements(); }
const std::string& DFSElementAccess::getName(int idx) const { return getStructElement(idx)->getName(); }
int DFSElementAccess::getDataTypeId(int idx) const { return getStructElement(idx)->getDataTypeId(); }
int DFSElementAccess::getUnitId(int idx) const { return getStructElement(idx)->getUnitId(); }
int DFSElementAccess::getSymbDimsId(int idx) const { return getStructElement(idx)->getSymbDimsId(); }
int DFSElementAccess::getNumDimensions(int idx) const { return getStructElement(idx)->getNumDimensions(); }
const int* DFSElementAccess::getDimensions(int idx) const { return getStructElement(idx)->getDimensions(); }
int DFSElementAccess::getWidth(int idx) const { return widthOf(*getStructElement(idx)); }
int DFSElementAccess::getSignalType(int idx) const { return getStructElement(idx)->getSignalType(); }
int DFSElementAccess::getSamplingMode(int idx) const { return getStructElement(idx)->getSamplingMode(); }
int DFSElementAccess::getDimensionsMode(int idx) const { return getStructElement(idx)->getDimensionsMode(); }
double DFSElementAccess::getMin(int idx) const { return getStructElement(idx)->getMin(); }
double DFSElementAccess::getMax(int idx) const { return getStructElement(idx)->getMax(); }
bool DFSElementAccess::isIdxValid(int) const { return true; }

int DFSElementAccess::getOffset(int idx) const {
  DFSElementCache& entry = getStructType()->getCachedElement(idx);
  if (entry.offset != -1) return entry.offset;
  int elem, instance, typeId, base;
  computeDataTypeIdAndIndex(idx, elem, instance, typeId, base);
  const int instancePart = instance > 0 ? table_->getDataType(typeId)->getSize() * instance : 0;
  const int elementOffset =
      elem == -1 ? 0 : getStructType()->getElements()[static_cast<std::size_t>(elem)]->getOffset();
  int offset = elementOffset + instancePart;
  if (base >= 0 && !isLeafType(typeId)) offset += DFSElementAccess(table_, typeId).getOffset(idx - base);
  getStructType()->getCachedElement(idx).offset = offset;
  return offset;
}

int DFSElementAccess::getVarDimsOffset(int idx) const {
  DFSElementCache& entry = getStructType()->getCachedElement(idx);
  if (entry.varDimsOffset != -1) return entry.varDimsOffset;
  int elem, instance, typeId, base;
  computeDataTypeIdAndIndex(idx, elem, instance, typeId, base);
  const int elementOffset =
      elem == -1 ? 0 : getStructType()->getElements()[static_cast<std::size_t>(elem)]->getVarDimsOffset();
  int offset = elementOffset;
  if (base >= 0 && !isLeafType(typeId)) offset += DFSElementAccess(table_, typeId).getVarDimsOffset(idx - base);
  getStructType()->getCachedElement(idx).varDimsOffset = offset;
  return offset;
}

void DFSElementAccess::genFlatIdxToDFSIdxCache() const {
  StructDataType* s = getStructType();
  if (!s->isFlatElementCacheEmpty()) return;
  std::vector<int> list;
  for (int d = 0; d < s->getNumDFSElements(); ++d) {
    const int t = getDataTypeId(d);
    if (t == -1 || isLeafType(t)) list.push_back(d);
  }
  s->setDFSIdxFromFlatIdx(list);
}

int DFSElementAccess::getFlatElementIdx(int idx) const {
  genFlatIdxToDFSIdxCache();
  return getStructType()->getFlatIdxFromDFSIdx(idx);
}

int DFSElementAccess::getRawElementIdx(int idx) const {
  int raw = 0;
  for (int d = 0; d < idx; ++d) {
    const int t = getDataTypeId(d);
    if (t == -1 || isLeafType(t)) raw += getComplexWidth(d);
  }
  return raw;
}

void DFSElementAccess::getFullPath(int idx, bool topLevel, std::vector<std::pair<std::string, int>>& path) const {
  if (topLevel && idx < getNumElements()) path.emplace_back("", 0);
  int elem, instance, typeId, base;
  computeDataTypeIdAndIndex(idx, elem, instance, typeId, base);
  int index = instance >= 0 ? instance : -1;
  std::string name;
  if (elem != -1) {
    const StructElement& e = *getStructType()->getElements()[static_cast<std::size_t>(elem)];
    name = e.getName();
    if (widthOf(e) == 1) index = -1;
  }
  if (typeId == -1 || isLeafType(typeId)) index = -1;
  path.emplace_back(name, index);
  if (base < 0) {
    if (name.empty() && path.size() > 1) path.pop_back();
    return;
  }
  if (!isLeafType(typeId)) DFSElementAccess(table_, typeId).getFullPath(idx - base, false, path);
}

std::wstring DFSElementAccess::getFullPathAsString(int idx, bool topLevel) const {
  std::vector<std::pair<std::string, int>> path;
  getFullPath(idx, topLevel, path);
  return qlsvToUString(convertFullPathToString(path, ""));
}

void DFSElementAccess::getImmediateParentDTypeIdAndOffset(int idx, int& parentId, int& elementIdx) const {
  int elem, instance, typeId, base;
  computeDataTypeIdAndIndex(idx, elem, instance, typeId, base);
  if ((base < 0 && elem != -1) || (elem != -1 && isLeafType(typeId)) || (idx == base && elem != -1)) {
    parentId = id_;
    elementIdx = elem;
  } else if (base < 0) {
    parentId = -10;
    elementIdx = -1;
  } else {
    DFSElementAccess(table_, typeId).getImmediateParentDTypeIdAndOffset(idx - base, parentId, elementIdx);
  }
}

// --- flat -----------------------------------------------------------------------------------

FlatElementAccess::FlatElementAccess(const DataTypeTable* table, int id)
    : StructElementAccess(table, id), dfs_(new DFSElementAccess(table, id)) {}
FlatElementAccess::FlatElementAccess(const FlatElementAccess& other)
    : StructElementAccess(other.table_, other.id_), dfs_(new DFSElementAccess(other.table_, other.id_)) {}
FlatElementAccess& FlatElementAccess::operator=(const FlatElementAccess& other) {
  if (this != &other) {
    auto* fresh = new DFSElementAccess(other.table_, other.id_);
    delete dfs_;
    dfs_ = fresh;
    table_ = other.table_;
    id_ = other.id_;
  }
  return *this;
}
FlatElementAccess::~FlatElementAccess() { delete dfs_; }

int FlatElementAccess::getDFSIdx(int i) const {
  dfs_->genFlatIdxToDFSIdxCache();
  return getStructType()->getDFSIdxFromFlatIdx(i);
}

int FlatElementAccess::getNumElements() const { return getStructType()->getNumFlatElements(); }
const std::string& FlatElementAccess::getName(int i) const { return dfs_->getName(getDFSIdx(i)); }
int FlatElementAccess::getDataTypeId(int i) const { return dfs_->getDataTypeId(getDFSIdx(i)); }
int FlatElementAccess::getUnitId(int i) const { return dfs_->getUnitId(getDFSIdx(i)); }
int FlatElementAccess::getSymbDimsId(int i) const { return dfs_->getSymbDimsId(getDFSIdx(i)); }
int FlatElementAccess::getNumDimensions(int i) const { return dfs_->getNumDimensions(getDFSIdx(i)); }
const int* FlatElementAccess::getDimensions(int i) const { return dfs_->getDimensions(getDFSIdx(i)); }
int FlatElementAccess::getWidth(int i) const { return dfs_->getWidth(getDFSIdx(i)); }
int FlatElementAccess::getOffset(int i) const { return dfs_->getOffset(getDFSIdx(i)); }
int FlatElementAccess::getVarDimsOffset(int i) const { return dfs_->getVarDimsOffset(getDFSIdx(i)); }
int FlatElementAccess::getSignalType(int i) const { return dfs_->getSignalType(getDFSIdx(i)); }
int FlatElementAccess::getSamplingMode(int i) const { return dfs_->getSamplingMode(getDFSIdx(i)); }
int FlatElementAccess::getDimensionsMode(int i) const { return dfs_->getDimensionsMode(getDFSIdx(i)); }
double FlatElementAccess::getMin(int i) const { return dfs_->getMin(getDFSIdx(i)); }
double FlatElementAccess::getMax(int i) const { return dfs_->getMax(getDFSIdx(i)); }
bool FlatElementAccess::isIdxValid(int) const { return true; }
void FlatElementAccess::getFullPath(int i, bool topLevel, std::vector<std::pair<std::string, int>>& path) const {
  dfs_->getFullPath(getDFSIdx(i), topLevel, path);
}
std::wstring FlatElementAccess::getFullPathAsString(int i, bool topLevel) const {
  return dfs_->getFullPathAsString(getDFSIdx(i), topLevel);
}
void FlatElementAccess::getImmediateParentDTypeIdAndOffset(int i, int& parentId, int& elementIdx) const {
  dfs_->getImmediateParentDTypeIdAndOffset(getDFSIdx(i), parentId, elementIdx);
}

// --- raw ------------------------------------------------------------------------------------

StructDataType* RawElementAccess::getStructType() const {
  return static_cast<StructDataType*>(const_cast<DataType*>(table_->getDataTypeAliasedThruTo(id_)));
}

int RawElementAccess::getNumElements() const { return getStructType()->getNumRawElements(); }
bool RawElementAccess::isIdxValid(int raw) const { return raw >= 0 && raw < getNumElements(); }

void RawElementAccess::computeDataTypeIdAndIndex(int raw, int& elem, int& typeId, int& base) const {
  base = 0;
  const std::vector<StructElement*>& elements = getStructType()->getElements();
  for (std::size_t k = 0; k < elements.size(); ++k) {
    const StructElement& e = *elements[k];
    const StructDataType* nested = structThrough(table_, e.getDataTypeId());
    const int count =
        internal::saturatedProduct(widthOf(e), nested ? nested->getNumRawElements() : (e.getSignalType() == 1 ? 2 : 1));
    if (raw < static_cast<long long>(base) + count) {
      elem = static_cast<int>(k);
      typeId = e.getDataTypeId();
      return;
    }
    base = internal::saturatedSum(base, count);
  }
  elem = static_cast<int>(elements.size()) - 1;  // past the end: the last element answers
  typeId = elem >= 0 ? elements[static_cast<std::size_t>(elem)]->getDataTypeId() : -10;
  if (elem >= 0) {
    const StructElement& e = *elements[static_cast<std::size_t>(elem)];
    const StructDataType* nested = structThrough(table_, e.getDataTypeId());
    base = internal::saturatedSum(
        base, -static_cast<long long>(internal::saturatedProduct(
                  widthOf(e), nested ? nested->getNumRawElements() : (e.getSignalType() == 1 ? 2 : 1))));
  }
}

const StructElement& RawElementAccess::located(int raw, int& typeId, int& base) const {
  int elem;
  computeDataTypeIdAndIndex(raw, elem, typeId, base);
  return *getStructType()->getElements()[static_cast<std::size_t>(elem)];
}

int RawElementAccess::leafField(int raw, int (StructElement::*field)() const) const {
  int typeId, base;
  const StructElement& e = located(raw, typeId, base);
  if (const StructDataType* nested = structThrough(table_, typeId))
    return RawElementAccess(table_, typeId).leafField((raw - base) % nested->getNumRawElements(), field);
  return (e.*field)();
}

int RawElementAccess::getDataTypeId(int raw) const { return leafField(raw, &StructElement::getDataTypeId); }
int RawElementAccess::getUnitId(int raw) const { return leafField(raw, &StructElement::getUnitId); }
int RawElementAccess::getSymbDimsId(int raw) const { return leafField(raw, &StructElement::getSymbDimsId); }

int RawElementAccess::getOffset(int raw) const {
  int typeId, base;
  const StructElement& e = located(raw, typeId, base);
  const int size = table_->getDataType(typeId)->getSize();
  if (const StructDataType* nested = structThrough(table_, typeId)) {
    const int n = nested->getNumRawElements();
    return e.getOffset() + RawElementAccess(table_, typeId).getOffset((raw - base) % n) + (raw - base) / n * size;
  }
  // Complex leaves hold interleaved pairs, so the same step reaches the imaginary parts.
  return e.getOffset() + (raw - base) * size;
}

}  // namespace QLTypeSys
