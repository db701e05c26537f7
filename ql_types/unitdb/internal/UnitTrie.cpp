// UnitTrie: insertion, the walk that finds the longest stored prefix, and word listing with an explicit stack.
#include "ql_types/unitdb/internal/UnitTrie.hpp"

#include <utility>

namespace QLTypeSys {
namespace internal {

UnitTrie::UnitTrie() : nodes_(1) {}

void UnitTrie::insert(const std::wstring& word) {
  if (word.empty()) return;
  std::size_t at = 0;
  for (wchar_t c : word) {
    auto it = nodes_[at].children.find(c);
    if (it == nodes_[at].children.end()) {
      Node node;
      node.character = c;
      nodes_.push_back(std::move(node));  // may reallocate: take no reference across it
      it = nodes_[at].children.emplace(c, nodes_.size() - 1).first;
    }
    at = it->second;
  }
  nodes_[at].terminal = true;
}

bool UnitTrie::contains(const std::wstring& word) const {
  std::size_t at = 0;
  for (wchar_t c : word) {
    auto it = nodes_[at].children.find(c);
    if (it == nodes_[at].children.end()) return false;
    at = it->second;
  }
  return !word.empty() && nodes_[at].terminal;
}

bool UnitTrie::walk(const std::wstring& text, bool prefixMatching, std::size_t& consumed) const {
  std::size_t at = 0;
  consumed = 0;
  for (wchar_t c : text) {
    auto it = nodes_[at].children.find(c);
    if (it == nodes_[at].children.end()) break;
    at = it->second;
    ++consumed;
  }
  if (consumed == text.size()) return true;
  return prefixMatching && nodes_[at].terminal;
}

std::vector<std::wstring> UnitTrie::wordsWithPrefix(const std::wstring& start) const {
  std::vector<std::wstring> words;
  std::size_t at = 0;
  for (wchar_t c : start) {
    auto it = nodes_[at].children.find(c);
    if (it == nodes_[at].children.end()) return words;
    at = it->second;
  }
  // Depth first in character order with one shared buffer (children pushed in reverse so the smallest pops
  // first); each entry knows its depth, so listing costs the size of the output, not its square.
  std::wstring word = start;
  std::vector<std::pair<std::size_t, std::size_t>> stack{{at, start.size()}};
  while (!stack.empty()) {
    const auto [node, depth] = stack.back();
    stack.pop_back();
    word.resize(depth);
    if (node != at) word += nodes_[node].character;
    if (nodes_[node].terminal) words.push_back(word);
    const auto& children = nodes_[node].children;
    for (auto it = children.rbegin(); it != children.rend(); ++it) stack.emplace_back(it->second, word.size());
  }
  return words;
}

void UnitTrie::clear() { nodes_.assign(1, Node()); }

}  // namespace internal
}  // namespace QLTypeSys
