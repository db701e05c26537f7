// Writes the catalogue as an SQLite database and wraps it in the OPC package the loader opens: content
// types, package relationships, core properties and the part "/ud_part". Groups of unit systems, prefixes
// and provenances are numbered per distinct combination, in order of first use.
#include <sqlite3.h>
#include <zip.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "ud_writer/UdWriter.hpp"

namespace QLTypeSys {
namespace udwriter {

namespace {

const char* const kSchema[][2] = {
    {"unit_systems", "Id INTEGER PRIMARY KEY, Name TEXT"},
    {"abstract_units", "Id INTEGER PRIMARY KEY, Name TEXT, Expression TEXT"},
    {"abstract_unit_relations",
     "Id INTEGER PRIMARY KEY, AbstractUnitA INTEGER, AbstractUnitB INTEGER, ConversionFactor INTEGER"},
    {"conversion_factors", "Id INTEGER PRIMARY KEY, FactorType INTEGER, ConversionFactorStr TEXT"},
    {"unit_prefixes",
     "Id INTEGER PRIMARY KEY, Name TEXT, Symbol TEXT, AsciiSymbol TEXT, Display TEXT, UnitSystemGroup INTEGER, "
     "ProvenanceGroup INTEGER, ConversionFactor INTEGER"},
    {"prefix_aliases",
     "Id INTEGER PRIMARY KEY, Name TEXT, Symbol TEXT, AsciiSymbol TEXT, Display TEXT, UnitPrefix INTEGER, "
     "UnitSystemGroup INTEGER, ProvenanceGroup INTEGER"},
    {"units",
     "Id INTEGER PRIMARY KEY, Name TEXT, Symbol TEXT, AsciiSymbol TEXT, Expression TEXT, Display TEXT, "
     "AbstractUnit INTEGER, SubUnit TEXT, UnitSystemGroup INTEGER, PrefixGroup INTEGER, ProvenanceGroup INTEGER, "
     "ConversionFactor INTEGER"},
    {"unit_aliases",
     "Id INTEGER PRIMARY KEY, Name TEXT, Symbol TEXT, AsciiSymbol TEXT, Display TEXT, RefUnit INTEGER, "
     "RefPrefix INTEGER, UnitSystemGroup INTEGER, ProvenanceGroup INTEGER"},
    {"unit_system_groups", "Id INTEGER PRIMARY KEY"},
    {"unit_system_groups_to_unit_systems", "unit_system_groups_id INTEGER, unit_systems_id INTEGER"},
    {"prefix_groups", "Id INTEGER PRIMARY KEY"},
    {"prefix_groups_to_prefixes", "prefix_groups_id INTEGER, unit_prefixes_id INTEGER"},
    {"provenance_groups_to_provenances", "provenance_groups_id INTEGER, provenances_id INTEGER"},
    {"provenances",
     "Id INTEGER PRIMARY KEY, Name TEXT, Title TEXT, Subtitle TEXT, Organization TEXT, OrganizationFullName TEXT, "
     "Year INTEGER, URLs TEXT, Edition TEXT"},
    {"physmod_to_units_translation", "Id INTEGER PRIMARY KEY, physmod_symbol TEXT, units_symbol TEXT"},
};

// A value to bind: text, integer or NULL.
struct Value {
  enum Kind { Null, Int, Text } kind = Null;
  long long i = 0;
  std::string s;
  Value() = default;
  Value(long long v) : kind(Int), i(v) {}                       // NOLINT(google-explicit-constructor)
  Value(int v) : kind(Int), i(v) {}                             // NOLINT(google-explicit-constructor)
  Value(size_t v) : kind(Int), i(static_cast<long long>(v)) {}  // NOLINT(google-explicit-constructor)
  Value(std::string v) : kind(Text), s(std::move(v)) {}         // NOLINT(google-explicit-constructor)
  static Value textOrNull(const std::string& v) { return v.empty() ? Value() : Value(v); }
};

class Db {
 public:
  explicit Db(const std::string& path) {
    std::remove(path.c_str());
    if (sqlite3_open(path.c_str(), &db_) != SQLITE_OK) {
      const std::string m = db_ ? sqlite3_errmsg(db_) : "out of memory";
      sqlite3_close(db_);
      throw std::runtime_error("cannot create " + path + ": " + m);
    }
  }
  ~Db() { sqlite3_close(db_); }
  Db(const Db&) = delete;
  Db& operator=(const Db&) = delete;

  void exec(const std::string& sql) {
    char* err = nullptr;
    if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
      const std::string m = err ? err : "unknown error";
      sqlite3_free(err);
      throw std::runtime_error("SQL failed: " + m + " in: " + sql);
    }
  }

  void insert(const std::string& table, const std::vector<Value>& values) {
    if (omit_.count(table)) return;
    std::string sql = "INSERT INTO " + table + " VALUES (";
    for (size_t i = 0; i < values.size(); ++i) sql += i ? ",?" : "?";
    sql += ")";
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &st, nullptr) != SQLITE_OK)
      throw std::runtime_error(std::string("SQL failed: ") + sqlite3_errmsg(db_));
    for (size_t i = 0; i < values.size(); ++i) {
      const int k = static_cast<int>(i) + 1;
      const Value& v = values[i];
      if (v.kind == Value::Int)
        sqlite3_bind_int64(st, k, v.i);
      else if (v.kind == Value::Text)
        sqlite3_bind_text(st, k, v.s.c_str(), static_cast<int>(v.s.size()), SQLITE_TRANSIENT);
      else
        sqlite3_bind_null(st, k);
    }
    const int rc = sqlite3_step(st);
    sqlite3_finalize(st);
    if (rc != SQLITE_DONE) throw std::runtime_error(std::string("SQL insert failed: ") + sqlite3_errmsg(db_));
  }

  std::set<std::string> omit_;

 private:
  sqlite3* db_ = nullptr;
};

// Numbers each distinct list of ids once, from 1, and records its members.
class Groups {
 public:
  int idOf(const std::vector<long long>& members) {
    auto [it, fresh] = ids_.emplace(members, static_cast<int>(ids_.size()) + 1);
    if (fresh) order_.push_back(members);
    return it->second;
  }
  const std::vector<std::vector<long long>>& inOrder() const { return order_; }

 private:
  std::map<std::vector<long long>, int> ids_;
  std::vector<std::vector<long long>> order_;
};

template <class Rows>
std::map<std::string, long long> idsByName(const Rows& rows) {
  std::map<std::string, long long> ids;
  long long id = 0;
  for (const auto& r : rows) ids.emplace(r.name, ++id);
  return ids;
}

// Ids of the names; a name that is not there gets -1, so a broken catalogue still writes (tests want that).
std::vector<long long> idsOf(const std::map<std::string, long long>& ids, const std::vector<std::string>& names) {
  std::vector<long long> out;
  for (const auto& n : names) {
    const auto it = ids.find(n);
    out.push_back(it == ids.end() ? -1 : it->second);
  }
  return out;
}

long long idOf(const std::map<std::string, long long>& ids, const std::string& name) {
  const auto it = ids.find(name);
  return it == ids.end() ? -1 : it->second;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

const char kContentTypes[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
    "<Override PartName=\"/ud_part\" ContentType=\"application/vnd.tarnwell.norvex.data-export\"/>"
    "<Override PartName=\"/docProps/core.xml\" "
    "ContentType=\"application/vnd.openxmlformats-package.core-properties+xml\"/>"
    "</Types>\n";

const char kCoreProperties[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<cp:coreProperties "
    "xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\">"
    "<dc:title>Unit database</dc:title><dc:creator>ql_ud_writer</dc:creator>"
    "<cp:contentType>application/vnd.tarnwell.norvex.data-export</cp:contentType>"
    "</cp:coreProperties>\n";

std::string relationships(bool core) {
  std::string s =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">";
  if (core)
    s += "<Relationship Id=\"rId1\" "
         "Type=\"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties\" "
         "Target=\"docProps/core.xml\"/>";
  s += "<Relationship Id=\"rId2\" Type=\"http://schemas.tarnwell.com/package/2006/relationships/data-export\" "
       "Target=\"ud_part\"/>";
  s += "</Relationships>\n";
  return s;
}

}  // namespace

void writeDatabase(const Catalogue& cat, const std::string& dbPath, const WriteOptions& options) {
  Db db(dbPath);
  db.exec("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; BEGIN");
  for (const auto& t : kSchema) {
    if (options.omitTables.count(t[0]) == 0) db.exec(std::string("CREATE TABLE ") + t[0] + " (" + t[1] + ")");
  }
  db.omit_ = options.omitTables;

  const auto systemIds = idsByName(cat.systems);
  const auto provenanceIds = idsByName(cat.provenances);
  const auto abstractIds = idsByName(cat.abstractUnits);
  const auto prefixIds = idsByName(cat.prefixes);
  const auto unitIds = idsByName(cat.units);
  std::map<std::string, std::vector<std::string>> prefixSets;
  for (const auto& s : cat.prefixSets) prefixSets.emplace(s.name, s.prefixes);

  Groups systemGroups, prefixGroups, provenanceGroups;
  std::map<FactorText, long long> factorIds;
  std::vector<const FactorText*> factors;
  auto factorId = [&](const FactorText& f) {
    auto [it, fresh] = factorIds.emplace(f, static_cast<long long>(factorIds.size()) + 1);
    if (fresh) factors.push_back(&it->first);
    return it->second;
  };

  long long id = 0;
  for (const auto& s : cat.systems) db.insert("unit_systems", {++id, s.name});
  id = 0;
  for (const auto& a : cat.abstractUnits) db.insert("abstract_units", {++id, a.name, a.expression});
  id = 0;
  for (const auto& r : cat.reciprocals)
    db.insert("abstract_unit_relations", {++id, idOf(abstractIds, r.a), idOf(abstractIds, r.b), factorId(r.factor)});
  id = 0;
  for (const auto& p : cat.prefixes)
    db.insert("unit_prefixes",
              {++id, p.name, p.symbol, p.ascii, p.display, systemGroups.idOf(idsOf(systemIds, p.systems)),
               provenanceGroups.idOf(idsOf(provenanceIds, p.provenances)), factorId(p.factor)});
  id = 0;
  for (const auto& a : cat.prefixAliases)
    db.insert("prefix_aliases", {++id, a.name, a.symbol, a.ascii, a.display, idOf(prefixIds, a.prefix),
                                 systemGroups.idOf(idsOf(systemIds, a.systems)),
                                 provenanceGroups.idOf(idsOf(provenanceIds, a.provenances))});
  id = 0;
  for (const auto& u : cat.units) {
    std::vector<std::string> admitted;
    for (const auto& s : u.prefixSets) {
      const auto it = prefixSets.find(s);
      if (it == prefixSets.end()) continue;
      for (const auto& p : it->second) {
        if (std::find(admitted.begin(), admitted.end(), p) == admitted.end()) admitted.push_back(p);
      }
    }
    db.insert("units",
              {++id, u.name, u.symbol, u.ascii, u.expression, u.display, idOf(abstractIds, u.abstractUnit), u.subUnit,
               systemGroups.idOf(idsOf(systemIds, u.systems)), prefixGroups.idOf(idsOf(prefixIds, admitted)),
               provenanceGroups.idOf(idsOf(provenanceIds, u.provenances)), factorId(u.factor)});
  }
  id = 0;
  for (const auto& a : cat.aliases)
    db.insert("unit_aliases", {++id, a.name, Value::textOrNull(a.symbol), Value::textOrNull(a.ascii), a.display,
                               idOf(unitIds, a.target), a.prefix.empty() ? Value() : Value(idOf(prefixIds, a.prefix)),
                               systemGroups.idOf(idsOf(systemIds, a.systems)),
                               provenanceGroups.idOf(idsOf(provenanceIds, a.provenances))});
  id = 0;
  for (const auto& p : cat.provenances)
    db.insert("provenances",
              {++id, p.name, p.title, p.subtitle, p.organization, p.organizationFullName, p.year, p.urls, p.edition});
  id = 0;
  for (const auto& t : cat.translations) db.insert("physmod_to_units_translation", {++id, t.physmod, t.units});

  for (const FactorText* f : factors) db.insert("conversion_factors", {factorIds.at(*f), f->type, f->text});
  long long g = 0;
  for (const auto& members : systemGroups.inOrder()) {
    db.insert("unit_system_groups", {++g});
    for (long long m : members) db.insert("unit_system_groups_to_unit_systems", {g, m});
  }
  g = 0;
  for (const auto& members : prefixGroups.inOrder()) {
    db.insert("prefix_groups", {++g});
    for (long long m : members) db.insert("prefix_groups_to_prefixes", {g, m});
  }
  g = 0;
  for (const auto& members : provenanceGroups.inOrder()) {
    ++g;
    for (long long m : members) db.insert("provenance_groups_to_provenances", {g, m});
  }
  db.exec("COMMIT");
  if (!options.extraSql.empty()) db.exec(options.extraSql);
}

void writeRawFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

void writePackage(const Catalogue& cat, const std::string& path, const WriteOptions& options) {
  const std::string dbPath = path + ".sqlite.tmp";
  writeDatabase(cat, dbPath, options);
  const std::string dbBytes = readFile(dbPath);
  std::remove(dbPath.c_str());

  std::remove(path.c_str());
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &err);
  if (z == nullptr) throw std::runtime_error("cannot create " + path);
  // The entries' texts must outlive zip_close, which is where libzip reads them.
  std::vector<std::pair<std::string, std::string>> entries;
  if (options.contentTypes) entries.emplace_back("[Content_Types].xml", kContentTypes);
  if (options.relationships) entries.emplace_back("_rels/.rels", relationships(options.coreProperties));
  if (options.coreProperties) entries.emplace_back("docProps/core.xml", kCoreProperties);
  if (options.udPart) entries.emplace_back("ud_part", dbBytes);
  for (const auto& [name, bytes] : entries) {
    zip_source_t* src = zip_source_buffer(z, bytes.data(), bytes.size(), 0);
    if (src == nullptr || zip_file_add(z, name.c_str(), src, ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8) < 0) {
      if (src) zip_source_free(src);
      zip_discard(z);
      throw std::runtime_error("cannot add " + name + " to " + path);
    }
  }
  if (zip_close(z) != 0) {
    const std::string m = zip_strerror(z);
    zip_discard(z);
    throw std::runtime_error("cannot write " + path + ": " + m);
  }
}

}  // namespace udwriter
}  // namespace QLTypeSys
