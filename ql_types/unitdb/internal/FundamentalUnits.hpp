// FundamentalUnits: the eight fundamental units and abstract units, and the dimensionless unitfree,
// where every resolution of a unit expression ends. Built in code, owned by the unit database, in no
// index: only the matching functions reach them. Each holds itself in its term maps, which ends the
// resolution of an expression without any recursion.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ql_types/units/UnitBase.hpp"

namespace QLTypeSys {
namespace internal {

/// The fundamental units of the catalogue.
class FundamentalUnits {
 public:
  FundamentalUnits();
  ~FundamentalUnits();
  FundamentalUnits(const FundamentalUnits&) = delete;
  FundamentalUnits& operator=(const FundamentalUnits&) = delete;

  const UnitBase::UnitSet& abstractSet() const { return abstractSet_; }
  const UnitBase::UnitSet& unitSet() const { return unitSet_; }
  const UnitBase::UnitSet& extraAbstractSet() const { return extraAbstractSet_; }
  const UnitBase& unitfree() const { return *unitfree_; }

 private:
  std::vector<std::unique_ptr<UnitBase>> units_;
  std::vector<std::unique_ptr<UnitBase>> abstractUnits_;
  std::unique_ptr<UnitBase> unitfree_;
  UnitBase::UnitSet abstractSet_;
  UnitBase::UnitSet unitSet_;
  UnitBase::UnitSet extraAbstractSet_;
};

}  // namespace internal
}  // namespace QLTypeSys
