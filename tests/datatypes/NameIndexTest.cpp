// Lookup by name answers exactly as a scan in vector order would, whatever happened before.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <random>
#include <stdexcept>

#include "ql_types/datatypes/DataTypeTable.hpp"

namespace {

using namespace QLTypeSys;

const DataType* scan(const DataTypeTable& table, const std::string& name) {
  for (int i = 0; i < table.getNumDataTypes(); ++i)
    if (table.getDataTypeAt(static_cast<unsigned>(i))->getName() == name) return table.getDataTypeAt(i);
  return nullptr;
}

class Refuser : public ClientDataTypeCheckCallback {
 public:
  void dataTypeRegistered(DataType* type, const char*) override {
    if (type->getName().back() == '7') throw std::runtime_error("no sevens");
  }
  void tableReset() override {}
};

// Replaces types registered again, so the replace path runs too.
class ReplacingTable : public DataTypeTable {
 public:
  bool shortCircuitRegistration(DataTypeSource source) override { return source != DataTypeSourceAny; }
};

TEST(NameIndex, AgreesWithAScanUnderRandomOperations) {
  std::mt19937 rng(1234);
  ReplacingTable table;
  table.setClientDataTypeCheckCallback(boost::make_shared<Refuser>());
  std::vector<std::string> names = {"double", "auto", "", "boolean", "nothing"};
  for (int step = 0; step < 3000; ++step) {
    const std::string name = "T" + std::to_string(rng() % 60);
    const auto source = (rng() % 4 == 0) ? DataTypeSourceAny : static_cast<DataTypeSource>(2);
    try {
      switch (rng() % 7) {
        case 0:
        case 1:
          table.registerDataType(name.c_str(), source, nullptr);
          break;
        case 2:
          table.registerAliasDataType(name.c_str(), source, static_cast<int>(rng() % table.getNumDataTypes()) - 1,
                                      nullptr);
          break;
        case 3:
          table.registerStructDataType(name.c_str(), source, nullptr);
          break;
        case 4:
          table.setDataTypeIdAliasedTo(static_cast<int>(rng() % table.getNumDataTypes()) - 1, 6);
          break;
        case 5:
          if (rng() % 20 == 0) table.resetToBuiltin();
          break;
        default:
          table.getDataType(name.c_str());
      }
    } catch (const std::exception&) {
      // refusals are part of the sequence
    }
    names.push_back(name);
    for (int i = 0; i < 5; ++i) {
      const std::string& n = names[rng() % names.size()];
      ASSERT_EQ(table.getDataType(n.c_str()), scan(table, n)) << n << " at step " << step;
    }
  }
  EXPECT_EQ(table.getDataType(static_cast<const char*>(nullptr)), scan(table, ""));
}

}  // namespace
