// The name index of a data type table: for each name, the first vector position holding it.
//
// Open addressing over (hash, position) pairs, so lookups and growth walk flat memory; names
// are compared in place in the type objects. Names held by more than one position (briefly
// while a type is replaced, or by a subclass's doing) keep all their positions in a side map.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace QLTypeSys {

class DataType;

namespace internal {

class NameIndex {
 public:
  using Types = std::vector<DataType*>;
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  /// The first position holding name, or npos.
  std::size_t find(const Types& types, std::string_view name) const;
  /// Records that position holds the name of types[position].
  void insert(const Types& types, std::size_t position);
  /// Forgets position, which still holds the name it was recorded with.
  void erase(const Types& types, std::size_t position);
  /// Rebuilds from every position of types.
  void rebuild(const Types& types);

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t position;  // position + 1; 0 empty, kTomb erased
  };
  static constexpr std::uint32_t kTomb = 0xFFFFFFFFu;

  std::size_t lookup(const Types& types, std::string_view name, std::uint32_t hash) const;
  void grow(std::size_t minimum);

  std::vector<Slot> slots_;
  std::size_t used_ = 0;  // live slots plus tombstones
  std::unordered_map<std::string, std::vector<std::size_t>> shared_;
};

}  // namespace internal
}  // namespace QLTypeSys
