// Structure types.
#include "ql_types/datatypes/StructDataType.hpp"

StructDataType::StructDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source)
    : DataType(id, name, source) {
  setStorageId(id);
  setType(QLTypeSys::DataTypeQualifierStruct);
}

StructDataType::~StructDataType() = default;
