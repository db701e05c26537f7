// ProvenanceStore: the provenance relation (unit symbol <-> provenance identifier) and the whitelist tables.
//
// The relation is a Boost.Bimap so either side is one ordered lookup; a pair entered twice is kept once.
// The whitelist counts, for each ordered pair of fundamental unit symbols, how many stored units hold both.
#pragma once

#include <boost/bimap.hpp>
#include <boost/bimap/multiset_of.hpp>
#include <boost/bimap/set_of.hpp>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "ql_types/unitdb/UnitProvenance.hpp"

namespace QLTypeSys {
namespace internal {

class ProvenanceStore {
 public:
  /// left: unit symbol, right: provenance identifier.
  using Relation = boost::bimaps::bimap<boost::bimaps::multiset_of<std::wstring>,
                                        boost::bimaps::multiset_of<std::wstring>, boost::bimaps::set_of_relation<>>;

  std::unordered_map<std::wstring, UnitProvenance> provenances;
  Relation relation;
  /// Symbol -> the symbols seen with it, in symbol order.
  std::map<std::wstring, std::set<std::wstring>> partners;
  /// (a, b) -> how many units held both.
  std::map<std::pair<std::wstring, std::wstring>, long long> pairCounts;
};

}  // namespace internal
}  // namespace QLTypeSys
