// Every key the code can raise has an English text whose placeholders match its arguments.
//
// Keys are raised through typed keys generated from the catalogue files, so the entries
// listed here are exactly the keys the code can raise.
#include <gtest/gtest.h>

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
