// Stand-ins for the host tool's package (OPC) and database services, as far as the unit database loader
// needs them: a ZIP package read through libzip and an SQLite database. Private to the library; no
// libzip, SQLite or PropertyTree header reaches this file.
#pragma once

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

namespace opc {

/// Anything wrong with a package: not a ZIP, missing part, no core properties, bad XML.
class Exception : public std::runtime_error {
 public:
  explicit Exception(const std::string& what) : std::runtime_error(what) {}
};

namespace zippackage {

/// The physical view of a ZIP file: its items by name.
class ZipPhysicalPackage {
 public:
  /// readOnly must be true (packages are only read here); the password is not supported and must be empty.
  ZipPhysicalPackage(const std::wstring& path, bool readOnly, const std::wstring& password);
  ~ZipPhysicalPackage();
  ZipPhysicalPackage(const ZipPhysicalPackage&) = delete;
  ZipPhysicalPackage& operator=(const ZipPhysicalPackage&) = delete;

  /// Opens the ZIP file; throws opc::Exception when it is not one.
  void open();
  void close();
  bool isOpen() const;
  /// Whether an item of that name (no leading '/') is there.
  bool hasItem(const std::string& name) const;
  /// The whole item; throws opc::Exception when missing or unreadable.
  std::string readItem(const std::string& name) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zippackage

namespace model {

/// A part name: an absolute name such as "/ud_part".
class PartName {
 public:
  explicit PartName(const std::wstring& name);
  const std::string& str() const { return name_; }

 private:
  std::string name_;
};

/// One part: its bytes, read when the part is got.
class Part {
 public:
  Part(std::string contentType, std::string bytes);
  const std::string& getContentType() const { return contentType_; }
  /// A readable stream over the part's bytes, valid as long as the part.
  std::istream& getInputStream();

 private:
  std::string contentType_;
  std::string bytes_;
  std::unique_ptr<std::istream> stream_;
};

/// The logical package over a physical one.
class Package {
 public:
  /// 0 reads the package's metadata; 2 opens it for reading parts. Other values are refused.
  using OpenMode = int;
  Package(zippackage::ZipPhysicalPackage& physical, bool readOnly);
  ~Package();
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;

  /// Opens the ZIP and reads "[Content_Types].xml" and "_rels/.rels"; throws opc::Exception.
  void open(OpenMode mode);
  /// Closes; nothing is ever saved, so save must be false.
  void close(bool save);
  bool isOpen() const { return open_; }
  /// The part of that name; throws opc::Exception when the package is not open or has no such part.
  std::shared_ptr<Part> getPart(const PartName& name) const;
  /// The target of the package relationship of that type, as a part name, or empty.
  std::string getRelationshipTarget(const std::string& type) const;
  zippackage::ZipPhysicalPackage& physical() const { return physical_; }

 private:
  std::string contentTypeOf(const std::string& partName) const;

  zippackage::ZipPhysicalPackage& physical_;
  bool open_ = false;
  std::map<std::string, std::string> defaults_;   // extension (lower case) -> content type
  std::map<std::string, std::string> overrides_;  // part name -> content type
  std::map<std::string, std::string> relations_;  // relationship type -> part name
};

}  // namespace model

namespace twservices {

/// The core properties of a package (Dublin Core and OPC fields), by their element names.
struct CoreProperties {
  std::map<std::string, std::string> values;  ///< e.g. "dc:title", "dcterms:created"
};

/// Reads the core properties of an open package.
class CorePropertiesManager {
 public:
  explicit CorePropertiesManager(model::Package& package) : package_(package) {}
  /// Reads the part that the package relationship names; throws opc::Exception when there is none or
  /// it is not well-formed XML.
  std::unique_ptr<CoreProperties> getCoreProperties();

 private:
  model::Package& package_;
};

}  // namespace twservices

namespace StreamHelper {
/// Copies every byte; returns the count copied. Throws opc::Exception when the output fails.
std::size_t copyStreamToStream(std::istream& in, std::ostream& out);
}  // namespace StreamHelper

}  // namespace opc

namespace sqldb {

/// One SQLite database file. Failures throw fl::except::IMsgIDException.
class SqlDatabaseInterface {
 public:
  SqlDatabaseInterface();
  ~SqlDatabaseInterface();
  SqlDatabaseInterface(const SqlDatabaseInterface&) = delete;
  SqlDatabaseInterface& operator=(const SqlDatabaseInterface&) = delete;

  /// Opens an existing file read-only; create must be false and flags 0.
  void connect(const std::string& path, bool create, int flags);
  void disconnect();

  class PreparedStatement {
   public:
    PreparedStatement();
    ~PreparedStatement();
    PreparedStatement(const PreparedStatement&) = delete;
    PreparedStatement& operator=(const PreparedStatement&) = delete;

    void prepare(const std::string& sql, SqlDatabaseInterface& database, bool persistent);
    /// Starts (or restarts) the statement with the current bindings.
    void execute(bool reserved);
    /// True when a further row was fetched.
    bool fetchResultRow(bool reserved);
    /// A column of the current row as text; NULL reads as the empty text.
    void getResultColumnValue(int index, std::wstring& value, bool reserved);
    /// A column of the current row as a 32-bit integer; NULL reads as 0, a value out of range throws.
    void getResultColumnValue(int index, int& value, bool reserved);
    /// Binds parameter index (from 0) of a "?" statement.
    void setInputParamValue(int index, int value, bool reserved);

   private:
    void checkColumn(int index) const;
    struct Impl;
    std::unique_ptr<Impl> impl_;
  };

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace sqldb
