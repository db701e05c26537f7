// The symbolic dimensions section of the demo: sizes by name and expression, facts about them from two
// blocks, a contradiction refused with its message, and the constraints as code generation receives them.
#include <algorithm>
#include <boost/function.hpp>
#include <iostream>
#include <string>
#include <vector>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/platform/Diagnostic.hpp"

void showSymbolicDimensions();

namespace {

using QLTypeSys::SymbolicDimsCGConstraint;
using QLTypeSys::SymbolicDimsTable;

// Two blocks of the model; the table only stores and compares their addresses.
const char kGainStorage = 0;
const char kSelectorStorage = 0;
QLBlock const* const kGain = reinterpret_cast<QLBlock const*>(&kGainStorage);
QLBlock const* const kSelector = reinterpret_cast<QLBlock const*>(&kSelectorStorage);

const char* blockName(QLBlock const* b) { return b == kGain ? "Gain" : b == kSelector ? "Selector" : "?"; }

void showPairs(SymbolicDimsTable& table, const std::vector<SymbolicDimsCGConstraint>& pairs, const char* op) {
  for (const SymbolicDimsCGConstraint& c : pairs) {
    std::cout << "    " << table.getDisplayString(c.getLHSId()) << ' ' << op << ' '
              << table.getDisplayString(c.getRHSId());
    const char* sep = "   from ";
    for (QLBlock const* b : c) {
      std::cout << sep << blockName(b);
      sep = ", ";
    }
    std::cout << '\n';
  }
}

void showRelations(SymbolicDimsTable& table, QLBlock const* block) {
  std::vector<int> ids;
  table.getSymbolicDimsConstraints(block, ids);
  std::cout << "  " << blockName(block) << " asserted:";
  for (int id : ids) std::cout << "  " << table.getDisplayString(id);
  std::cout << '\n';
}

}  // namespace

void showSymbolicDimensions() {
  std::cout << "\n=== Symbolic dimensions ===\n";
  SymbolicDimsTable table;
  const int n = table.registerSymbolicDims("N", nullptr);
  const int m = table.registerSymbolicDims("M", nullptr);
  const int twoN = table.registerSymbolicDimsExpr("2*N", nullptr);
  const int matrix = table.registerSymbolicDims(std::vector<std::string>{"N", "3"}, nullptr);
  for (int id : {n, m, twoN, matrix}) {
    std::vector<std::string> dims;
    table.getSymbolicDimensions(id, dims);
    std::cout << "  id " << id << "\t" << table.getDisplayString(id) << "\t" << dims.size() << " dimension(s), size "
              << table.getSymbolicDims(id).getSize().toString() << '\n';
  }
  std::cout << "  N+N simplifies to " << (table.getSymbolicDims(n) + table.getSymbolicDims(n)).toString()
            << "; \"N+N\" and \"2*N\" known equal? " << (table.equalSymbolicDims("N+N", "2*N") ? "yes" : "not known")
            << '\n';
  std::cout << "  facts from Gain: 2*N > M, N between 2 and 64\n";
  table.addGreaterThanRelation(twoN, m, kGain);
  table.addRange(n, 2, 64, kGain);
  std::cout << "  facts from Selector: M > 4, M == [N,3]\n";
  table.addGreaterThanConstraint(m, 4, kSelector);
  table.addEqualRelation(m, matrix, kSelector);
  const auto range = table.getRange(n);
  std::cout << "  N is in [" << range.min << ", " << range.max
            << "]; M and N*3 equal: " << (table.hasEqualRelation(m, matrix) ? "yes" : "no")
            << "; 2*N > M: " << (table.hasGreaterThanRelation(twoN, m) ? "yes" : "no") << '\n';
  std::cout << "  N and M known equal? " << (table.equalSymbolicDims("N", "M") ? "yes" : "not known (never \"no\")")
            << '\n';
  std::cout << "  Selector now claims M > 2*N:\n";
  try {
    table.addGreaterThanRelation(m, twoN, kSelector);
  } catch (const fl::except::IException& e) {
    const qlsvDiagnosticImpl* d = e.getDiagnostic();
    std::cout << "  refused: " << d->getCatalog() << " / " << d->getKey() << "\n    " << d->getMessage() << '\n';
  }
  std::cout << "  N above 64?\n";
  try {
    table.addGreaterThanConstraint(n, 64, kGain);
  } catch (const fl::except::IException& e) {
    std::cout << "  refused: " << e.what() << '\n';
  }

  std::cout << "  for code generation, equalities:\n";
  std::vector<SymbolicDimsCGConstraint> pairs;
  table.getEquivalentSymbolicDims(pairs);
  showPairs(table, pairs, "==");
  std::cout << "  orders (the blocks of an order are listed under its right side):\n";
  table.getGreaterThanSymbolicDims(pairs);
  showPairs(table, pairs, ">");
  std::vector<int> ids;
  table.getSymbolicDimsConstraints(ids);
  std::vector<std::string> all;
  for (int id : ids) all.push_back(table.getDisplayString(id));
  std::sort(all.begin(), all.end());
  std::cout << "  all relations (N>1 goes without saying under the default minimum of "
            << QLTypeSys::SymbDimsRange::defaultMin() << "):";
  for (const std::string& r : all) std::cout << "  " << r;
  std::cout << '\n';
  showRelations(table, kGain);
  showRelations(table, kSelector);
}
