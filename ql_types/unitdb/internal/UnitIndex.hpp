// UnitIndex: one table of the unit database (units, abstract units or prefixes). It owns a clone of each
// element, ordered by compare, and finds them by name and by symbol (the ASCII symbol counts as a
// symbol) through multimaps, with a trie of each kind of text for prefix splitting.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/unitdb/internal/UnitTrie.hpp"
#include "ql_types/units/UnitAliasInfo.hpp"

namespace QLTypeSys {
namespace internal {

/// The owned elements of one kind, by order, by name and by symbol.
template <class T>
class UnitIndex {
 public:
  struct Less {
    bool operator()(const T& a, const T& b) const { return a.compare(b) < 0; }
  };
  using Ref = std::reference_wrapper<const T>;
  using RefSet = std::set<Ref, Less>;

  explicit UnitIndex(bool prefixMatching) : prefixMatching_(prefixMatching) {}

  /// Stores a clone and returns the stored element. An equal element already there is returned instead,
  /// with the warning "UnitAlreadyInDatabase". A name or symbol that another element owns throws
  /// "SimilarInstanceThere"; the clone then stays in the all map alone (kept: it counts and is listed, but
  /// no text finds it, which is how the catalogue has always behaved).
  const T& add(const T& element) {
    auto found = all_.find(std::cref(element));
    if (found != all_.end()) {
      qlsvReportAsWarning(qlMakeDiagnostic(qlmsg::unit::UnitAlreadyInDatabase, element.getName(), element.getSymbol()));
      return *found->second;
    }
    std::unique_ptr<T> owned(element.clone());
    const T& stored = *owned;
    all_.emplace(std::cref(stored), std::move(owned));
    enterInMaps(stored);
    nameTrie_.insert(stored.getName());
    symbolTrie_.insert(stored.getSymbol());
    if (stored.getAsciiSymbol() != stored.getSymbol()) symbolTrie_.insert(stored.getAsciiSymbol());
    return stored;
  }

  /// Adds the elements stored under text, by name or by symbol.
  void findByName(const std::wstring& text, RefSet& out) const { findIn(byName_, text, out); }
  void findBySymbol(const std::wstring& text, RefSet& out) const { findIn(bySymbol_, text, out); }
  template <class Set>
  void findByNameInto(const std::wstring& text, Set& out) const {
    findIn(byName_, text, out);
  }
  template <class Set>
  void findBySymbolInto(const std::wstring& text, Set& out) const {
    findIn(bySymbol_, text, out);
  }

  template <class Set>
  void allInto(Set& out) const {
    for (const auto& entry : all_) out.insert(std::cref(*entry.second));
  }
  std::size_t size() const { return all_.size(); }
  const UnitTrie& nameTrie() const { return nameTrie_; }
  const UnitTrie& symbolTrie() const { return symbolTrie_; }
  bool prefixMatching() const { return prefixMatching_; }

  void clear() {
    byName_.clear();
    bySymbol_.clear();
    nameTrie_.clear();
    symbolTrie_.clear();
    all_.clear();
  }

 private:
  using TextMap = std::multimap<std::wstring, const T*>;

  template <class Set>
  static void findIn(const TextMap& map, const std::wstring& text, Set& out) {
    auto range = map.equal_range(text);
    for (auto it = range.first; it != range.second; ++it) out.insert(std::cref(*it->second));
  }

  // An alias owns only the texts it did not take from its target; a plain element owns all three, and
  // an ASCII symbol equal to the symbol is entered twice (lookups merge the hits).
  void enterInMaps(const T& e) {
    bool ownName = true, ownSymbol = true, ownAscii = true;
    const bool alias = e.isAliased();
    if (alias) {
      if (const auto* info = dynamic_cast<const UnitAliasInfo*>(&e)) {
        ownName = !info->isNameInherited();
        ownSymbol = !info->isSymbolInherited();
        ownAscii = !info->isAsciiSymbolInherited() && e.getAsciiSymbol() != e.getSymbol();
      }
    }
    // Name against names, symbols against symbols and ASCII symbols: never a name against a symbol.
    if ((ownName && byName_.count(e.getName()) != 0) || (ownSymbol && bySymbol_.count(e.getSymbol()) != 0) ||
        (ownAscii && bySymbol_.count(e.getAsciiSymbol()) != 0))
      qlRaise(qlmsg::unit::SimilarInstanceThere, e.getName(), e.getSymbol(), e.getAsciiSymbol());
    enterText(ownName, alias, e.getName(), e, byName_, qlmsg::unit::NameNotDefined, e.getSymbol());
    enterText(ownSymbol, alias, e.getSymbol(), e, bySymbol_, qlmsg::unit::SymbolNotDefined, e.getName());
    enterText(ownAscii, alias, e.getAsciiSymbol(), e, bySymbol_, qlmsg::unit::ASCIISymbolNotDefined, e.getName());
  }

  static void enterText(bool owned, bool alias, const std::wstring& text, const T& e, TextMap& map,
                        const resource_core::MsgKey<1>& missing, const std::wstring& argument) {
    if (!owned) return;
    if (text.empty()) {
      if (!alias) qlsvReportAsWarning(qlMakeDiagnostic(missing, argument));
      return;
    }
    map.emplace(text, &e);
  }

  TextMap byName_;
  TextMap bySymbol_;
  std::map<Ref, std::unique_ptr<T>, Less> all_;
  UnitTrie nameTrie_;
  bool prefixMatching_;
  UnitTrie symbolTrie_;
};

}  // namespace internal
}  // namespace QLTypeSys
