// The table's value operations: dispatch through the types' value functions, the non-zero
// test against the ground, and the text form used by data type assistants.
#include <cstring>

#include "ql_types/datatypes/DataTypeTable.hpp"

namespace QLTypeSys {

namespace msg = qlmsg::general;

namespace {
template <class Fcn, int A, int B>
Fcn functionOrRaise(const DataType* type, Fcn fcn, const resource_core::MsgKey<A>& missing,
                    const resource_core::MsgKey<B>&) {
  if (!fcn) qlRaise(missing, type->getName());
  return fcn;
}
}  // namespace

void DataTypeTable::convertToUsingDstId(int dstId, int srcId, int n, const void* src, const void* extra, void* dst) {
  const DataType* type = getDataType(dstId);
  auto fcn = functionOrRaise(type, type->getConvertBetweenFcn(), msg::DataTypeConvertBetweenFcnDoesNotExist,
                             msg::DataTypeConvertBetweenFcnUnknownError);
  if (!fcn(access_, nullptr, type->getIdAliasedThruTo(), getDataType(srcId)->getIdAliasedThruTo(), n, src, extra, dst))
    qlRaise(msg::DataTypeConvertBetweenFcnUnknownError, type->getName());
}

void DataTypeTable::convertToUsingSrcId(int dstId, int srcId, int n, const void* src, const void* extra, void* dst) {
  const DataType* type = getDataType(srcId);
  auto fcn = functionOrRaise(type, type->getConvertBetweenFcn(), msg::DataTypeConvertBetweenFcnDoesNotExist,
                             msg::DataTypeConvertBetweenFcnUnknownError);
  if (!fcn(access_, nullptr, getDataType(dstId)->getIdAliasedThruTo(), type->getIdAliasedThruTo(), n, src, extra, dst))
    qlRaise(msg::DataTypeConvertBetweenFcnUnknownError, type->getName());
}

int DataTypeTable::convertToUsingSrcIdWithStatus(int dstId, int srcId, int n, const void* src, const void* extra,
                                                 void* dst) {
  try {
    convertToUsingSrcId(dstId, srcId, n, src, extra, dst);
    return 1;
  } catch (const fl::except::IException& e) {
    qlsvDiscardDiagnostic(qlsvCreateDiagnosticFromIException(e, true));  // the reason is dropped by design
    return 0;
  }
}

void DataTypeTable::isPositive(int id, int n, const void* src, const void* extra, void* result) {
  const DataType* type = getDataType(id);
  auto fcn = functionOrRaise(type, type->getIsPositiveFcn(), msg::DataTypeIsPositiveFcnDoesNotExist,
                             msg::DataTypeIsPositiveFcnUnknownError);
  if (!fcn(access_, nullptr, type->getIdAliasedThruTo(), n, src, extra, result))
    qlRaise(msg::DataTypeIsPositiveFcnUnknownError, type->getName());
}

int DataTypeTable::isPositiveWithStatus(int id, int n, const void* src, const void* extra, void* result) {
  try {
    isPositive(id, n, src, extra, result);
    return 1;
  } catch (const fl::except::IException& e) {
    qlsvDiscardDiagnostic(qlsvCreateDiagnosticFromIException(e, true));
    return 0;
  }
}

void DataTypeTable::isNegative(int id, int n, const void* src, const void* extra, void* result) {
  const DataType* type = getDataType(id);
  auto fcn = functionOrRaise(type, type->getIsNegativeFcn(), msg::DataTypeIsNegativeFcnDoesNotExist,
                             msg::DataTypeIsNegativeFcnUnknownError);
  if (!fcn(access_, nullptr, type->getIdAliasedThruTo(), n, src, extra, result))
    qlRaise(msg::DataTypeIsNegativeFcnUnknownError, type->getName());
}

void DataTypeTable::greaterThan(int id, int n, const void* a, const void* b, const void* extra, void* result) {
  const DataType* type = getDataType(id);
  auto fcn = functionOrRaise(type, type->getGreaterThanFcn(), msg::DataTypeGreaterThanFcnDoesNotExist,
                             msg::DataTypeGreaterThanFcnUnknownError);
  if (!fcn(access_, nullptr, type->getIdAliasedThruTo(), n, a, b, extra, result))
    qlRaise(msg::DataTypeGreaterThanFcnUnknownError, type->getName());
}

void DataTypeTable::greaterEqual(int id, int n, const void* a, const void* b, const void* extra, void* result) {
  const DataType* type = getDataType(id);
  auto fcn = functionOrRaise(type, type->getGreaterEqualFcn(), msg::DataTypeGreaterEqualFcnDoesNotExist,
                             msg::DataTypeGreaterEqualFcnUnknownError);
  if (!fcn(access_, nullptr, type->getIdAliasedThruTo(), n, a, b, extra, result))
    qlRaise(msg::DataTypeGreaterEqualFcnUnknownError, type->getName());
}

bool DataTypeTable::checkIfNonZeroArray(const void* values, int n, int id, bool isComplex) const {
  if (n <= 0) return false;
  const int parts = isComplex ? 2 * n : n;
  if (id == 0) {
    const auto* v = static_cast<const double*>(values);
    for (int i = 0; i < parts; ++i)
      if (v[i] != 0.0) return true;  // NaN is not zero; -0.0 is
    return false;
  }
  if (id == 1) {
    const auto* v = static_cast<const float*>(values);
    for (int i = 0; i < parts; ++i)
      if (v[i] != 0.0f) return true;
    return false;
  }
  // Every other type, aliases of "double" included, compares bytes with its ground.
  const DataType* type = getDataType(id);
  const int size = type->getSize();
  const void* ground = type->getGround();
  if (size <= 0 || !ground) return false;
  const auto* bytes = static_cast<const unsigned char*>(values);
  for (int i = 0; i < parts; ++i)
    if (std::memcmp(bytes + static_cast<std::size_t>(i) * static_cast<std::size_t>(size), ground,
                    static_cast<std::size_t>(size)) != 0)
      return true;
  return false;
}

std::string DataTypeTable::getDTACompliantString(int id) const {
  const DataType* type = getDataType(id);
  switch (type->getType()) {
    case DataTypeQualifierFixpt:
      return "fixdt('" + type->getName() + "')";
    case DataTypeQualifierEnum:
      return "Enum: " + type->getName();
    case DataTypeQualifierStruct:
      return "Bus: " + type->getName();
    default:
      return type->getName();
  }
}

}  // namespace QLTypeSys
