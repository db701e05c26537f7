// UnitTrie against a plain set of words: walks, membership and listings agree, and long words do not recurse.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

#include "ql_types/unitdb/internal/UnitTrie.hpp"

namespace {

using QLTypeSys::internal::UnitTrie;

// The reference walk: the longest prefix of text that begins some stored word.
std::size_t referenceConsumed(const std::set<std::wstring>& words, const std::wstring& text) {
  std::size_t best = 0;
  for (const std::wstring& w : words) {
    std::size_t n = 0;
    while (n < w.size() && n < text.size() && w[n] == text[n]) ++n;
    best = std::max(best, n);
  }
  return best;
}

TEST(UnitTrie, AgreesWithAReferenceOnRandomWords) {
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> len(0, 5), ch(0, 3);
  for (int round = 0; round < 50; ++round) {
    UnitTrie trie;
    std::set<std::wstring> words;
    for (int i = 0; i < 20; ++i) {
      std::wstring w;
      for (int n = len(rng); n > 0; --n) w += static_cast<wchar_t>(L'a' + ch(rng));
      trie.insert(w);
      if (!w.empty()) words.insert(w);
    }
    for (int i = 0; i < 40; ++i) {
      std::wstring t;
      for (int n = len(rng); n > 0; --n) t += static_cast<wchar_t>(L'a' + ch(rng));
      std::size_t consumed = 99;
      const bool node = trie.walk(t, true, consumed);
      EXPECT_EQ(consumed, referenceConsumed(words, t));
      EXPECT_EQ(trie.contains(t), words.count(t) == 1);
      const bool terminal = words.count(t.substr(0, consumed)) == 1;
      EXPECT_EQ(node, consumed == t.size() || terminal);
      EXPECT_EQ(trie.walk(t, false, consumed), consumed == t.size());
      std::vector<std::wstring> expected;
      for (const std::wstring& w : words)
        if (w.compare(0, t.size(), t) == 0) expected.push_back(w);
      EXPECT_EQ(trie.wordsWithPrefix(t), expected);
    }
  }
}

TEST(UnitTrie, LongWordsAndClear) {
  UnitTrie trie;
  const std::wstring longWord(300000, L'x');
  trie.insert(longWord);
  EXPECT_TRUE(trie.contains(longWord));
  EXPECT_FALSE(trie.contains(longWord.substr(1)));
  EXPECT_EQ(trie.wordsWithPrefix(L"xxx").size(), 1u);
  trie.clear();
  EXPECT_FALSE(trie.contains(longWord));
  std::size_t consumed = 1;
  EXPECT_TRUE(trie.walk(L"", true, consumed));
  EXPECT_EQ(consumed, 0u);
}

}  // namespace
