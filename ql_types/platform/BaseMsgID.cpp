// Message catalogues: the compiled-in texts and the formatting of messages.
#include "ql_types/platform/BaseMsgID.hpp"

#include <boost/lexical_cast.hpp>

#include <unordered_map>

#include "ql_types/platform/Text.hpp"

namespace resource_core {

namespace {

std::vector<CatalogEntry> buildEntries() {
  std::vector<CatalogEntry> entries;
#define QL_MESSAGE(KEY, N, TEXT) entries.push_back(CatalogEntry{QL_CATALOG_NAME, #KEY, N, TEXT});
#define QL_CATALOG_NAME "QuillonTypes:general"
#include "ql_types/platform/catalogs/QuillonTypes_general.def"
#undef QL_CATALOG_NAME
#define QL_CATALOG_NAME "QuillonTypes:Unit"
#include "ql_types/platform/catalogs/QuillonTypes_Unit.def"
#undef QL_CATALOG_NAME
#define QL_CATALOG_NAME "QuillonTypes:Dimensions"
#include "ql_types/platform/catalogs/QuillonTypes_Dimensions.def"
#undef QL_CATALOG_NAME
#define QL_CATALOG_NAME "QL:symbolic"
#include "ql_types/platform/catalogs/QL_symbolic.def"
#undef QL_CATALOG_NAME
#define QL_CATALOG_NAME "ql_services:core"
#include "ql_types/platform/catalogs/ql_services.def"
#undef QL_CATALOG_NAME
#undef QL_MESSAGE
  return entries;
}

using TextIndex = std::unordered_map<std::string, const char*>;

const TextIndex& textIndex() {
  static const TextIndex index = [] {
    TextIndex m;
    for (const CatalogEntry& e : allCatalogEntries()) m.emplace(std::string(e.catalog) + '\n' + e.key, e.text);
    return m;
  }();
  return index;
}

std::string argumentText(const MsgArg& arg) {
  if (const auto* s = std::get_if<std::string>(&arg)) return *s;
  if (const auto* w = std::get_if<std::wstring>(&arg)) return ConvertUStringToStdString(*w);
  return boost::lexical_cast<std::string>(std::get<std::int64_t>(arg));
}

}  // namespace

const std::vector<CatalogEntry>& allCatalogEntries() {
  static const std::vector<CatalogEntry> entries = buildEntries();
  return entries;
}

std::vector<std::string> argumentTexts(const std::vector<MsgArg>& args) {
  std::vector<std::string> out;
  out.reserve(args.size());
  for (const MsgArg& a : args) out.push_back(argumentText(a));
  return out;
}

const char* findMessageText(const std::string& catalog, const std::string& key) {
  auto it = textIndex().find(catalog + '\n' + key);
  return it == textIndex().end() ? nullptr : it->second;
}

std::string formatMessage(const BaseMsgID& id) {
  const std::vector<std::string> args = argumentTexts(id.getArguments());
  const char* text = findMessageText(id.getCatalog(), id.getKey());
  if (!text) {
    std::string out = id.getCatalog() + ":" + id.getKey();
    if (!args.empty()) {
      out += '(';
      for (size_t i = 0; i < args.size(); ++i) out += (i ? ", " : "") + args[i];
      out += ')';
    }
    return out;
  }
  std::string out;
  for (const char* p = text; *p; ++p) {
    if ((p[0] == '{' && p[1] == '{') || (p[0] == '}' && p[1] == '}')) {
      out += *p++;
      continue;
    }
    if (*p == '{') {
      const char* q = p + 1;
      size_t n = 0;
      bool digits = false;
      while (*q >= '0' && *q <= '9') {
        n = n * 10 + static_cast<size_t>(*q++ - '0');
        digits = true;
        if (n > 1000) break;
      }
      if (digits && *q == '}') {
        // A placeholder without an argument stays as written, so a short list never crashes.
        out += n < args.size() ? args[n] : std::string(p, q + 1);
        p = q;
        continue;
      }
    }
    out += *p;
  }
  return out;
}

}  // namespace resource_core
