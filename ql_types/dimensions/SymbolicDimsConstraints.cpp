// The constraint store's front and the feature that sets the default minimum of a size.
#include "ql_types/dimensions/SymbolicDimsConstraints.hpp"

#include <boost/function.hpp>
#include <stdexcept>

#include "ql_types/dimensions/internal/SymbolicDimsConstraintsImpl.hpp"
#include "ql_types/platform/QlFeature.hpp"

namespace QLTypeSys {

namespace {
// Made at start-up so that the host finds it by name before any table exists.
QlFeature symbolicDimensionDefaultMinimum("SymbolicDimensionDefaultMinimum", "Default minimum for symbolic dimension",
                                          __FILE__, "Quillon[Dimensions]", 11111, 2);

SymbolicDimsTable* checked(SymbolicDimsTable* table) {
  if (table == nullptr) throw std::invalid_argument("SymbolicDimsConstraints: no table");
  return table;
}
}  // namespace

int SymbDimsRange::defaultMin() { return symbolicDimensionDefaultMinimum.getValue(); }

SymbolicDimsConstraints::SymbolicDimsConstraints(SymbolicDimsTable* table)
    : impl_(std::make_unique<internal::SymbolicDimsConstraintsImpl>(checked(table))) {}

SymbolicDimsConstraints::~SymbolicDimsConstraints() = default;

void SymbolicDimsConstraints::addEqual(int a, int b, QLBlock const* const block) const { impl_->addEqual(a, b, block); }
void SymbolicDimsConstraints::addEqualValue(int id, int value, QLBlock const* const block) const {
  impl_->addEqualValue(id, value, block);
}
void SymbolicDimsConstraints::addGreaterThan(int a, int b, QLBlock const* const block) const {
  impl_->addGreaterThan(a, b, block);
}
void SymbolicDimsConstraints::addGreaterThanValue(int id, int value, QLBlock const* const block) {
  impl_->addGreaterThanValue(id, value, block);
}
void SymbolicDimsConstraints::addLessThanValue(int id, int value, QLBlock const* const block) {
  impl_->addLessThanValue(id, value, block);
}
void SymbolicDimsConstraints::addRange(int id, int min, int max, QLBlock const* const block) {
  impl_->addRange(id, min, max, block);
}

SymbDimsRange SymbolicDimsConstraints::getRange(int id) { return impl_->getRange(id); }
bool SymbolicDimsConstraints::isEqual(int a, int b) const { return impl_->isEqual(a, b); }
bool SymbolicDimsConstraints::isGreaterThan(int a, int b) const { return impl_->isGreaterThan(a, b); }

void SymbolicDimsConstraints::getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  impl_->getEquivalentSymbolicDims(out);
}
void SymbolicDimsConstraints::getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  impl_->getGreaterThanSymbolicDims(out);
}
void SymbolicDimsConstraints::getSymbolicDimsConstraints(std::vector<int>& out) const {
  impl_->getSymbolicDimsConstraints(out);
}
void SymbolicDimsConstraints::getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const {
  impl_->getSymbolicDimsConstraints(out);
}
void SymbolicDimsConstraints::getSymbolicDimsConstraints(QLBlock const* const block, std::vector<int>& out) const {
  impl_->getSymbolicDimsConstraints(block, out);
}
void SymbolicDimsConstraints::getSymbolicDimsConstraints(
    QLBlock const* const block, boost::function<QLBlock const*(QLBlock const*)> const& original,
    std::vector<int>& out) const {
  impl_->getSymbolicDimsConstraints(block, original, out);
}

}  // namespace QLTypeSys
