// Structure types: a DataType with a list of elements.
#pragma once

#include <string>

#include "ql_types/datatypes/DataType.hpp"

/// A structure type. Its id is its own storage id and its qualifier is 4.
class StructDataType : public QLTypeSys::DataType {
 public:
  StructDataType(int id, const std::string& name, QLTypeSys::DataTypeSource source);
  ~StructDataType() override;
};
