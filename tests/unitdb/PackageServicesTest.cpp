// The package and database stand-ins the loader reads through, on files the catalogue writer makes.
#include <gtest/gtest.h>
#include <zip.h>

#include <sstream>
#include <string>

#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/internal/PackageServices.hpp"
#include "ud_writer/UdWriter.hpp"

namespace {

namespace uw = QLTypeSys::udwriter;

std::string tempFile(const std::string& name) {
  return ConvertUStringToStdString(fl::filesystem::temp_directory_name()) + "/" + name;
}

uw::Catalogue oneSystem() {
  uw::Catalogue c;
  c.systems.push_back({{}, "SI"});
  c.systems.push_back({{}, "CGS"});
  return c;
}

std::string readPart(const std::string& path, std::string* contentType = nullptr) {
  opc::zippackage::ZipPhysicalPackage physical(ConvertStdStringToUString(path), true, L"");
  opc::model::Package package(physical, true);
  opc::twservices::CorePropertiesManager properties(package);
  package.open(0);
  EXPECT_NE(properties.getCoreProperties(), nullptr);
  package.close(false);
  package.open(2);
  auto part = package.getPart(opc::model::PartName(L"/ud_part"));
  if (contentType) *contentType = part->getContentType();
  std::ostringstream out;
  const std::size_t n = opc::StreamHelper::copyStreamToStream(part->getInputStream(), out);
  package.close(false);
  EXPECT_EQ(n, out.str().size());
  return out.str();
}

TEST(PackageServices, ReadsThePartOfAWrittenPackage) {
  const std::string path = tempFile("pkg_ok");
  uw::writePackage(oneSystem(), path);
  std::string contentType;
  const std::string bytes = readPart(path, &contentType);
  EXPECT_EQ(bytes.rfind("SQLite format 3", 0), 0u);
  EXPECT_EQ(contentType, "application/vnd.tarnwell.norvex.data-export");
  fl::filesystem::remove(ConvertStdStringToUString(path));
}

class PackageDefect : public ::testing::TestWithParam<int> {};

TEST_P(PackageDefect, ThrowsOpcException) {
  const std::string path = tempFile("pkg_bad");
  uw::WriteOptions options;
  switch (GetParam()) {
    case 0:
      uw::writeRawFile(path, "PK\x03\x04 truncated");
      break;
    case 1:
      options.udPart = false;
      break;
    case 2:
      options.coreProperties = false;
      break;
    case 3:
      options.contentTypes = false;
      break;
    case 4:
      uw::writeRawFile(path, "");
      break;
  }
  if (GetParam() >= 1 && GetParam() <= 3) uw::writePackage(oneSystem(), path, options);
  EXPECT_THROW(readPart(path), opc::Exception);
  fl::filesystem::remove(ConvertStdStringToUString(path));
}

INSTANTIATE_TEST_SUITE_P(Defects, PackageDefect, ::testing::Range(0, 5));

// Replaces one item of a written package with the given text.
void replaceItem(const std::string& path, const char* item, const std::string& text) {
  int error = 0;
  zip_t* archive = zip_open(path.c_str(), 0, &error);
  ASSERT_NE(archive, nullptr);
  zip_source_t* source = zip_source_buffer(archive, text.data(), text.size(), 0);
  ASSERT_NE(source, nullptr);
  ASSERT_GE(zip_file_add(archive, item, source, ZIP_FL_OVERWRITE), 0);
  ASSERT_EQ(zip_close(archive), 0);
}

struct XmlDefect {
  const char* item;
  const char* text;
};

class BadXml : public ::testing::TestWithParam<XmlDefect> {};

TEST_P(BadXml, ThrowsOpcException) {
  const std::string path = tempFile("pkg_xml");
  uw::writePackage(oneSystem(), path);
  replaceItem(path, GetParam().item, GetParam().text);
  EXPECT_THROW(readPart(path), opc::Exception);
  fl::filesystem::remove(ConvertStdStringToUString(path));
}

INSTANTIATE_TEST_SUITE_P(Items, BadXml,
                         ::testing::Values(XmlDefect{"docProps/core.xml", "<cp:coreProperties xmlns:cp=\"x\">"},
                                           XmlDefect{"docProps/core.xml", "<other/>"},
                                           XmlDefect{"[Content_Types].xml", "<Types><Default"},
                                           XmlDefect{"[Content_Types].xml", "<NotTypes/>"},
                                           XmlDefect{"_rels/.rels", "<Relationships><Relationship Type='a'"},
                                           XmlDefect{"_rels/.rels", "<Relationships/>"}));

TEST(PackageServices, RefusesWritingAndPasswords) {
  EXPECT_THROW(opc::zippackage::ZipPhysicalPackage(L"/x", false, L""), opc::Exception);
  EXPECT_THROW(opc::zippackage::ZipPhysicalPackage(L"/x", true, L"secret"), opc::Exception);
  EXPECT_THROW(opc::model::PartName(L"ud_part"), opc::Exception);
  opc::zippackage::ZipPhysicalPackage physical(L"/nonexistent/file", true, L"");
  opc::model::Package package(physical, true);
  EXPECT_THROW(package.getPart(opc::model::PartName(L"/ud_part")), opc::Exception);
  EXPECT_THROW(package.open(1), opc::Exception);
  EXPECT_THROW(package.open(0), opc::Exception);
}

using Statement = sqldb::SqlDatabaseInterface::PreparedStatement;

TEST(SqlDatabase, ConnectFailuresAreMsgIdExceptions) {
  sqldb::SqlDatabaseInterface db;
  EXPECT_THROW(db.connect(tempFile("no_such_db"), false, 0), fl::except::IMsgIDException);
  const std::string junk = tempFile("junk_db");
  uw::writeRawFile(junk, std::string(4096, 'x'));
  EXPECT_THROW(db.connect(junk, false, 0), fl::except::IMsgIDException);
  Statement s;
  EXPECT_THROW(s.prepare("SELECT 1", db, false), fl::except::IMsgIDException);
  fl::filesystem::remove(ConvertStdStringToUString(junk));
}

TEST(SqlDatabase, QueriesBindingsAndColumnChecks) {
  const std::string path = tempFile("db_ok");
  uw::writeDatabase(oneSystem(), path);
  sqldb::SqlDatabaseInterface db;
  db.connect(path, false, 0);
  Statement s;
  s.prepare("SELECT Name FROM unit_systems ORDER BY Id", db, false);
  s.execute(false);
  std::vector<std::wstring> names;
  std::wstring name;
  while (s.fetchResultRow(false)) {
    s.getResultColumnValue(0, name, false);
    names.push_back(name);
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"SI", L"CGS"}));
  EXPECT_THROW(s.getResultColumnValue(0, name, false), fl::except::IMsgIDException);  // no current row

  Statement p;
  p.prepare("SELECT Name FROM unit_systems WHERE Id = ?", db, false);
  for (int id : {1, 2}) {
    p.setInputParamValue(0, id, false);
    p.execute(false);
    ASSERT_TRUE(p.fetchResultRow(false));
    p.getResultColumnValue(0, name, false);
    EXPECT_EQ(name, id == 1 ? L"SI" : L"CGS");
    EXPECT_FALSE(p.fetchResultRow(false));
  }
  EXPECT_THROW(p.setInputParamValue(3, 1, false), fl::except::IMsgIDException);

  Statement v;
  v.prepare("SELECT NULL, 5000000000, -7, 'x'", db, false);
  v.execute(false);
  ASSERT_TRUE(v.fetchResultRow(false));
  name = L"was";
  v.getResultColumnValue(0, name, false);
  EXPECT_EQ(name, L"");
  int i = 1;
  EXPECT_THROW(v.getResultColumnValue(1, i, false), fl::except::IMsgIDException);
  v.getResultColumnValue(2, i, false);
  EXPECT_EQ(i, -7);
  EXPECT_THROW(v.getResultColumnValue(4, name, false), fl::except::IMsgIDException);
  EXPECT_THROW(v.getResultColumnValue(-1, name, false), fl::except::IMsgIDException);
  EXPECT_THROW(v.prepare("SELECT FROM nothing", db, false), fl::except::IMsgIDException);
  fl::filesystem::remove(ConvertStdStringToUString(path));
}

}  // namespace
