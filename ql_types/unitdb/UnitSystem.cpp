// UnitSystem.
#include "ql_types/unitdb/UnitSystem.hpp"

#include <ostream>

#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/units/internal/PrintText.hpp"

namespace QLTypeSys {

UnitSystem::~UnitSystem() = default;
const std::wstring& UnitSystem::getName() const { return name_; }
void UnitSystem::print(std::ostream& out) const {
  out << "Unit System: '" << internal::printableUtf8(getName()) << "'" << std::endl;
}

bool UnitSystem::isValidStringForUnitSystemName(const std::wstring& text) {
  for (wchar_t c : text)
    if (!qlsvIsalphanum(c)) return false;
  return true;
}

bool UnitSystem::isValidUnitSystemName(const std::wstring& name) {
  return UnitDatabase::getUnitDatabase()->getUnitSystem(name) != nullptr;
}

}  // namespace QLTypeSys
