// The open-addressing name index of data type tables.
#include "ql_types/datatypes/internal/NameIndex.hpp"

#include <algorithm>
#include <functional>

#include "ql_types/datatypes/DataType.hpp"

namespace QLTypeSys {
namespace internal {

namespace {
std::uint32_t hashOf(std::string_view name) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
}
}  // namespace

std::size_t NameIndex::lookup(const Types& types, std::string_view name, std::uint32_t hash) const {
  if (slots_.empty()) return npos;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& s = slots_[i];
    if (s.position == 0) return npos;
    if (s.position != kTomb && s.hash == hash && types[s.position - 1]->getName() == name) return i;
  }
}

std::size_t NameIndex::find(const Types& types, std::string_view name) const {
  const std::size_t slot = lookup(types, name, hashOf(name));
  return slot == npos ? npos : slots_[slot].position - 1;
}

void NameIndex::grow(std::size_t minimum) {
  std::size_t capacity = 16;
  while (capacity < minimum * 2) capacity *= 2;
  std::vector<Slot> old;
  old.swap(slots_);
  slots_.assign(capacity, Slot{0, 0});
  used_ = 0;
  const std::size_t mask = capacity - 1;
  for (const Slot& s : old) {
    if (s.position == 0 || s.position == kTomb) continue;
    std::size_t i = s.hash & mask;
    while (slots_[i].position != 0) i = (i + 1) & mask;
    slots_[i] = s;
    ++used_;
  }
}

void NameIndex::insert(const Types& types, std::size_t position) {
  const std::string& name = types[position]->getName();
  const std::uint32_t hash = hashOf(name);
  const std::size_t slot = lookup(types, name, hash);
  if (slot != npos) {
    const std::size_t first = slots_[slot].position - 1;
    std::vector<std::size_t>& all = shared_[name];
    if (all.empty()) all.push_back(first);
    all.insert(std::upper_bound(all.begin(), all.end(), position), position);
    slots_[slot].position = static_cast<std::uint32_t>(all.front() + 1);
    return;
  }
  if ((used_ + 1) * 2 > slots_.size()) grow(used_ + 1);
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = hash & mask;
  while (slots_[i].position != 0 && slots_[i].position != kTomb) i = (i + 1) & mask;
  if (slots_[i].position == 0) ++used_;
  slots_[i] = Slot{hash, static_cast<std::uint32_t>(position + 1)};
}

void NameIndex::erase(const Types& types, std::size_t position) {
  const std::string& name = types[position]->getName();
  const std::size_t slot = lookup(types, name, hashOf(name));
  if (slot == npos) return;
  auto it = shared_.find(name);
  if (it != shared_.end()) {
    std::vector<std::size_t>& all = it->second;
    all.erase(std::remove(all.begin(), all.end(), position), all.end());
    slots_[slot].position = static_cast<std::uint32_t>(all.front() + 1);
    if (all.size() == 1) shared_.erase(it);
    return;
  }
  if (slots_[slot].position == position + 1) slots_[slot].position = kTomb;
}

void NameIndex::rebuild(const Types& types) {
  slots_.clear();
  used_ = 0;
  shared_.clear();
  grow(types.size());
  for (std::size_t i = 0; i < types.size(); ++i) insert(types, i);
}

}  // namespace internal
}  // namespace QLTypeSys
