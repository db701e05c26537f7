// A message reference: catalogue, key and arguments, before it is turned into text.
//
// Every rule violation in the library is built as a BaseMsgID and then turned into a
// diagnostic (see Diagnostic.hpp). Arguments keep their kind, narrow text, wide text
// (UTF-16 code units) or a 64-bit integer, so that hosts can read them back exactly.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace resource_core {

/// One argument of a message: narrow (UTF-8) text, wide (UTF-16) text, or an integer.
using MsgArg = std::variant<std::string, std::wstring, std::int64_t>;

namespace detail {
inline MsgArg toMsgArg(const char* s) { return std::string(s ? s : ""); }
inline MsgArg toMsgArg(const std::string& s) { return s; }
inline MsgArg toMsgArg(std::string&& s) { return std::move(s); }
inline MsgArg toMsgArg(const wchar_t* s) { return std::wstring(s ? s : L""); }
inline MsgArg toMsgArg(const std::wstring& s) { return s; }
inline MsgArg toMsgArg(std::wstring&& s) { return std::move(s); }
template <class T, class = std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>>>
MsgArg toMsgArg(T v) {
  return static_cast<std::int64_t>(v);
}
}  // namespace detail

/// A catalogue name, a key in it and the arguments for its placeholders.
class BaseMsgID {
 public:
  BaseMsgID(std::string catalog, std::string key, std::vector<MsgArg> args = {})
      : catalog_(std::move(catalog)), key_(std::move(key)), args_(std::move(args)) {}

  /// Builds the argument list from any mix of texts and integers.
  template <class... A>
  static BaseMsgID make(std::string catalog, std::string key, A&&... args) {
    std::vector<MsgArg> list;
    list.reserve(sizeof...(A));
    (list.push_back(detail::toMsgArg(std::forward<A>(args))), ...);
    return BaseMsgID(std::move(catalog), std::move(key), std::move(list));
  }

  const std::string& getCatalog() const { return catalog_; }
  const std::string& getKey() const { return key_; }
  const std::vector<MsgArg>& getArguments() const { return args_; }

 private:
  std::string catalog_;
  std::string key_;
  std::vector<MsgArg> args_;
};

/// Each argument as UTF-8 text; integers in decimal.
std::vector<std::string> argumentTexts(const std::vector<MsgArg>& args);

/// The English text of a catalogue entry, or null if the catalogue has no such key.
const char* findMessageText(const std::string& catalog, const std::string& key);

/// Formats a message: the catalogue text with {0}, {1}, ... replaced by the arguments.
/// A key without a text formats as "catalog:key(arg, arg)"; "{{" and "}}" stand for braces.
std::string formatMessage(const BaseMsgID& id);

/// One compiled-in catalogue entry.
struct CatalogEntry {
  const char* catalog;
  const char* key;
  int argumentCount;
  const char* text;
};

/// Every entry of every compiled-in catalogue, for tests and tools.
const std::vector<CatalogEntry>& allCatalogEntries();

}  // namespace resource_core
