// Every key the code can raise has an English text whose placeholders match its arguments.
//
// Keys are raised through typed keys generated from the catalogue files, so the entries
// listed here are exactly the keys the code can raise.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "ql_types/platform/Diagnostic.hpp"

namespace {

TEST(Catalogs, EveryTextUsesExactlyItsArguments) {
  const std::regex placeholder(R"(\{(\d+)\})");
  for (const auto& e : resource_core::allCatalogEntries()) {
    SCOPED_TRACE(std::string(e.catalog) + " / " + e.key);
    const std::string text = e.text;
    EXPECT_FALSE(text.empty());
    std::set<int> used;
    for (std::sregex_iterator it(text.begin(), text.end(), placeholder), end; it != end; ++it)
      used.insert(std::stoi((*it)[1]));
    std::set<int> expected;
    for (int i = 0; i < e.argumentCount; ++i) expected.insert(i);
    EXPECT_EQ(used, expected);
  }
}

TEST(Catalogs, KeysAreUniqueWithinACatalog) {
  std::set<std::string> seen;
  for (const auto& e : resource_core::allCatalogEntries())
    EXPECT_TRUE(seen.insert(std::string(e.catalog) + "/" + e.key).second) << e.key;
}

TEST(Catalogs, TheThreeCataloguesOfTheLibraryAreThere) {
  std::set<std::string> catalogs;
  for (const auto& e : resource_core::allCatalogEntries()) catalogs.insert(e.catalog);
  for (const char* c : {"QuillonTypes:general", "QuillonTypes:Unit", "QuillonTypes:Dimensions"})
    EXPECT_TRUE(catalogs.count(c)) << c;
}

TEST(Catalogs, FormattingAFullArgumentListLeavesNoPlaceholder) {
  for (const auto& e : resource_core::allCatalogEntries()) {
    std::vector<resource_core::MsgArg> args;
    for (int i = 0; i < e.argumentCount; ++i) args.emplace_back("arg" + std::to_string(i));
    const std::string text = resource_core::formatMessage(resource_core::BaseMsgID(e.catalog, e.key, args));
    EXPECT_EQ(text.find('{'), std::string::npos) << e.key << ": " << text;
    for (int i = 0; i < e.argumentCount; ++i)
      EXPECT_NE(text.find("arg" + std::to_string(i)), std::string::npos) << e.key;
  }
}

TEST(Catalogs, TypedKeysNameTheirCatalogue) {
  EXPECT_STREQ(qlmsg::general::InConsistentTargetToHostFcn.key, "InConsistentTargetToHostFcn");
  EXPECT_STREQ(qlmsg::unit::UnitsNotConvertible.catalog, "QuillonTypes:Unit");
  EXPECT_STREQ(qlmsg::dimensions::InconsistentSymbolicDimensionLessThan.catalog, "QuillonTypes:Dimensions");
}

TEST(Catalogs, BracesCanBeEscaped) {
  // Only numbered placeholders are replaced; other braces pass through.
  auto d = qlsvCreateDiagnosticFromMessageID(resource_core::BaseMsgID::make("QuillonTypes:general",
                                                                           "InvalidDataType", "{x}"));
  EXPECT_NE(d->getMessage().find("'{x}'"), std::string::npos);
}

}  // namespace

namespace {

// Reads the library's sources and checks that every key they raise, typed or spelled out,
// has a text in its catalogue.
TEST(Catalogs, EveryKeyRaisedInTheSourcesHasAText) {
  const char* root = std::getenv("QL_TYPES_SOURCE_DIR");
  if (!root) GTEST_SKIP() << "QL_TYPES_SOURCE_DIR is not set";
  const std::map<std::string, std::string> catalogOf = {{"general", "QuillonTypes:general"},
                                                        {"unit", "QuillonTypes:Unit"},
                                                        {"dimensions", "QuillonTypes:Dimensions"},
                                                        {"services", "ql_services:core"},
                                                        {"symbolic", "QL:symbolic"}};
  const std::regex typed(R"(qlmsg::(\w+)::(\w+))");
  const std::regex spelled(R"re(BaseMsgID(?:::make)?\(\s*"([^"]+)"\s*,\s*"([^"]+)")re");
  const std::regex alias(R"(namespace\s+(\w+)\s*=\s*qlmsg::(\w+)\s*;)");
  int keys = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(std::string(root) + "/ql_types")) {
    const std::string ext = entry.path().extension().string();
    if (ext != ".cpp" && ext != ".hpp") continue;
    std::ifstream in(entry.path());
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (std::sregex_iterator it(text.begin(), text.end(), typed), end; it != end; ++it) {
      auto cat = catalogOf.find((*it)[1]);
      if (cat == catalogOf.end()) continue;  // a namespace alias, not a key
      EXPECT_NE(resource_core::findMessageText(cat->second, (*it)[2]), nullptr)
          << entry.path() << ": " << (*it)[0];
      ++keys;
    }
    // Keys raised through a namespace alias such as "namespace msg = qlmsg::general;".
    for (std::sregex_iterator a(text.begin(), text.end(), alias), end; a != end; ++a) {
      const std::string catalog = catalogOf.at((*a)[2]);
      const std::regex use("\\b" + (*a)[1].str() + "::(\\w+)");
      for (std::sregex_iterator it(text.begin(), text.end(), use); it != end; ++it) {
        EXPECT_NE(resource_core::findMessageText(catalog, (*it)[1]), nullptr) << entry.path() << ": " << (*it)[0];
        ++keys;
      }
    }
    for (std::sregex_iterator it(text.begin(), text.end(), spelled), end; it != end; ++it) {
      EXPECT_NE(resource_core::findMessageText((*it)[1], (*it)[2]), nullptr) << entry.path() << ": " << (*it)[0];
      ++keys;
    }
  }
  EXPECT_GT(keys, 50);
}

}  // namespace
