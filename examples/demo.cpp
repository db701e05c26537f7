// The ql_types demo: real calls, real output.
#include <iostream>

#include "ql_types/ql_types.hpp"

using namespace QLTypeSys;

namespace {

void section(const char* title) { std::cout << "\n=== " << title << " ===\n"; }

void showDiagnostics() {
  section("Diagnostics");
  try {
    qlRaise(qlmsg::general::InvalidDataTypeSize, "MyType", -3);
  } catch (const fl::except::IException& e) {
    const qlsvDiagnosticImpl* d = e.getDiagnostic();
    std::cout << "caught " << d->getCatalog() << " / " << d->getKey() << "\n  " << d->getMessage() << '\n';
  }
  qlsvDiagnostic chain = qlMakeDiagnostic(qlmsg::unit::UnitDatabaseFileOpenError, L"/tmp/e_ud");
  chain = qlsvConcatenateDiagnostics(std::move(chain), qlMakeDiagnostic(qlmsg::unit::UnitNotInDatabase, L"furlong"),
                                     false);
  std::cout << "a chain of two diagnostics:\n" << chain->getReport();
}

void showDataTypeTable() {
  section("A fresh data type table");
  DataTypeTable table;
  for (int id = -1; id < table.getNumDataTypes() - 1; ++id) {
    const DataType* t = table.getDataType(id);
    std::cout << "  " << id << "\t" << t->getName() << "\tsize " << t->getSize() << "\tqualifier "
              << t->getType() << '\n';
  }

  section("Client types, fixed-point names and aliases");
  const auto client = static_cast<DataTypeSource>(2);
  const int speed = table.registerDataType("Speed", client, "model/Controller");
  table.getDataType(speed)->setSize(4);
  table.setDataTypeStorageId(speed, 6);
  const int fx = table.registerDataType("sfix16_En7", client, nullptr);
  const int alias = table.registerAliasDataType("Velocity", client, speed, nullptr);
  const int alias2 = table.registerAliasDataType("PlantVelocity", client, alias, nullptr);
  for (int id : {speed, fx, alias, alias2}) {
    const DataType* t = table.getDataType(id);
    std::cout << "  " << t->getName() << ": id " << id << ", size " << t->getSize() << ", aliased to "
              << t->getIdAliasedTo() << ", through to " << t->getIdAliasedThruTo()
              << (table.IsFixptDataType(id) ? ", fixed point" : "") << '\n';
  }
  std::cout << "  registering \"Speed\" again gives id " << table.registerDataType("Speed", client, nullptr) << '\n';
  std::cout << "  common ancestor of PlantVelocity and Velocity: "
            << table.getDataType(table.getDataTypeIdCommonAncestor(alias2, alias))->getName() << '\n';
  try {
    table.getDataType(speed)->setSize(8);
  } catch (const fl::except::IException& e) {
    std::cout << "  refused: " << e.what() << '\n';
  }
  int id = 0;
  if (qlsvDiagnostic d = DataTypeTable::RegisterDataType(&table, "model/Gain", "2fast", client, &id))
    std::cout << "  a bad name, as a diagnostic:\n" << d->getReport();
  table.resetToBuiltin();
  std::cout << "  after resetToBuiltin: " << table.getNumDataTypes() << " entries\n";
}

void showFixedPointText() {
  section("Fixed-point text forms");
  const fxpDataTypeProp records[] = {
      fxpDataTypeProp(true, 16, 7),
      fxpDataTypeProp(false, 12, 0),
      fxpDataTypeProp(true, 16, 1.5, 0, 2.5),
      fxpDataTypeProp(FXP_DT_SCALED_DOUBLE, 1u, 32, 1.0, -10, 0.0, FXP_DTO_OFF),
      fxpDataTypeProp(true, 32, 1.5, 2000, 0.0),
      fxpDataTypeProp::booleanDataType(),
  };
  for (const fxpDataTypeProp& p : records)
    std::cout << "  " << *fxpDataTypeToIdentifierString(&p) << "\t"
              << *fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, FxpDT::scalingRepBinaryPoint) << "\t"
              << *fxpDataTypeToConstructorString(p, FxpDT::baseCtorNumerictype, FxpDT::scalingRepSlopeBias) << '\n';
  std::cout << std::flush;
  displayFxpDTPFlat(&records[2]);
}

}  // namespace

int main() {
  std::cout << "ql_types " << ql_types_version << ", built " << ql_types_build_date << '\n';
  showDiagnostics();
  showDataTypeTable();
  showFixedPointText();
  return 0;
}
