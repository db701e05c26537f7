// Links ql_types through its package config and uses it the way a host does.
#include <iostream>

#include "ql_types/ql_types.hpp"

int main() {
  QLTypeSys::DataTypeTable table;
  const int id = table.registerDataType("Speed", QLTypeSys::DataTypeSourceInternal, "");
  if (table.getDataTypeId("Speed") != id || table.getDataTypeId("double") != 0) return 1;
  // The catalogue comes from the package beside the library: the build tree's, or the install prefix's.
  const unsigned units = QLTypeSys::UnitDatabase::getUnitDatabase()->getNumUnits();
  if (units < 450) return 2;
  std::cout << units << " units loaded\n";
  try {
    qlRaise(qlmsg::general::InvalidDataType, "bad-name");
  } catch (const fl::except::IException& e) {
    if (e.getDiagnostic()->getKey() != "InvalidDataType") return 1;
    std::cout << "ql_types " << ql_types_version << ": " << e.what() << '\n';
    return 0;
  }
  return 1;
}
