// The package loader: packages written by the catalogue writer in each test, broken on purpose where the
// test needs it, loaded through getUnitDatabase with the warnings captured in chain order.
#include <ftw.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <cstdio>
#include <string>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ud_writer/UdWriter.hpp"

namespace {

using namespace QLTypeSys;
namespace uw = QLTypeSys::udwriter;

// "Key(arg|arg)" for each diagnostic of a warning: the head, then its chain.
std::vector<std::string> flatten(const qlsvDiagnosticImpl& d) {
  std::vector<std::string> out;
  auto one = [&](const qlsvDiagnosticImpl& x) {
    std::string s = x.getKey() + "(";
    const auto args = x.getArgumentTexts();
    for (std::size_t i = 0; i < args.size(); ++i) s += (i ? "|" : "") + args[i];
    out.push_back(s + ")");
  };
  one(d);
  for (const qlsvDiagnosticImpl* c : d.getCauses()) one(*c);
  return out;
}

int removeEntry(const char* p, const struct stat*, int, struct FTW*) { return std::remove(p); }

// A small valid catalogue: one system, two provenances, length and time, kilo and milli, metre and second,
// an alias and a physical-modelling pair.
uw::Catalogue smallCatalogue() {
  uw::Catalogue c;
  c.systems.push_back({{}, "SI"});
  c.provenances.push_back({{}, "P1", "Title", "Sub", "Org", "Organisation", 2001, "http://a,http://b", "1st"});
  c.provenances.push_back({{}, "Unknown", "Unknown", "-", "-", "-", 0, "-", "-"});
  c.abstractUnits.push_back({{}, "length", "length"});
  c.abstractUnits.push_back({{}, "time", "time"});
  uw::PrefixRow kilo{{}, "kilo", "k", "k", "kilo", {3, "1,1,3"}, {"SI"}, {"P1"}};
  uw::PrefixRow milli{{}, "milli", "m", "m", "milli", {3, "1,1,-3"}, {"SI"}, {"P1"}};
  c.prefixes = {kilo, milli};
  c.prefixSets.push_back({{}, "SI", {"kilo", "milli"}});
  uw::UnitRow metre{{}, "metre", "m", "m", "m", "metre", "length", "", {3, "1,1,0"}, {"SI"}, {"SI"}, {"P1"}};
  uw::UnitRow second{{}, "second", "s", "s", "s", "second", "time", "", {3, "1,1,0"}, {"SI"}, {"SI"}, {"P1"}};
  c.units = {metre, second};
  c.aliases.push_back({{}, "metres", "", "", "metres", "metre", "", {"SI"}, {"P1"}});
  c.translations.push_back({{}, "sec", "s"});
  return c;
}

class LoaderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ql_loader_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    ASSERT_EQ(mkdir((dir_ + "/toolbox").c_str(), 0700), 0);
    ASSERT_EQ(mkdir((dir_ + "/toolbox/quillon").c_str(), 0700), 0);
    ASSERT_EQ(mkdir((dir_ + "/toolbox/quillon/ql_types").c_str(), 0700), 0);
    previousInstall_ = fl::filesystem::get_install_path();
    fl::filesystem::set_install_path(ConvertStdStringToUString(dir_));
    previousLoader_ = UnitDatabase::setLoader(UnitDatabase::packageLoader());
    previousHandler_ = qlsvSetWarningHandler([this](const qlsvDiagnosticImpl& d) { warnings.push_back(flatten(d)); });
    UnitDatabase::getUnitDatabase()->clearAll();
    warnings.clear();
  }
  void TearDown() override {
    UnitDatabase::getUnitDatabase()->clearAll();
    qlsvSetWarningHandler(previousHandler_);
    UnitDatabase::setLoader(previousLoader_);
    fl::filesystem::set_install_path(previousInstall_);
    nftw(dir_.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
  }
  std::string udPath() const { return dir_ + "/toolbox/quillon/ql_types/ud"; }
  std::string tempPath() const { return ConvertUStringToStdString(fl::filesystem::temp_directory_name()) + "/e_ud"; }
  std::string field(const std::string& label) const {
    return "UnitDatabaseFileLoadFieldError(" + udPath() + "|" + label + ")";
  }
  // Writes the package and loads it afresh.
  UnitDatabase* load(const uw::Catalogue& c, const uw::WriteOptions& options = {}) {
    uw::writePackage(c, udPath(), options);
    return reload();
  }
  UnitDatabase* reload() {
    UnitDatabase::getUnitDatabase()->clearAll();
    warnings.clear();
    return UnitDatabase::getUnitDatabase();
  }

  std::vector<std::vector<std::string>> warnings;

 private:
  std::string dir_;
  std::wstring previousInstall_;
  UnitDatabase::Loader previousLoader_;
  qlsvWarningHandler previousHandler_;
};

TEST_F(LoaderTest, SmallCatalogueLoadsWithoutWarning) {
  UnitDatabase* db = load(smallCatalogue());
  EXPECT_TRUE(warnings.empty()) << warnings.front().front();
  EXPECT_EQ(db->getNumUnitSystems(), 1u);
  EXPECT_FALSE(db->getUnit(L"km").empty());
  EXPECT_FALSE(db->getUnit(L"metres").empty());
  EXPECT_FALSE(db->getUnitPrefix(L"milli").empty());
  EXPECT_EQ(db->getUnitProvenance(L"P1").size(), 1u);
  // The extracted database is removed after the load.
  EXPECT_FALSE(fl::filesystem::exists(ConvertStdStringToUString(tempPath())));
}

TEST_F(LoaderTest, MissingFileWarnsOnceAndLookupsStillWork) {
  UnitDatabase* db = reload();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0], std::vector<std::string>{"UnitDatabaseFileOpenError(" + udPath() + ")"});
  EXPECT_EQ(db->getNumUnitSystems(), 0u);
  EXPECT_TRUE(db->getUnitPrefix(L"kilo").empty());
  EXPECT_TRUE(db->getUnit(L"metre").empty());
}

TEST_F(LoaderTest, NotAZipNamesTheTemporaryFile) {
  uw::writeRawFile(udPath(), "this is not a ZIP file");
  reload();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0], std::vector<std::string>{"UnitDatabaseFileOpenError(" + tempPath() + ")"});
}

// Each package defect that makes the package unreadable names the temporary file.
class BrokenPackageTest : public LoaderTest, public ::testing::WithParamInterface<int> {};

TEST_P(BrokenPackageTest, WarnsOpenErrorForTheTemporaryFile) {
  uw::WriteOptions options;
  switch (GetParam()) {
    case 0:
      options.udPart = false;
      break;
    case 1:
      options.coreProperties = false;
      break;
    case 2:
      options.contentTypes = false;
      break;
    case 3:
      options.relationships = false;
      break;
  }
  UnitDatabase* db = load(smallCatalogue(), options);
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0], std::vector<std::string>{"UnitDatabaseFileOpenError(" + tempPath() + ")"});
  EXPECT_EQ(db->getNumUnitSystems(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Defects, BrokenPackageTest, ::testing::Values(0, 1, 2, 3));

// A package whose part is not a database: the connection fails, no stage runs, and the extracted file
// is removed.
TEST_F(LoaderTest, PartThatIsNotADatabaseIsAnOpenError) {
  uw::writePackage(smallCatalogue(), udPath());
  int error = 0;
  zip_t* archive = zip_open(udPath().c_str(), 0, &error);
  ASSERT_NE(archive, nullptr);
  static const char junk[] = "definitely not an SQLite database, but long enough to have a header........";
  zip_source_t* source = zip_source_buffer(archive, junk, sizeof junk, 0);
  ASSERT_NE(source, nullptr);
  ASSERT_GE(zip_file_add(archive, "ud_part", source, ZIP_FL_OVERWRITE), 0);
  ASSERT_EQ(zip_close(archive), 0);
  UnitDatabase* db = reload();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0], std::vector<std::string>{"UnitDatabaseFileOpenError(" + tempPath() + ")"});
  EXPECT_EQ(db->getNumUnitSystems(), 0u);
  EXPECT_FALSE(fl::filesystem::exists(ConvertStdStringToUString(tempPath())));
}

TEST_F(LoaderTest, EveryTableMissingFailsEveryStageInOrder) {
  uw::WriteOptions options;
  options.omitTables = {"unit_systems",
                        "abstract_units",
                        "abstract_unit_relations",
                        "conversion_factors",
                        "unit_prefixes",
                        "prefix_aliases",
                        "units",
                        "unit_aliases",
                        "unit_system_groups",
                        "unit_system_groups_to_unit_systems",
                        "prefix_groups",
                        "prefix_groups_to_prefixes",
                        "provenance_groups_to_provenances",
                        "provenances",
                        "physmod_to_units_translation"};
  load(uw::Catalogue{}, options);
  ASSERT_EQ(warnings.size(), 1u);
  const std::vector<std::string> expected{field("unitSystems"),
                                          field("abstractUnits"),
                                          field("reciprocalAbstractUnits"),
                                          field("unitPrefixes"),
                                          field("unitPrefixesAliases"),
                                          field("units"),
                                          field("unitAliases"),
                                          field("Unit Provenance"),
                                          field("Unit Provenance Mapping"),
                                          field("Unit Alias Provenance Mapping"),
                                          field("physmodToUnitsTranslation")};
  EXPECT_EQ(warnings[0], expected);
}

TEST_F(LoaderTest, BadAbstractExpressionIsSkippedAndLaterRowsLoad) {
  uw::Catalogue c = smallCatalogue();
  c.abstractUnits.insert(c.abstractUnits.begin() + 1, uw::AbstractRow{{}, "broken", "length*("});
  c.abstractUnits.push_back({{}, "speed", "length/time"});
  UnitDatabase* db = load(c);
  ASSERT_EQ(warnings.size(), 1u);
  ASSERT_EQ(warnings[0].size(), 2u);
  EXPECT_EQ(warnings[0][1], field("abstractUnits"));
  EXPECT_NE(warnings[0][0].rfind("UnitDatabaseFile", 0), 0u);  // the row's own diagnostic comes first
  EXPECT_TRUE(db->getAbstractUnit(L"broken").empty());
  EXPECT_FALSE(db->getAbstractUnit(L"speed").empty());
  EXPECT_FALSE(db->getUnit(L"s").empty());
}

TEST_F(LoaderTest, UnitKeepsTheRemainingPrefixesWhenOneFailedToLoad) {
  uw::Catalogue c = smallCatalogue();
  // "kilo2" takes kilo's symbol and is refused; the prefix set still names it, and so does a prefix alias.
  c.prefixes.push_back({{}, "kilo2", "k", "k", "kilo2", {3, "1,1,3"}, {"SI"}, {}});
  c.prefixSets[0].prefixes = {"kilo2", "milli"};
  c.prefixAliases.push_back({{}, "kiloAlias", "kA", "kA", "kiloAlias", "kilo2", {"SI"}, {}});
  UnitDatabase* db = load(c);
  ASSERT_EQ(warnings.size(), 1u);
  const auto& w = warnings[0];
  ASSERT_EQ(w.size(), 8u);
  EXPECT_EQ(w[0].rfind("SimilarInstanceThere(", 0), 0u) << w[0];
  EXPECT_EQ(w[1], field("unitPrefixes"));
  EXPECT_EQ(w[2], field("unitPrefixAliases"));
  EXPECT_EQ(w[3], "UnitPrefixNotInDatabase(kilo2)");
  EXPECT_EQ(w[4], field("units"));
  EXPECT_EQ(w[5], "UnitPrefixNotInDatabase(kilo2)");
  EXPECT_EQ(w[6], field("units"));
  EXPECT_EQ(w[7], "UnitPrefixNotInDatabase(kilo2)");
  EXPECT_FALSE(db->getUnit(L"mm").empty());
  EXPECT_FALSE(db->getUnit(L"metre").empty());
  EXPECT_TRUE(db->getUnit(L"ks").empty());
}

TEST_F(LoaderTest, AliasOfAPrefixedUnitResolvesThroughAComposite) {
  uw::Catalogue c = smallCatalogue();
  c.aliases.push_back({{}, "klick", "klk", "klk", "klick", "metre", "kilo", {"SI"}, {"P1"}});
  UnitDatabase* db = load(c);
  EXPECT_TRUE(warnings.empty());
  const auto found = db->getUnit(L"klk");
  ASSERT_FALSE(found.empty());
  const auto km = db->getUnit(L"km");
  ASSERT_FALSE(km.empty());
  EXPECT_EQ(found.begin()->get().getSymbol(), L"klk");
}

TEST_F(LoaderTest, OnlyCommaTerminatedLinksCount) {
  UnitDatabase* db = load(smallCatalogue());
  const auto p = db->getUnitProvenance(L"P1");
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].get().getURLs(), std::vector<std::wstring>{L"http://a"});
  const auto unknown = db->getUnitProvenance(L"Unknown");
  ASSERT_EQ(unknown.size(), 1u);
  EXPECT_TRUE(unknown[0].get().getURLs().empty());
}

TEST_F(LoaderTest, AliasWithoutSymbolsMapsItsProvenanceUnderItsName) {
  UnitDatabase* db = load(smallCatalogue());
  UnitDatabase::ProvenanceList list;
  const auto alias = db->getUnit(L"metres");
  ASSERT_FALSE(alias.empty());
  db->appendProvenancesForUnit(alias.begin()->get(), list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].get().getProvenanceID(), L"P1");
}

TEST_F(LoaderTest, MissingTableFailsOnlyItsStage) {
  uw::WriteOptions options;
  options.omitTables = {"physmod_to_units_translation"};
  UnitDatabase* db = load(smallCatalogue(), options);
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0], std::vector<std::string>{field("physmodToUnitsTranslation")});
  EXPECT_FALSE(db->getUnit(L"km").empty());
}

TEST_F(LoaderTest, DanglingReferencesReportTheirRow) {
  uw::WriteOptions options;
  // A relation between an abstract unit that exists and one that failed to load.
  uw::Catalogue c = smallCatalogue();
  c.abstractUnits.push_back({{}, "bad", "nonsense_dimension"});
  c.reciprocals.push_back({{}, "time", "bad", {6, "1"}});
  load(c, options);
  ASSERT_EQ(warnings.size(), 1u);
  const auto& w = warnings[0];
  ASSERT_EQ(w.size(), 4u);
  EXPECT_EQ(w[1], field("abstractUnits"));
  EXPECT_EQ(w[2], field("reciprocalAbstractUnits"));
  EXPECT_EQ(w[3], "UnitNotInDatabase(bad)");
}

TEST_F(LoaderTest, AliasOfARefusedUnitReportsItsTarget) {
  uw::Catalogue c = smallCatalogue();
  c.units.push_back({{}, "bogus", "bg", "bg", "m*(", "bogus", "length", "", {3, "1,1,0"}, {}, {"SI"}, {}});
  c.aliases.push_back({{}, "bogusAlias", "bga", "bga", "bogusAlias", "bogus", "", {"SI"}, {}});
  UnitDatabase* db = load(c);
  ASSERT_EQ(warnings.size(), 1u);
  const auto& w = warnings[0];
  ASSERT_EQ(w.size(), 4u);
  EXPECT_EQ(w[1], field("units"));
  EXPECT_EQ(w[2], field("unitAliases"));
  EXPECT_EQ(w[3], "UnitNotInDatabase(bg)");
  EXPECT_TRUE(db->getUnit(L"bga").empty());
  EXPECT_FALSE(db->getUnit(L"metres").empty());
}

TEST_F(LoaderTest, ReciprocalAbstractUnitsAndTheirFactor) {
  uw::Catalogue c = smallCatalogue();
  c.abstractUnits.push_back({{}, "frequency", "1/time"});
  c.reciprocals.push_back({{}, "frequency", "time", {6, "2"}});
  UnitDatabase* db = load(c);
  EXPECT_TRUE(warnings.empty());
  const auto time = db->getAbstractUnit(L"time");
  const auto frequency = db->getAbstractUnit(L"frequency");
  ASSERT_FALSE(time.empty());
  ASSERT_FALSE(frequency.empty());
  EXPECT_TRUE(db->areUnitsReciprocals(time.begin()->get(), frequency.begin()->get()));
  EXPECT_TRUE(db->getReciprocalConversionFactor(frequency.begin()->get(), time.begin()->get()).has_value());
}

TEST_F(LoaderTest, ReloadOverwritesTheExtractedFile) {
  UnitDatabase* db = load(smallCatalogue());
  ASSERT_NE(db->getUnitSystem(L"SI"), nullptr);
  uw::Catalogue other = smallCatalogue();
  other.systems[0].name = "Other";
  for (auto& p : other.prefixes) p.systems = {"Other"};
  for (auto& u : other.units) u.systems = {"Other"};
  for (auto& a : other.aliases) a.systems = {"Other"};
  // A stale extracted file is overwritten, not read.
  uw::writeRawFile(tempPath(), "stale");
  db = load(other);
  EXPECT_TRUE(warnings.empty());
  EXPECT_EQ(db->getUnitSystem(L"SI"), nullptr);
  EXPECT_NE(db->getUnitSystem(L"Other"), nullptr);
}

TEST(ShippedPackage, LoadsWithoutWarning) {
  std::vector<std::string> seen;
  auto previousHandler = qlsvSetWarningHandler([&](const qlsvDiagnosticImpl& d) {
    for (auto& s : flatten(d)) seen.push_back(s);
  });
  auto previousLoader = UnitDatabase::setLoader(UnitDatabase::packageLoader());
  const std::wstring previousInstall = fl::filesystem::get_install_path();
  fl::filesystem::set_install_path(ConvertStdStringToUString(QL_TYPES_BUILD_DIR));
  UnitDatabase::getUnitDatabase()->clearAll();
  seen.clear();
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  EXPECT_TRUE(seen.empty()) << seen.front();
  EXPECT_GT(db->getNumUnits(), 50u);
  EXPECT_FALSE(db->getUnit(L"km").empty());
  db->clearAll();
  fl::filesystem::set_install_path(previousInstall);
  UnitDatabase::setLoader(previousLoader);
  qlsvSetWarningHandler(previousHandler);
}

// The default install path, found from where the library lies, is the build tree, which holds the package.
TEST(ShippedPackage, DefaultInstallPathFindsTheBuildTreePackage) {
  struct stat a, b;
  const std::string found = ConvertUStringToStdString(fl::filesystem::get_install_path() + UnitDatabase::unitDBPath);
  ASSERT_EQ(::stat(found.c_str(), &a), 0) << found;
  ASSERT_EQ(::stat(QL_TYPES_BUILD_DIR "/toolbox/quillon/ql_types/ud", &b), 0);
  EXPECT_EQ(a.st_ino, b.st_ino);
  EXPECT_EQ(a.st_dev, b.st_dev);
}

}  // namespace
