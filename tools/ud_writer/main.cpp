// ql_ud_writer <catalogue source dir> <package path>: checks the catalogue and writes the package, or
// prints every problem as "file:line: message" and fails (so the build stops at the bad line).
#include <exception>
#include <iostream>
#include <vector>

#include "ud_writer/UdWriter.hpp"

int main(int argc, char** argv) {
  using namespace QLTypeSys::udwriter;
  if (argc != 3) {
    std::cerr << "usage: ql_ud_writer <catalogue source dir> <package path>\n";
    return 2;
  }
  Catalogue cat;
  std::vector<Problem> problems;
  readCatalogueDirectory(argv[1], cat, problems);
  validateCatalogue(cat, problems);
  for (const auto& p : problems) std::cerr << argv[1] << "/" << formatProblem(p) << "\n";
  if (!problems.empty()) return 1;
  try {
    writePackage(cat, argv[2]);
  } catch (const std::exception& e) {
    std::cerr << "ql_ud_writer: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
