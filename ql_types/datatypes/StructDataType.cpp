// Structure and bus types, their elements, summary flags and checksums.
#include "ql_types/datatypes/StructDataType.hpp"

#include <climits>
#include <cstring>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/datatypes/internal/StructLookup.hpp"
#include "ql_types/platform/Memory.hpp"

namespace {
bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }
constexpr double kInf = std::numeric_limits<double>::infinity();
}  // namespace

StructElement::~StructElement() { utFree(dimensions_); }
bool StructElement::getMinSpec() const { return !sameBits(min_, -kInf); }
bool StructElement::getMaxSpec() const { return !sameBits(max_, kInf); }

DFSElementCache::~DFSElementCache() {
  if (owned && element) {
    element->setDimensions(nullptr);  // a made-up element borrows its dimensions
    delete element;
  }
}

StructDataType::StructDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source)
    : DataType(id, name, source) {
  setStorageId(id);
  setType(QLTypeSys::DataTypeQualifierStruct);
  elementCache_.max_load_factor(1.0f);
}

StructDataType::~StructDataType() {
  for (StructElement* e : elements_) delete e;
  for (StructElement* e : retired_) delete e;
}

std::vector<int> StructDataType::dependsOn() const {
  std::vector<int> ids;
  ids.reserve(elements_.size());
  for (const StructElement* e : elements_) ids.push_back(e->getDataTypeId());
  return ids;
}

int StructDataType::getNumElements() const { return static_cast<int>(elements_.size()); }

void StructDataType::setNumElements(int n) {
  // Meant for an empty structure. Records already there stay valid for whoever holds them
  // and are freed with the structure.
  retired_.insert(retired_.end(), elements_.begin(), elements_.end());
  elements_.assign(static_cast<std::size_t>(n < 0 ? 0 : n), nullptr);
  for (StructElement*& e : elements_) e = new StructElement();
}

int StructDataType::getNumFlatElements() const { return numFlatElements_; }
void StructDataType::setNumFlatElements(int n) { numFlatElements_ = n; }
int StructDataType::getNumRawElements() const { return numRawElements_; }
void StructDataType::setNumRawElements(int n) { numRawElements_ = n; }
int StructDataType::getNumDFSElements() const { return numDFSElements_; }
void StructDataType::setNumDFSElements(int n) { numDFSElements_ = n; }
const std::vector<StructElement*>& StructDataType::getElements() const { return elements_; }

int StructDataType::getDFSIdxFromFlatIdx(int f) const {
  if (static_cast<unsigned>(f) < dfsIdxFromFlatIdx_.size()) return dfsIdxFromFlatIdx_[static_cast<std::size_t>(f)];
  const int flat = numFlatElements_;
  if (f < 0 || flat <= 0 || dfsIdxFromFlatIdx_.size() < static_cast<std::size_t>(flat)) return -1;
  return (f / flat) * numDFSElements_ + dfsIdxFromFlatIdx_[static_cast<std::size_t>(f % flat)];
}

int StructDataType::getFlatIdxFromDFSIdx(const int& d) const {
  int node = d, q = 0;
  if (numDFSElements_ > 0 && node >= numDFSElements_) {
    q = node / numDFSElements_;
    node = node % numDFSElements_;
  }
  std::size_t position = 0;
  while (position < dfsIdxFromFlatIdx_.size() && dfsIdxFromFlatIdx_[position] != node) ++position;
  if (position == dfsIdxFromFlatIdx_.size()) return -1;  // not a leaf
  return numFlatElements_ * q + static_cast<int>(position);
}

void StructDataType::setDFSIdxFromFlatIdx(const std::vector<int>& list) { dfsIdxFromFlatIdx_ = list; }
const qlChecksumValue& StructDataType::getDtChecksumValue() const { return dtChecksumValue_; }
void StructDataType::setDtChecksumValue(const qlChecksumValue& value) { dtChecksumValue_ = value; }
bool StructDataType::isBusType() const { return false; }

DFSElementCache& StructDataType::getCachedElement(int idx) { return elementCache_[idx]; }

namespace QLTypeSys {
namespace internal {

StructDataType* structThrough(const DataTypeTable* table, int id) {
  if (id == -1 || id == -10 || !table->isDataTypeIdValid(id)) return nullptr;
  const DataType* t = table->getDataTypeAliasedThruTo(id);
  if (!t->getIsType(DataTypeQualifierStruct)) return nullptr;
  return dynamic_cast<StructDataType*>(const_cast<DataType*>(t));
}

namespace {
int saturate(long long v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v); }
}  // namespace

int saturatedProduct(long long a, long long b) {
  long long p = 0;
  if (__builtin_mul_overflow(a, b, &p)) return (a < 0) != (b < 0) ? INT_MIN : INT_MAX;
  return saturate(p);
}

int saturatedSum(long long a, long long b) {
  long long s = 0;
  if (__builtin_add_overflow(a, b, &s)) return a < 0 ? INT_MIN : INT_MAX;
  return saturate(s);
}

int widthOf(const StructElement& e) {
  int w = 1;
  for (int i = 0; i < e.getNumDimensions(); ++i) w = saturatedProduct(w, e.getDimensions()[i]);
  return w;
}

}  // namespace internal
}  // namespace QLTypeSys

using QLTypeSys::internal::structThrough;

void StructDataType::createCacheForFrequentlyAccessedProperties(const QLTypeSys::DataTypeTable* table) {
  if (cachedPropertiesValid_ || computingProperties_) return;
  computingProperties_ = true;
  hasFrameBasedElements_ = hasVarDims_ = hasAOB_ = hasComplexData_ = false;
  for (const StructElement* e : elements_) {
    bool frames = e->getSamplingMode() == 1;
    bool varDims = e->getDimensionsMode() == 1;
    bool aob = false, complex = false;
    if (StructDataType* nested = structThrough(table, e->getDataTypeId())) {
      bool allOnes = true;
      for (int i = 0; i < e->getNumDimensions(); ++i) allOnes = allOnes && e->getDimensions()[i] == 1;
      aob = !allOnes || e->getDimensionsMode() == 1;
      nested->createCacheForFrequentlyAccessedProperties(table);
      frames = frames || nested->hasFrameBasedElements_;
      varDims = varDims || nested->hasVarDims_;
      aob = aob || nested->hasAOB_;
      complex = nested->hasComplexData_;
    } else {
      complex = e->getSignalType() == 1;
    }
    hasFrameBasedElements_ = hasFrameBasedElements_ || frames;
    hasVarDims_ = hasVarDims_ || varDims;
    hasAOB_ = hasAOB_ || aob;
    hasComplexData_ = hasComplexData_ || complex;
  }
  computingProperties_ = false;
  cachedPropertiesValid_ = true;
}

BusDataType::BusDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source)
    : StructDataType(id, name, source) {}
BusDataType::~BusDataType() = default;
bool BusDataType::isBusType() const { return true; }
void BusDataType::setNotHaveSameMinValForAllLeaf() { sameMinValForAllLeaf_ = kInf; }
void BusDataType::setNotHaveSameMaxValForAllLeaf() { sameMaxValForAllLeaf_ = -kInf; }
bool BusDataType::getHasSameMinValForAllLeaf() const { return sameMinValForAllLeaf_ != kInf; }
bool BusDataType::getHasSameMaxValForAllLeaf() const { return sameMaxValForAllLeaf_ != -kInf; }
bool BusDataType::hasLeafWithSpecMin() const { return sameMinValForAllLeaf_ != -kInf; }
bool BusDataType::hasLeafWithSpecMax() const { return sameMaxValForAllLeaf_ != kInf; }

bool DtGetDataTypeIsBus(const QLTypeSys::DataTypeTable* table, int id) {
  const StructDataType* s = structThrough(table, id);
  return s && s->isBusType();
}

const qlChecksumValue& DtGetStructDataTypeChecksum(const QLTypeSys::DataTypeTable* table, int id) {
  return static_cast<const StructDataType*>(table->getDataTypeAliasedThruTo(id))->getDtChecksumValue();
}

void DtSetStructDataTypeChecksum(QLTypeSys::DataTypeTable* table, int id, const qlChecksumValue& value) {
  static_cast<StructDataType*>(table->getDataTypeAliasedThruTo(id))->setDtChecksumValue(value);
}

namespace QLTypeSys {

// These read the flags directly; the entry must be a structure (anything else answers false).
bool DataTypeTable::doesBusDTHaveAoB(int id) const {
  const auto* s = dynamic_cast<const StructDataType*>(getDataType(id));
  return s && s->hasAOB();
}
bool DataTypeTable::doesBusDTHaveComplexData(int id) const {
  const auto* s = dynamic_cast<const StructDataType*>(getDataType(id));
  return s && s->hasComplexData();
}
bool DataTypeTable::doesBusDTHaveFrameBasedElements(int id) const {
  const auto* s = dynamic_cast<const StructDataType*>(getDataType(id));
  return s && s->hasFrameBasedElements();
}
bool DataTypeTable::doesBusDTHaveVarDims(int id) const {
  const auto* s = dynamic_cast<const StructDataType*>(getDataType(id));
  return s && s->hasVarDims();
}

}  // namespace QLTypeSys
