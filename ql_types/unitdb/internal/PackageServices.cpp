// The package and database stand-ins over libzip, Boost.PropertyTree and SQLite.
#include "ql_types/unitdb/internal/PackageServices.hpp"

#include <sqlite3.h>
#include <zip.h>

#include <algorithm>
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <cctype>
#include <climits>
#include <sstream>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/Text.hpp"

namespace opc {

namespace {

std::string narrow(const std::wstring& text) {
  try {
    return ::ConvertUStringToStdString(text);
  } catch (const std::exception&) {
    throw Exception("a name that is not valid text");
  }
}

// Reads XML text; a document that is not well-formed throws opc::Exception.
boost::property_tree::ptree parseXml(const std::string& text, const std::string& what) {
  boost::property_tree::ptree tree;
  std::istringstream in(text);
  try {
    boost::property_tree::read_xml(in, tree);
  } catch (const boost::property_tree::xml_parser_error& e) {
    throw Exception(what + " is not well-formed XML: " + e.message());
  }
  return tree;
}

// The first child of tree whose name, less any namespace prefix, is local.
const boost::property_tree::ptree* childByLocalName(const boost::property_tree::ptree& tree, const std::string& local) {
  for (const auto& child : tree) {
    const std::string& name = child.first;
    const std::size_t colon = name.find(':');
    if ((colon == std::string::npos ? name : name.substr(colon + 1)) == local) return &child.second;
  }
  return nullptr;
}

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

constexpr zip_uint64_t maxItemBytes = zip_uint64_t(1) << 30;

const char* const coreRelationship =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";

}  // namespace

namespace zippackage {

struct ZipPhysicalPackage::Impl {
  std::string path;
  zip_t* archive = nullptr;
};

ZipPhysicalPackage::ZipPhysicalPackage(const std::wstring& path, bool readOnly, const std::wstring& password)
    : impl_(std::make_unique<Impl>()) {
  if (!readOnly) throw Exception("packages can only be read");
  if (!password.empty()) throw Exception("encrypted packages are not supported");
  impl_->path = narrow(path);
}

ZipPhysicalPackage::~ZipPhysicalPackage() { close(); }

void ZipPhysicalPackage::open() {
  if (impl_->archive) return;
  int error = 0;
  impl_->archive = zip_open(impl_->path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
  if (!impl_->archive) throw Exception("'" + impl_->path + "' is not a readable ZIP file");
}

void ZipPhysicalPackage::close() {
  if (impl_->archive) zip_discard(impl_->archive);
  impl_->archive = nullptr;
}

bool ZipPhysicalPackage::isOpen() const { return impl_->archive != nullptr; }

bool ZipPhysicalPackage::hasItem(const std::string& name) const {
  return impl_->archive && zip_name_locate(impl_->archive, name.c_str(), 0) >= 0;
}

std::string ZipPhysicalPackage::readItem(const std::string& name) const {
  if (!impl_->archive) throw Exception("the package is not open");
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat(impl_->archive, name.c_str(), 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE))
    throw Exception("the package has no item '" + name + "'");
  // Items are read whole; a size claimed beyond any real catalogue is refused rather than allocated.
  if (st.size > maxItemBytes) throw Exception("the item '" + name + "' is too large");
  std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen(impl_->archive, name.c_str(), 0), zip_fclose);
  if (!file) throw Exception("the item '" + name + "' cannot be read");
  std::string bytes(static_cast<std::size_t>(st.size), '\0');
  std::size_t done = 0;
  while (done < bytes.size()) {
    const zip_int64_t n = zip_fread(file.get(), &bytes[done], bytes.size() - done);
    if (n <= 0) throw Exception("the item '" + name + "' is damaged");
    done += static_cast<std::size_t>(n);
  }
  return bytes;
}

}  // namespace zippackage

namespace model {

PartName::PartName(const std::wstring& name) : name_(narrow(name)) {
  if (name_.size() < 2 || name_[0] != '/' || name_.back() == '/') throw Exception("'" + name_ + "' is not a part name");
}

Part::Part(std::string contentType, std::string bytes)
    : contentType_(std::move(contentType)), bytes_(std::move(bytes)) {}

std::istream& Part::getInputStream() {
  stream_ = std::make_unique<std::istringstream>(bytes_);
  return *stream_;
}

Package::Package(zippackage::ZipPhysicalPackage& physical, bool readOnly) : physical_(physical) {
  if (!readOnly) throw Exception("packages can only be read");
}

Package::~Package() {
  if (open_) physical_.close();
}

void Package::open(OpenMode mode) {
  if (mode != 0 && mode != 2) throw Exception("unknown open mode");
  if (open_) close(false);
  physical_.open();
  try {
    defaults_.clear();
    overrides_.clear();
    relations_.clear();
    const auto types = parseXml(physical_.readItem("[Content_Types].xml"), "[Content_Types].xml");
    const auto* root = childByLocalName(types, "Types");
    if (!root) throw Exception("[Content_Types].xml has no Types element");
    for (const auto& entry : *root) {
      if (entry.first == "Default") {
        defaults_[lower(entry.second.get<std::string>("<xmlattr>.Extension", ""))] =
            entry.second.get<std::string>("<xmlattr>.ContentType", "");
      } else if (entry.first == "Override") {
        overrides_[lower(entry.second.get<std::string>("<xmlattr>.PartName", ""))] =
            entry.second.get<std::string>("<xmlattr>.ContentType", "");
      }
    }
    if (physical_.hasItem("_rels/.rels")) {
      const auto rels = parseXml(physical_.readItem("_rels/.rels"), "_rels/.rels");
      if (const auto* relRoot = childByLocalName(rels, "Relationships")) {
        for (const auto& rel : *relRoot) {
          if (rel.first != "Relationship") continue;
          std::string target = rel.second.get<std::string>("<xmlattr>.Target", "");
          if (!target.empty() && target[0] != '/') target.insert(0, "/");
          relations_.emplace(rel.second.get<std::string>("<xmlattr>.Type", ""), target);
        }
      }
    }
  } catch (...) {
    physical_.close();
    throw;
  }
  open_ = true;
}

void Package::close(bool save) {
  if (save) throw Exception("packages can only be read");
  physical_.close();
  open_ = false;
}

std::string Package::contentTypeOf(const std::string& partName) const {
  const auto over = overrides_.find(lower(partName));
  if (over != overrides_.end()) return over->second;
  const std::size_t dot = partName.find_last_of("./");
  if (dot != std::string::npos && partName[dot] == '.') {
    const auto def = defaults_.find(lower(partName.substr(dot + 1)));
    if (def != defaults_.end()) return def->second;
  }
  return {};
}

std::shared_ptr<Part> Package::getPart(const PartName& name) const {
  if (!open_) throw Exception("the package is not open");
  const std::string item = name.str().substr(1);
  if (!physical_.hasItem(item)) throw Exception("the package has no part '" + name.str() + "'");
  return std::make_shared<Part>(contentTypeOf(name.str()), physical_.readItem(item));
}

std::string Package::getRelationshipTarget(const std::string& type) const {
  const auto it = relations_.find(type);
  return it == relations_.end() ? std::string() : it->second;
}

}  // namespace model

namespace twservices {

std::unique_ptr<CoreProperties> CorePropertiesManager::getCoreProperties() {
  const std::string target = package_.getRelationshipTarget(coreRelationship);
  if (target.empty()) throw Exception("the package has no core properties");
  const auto tree = parseXml(package_.physical().readItem(target.substr(1)), target);
  const auto* root = childByLocalName(tree, "coreProperties");
  if (!root) throw Exception(target + " holds no core properties");
  auto properties = std::make_unique<CoreProperties>();
  for (const auto& entry : *root) {
    if (entry.first != "<xmlattr>") properties->values[entry.first] = entry.second.data();
  }
  return properties;
}

}  // namespace twservices

namespace StreamHelper {

std::size_t copyStreamToStream(std::istream& in, std::ostream& out) {
  char buffer[1 << 14];
  std::size_t total = 0;
  while (in) {
    in.read(buffer, sizeof buffer);
    const std::streamsize n = in.gcount();
    if (n <= 0) break;
    out.write(buffer, n);
    if (!out) throw Exception("the output stream failed");
    total += static_cast<std::size_t>(n);
  }
  return total;
}

}  // namespace StreamHelper

}  // namespace opc

namespace sqldb {

namespace {

[[noreturn]] void fail(const std::string& what) {
  qlsvThrowMsgIDException(qlMakeDiagnostic(qlmsg::services::DatabaseError, what));
}

}  // namespace

struct SqlDatabaseInterface::Impl {
  sqlite3* db = nullptr;
};

SqlDatabaseInterface::SqlDatabaseInterface() : impl_(std::make_unique<Impl>()) {}
SqlDatabaseInterface::~SqlDatabaseInterface() { disconnect(); }

void SqlDatabaseInterface::connect(const std::string& path, bool create, int flags) {
  if (create || flags != 0) fail("databases are only opened read-only");
  disconnect();
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  if (rc != SQLITE_OK) {
    const std::string message = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
    sqlite3_close(db);
    fail("cannot open '" + path + "': " + message);
  }
  // SQLite opens lazily: read the schema now so that a file that is not a database fails here.
  const int check = sqlite3_exec(db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
  if (check != SQLITE_OK) {
    const std::string message = sqlite3_errmsg(db);
    sqlite3_close(db);
    fail("cannot open '" + path + "': " + message);
  }
  impl_->db = db;
}

void SqlDatabaseInterface::disconnect() {
  if (impl_->db) sqlite3_close_v2(impl_->db);
  impl_->db = nullptr;
}

struct SqlDatabaseInterface::PreparedStatement::Impl {
  sqlite3_stmt* stmt = nullptr;
  bool hasRow = false;
  bool started = false;
};

SqlDatabaseInterface::PreparedStatement::PreparedStatement() : impl_(std::make_unique<Impl>()) {}
SqlDatabaseInterface::PreparedStatement::~PreparedStatement() { sqlite3_finalize(impl_->stmt); }

void SqlDatabaseInterface::PreparedStatement::prepare(const std::string& sql, SqlDatabaseInterface& database,
                                                      bool /*persistent*/) {
  if (!database.impl_->db) fail("the database is not connected");
  if (sql.size() > static_cast<std::size_t>(INT_MAX)) fail("the statement is too long");
  sqlite3_stmt* stmt = nullptr;
  const int rc = sqlite3_prepare_v2(database.impl_->db, sql.c_str(), static_cast<int>(sql.size()), &stmt, nullptr);
  if (rc != SQLITE_OK || !stmt) {
    sqlite3_finalize(stmt);
    fail(std::string(sqlite3_errmsg(database.impl_->db)) + " in \"" + sql + "\"");
  }
  sqlite3_finalize(impl_->stmt);
  impl_->stmt = stmt;
  impl_->hasRow = false;
  impl_->started = false;
}

void SqlDatabaseInterface::PreparedStatement::execute(bool) {
  if (!impl_->stmt) fail("the statement is not prepared");
  sqlite3_reset(impl_->stmt);
  impl_->hasRow = false;
  impl_->started = true;
}

bool SqlDatabaseInterface::PreparedStatement::fetchResultRow(bool) {
  if (!impl_->stmt || !impl_->started) fail("the statement was not executed");
  const int rc = sqlite3_step(impl_->stmt);
  if (rc == SQLITE_ROW) return impl_->hasRow = true;
  impl_->hasRow = false;
  impl_->started = false;
  if (rc != SQLITE_DONE) fail(sqlite3_errmsg(sqlite3_db_handle(impl_->stmt)));
  return false;
}

void SqlDatabaseInterface::PreparedStatement::checkColumn(int index) const {
  if (!impl_->stmt || !impl_->hasRow) fail("no row was fetched");
  if (index < 0 || index >= sqlite3_column_count(impl_->stmt)) fail("no column " + std::to_string(index));
}

void SqlDatabaseInterface::PreparedStatement::getResultColumnValue(int index, std::wstring& value, bool) {
  checkColumn(index);
  const unsigned char* text = sqlite3_column_text(impl_->stmt, index);
  const int bytes = sqlite3_column_bytes(impl_->stmt, index);
  if (!text) {
    if (sqlite3_column_type(impl_->stmt, index) != SQLITE_NULL) fail("out of memory reading a column");
    value.clear();
    return;
  }
  try {
    value = ::ConvertStdStringToUString(std::string(reinterpret_cast<const char*>(text), bytes));
  } catch (const std::out_of_range&) {
    fail("column " + std::to_string(index) + " is not UTF-8 text");
  }
}

void SqlDatabaseInterface::PreparedStatement::getResultColumnValue(int index, int& value, bool) {
  checkColumn(index);
  const sqlite3_int64 v = sqlite3_column_int64(impl_->stmt, index);
  if (v < INT_MIN || v > INT_MAX) fail("column " + std::to_string(index) + " does not fit 32 bits");
  value = static_cast<int>(v);
}

void SqlDatabaseInterface::PreparedStatement::setInputParamValue(int index, int value, bool) {
  if (!impl_->stmt) fail("the statement is not prepared");
  if (index < 0 || index >= INT_MAX) fail("no parameter " + std::to_string(index));
  sqlite3_reset(impl_->stmt);
  impl_->hasRow = false;
  impl_->started = false;
  if (sqlite3_bind_int(impl_->stmt, index + 1, value) != SQLITE_OK)
    fail(std::string(sqlite3_errmsg(sqlite3_db_handle(impl_->stmt))));
}

}  // namespace sqldb
