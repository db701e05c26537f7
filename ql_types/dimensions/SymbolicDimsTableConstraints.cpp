// The table as the front of its constraint store, and the output size of constants.
#include <boost/function.hpp>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/platform/Diagnostic.hpp"

namespace QLTypeSys {

// Facts about the built-ins or about ids without an entry are dropped silently: blocks pass them while a
// model is still partly unsized, and they carry no information.

void SymbolicDimsTable::addEqualConstraint(int id, int value, QLBlock const* block) {
  if (!isaSymbolicDimension(id)) return;
  constraints_->addEqualValue(id, value, getOriginalBlock(block));
}

void SymbolicDimsTable::addEqualRelation(int a, int b, QLBlock const* block) {
  if (!isaSymbolicDimension(a) || !isaSymbolicDimension(b)) return;
  constraints_->addEqual(a, b, getOriginalBlock(block));
}

void SymbolicDimsTable::addGreaterThanConstraint(int id, int value, QLBlock const* block) {
  if (!isaSymbolicDimension(id)) return;
  constraints_->addGreaterThanValue(id, value, getOriginalBlock(block));
}

void SymbolicDimsTable::addGreaterThanRelation(int a, int b, QLBlock const* block) {
  if (!isaSymbolicDimension(a) || !isaSymbolicDimension(b)) return;
  constraints_->addGreaterThan(a, b, getOriginalBlock(block));
}

void SymbolicDimsTable::addLessThanConstraint(int id, int value, QLBlock const* block) {
  if (!isaSymbolicDimension(id)) return;
  constraints_->addLessThanValue(id, value, getOriginalBlock(block));
}

void SymbolicDimsTable::addRange(int id, int min, int max, QLBlock const* const block) {
  if (!isaSymbolicDimension(id)) return;
  constraints_->addRange(id, min, max, getOriginalBlock(block));
}

SymbDimsRange SymbolicDimsTable::getRange(int id) const { return constraints_->getRange(id); }

bool SymbolicDimsTable::hasEqualRelation(int a, int b) const { return constraints_->isEqual(a, b); }

bool SymbolicDimsTable::hasGreaterThanRelation(int a, int b) const { return constraints_->isGreaterThan(a, b); }

bool SymbolicDimsTable::hasEqualConstraint(int id, int value) const {
  const SymbDimsRange r = getRange(id);
  return r.min == value && r.max == value;
}

bool SymbolicDimsTable::hasGreaterThanConstraint(int id, int value) const { return getRange(id).min > value; }

bool SymbolicDimsTable::hasLessThanConstraint(int id, int value) const { return getRange(id).max < value; }

void SymbolicDimsTable::getEquivalentSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  constraints_->getEquivalentSymbolicDims(out);
}

void SymbolicDimsTable::getGreaterThanSymbolicDims(std::vector<SymbolicDimsCGConstraint>& out) const {
  constraints_->getGreaterThanSymbolicDims(out);
}

void SymbolicDimsTable::getSymbolicDimsConstraints(std::vector<int>& out) const {
  constraints_->getSymbolicDimsConstraints(out);
}

void SymbolicDimsTable::getSymbolicDimsConstraints(std::vector<SymbolicDimsConstraint>& out) const {
  constraints_->getSymbolicDimsConstraints(out);
}

void SymbolicDimsTable::getSymbolicDimsConstraints(QLBlock const* const block, std::vector<int>& out) const {
  constraints_->getSymbolicDimsConstraints(block, out);
}

void SymbolicDimsTable::getSymbolicDimsConstraints(QLBlock const* const block,
                                                   boost::function<QLBlock const*(QLBlock const*)> const& original,
                                                   std::vector<int>& out) const {
  constraints_->getSymbolicDimsConstraints(block, original, out);
}

namespace SymbolicDimsServices::Const {

void ComputeOutput(SymbolicDimsTable& table, QLBlock const* block, std::vector<std::string> const& dims, int& outputId,
                   bool asVector) {
  if (dims.empty()) return;
  if (!asVector) {
    outputId = table.registerSymbolicDims(dims, block);
    return;
  }
  if (dims.size() != 2 || (dims[0] != "1" && dims[1] != "1"))
    qlsvThrowIExceptionFromDiagnostic(
        qlsvCreateDiagnostic(resource_core::makeMessage(qlmsg::dimensions::InvalidSymbolicDimensionSpec, "")), nullptr);
  const std::string& chosen = dims[0] == "1" ? dims[1] : dims[0];
  outputId = table.registerSymbolicDims(chosen.c_str(), block);
}

}  // namespace SymbolicDimsServices::Const

}  // namespace QLTypeSys
