// UnitTrie: the words of one text field (names, or symbols) by character, for splitting a prefix off a
// unit text. Nodes live in one vector and refer to their children by index, so neither building nor
// destroying a trie of long words recurses.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace QLTypeSys {
namespace internal {

/// A trie on wide characters.
class UnitTrie {
 public:
  UnitTrie();

  /// Adds a word; the empty word changes nothing.
  void insert(const std::wstring& word);
  /// Whether the word was inserted.
  bool contains(const std::wstring& word) const;
  /// Walks text from the root as far as children exist. consumed is the number of characters walked.
  /// Returns whether a node comes back: all of text consumed, or (with prefixMatching) the deepest node
  /// reached ends a stored word.
  bool walk(const std::wstring& text, bool prefixMatching, std::size_t& consumed) const;
  /// Every stored word that begins with start, in character order.
  std::vector<std::wstring> wordsWithPrefix(const std::wstring& start) const;
  void clear();

 private:
  struct Node {
    std::map<wchar_t, std::size_t> children;
    wchar_t character = 0;
    bool terminal = false;
  };
  std::vector<Node> nodes_;  // nodes_[0] is the root
};

}  // namespace internal
}  // namespace QLTypeSys
