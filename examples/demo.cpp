// The ql_types demo: real calls, real output.
#include <iostream>

#include "ql_types/ql_types.hpp"

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

}  // namespace

int main() {
  std::cout << "ql_types " << ql_types_version << ", built " << ql_types_build_date << '\n';
  showDiagnostics();
  return 0;
}
