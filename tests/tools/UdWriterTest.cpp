// The catalogue package writer: factor texts, the source reader's and validator's messages (each with file
// and line), packages written with parts or tables left out, and the database read back with SQLite.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>
#include <zip.h>

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "ql_types/platform/Text.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/ConversionFactorImpl.hpp"
#include "ud_writer/UdWriter.hpp"

namespace {

using namespace QLTypeSys;
using namespace QLTypeSys::udwriter;

std::string tempPath(const std::string& leaf) {
  return (std::filesystem::temp_directory_path() / ("ql_ud_test_" + std::to_string(::getpid()) + "_" + leaf)).string();
}

// A small, correct catalogue; cases below append one line to it.
const char kBase[] =
    "system SI\n"
    "provenance P | T | - | O | Org | 2019 | http://a, | 1\n"
    "provenance Unknown | Unknown | - | - | - | 0 | - | -\n"
    "abstract length = length\n"
    "abstract time = time\n"
    "abstract temperature = thermodynamic_temperature\n"
    "abstract velocity = length/time\n"
    "prefix kilo | k | = | 1000 | SI | P\n"
    "prefix milli | m | = | 1e-3 | SI | P\n"
    "prefixset S = kilo milli\n"
    "unit metre | m | = | 1 | m | length | S | SI | P\n"
    "unit second | s | = | 1 | s | time | S | SI | P\n"
    "unit inch | in | = | 0.0254 | m | length | - | SI | P\n"
    "alias meter | - | - | metre | SI | P\n";
constexpr int kBaseLines = 14;

std::vector<Problem> problemsOf(const std::string& text) {
  Catalogue cat;
  std::vector<Problem> problems;
  readCatalogueText(text, "t.txt", cat, problems);
  validateCatalogue(cat, problems);
  return problems;
}

TEST(CatalogueValidation, BaseIsClean) {
  const auto problems = problemsOf(kBase);
  for (const auto& p : problems) ADD_FAILURE() << formatProblem(p);
}

struct BadLine {
  const char* line;
  const char* message;  // a part of the expected message
};

void PrintTo(const BadLine& c, std::ostream* os) { *os << c.line; }

class CatalogueErrors : public ::testing::TestWithParam<BadLine> {};

TEST_P(CatalogueErrors, NamesFileAndLine) {
  const BadLine& c = GetParam();
  const auto problems = problemsOf(std::string(kBase) + "# comment\n\n" + c.line + "\n");
  ASSERT_FALSE(problems.empty()) << c.line;
  const std::string expected = "t.txt:" + std::to_string(kBaseLines + 3) + ": ";
  bool found = false;
  for (const auto& p : problems) {
    const std::string text = formatProblem(p);
    EXPECT_EQ(text.rfind(expected, 0), 0u) << text;
    found = found || text.find(c.message) != std::string::npos;
  }
  EXPECT_TRUE(found) << c.line << " gave " << formatProblem(problems.front());
}

INSTANTIATE_TEST_SUITE_P(
    EachKind, CatalogueErrors,
    ::testing::Values(
        BadLine{"unit metre | mtr | = | 1 | m | length | - | SI | P", "duplicate unit name or symbol \"metre\""},
        BadLine{"unit foo | in | = | 1 | m | length | - | SI | P", "duplicate unit name or symbol \"in\""},
        BadLine{"alias meter | - | - | metre | SI | P", "duplicate unit name or symbol \"meter\""},
        BadLine{"unit foo | fo | = | 1 | m | lengthh | - | SI | P", "unknown abstract unit \"lengthh\""},
        BadLine{"unit foo | fo | = | 1 | m | length | T | SI | P", "unknown prefix set \"T\""},
        BadLine{"unit foo | fo | = | 1 | m | length | - | XX | P", "unknown unit system \"XX\""},
        BadLine{"unit foo | fo | = | 1 | m | length | - | SI | Q", "unknown provenance \"Q\""},
        BadLine{"unit foo | fo | = | 1 | yard | length | - | SI | P", "unknown unit \"yard\""},
        BadLine{"unit foo | fo | = | 1 | kin | length | - | SI | P", "unknown unit \"kin\""},
        BadLine{"unit foo | fo | = | 1 | m* | length | - | SI | P", "does not parse"},
        BadLine{"unit foo | fo | = | 1 | m/s | length | - | SI | P", "does not have the dimensions"},
        BadLine{"unit foo | fo | = | 1.2.3 | m | length | - | SI | P", "is not exact"},
        BadLine{"unit foo | fo | = | ~abc | m | length | - | SI | P", "is not a real number"},
        BadLine{"unit foo | fo | = | 1/0 | m | length | - | SI | P", "is not exact"},
        BadLine{"unit foo | fo | = | 1 | m | length | - | SI", "fields"},
        BadLine{"unit foo bar | fo | = | 1 | m | length | - | SI | P", "not alphanumeric"},
        BadLine{"alias foot | - | - | yard | SI | P", "unknown unit \"yard\" in an alias"},
        BadLine{"alias kilom | - | - | mega metre | SI | P", "unknown prefix \"mega\""},
        BadLine{"alias kiloinch | - | - | kilo inch | SI | P", "does not admit the prefix"},
        BadLine{"abstract speed = length/tim", "unknown abstract unit \"tim\""},
        BadLine{"abstract velocity = length", "duplicate abstract unit"},
        BadLine{"prefix mega | k | = | 1e6 | SI | P", "duplicate prefix symbol \"k\""},
        BadLine{"prefixset S2 = kilo hecto", "unknown prefix \"hecto\""},
        BadLine{"prefix mega | M | k | 1e6 | SI | P", "duplicate prefix symbol \"k\""},
        BadLine{"unit foo | f/s | = | 1 | m | length | - | SI | P", "is not a single name"},
        BadLine{"alias feet | ft^2 | - | inch | SI | P", "is not a single name"},
        BadLine{"system SI", "duplicate unit system"},
        BadLine{"reciprocal velocity | force | reciprocal 1", "unknown abstract unit \"force\""},
        BadLine{"physmod lbm | lb", "not a unit symbol"}, BadLine{"unitt foo", "unknown keyword"},
        BadLine{"unit foo | fo | = | 0 | m | length | - | SI | P", "not a finite non-zero"},
        BadLine{"reciprocal velocity | length | 2", "needs a \"reciprocal\" factor"},
        BadLine{"provenance Q | T | - | O | Org | 20x9 | - | 1", "year"},
        BadLine{"prefixalias kiloo | kk | = | kiloo | SI | P", "unknown prefix \"kiloo\""},
        BadLine{"unit hot | hh | = | affine 1 + 1 | m^2 | length | - | SI | P", "dimensions"}));

TEST(CatalogueErrors, LaterRowsMayNotBeUsedEarlier) {
  const auto problems = problemsOf(std::string(kBase) +
                                   "unit furlong | fur | = | 220 | yd | length | - | SI | P\n"
                                   "unit yard | yd | = | 36 | in | length | - | SI | P\n");
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(formatProblem(problems[0]), "t.txt:15: unknown unit \"yd\" in \"yd\"");
}

TEST(CatalogueErrors, OffsetUnitIsNoTermOfAnother) {
  const auto problems = problemsOf(std::string(kBase) +
                                   "unit dC | dC | = | affine 1 + 273.15 | K | temperature | - | SI | P\n"
                                   "unit dC2 | dC2 | = | 2 | dC | temperature | - | SI | P\n");
  ASSERT_FALSE(problems.empty());
  EXPECT_NE(formatProblem(problems[0]).find("t.txt:16: the offset unit"), std::string::npos);
}

// Factor source texts, their stored form, the class the library reads back, and the value.
struct FactorCase {
  const char* source;
  int type;
  const char* stored;
  double value;
};

void PrintTo(const FactorCase& c, std::ostream* os) { *os << c.source; }

class FactorTexts : public ::testing::TestWithParam<FactorCase> {};

TEST_P(FactorTexts, ReadBackToTheIntendedClass) {
  const FactorCase& c = GetParam();
  FactorText f;
  std::string error;
  ASSERT_TRUE(parseFactorSource(c.source, f, error)) << error;
  EXPECT_EQ(f.type, c.type);
  EXPECT_EQ(f.text, c.stored);
  const ConversionFactor cf = ConversionFactorFactory::createConversionFactor(
      ConvertStdStringToUString(f.text), static_cast<ConversionFactorType>(f.type));
  const ConversionFactorImpl& impl = cf.getFactor();
  switch (c.type) {
    case 2:
    case 3:
      EXPECT_NE(dynamic_cast<const ScaledRational*>(&impl), nullptr);
      break;
    case 4:
      EXPECT_NE(dynamic_cast<const RationalAffineConversionFactor*>(&impl), nullptr);
      break;
    case 1:
      EXPECT_NE(dynamic_cast<const DoubleConversionFactor*>(&impl), nullptr);
      break;
    case 6:
      EXPECT_TRUE(cf.isReciprocal());
      break;
  }
  EXPECT_DOUBLE_EQ(cf.toDouble(), c.value);
}

INSTANTIATE_TEST_SUITE_P(Forms, FactorTexts,
                         ::testing::Values(FactorCase{"1", 2, "1,1", 1.0}, FactorCase{"0.0254", 3, "254,1,-4", 0.0254},
                                           FactorCase{"1e-3", 3, "1,1,-3", 1e-3},
                                           FactorCase{"5280", 3, "528,1,1", 5280.0},
                                           FactorCase{"1/3600", 3, "1,36,-2", 1.0 / 3600},
                                           FactorCase{"5/9", 2, "5,9", 5.0 / 9},
                                           FactorCase{"0.45359237*9.80665", 3, "44482216152605,1,-13", 4.4482216152605},
                                           FactorCase{"1200/3937", 3, "12,3937,2", 1200.0 / 3937},
                                           FactorCase{"~1.66053906660e-27", 1, "1.66053906660e-27", 1.66053906660e-27},
                                           FactorCase{"affine 1 + 273.15", 4, "1,1,5463,20", 1.0},
                                           FactorCase{"affine 5/9 + 45967/180", 4, "5,9,45967,180", 5.0 / 9},
                                           FactorCase{"reciprocal 1", 6, "1", 1.0}));

TEST(FactorTexts, RefusesWhatIsNotExact) {
  for (const char* bad : {"", "abc", "1/0", "1//2", "1e", "1e99999", "99999999999999999999", "affine 1", "affine 1 + x",
                          "~", "~1,2,3", "reciprocal", "0.1*0.1*0.1*0.1*0.1*0.1*0.1*0.1*0.1*0.1*"}) {
    FactorText f;
    std::string error;
    EXPECT_FALSE(parseFactorSource(bad, f, error)) << bad;
  }
}

// ---- packages read back ----

std::map<std::string, std::string> zipEntries(const std::string& path) {
  std::map<std::string, std::string> out;
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &err);
  if (z == nullptr) return out;
  const zip_int64_t n = zip_get_num_entries(z, 0);
  for (zip_int64_t i = 0; i < n; ++i) {
    zip_stat_t st;
    zip_stat_index(z, i, 0, &st);
    std::string bytes(st.size, '\0');
    zip_file_t* f = zip_fopen_index(z, i, 0);
    zip_fread(f, bytes.data(), st.size);
    zip_fclose(f);
    out[st.name] = bytes;
  }
  zip_close(z);
  return out;
}

class Db {
 public:
  explicit Db(const std::string& bytes) : path_(tempPath("db.sqlite")) {
    std::ofstream(path_, std::ios::binary) << bytes;
    sqlite3_open(path_.c_str(), &db_);
  }
  ~Db() {
    sqlite3_close(db_);
    std::filesystem::remove(path_);
  }
  std::vector<std::vector<std::string>> rows(const std::string& sql) const {
    std::vector<std::vector<std::string>> out;
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &st, nullptr) != SQLITE_OK) return {{"ERROR"}};
    while (sqlite3_step(st) == SQLITE_ROW) {
      std::vector<std::string> row;
      for (int i = 0; i < sqlite3_column_count(st); ++i) {
        const auto* t = sqlite3_column_text(st, i);
        row.push_back(t ? reinterpret_cast<const char*>(t) : "NULL");
      }
      out.push_back(row);
    }
    sqlite3_finalize(st);
    return out;
  }
  long long count(const std::string& sql) const { return std::stoll(rows(sql).at(0).at(0)); }

 private:
  std::string path_;
  sqlite3* db_ = nullptr;
};

const std::map<std::string, std::vector<std::string>> kExpectedSchema = {
    {"unit_systems", {"Id", "Name"}},
    {"abstract_units", {"Id", "Name", "Expression"}},
    {"abstract_unit_relations", {"Id", "AbstractUnitA", "AbstractUnitB", "ConversionFactor"}},
    {"conversion_factors", {"Id", "FactorType", "ConversionFactorStr"}},
    {"unit_prefixes",
     {"Id", "Name", "Symbol", "AsciiSymbol", "Display", "UnitSystemGroup", "ProvenanceGroup", "ConversionFactor"}},
    {"prefix_aliases",
     {"Id", "Name", "Symbol", "AsciiSymbol", "Display", "UnitPrefix", "UnitSystemGroup", "ProvenanceGroup"}},
    {"units",
     {"Id", "Name", "Symbol", "AsciiSymbol", "Expression", "Display", "AbstractUnit", "SubUnit", "UnitSystemGroup",
      "PrefixGroup", "ProvenanceGroup", "ConversionFactor"}},
    {"unit_aliases",
     {"Id", "Name", "Symbol", "AsciiSymbol", "Display", "RefUnit", "RefPrefix", "UnitSystemGroup", "ProvenanceGroup"}},
    {"unit_system_groups", {"Id"}},
    {"unit_system_groups_to_unit_systems", {"unit_system_groups_id", "unit_systems_id"}},
    {"prefix_groups", {"Id"}},
    {"prefix_groups_to_prefixes", {"prefix_groups_id", "unit_prefixes_id"}},
    {"provenance_groups_to_provenances", {"provenance_groups_id", "provenances_id"}},
    {"provenances",
     {"Id", "Name", "Title", "Subtitle", "Organization", "OrganizationFullName", "Year", "URLs", "Edition"}},
    {"physmod_to_units_translation", {"Id", "physmod_symbol", "units_symbol"}},
};

Catalogue shipped() {
  Catalogue cat;
  std::vector<Problem> problems;
  readCatalogueDirectory(QL_TYPES_DATA_DIR, cat, problems);
  for (const auto& p : problems) ADD_FAILURE() << formatProblem(p);
  return cat;
}

TEST(Package, IsAnOpcPackageWithCoreProperties) {
  const std::string path = tempPath("opc.ud");
  writePackage(shipped(), path);
  auto entries = zipEntries(path);
  std::filesystem::remove(path);
  ASSERT_EQ(entries.size(), 4u);
  namespace pt = boost::property_tree;
  pt::ptree types, rels, core;
  std::istringstream t(entries.at("[Content_Types].xml")), r(entries.at("_rels/.rels")),
      c(entries.at("docProps/core.xml"));
  pt::read_xml(t, types);
  pt::read_xml(r, rels);
  pt::read_xml(c, core);
  std::map<std::string, std::string> overrides;
  for (const auto& [tag, node] : types.get_child("Types")) {
    if (tag == "Override")
      overrides[node.get<std::string>("<xmlattr>.PartName")] = node.get<std::string>("<xmlattr>.ContentType");
  }
  EXPECT_EQ(overrides["/ud_part"], "application/vnd.tarnwell.norvex.data-export");
  EXPECT_EQ(overrides["/docProps/core.xml"], "application/vnd.openxmlformats-package.core-properties+xml");
  std::map<std::string, std::string> targets;
  for (const auto& [tag, node] : rels.get_child("Relationships")) {
    if (tag == "Relationship")
      targets[node.get<std::string>("<xmlattr>.Type")] = node.get<std::string>("<xmlattr>.Target");
  }
  EXPECT_EQ(targets["http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties"],
            "docProps/core.xml");
  EXPECT_EQ(core.get<std::string>("cp:coreProperties.dc:title"), "Unit database");
}

TEST(Package, SchemaAndRowsReadBack) {
  const Catalogue cat = shipped();
  const std::string path = tempPath("rows.ud");
  writePackage(cat, path);
  const auto entries = zipEntries(path);
  std::filesystem::remove(path);
  Db db(entries.at("ud_part"));
  const auto tables = db.rows("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name");
  EXPECT_EQ(tables.size(), kExpectedSchema.size());
  for (const auto& [table, columns] : kExpectedSchema) {
    std::vector<std::string> got;
    for (const auto& row : db.rows("PRAGMA table_info(" + table + ")")) got.push_back(row.at(1));
    EXPECT_EQ(got, columns) << table;
  }
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM unit_systems"), (long long)cat.systems.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM provenances"), (long long)cat.provenances.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM abstract_units"), (long long)cat.abstractUnits.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM abstract_unit_relations"), (long long)cat.reciprocals.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM unit_prefixes"), (long long)cat.prefixes.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM prefix_aliases"), (long long)cat.prefixAliases.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM units"), (long long)cat.units.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM unit_aliases"), (long long)cat.aliases.size());
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM physmod_to_units_translation"), (long long)cat.translations.size());
  // Every reference resolves, and every group a row names exists.
  const char* const dangling[] = {
      "SELECT COUNT(*) FROM units WHERE AbstractUnit NOT IN (SELECT Id FROM abstract_units)",
      "SELECT COUNT(*) FROM units WHERE ConversionFactor NOT IN (SELECT Id FROM conversion_factors)",
      "SELECT COUNT(*) FROM units WHERE UnitSystemGroup NOT IN (SELECT Id FROM unit_system_groups)",
      "SELECT COUNT(*) FROM units WHERE PrefixGroup NOT IN (SELECT Id FROM prefix_groups)",
      "SELECT COUNT(*) FROM units WHERE ProvenanceGroup NOT IN (SELECT provenance_groups_id FROM "
      "provenance_groups_to_provenances)",
      "SELECT COUNT(*) FROM unit_aliases WHERE RefUnit NOT IN (SELECT Id FROM units)",
      "SELECT COUNT(*) FROM unit_aliases WHERE RefPrefix IS NOT NULL AND RefPrefix NOT IN (SELECT Id FROM "
      "unit_prefixes)",
      "SELECT COUNT(*) FROM unit_aliases WHERE ProvenanceGroup NOT IN (SELECT provenance_groups_id FROM "
      "provenance_groups_to_provenances)",
      "SELECT COUNT(*) FROM unit_prefixes WHERE ConversionFactor NOT IN (SELECT Id FROM conversion_factors)",
      "SELECT COUNT(*) FROM prefix_aliases WHERE UnitPrefix NOT IN (SELECT Id FROM unit_prefixes)",
      "SELECT COUNT(*) FROM abstract_unit_relations WHERE AbstractUnitA NOT IN (SELECT Id FROM abstract_units) OR "
      "AbstractUnitB NOT IN (SELECT Id FROM abstract_units) OR ConversionFactor NOT IN (SELECT Id FROM "
      "conversion_factors)",
      "SELECT COUNT(*) FROM unit_system_groups_to_unit_systems WHERE unit_systems_id NOT IN (SELECT Id FROM "
      "unit_systems) OR unit_system_groups_id NOT IN (SELECT Id FROM unit_system_groups)",
      "SELECT COUNT(*) FROM prefix_groups_to_prefixes WHERE unit_prefixes_id NOT IN (SELECT Id FROM unit_prefixes) "
      "OR prefix_groups_id NOT IN (SELECT Id FROM prefix_groups)",
      "SELECT COUNT(*) FROM provenance_groups_to_provenances WHERE provenances_id NOT IN (SELECT Id FROM "
      "provenances)",
      "SELECT COUNT(*) FROM provenances WHERE URLs <> '' AND substr(URLs, -1) <> ','",
  };
  for (const char* sql : dangling) EXPECT_EQ(db.count(sql), 0) << sql;
  // Each unit row's systems, read the way the loader reads them, are the ones of its source line.
  for (size_t i = 0; i < cat.units.size(); ++i) {
    const auto got = db.rows(
        "SELECT b.Name FROM units u JOIN unit_system_groups_to_unit_systems a ON a.unit_system_groups_id = "
        "u.UnitSystemGroup JOIN unit_systems b ON b.Id = a.unit_systems_id WHERE u.Id = " +
        std::to_string(i + 1));
    std::vector<std::string> names;
    for (const auto& r : got) names.push_back(r[0]);
    EXPECT_EQ(names, cat.units[i].systems) << cat.units[i].name;
  }
}

// The loader's own statements run on the written database and find every row: the joins hold.
TEST(Package, LoaderStatementsFindEveryRow) {
  const Catalogue cat = shipped();
  const std::string path = tempPath("stages.ud");
  writePackage(cat, path);
  const auto entries = zipEntries(path);
  std::filesystem::remove(path);
  Db db(entries.at("ud_part"));
  auto rowsOf = [&](const char* sql) { return (long long)db.rows(sql).size(); };
  EXPECT_EQ(rowsOf("SELECT Name FROM unit_systems ORDER BY Id"), (long long)cat.systems.size());
  EXPECT_EQ(rowsOf("SELECT Name, Expression FROM abstract_units ORDER BY Id"), (long long)cat.abstractUnits.size());
  EXPECT_EQ(rowsOf("SELECT a.Name, b.Name, c.FactorType, c.ConversionFactorStr FROM abstract_unit_relations r INNER "
                   "JOIN abstract_units a ON a.Id = r.AbstractUnitA INNER JOIN abstract_units b ON b.Id = "
                   "r.AbstractUnitB INNER JOIN conversion_factors c ON c.Id = r.ConversionFactor ORDER BY r.Id"),
            (long long)cat.reciprocals.size());
  EXPECT_EQ(rowsOf("SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Display, a.UnitSystemGroup, a.ProvenanceGroup, "
                   "b.FactorType, b.ConversionFactorStr FROM unit_prefixes a INNER JOIN conversion_factors b ON "
                   "a.ConversionFactor=b.Id ORDER BY a.Id"),
            (long long)cat.prefixes.size());
  EXPECT_EQ(rowsOf("SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Display, b.Name AS UnitPrefix, a.UnitSystemGroup, "
                   "a.ProvenanceGroup FROM prefix_aliases a INNER JOIN unit_prefixes b ON b.Id = a.UnitPrefix ORDER "
                   "BY a.Id"),
            (long long)cat.prefixAliases.size());
  EXPECT_EQ(rowsOf("SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Expression, a.Display, b.Name, a.SubUnit, "
                   "a.UnitSystemGroup, a.PrefixGroup, c.FactorType, c.ConversionFactorStr FROM units a INNER JOIN "
                   "abstract_units b ON a.AbstractUnit = b.Id INNER JOIN conversion_factors c ON a.ConversionFactor "
                   "= c.Id ORDER BY a.Id"),
            (long long)cat.units.size());
  EXPECT_EQ(rowsOf("SELECT a.Name, a.Symbol, a.AsciiSymbol, IFNULL(c.Symbol, '') || b.Symbol, a.Display, "
                   "a.UnitSystemGroup FROM unit_aliases a INNER JOIN units b ON a.RefUnit=b.Id LEFT OUTER JOIN "
                   "unit_prefixes c ON a.RefPrefix=c.Id ORDER BY a.Id"),
            (long long)cat.aliases.size());
  EXPECT_EQ(rowsOf("SELECT Name, Title, Subtitle, Organization, OrganizationFullName, Year, URLs, Edition FROM "
                   "provenances ORDER BY Id"),
            (long long)cat.provenances.size());
  EXPECT_GE(rowsOf("SELECT a.Symbol, c.Name FROM units a INNER JOIN provenance_groups_to_provenances b ON "
                   "a.ProvenanceGroup = b.provenance_groups_id INNER JOIN provenances c ON c.Id = b.provenances_id"),
            (long long)cat.units.size());
  EXPECT_GE(rowsOf("SELECT COALESCE(c.Symbol, c.AsciiSymbol, c.Name) AS AliasName, a.Name AS ProvenanceName FROM "
                   "provenances a INNER JOIN provenance_groups_to_provenances b ON a.Id = b.provenances_id INNER "
                   "JOIN unit_aliases c ON c.ProvenanceGroup = b.provenance_groups_id"),
            (long long)cat.aliases.size());
  EXPECT_EQ(rowsOf("SELECT physmod_symbol, units_symbol FROM physmod_to_units_translation ORDER BY Id"),
            (long long)cat.translations.size());
  // The alias with a prefix resolves to the prefixed symbol, as the loader builds it.
  EXPECT_EQ(db.rows("SELECT IFNULL(c.Symbol, '') || b.Symbol FROM unit_aliases a INNER JOIN units b ON "
                    "a.RefUnit=b.Id LEFT OUTER JOIN unit_prefixes c ON a.RefPrefix=c.Id WHERE a.Name = 'kilogram'"),
            (std::vector<std::vector<std::string>>{{"kg"}}));
}

TEST(Package, PartsAndTablesCanBeLeftOut) {
  Catalogue cat;
  std::vector<Problem> problems;
  readCatalogueText(kBase, "t.txt", cat, problems);
  const std::string path = tempPath("broken.ud");
  WriteOptions o;
  o.coreProperties = false;
  o.udPart = false;
  writePackage(cat, path, o);
  auto entries = zipEntries(path);
  EXPECT_EQ(entries.count("docProps/core.xml"), 0u);
  EXPECT_EQ(entries.count("ud_part"), 0u);
  EXPECT_EQ(entries.at("_rels/.rels").find("core-properties"), std::string::npos);

  WriteOptions t;
  t.omitTables = {"units"};
  t.extraSql = "UPDATE unit_aliases SET RefUnit = 99";
  writePackage(cat, path, t);
  entries = zipEntries(path);
  Db db(entries.at("ud_part"));
  EXPECT_EQ(db.rows("SELECT COUNT(*) FROM units").at(0).at(0), "ERROR");
  EXPECT_EQ(db.count("SELECT COUNT(*) FROM unit_aliases WHERE RefUnit = 99"), 1);

  writeRawFile(path, "not a zip");
  EXPECT_TRUE(zipEntries(path).empty());
  std::filesystem::remove(path);
}

}  // namespace
