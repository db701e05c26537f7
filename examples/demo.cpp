// The ql_types demo: real calls, real output.
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <limits>
#include <vector>

#include "ql_types/ql_types.hpp"

using namespace QLTypeSys;

void showSymbolicDimensions();  // DimensionsDemo.cpp
void showUnits();               // UnitsDemo.cpp
void showUnitDatabase();        // UnitDatabaseDemo.cpp
void showUnitTable();           // UnitTableDemo.cpp

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
  chain =
      qlsvConcatenateDiagnostics(std::move(chain), qlMakeDiagnostic(qlmsg::unit::UnitNotInDatabase, L"furlong"), false);
  std::cout << "a chain of two diagnostics:\n" << chain->getReport();
}

void showDataTypeTable() {
  section("A fresh data type table");
  DataTypeTable table;
  for (int id = -1; id < table.getNumDataTypes() - 1; ++id) {
    const DataType* t = table.getDataType(id);
    std::cout << "  " << id << "\t" << t->getName() << "\tsize " << t->getSize() << "\tqualifier " << t->getType()
              << '\n';
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

// Fills a structure as a client does: elements, offsets, sizes and the three counts.
struct FieldSpec {
  const char* name;
  int type;
  int width;
  bool complex;
};

int fillStruct(DataTypeTable& table, const char* name, const std::vector<FieldSpec>& fields) {
  const auto client = static_cast<DataTypeSource>(2);
  const int id = table.registerStructDataType(name, client, nullptr);
  auto* s = static_cast<StructDataType*>(table.getDataType(id));
  s->setNumElements(static_cast<int>(fields.size()));
  int offset = 0, dfs = 1, flat = 0, raw = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const FieldSpec& f = fields[i];
    StructElement* e = s->getElements()[i];
    e->setName(f.name);
    e->setDataTypeId(f.type);
    e->setSignalType(f.complex ? 1 : 0);
    e->setNumDimensions(1);
    int* dims = static_cast<int*>(utMalloc(sizeof(int)));
    dims[0] = f.width;
    e->setDimensions(dims);
    e->setOffset(offset);
    e->setVarDimsOffset(0);
    const int size = table.getDataType(f.type)->getSize() * (f.complex ? 2 : 1);
    offset += f.width * size;
    if (table.IsStructType(f.type)) {
      auto* nested = static_cast<StructDataType*>(table.getDataType(f.type));
      dfs += f.width == 1 ? nested->getNumDFSElements() : 1 + f.width * nested->getNumDFSElements();
      flat += f.width * nested->getNumFlatElements();
      raw += f.width * nested->getNumRawElements();
    } else {
      dfs += 1;
      flat += 1;
      raw += f.width * (f.complex ? 2 : 1);
    }
  }
  s->setSize(offset);
  s->setNumDFSElements(dfs);
  s->setNumFlatElements(flat);
  s->setNumRawElements(raw);
  return id;
}

void showNestedBus() {
  section("A nested bus, walked four ways");
  DataTypeTable table;
  const int inner = fillStruct(table, "Inner", {{"k", 4, 1, false}, {"z", 0, 1, true}});
  const int point = fillStruct(table, "Point", {{"x", 1, 1, false}, {"y", 1, 1, false}});
  const int top =
      fillStruct(table, "Sensor",
                 {{"id", 7, 1, false}, {"inner", inner, 1, false}, {"pts", point, 3, false}, {"gain", 0, 1, true}});
  auto* s = static_cast<StructDataType*>(table.getDataType(top));
  s->createCacheForFrequentlyAccessedProperties(&table);
  std::cout << "  Sensor: size " << s->getSize() << ", " << s->getNumDFSElements() << " nodes, "
            << s->getNumFlatElements() << " leaves, " << s->getNumRawElements()
            << " raw values; complex data: " << (s->hasComplexData() ? "yes" : "no")
            << ", array of buses: " << (s->hasAOB() ? "yes" : "no") << '\n';
  auto typeName = [&table](int id) { return table.getDataType(id)->getName(); };

  std::cout << "  immediate elements:\n";
  ImmediateElementAccess imm(&table, top);
  for (int i = 0; i < imm.getNumElements(); ++i)
    std::cout << "    " << imm.getName(i) << "\toffset " << imm.getOffset(i) << "\t" << typeName(imm.getDataTypeId(i))
              << (imm.getWidth(i) > 1 ? "[" + std::to_string(imm.getWidth(i)) + "]" : "") << "\tpadding "
              << imm.getPadding(i) << '\n';

  std::cout << "  depth-first nodes:\n";
  DFSElementAccess dfs(&table, top);
  for (int i = 0; i < dfs.getNumElements(); ++i)
    std::cout << "    " << i << "\t" << ConvertUStringToStdString(dfs.getFullPathAsString(i, true)) << "\toffset "
              << dfs.getOffset(i) << "\t" << typeName(dfs.getDataTypeId(i)) << '\n';

  std::cout << "  leaves:\n";
  FlatElementAccess flat(&table, top);
  for (int i = 0; i < flat.getNumElements(); ++i)
    std::cout << "    " << i << "\t" << ConvertUStringToStdString(flat.getFullPathAsString(i, false)) << "\toffset "
              << flat.getOffset(i) << "\t" << typeName(flat.getDataTypeId(i))
              << (flat.getSignalType(i) == 1 ? " (complex)" : "") << '\n';

  std::cout << "  raw values:\n   ";
  RawElementAccess raw(&table, top);
  for (int i = 0; i < raw.getNumElements(); ++i)
    std::cout << " " << i << ":" << typeName(raw.getDataTypeId(i)) << "@" << raw.getOffset(i);
  std::cout << "\n  the second Sensor of an array starts its node 3 at offset "
            << dfs.getOffset(dfs.getNumElements() + 3) << ": "
            << ConvertUStringToStdString(dfs.getFullPathAsString(dfs.getNumElements() + 3, true)) << '\n';
}

void showConversion() {
  section("Built-in conversion of doubles with edge values");
  const double src[] = {-129.5,
                        -128.0,
                        -1.5,
                        -0.5,
                        0.49999999999999994,
                        2.5,
                        7.0,
                        127.5,
                        200.7,
                        70000.25,
                        1e300,
                        std::numeric_limits<double>::infinity(),
                        std::nan("")};
  const unsigned n = sizeof src / sizeof src[0];
  std::cout << "  source:" << std::setprecision(17);
  for (double v : src) std::cout << ' ' << v;
  std::cout << std::setprecision(6) << '\n';
  const char* rounding[] = {"zero", "nearest", "ceil", "floor"};
  for (int dst = 2; dst <= 7; ++dst) {
    for (int o = 0; o <= 1; ++o) {
      for (int r = 0; r <= 3; ++r) {
        std::int64_t out[n];
        unsigned char buffer[n * 4];
        qlConvertBuiltInDTypeVectWithCheck(src, n, 0, false, buffer, n, dst, false, static_cast<fxpModeOverflow_tag>(o),
                                           static_cast<fxpModeRounding_tag>(r), false);
        for (unsigned i = 0; i < n; ++i) {
          switch (dst) {
            case 2:
              out[i] = reinterpret_cast<std::int8_t*>(buffer)[i];
              break;
            case 3:
              out[i] = buffer[i];
              break;
            case 4:
              out[i] = reinterpret_cast<std::int16_t*>(buffer)[i];
              break;
            case 5:
              out[i] = reinterpret_cast<std::uint16_t*>(buffer)[i];
              break;
            case 6:
              out[i] = reinterpret_cast<std::int32_t*>(buffer)[i];
              break;
            default:
              out[i] = reinterpret_cast<std::uint32_t*>(buffer)[i];
              break;
          }
        }
        std::cout << "  " << DataTypeTable::getNameOfBuiltInDataType(dst) << (o ? " saturate " : " wrap     ")
                  << rounding[r] << ":";
        for (unsigned i = 0; i < n; ++i) std::cout << ' ' << out[i];
        std::cout << '\n';
      }
    }
  }
  std::cout << "  the lossless check and the overflow pre-check, element by element, double to int8 (nearest):\n";
  for (unsigned i = 0; i < n; ++i) {
    std::int8_t one = 0;
    const bool kept = qlConvertBuiltInDTypeVectWithCheck(&src[i], 1, 0, false, &one, 1, 2, false, FXP_OVERFLOW_SATURATE,
                                                         FXP_ROUND_NEAREST, true);
    const bool overflows =
        DataType::CheckForOverflowDuringDataTypeConversion(&src[i], 1, 0, false, 2, FXP_ROUND_NEAREST);
    std::cout << "    " << src[i] << " -> " << int(one) << (kept ? "  exact" : "  changed")
              << (overflows ? ", out of range" : "") << '\n';
  }
}

void showTypeOperations() {
  section("Values through the table");
  DataTypeTable table;
  const auto client = static_cast<DataTypeSource>(2);
  const int alias = table.registerAliasDataType("Counts", client, 4, nullptr);
  const double src[5] = {-1.9, 2.5, 40000.0, -1e9, 7.0};
  std::int16_t dst[5] = {};
  table.convertToUsingDstId(alias, 0, 5, src, nullptr, dst);
  std::cout << "  double to Counts (an int16 alias), saturating, toward zero:";
  for (std::int16_t v : dst) std::cout << ' ' << v;
  unsigned char positive[5] = {};
  table.isPositive(alias, 5, dst, nullptr, positive);
  std::cout << "\n  positive:";
  for (unsigned char v : positive) std::cout << ' ' << int(v);
  std::cout << "\n  any non-zero: " << (table.checkIfNonZeroArray(dst, 5, alias, false) ? "yes" : "no")
            << "; assistant text of sfix16_En3: "
            << table.getDTACompliantString(table.registerDataType("sfix16_En3", client, nullptr)) << '\n';
}

}  // namespace

int main() {
  std::cout << "ql_types " << ql_types_version << ", built " << ql_types_build_date << '\n';
  showDiagnostics();
  showDataTypeTable();
  showFixedPointText();
  showConversion();
  showNestedBus();
  showTypeOperations();
  showSymbolicDimensions();
  showUnits();
  showUnitDatabase();
  showUnitTable();
  return 0;
}
