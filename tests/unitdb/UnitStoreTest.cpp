// The store: adding (duplicates, clashes, missing texts), unit systems, reciprocal pairs, print, and the
// singleton's life across clearAll.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/Text.hpp"
#include "support/ExpectRaises.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;
using F = ConversionFactorFactory;

// Collects warnings while alive ("key:arg,arg").
class WarningLog {
 public:
  WarningLog() {
    previous_ = qlsvSetWarningHandler([this](const qlsvDiagnosticImpl& d) {
      std::string line = d.getKey() + ":";
      for (const std::string& a : d.getArgumentTexts()) line += a + ",";
      lines.push_back(line);
    });
  }
  ~WarningLog() { qlsvSetWarningHandler(previous_); }
  std::vector<std::string> lines;

 private:
  qlsvWarningHandler previous_;
};

std::unique_ptr<Unit> lengthUnit(const std::wstring& name, const std::wstring& symbol, const std::wstring& ascii) {
  auto u = UnitFactory::createUnit(-10, name, L"m", symbol, ascii, L"", F::createConversionFactor(1, 1, 0), L"", {}, {},
                                   false, qltest::storedAbstract(L"length"));
  u->parseExpressionAndGenerateAST();
  return u;
}

TEST_F(CatalogueTest, AddingAnEqualUnitWarnsAndKeepsTheFirst) {
  const unsigned before = db->getNumUnits();
  WarningLog log;
  auto again = lengthUnit(L"metre", L"m", L"m");
  for (const UnitPrefix& p : qltest::storedUnit(L"metre").getPrefixes()) again->addPrefix(p);
  const Unit* stored = &qltest::storedUnit(L"metre");
  db->addUnit(*again);
  EXPECT_EQ(log.lines, std::vector<std::string>{"UnitAlreadyInDatabase:metre,m,"});
  EXPECT_EQ(db->getNumUnits(), before);
  EXPECT_EQ(&qltest::storedUnit(L"metre"), stored);
}

struct ClashCase {
  const wchar_t *name, *symbol, *ascii;
  bool clashes;
};

class Clashes : public CatalogueTest, public ::testing::WithParamInterface<ClashCase> {};

TEST_P(Clashes, NameAgainstNamesSymbolsAgainstSymbols) {
  const ClashCase& c = GetParam();
  const unsigned before = db->getNumUnits();
  auto u = lengthUnit(c.name, c.symbol, c.ascii);
  if (c.clashes) {
    EXPECT_RAISES(
        db->addUnit(*u), "QuillonTypes:Unit", "SimilarInstanceThere",
        {ConvertUStringToStdString(c.name), ConvertUStringToStdString(c.symbol), ConvertUStringToStdString(c.ascii)});
    // kept: the clone stays in the all map: it counts and is listed, but no text finds it.
    EXPECT_EQ(db->getNumUnits(), before + 1);
    bool listed = false;
    for (const UnitBase& x : db->getAllUnits()) listed |= x.getName() == c.name && x.getSymbol() == c.symbol;
    EXPECT_TRUE(listed);
    for (const UnitBase& x : db->getUnit(c.name))
      EXPECT_FALSE(x.getSymbol() == c.symbol && x.getAsciiSymbol() == c.ascii);
  } else {
    db->addUnit(*u);
    EXPECT_EQ(db->getNumUnits(), before + 1);
    EXPECT_FALSE(db->getUnit(c.symbol).empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Store, Clashes,
                         ::testing::Values(ClashCase{L"metreAgain", L"m", L"mtr", true},   // symbol vs symbol
                                           ClashCase{L"metre", L"mtr", L"mtr", true},      // name vs name
                                           ClashCase{L"metreAgain", L"mtr", L"ft", true},  // ASCII vs symbol
                                           ClashCase{L"metreAgain", L"mtr", L"mtr", false},
                                           ClashCase{L"m", L"mtr", L"mtr", false},  // a name may be a symbol
                                           ClashCase{L"metreAgain", L"metre", L"metre", false}));

TEST_F(CatalogueTest, MissingTextsWarnAndTheUnitStaysFindable) {
  WarningLog log;
  db->addUnit(*lengthUnit(L"rod", L"rd", L""));
  EXPECT_EQ(log.lines, std::vector<std::string>{"ASCIISymbolNotDefined:rod,"});
  EXPECT_EQ(db->getUnit(L"rod").size(), 1u);
  EXPECT_EQ(db->getUnit(L"rd").size(), 1u);
  log.lines.clear();
  db->addUnit(*lengthUnit(L"", L"xq", L"xq"));
  db->addUnit(*lengthUnit(L"perch", L"", L"pch"));
  EXPECT_EQ(log.lines, (std::vector<std::string>{"NameNotDefined:xq,", "SymbolNotDefined:perch,"}));
  // Aliases are silent about what they inherit.
  log.lines.clear();
  db->addUnit(*UnitFactory::createUnitAlias(L"metreAlias", L"", L"", L"", qltest::storedUnit(L"metre"), {}));
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(CatalogueTest, PrefixesFollowTheSameRules) {
  const unsigned before = db->getNumPrefixes();
  auto clash = UnitFactory::createUnitPrefix(L"kiloAgain", L"k", L"k", L"", F::createConversionFactor(1, 1, 3), {});
  EXPECT_RAISES(db->addUnitPrefix(*clash), "QuillonTypes:Unit", "SimilarInstanceThere", {"kiloAgain", "k", "k"});
  EXPECT_EQ(db->getNumPrefixes(), before + 1);  // kept: the clone stays, found by no text
  EXPECT_TRUE(db->getUnitPrefix(L"kiloAgain").empty());
  WarningLog log;
  const std::unique_ptr<UnitPrefix> kilo(db->getUnitPrefix(L"kilo").begin()->get().clone());
  db->addUnitPrefix(*kilo);
  EXPECT_EQ(log.lines, std::vector<std::string>{"UnitAlreadyInDatabase:kilo,k,"});
  EXPECT_EQ(db->getNumPrefixes(), before + 1);
  // A prefix alias with a symbol of its own: found by it, and its inherited name stays the target's.
  db->addUnitPrefix(*UnitFactory::createUnitPrefixAlias(L"", L"K", L"", L"", *db->getUnitPrefix(L"kilo").begin(), {}));
  EXPECT_EQ(db->getUnitPrefix(L"K").size(), 1u);
  EXPECT_EQ(db->getUnitPrefix(L"kilo").size(), 1u);
}

TEST_F(CatalogueTest, UnitsForwardToWhatTheyNameOrExtend) {
  auto u = lengthUnit(L"rod", L"rd", L"rd");
  u->addPrefixByName(L"kilo");
  u->addPrefixByName(L"u");     // by symbol too
  u->addPrefixByName(L"kibi");  // unknown: silent
  EXPECT_EQ(u->getPrefixes().size(), 2u);
  u->setSubUnit(L"surveyor");
  u->setUnitFlag(true);
  db->addUnit(*u);
  const UnitBase::UnitSet krd = db->getUnit(L"krd");
  ASSERT_EQ(krd.size(), 1u);
  const auto& composite = dynamic_cast<const CompositeUnit&>(krd.begin()->get());
  EXPECT_EQ(composite.getSubUnit(), L"surveyor");
  EXPECT_TRUE(composite.getUnitFlag());
  EXPECT_FALSE(composite.hasPrefix(*db->getUnitPrefix(L"kilo").begin()));
  std::unique_ptr<CompositeUnit> copy(composite.clone());
  EXPECT_EQ(copy->compare(composite), 0);
  EXPECT_EQ(copy->getInternalBaseConversionFactor(), F::createConversionFactor(1, 1, 3));
  const Unit& rod = qltest::storedUnit(L"rod");
  auto alias = UnitFactory::createUnitAlias(L"pole", L"", L"", L"", rod, {});
  alias->setSubUnit(L"other");
  alias->setUnitFlag(false);
  EXPECT_EQ(alias->getSubUnit(), L"surveyor");
  EXPECT_TRUE(alias->getUnitFlag());
  EXPECT_TRUE(alias->hasPrefix(*db->getUnitPrefix(L"kilo").begin()));
  EXPECT_EQ(alias->getPrefixes().size(), 2u);
  EXPECT_TRUE(rod.isConversionAccurate());
}

TEST_F(CatalogueTest, UnitSystemsByName) {
  EXPECT_EQ(db->getNumUnitSystems(), 2u);
  db->addUnitSystem(UnitSystem(L"SI"));
  EXPECT_EQ(db->getNumUnitSystems(), 3u);
  EXPECT_EQ(db->getUnitSystem(L"SI"), db->getAllUnitSystems()[0]);
  EXPECT_EQ(db->getUnitSystem(L"si"), nullptr);
  EXPECT_TRUE(UnitSystem::isValidUnitSystemName(L"USCustomary"));
  EXPECT_FALSE(UnitSystem::isValidUnitSystemName(L"Imperial"));
  EXPECT_TRUE(UnitSystem::isValidStringForUnitSystemName(L"Imperial"));
  EXPECT_TRUE(UnitSystem::isValidStringForUnitSystemName(L""));
  EXPECT_FALSE(UnitSystem::isValidStringForUnitSystemName(L"US customary"));
  const Unit& inch = qltest::storedUnit(L"inch");
  ASSERT_EQ(inch.getUnitSystems().size(), 1u);
  EXPECT_EQ(inch.getUnitSystems()[0]->getName(), L"USCustomary");
  std::ostringstream out;
  inch.getUnitSystems()[0]->print(out);
  EXPECT_EQ(out.str(), "Unit System: 'USCustomary'\n");
  // A composite of a unit takes the unit's systems.
  EXPECT_EQ(db->getUnit(L"km").begin()->get().getUnitType(), 3);
  EXPECT_EQ(static_cast<const Unit&>(db->getUnit(L"km").begin()->get()).getUnitSystems()[0]->getName(), L"SI");
}

TEST_F(CatalogueTest, ReciprocalPairs) {
  const UnitBase& economy = qltest::storedAbstract(L"fuelEconomy");
  const UnitBase& consumption = qltest::storedAbstract(L"fuelConsumption");
  const Unit& kmpl = qltest::storedUnit(L"kilometrePerLitre");
  const Unit& lp100 = qltest::storedUnit(L"litrePer100Kilometre");
  EXPECT_TRUE(db->areUnitsReciprocals(economy, consumption));
  EXPECT_TRUE(db->areUnitsReciprocals(consumption, economy));
  EXPECT_TRUE(db->areUnitsReciprocals(kmpl, lp100));
  EXPECT_FALSE(db->areUnitsReciprocals(kmpl, consumption));  // a unit and an abstract unit: never
  EXPECT_FALSE(db->areUnitsReciprocals(economy, economy));
  auto a = db->getReciprocalConversionFactor(economy, consumption);
  auto b = db->getReciprocalConversionFactor(lp100, kmpl);
  ASSERT_TRUE(a && b);
  EXPECT_TRUE(a->isReciprocal());
  EXPECT_EQ(*a, *b);
  EXPECT_EQ(a->toDouble(), 1.0);
  EXPECT_FALSE(db->getReciprocalConversionFactor(kmpl, economy));
}

TEST_F(CatalogueTest, PrintRepeatsTheAbstractUnitsLabel) {
  std::ostringstream out;
  db->print(out);
  EXPECT_EQ(out.str(), "UnitDatabase\nNumber of Units : " + std::to_string(db->getNumUnits()) +
                           "\n\n\nNumber of Abstract Units : " + std::to_string(db->getNumAbstractUnits()) +
                           "\n\n\nNumber of Abstract Units : 2\n\n\n");
}

TEST_F(CatalogueTest, ClearAllThenGetGivesAFreshCatalogue) {
  EXPECT_GT(db->getNumUnits(), 15u);
  EXPECT_EQ(db->getNumPrefixes(), 9u);
  db->addUnit(*lengthUnit(L"rod", L"rd", L"rd"));
  const unsigned full = db->getNumUnits();
  db->getUnit(L"km");
  db->clearAll();
  EXPECT_EQ(db->getNumUnits(), 0u);
  EXPECT_EQ(db->getNumAbstractUnits(), 0u);
  EXPECT_EQ(db->getNumPrefixes(), 0u);
  EXPECT_EQ(db->getNumUnitSystems(), 0u);
  EXPECT_TRUE(db->getUnit(L"km").empty());
  UnitBase::UnitSet kg;
  db->addMatchingFundamentalUnitToList(L"kg", kg);
  EXPECT_EQ(kg.size(), 1u);                               // the fundamental units survive
  UnitDatabase* again = UnitDatabase::getUnitDatabase();  // loads the catalogue afresh
  EXPECT_EQ(again, db);
  EXPECT_EQ(again->getNumUnits(), full - 1);
  EXPECT_EQ(again->getUnit(L"km").size(), 1u);
  EXPECT_TRUE(again->getUnit(L"rod").empty());
}

TEST(UnitDatabaseLoader, RunsOnceAndSeesTheInstallPath) {
  const std::wstring before = fl::filesystem::get_install_path();
  EXPECT_FALSE(before.empty());
  UnitDatabase::getUnitDatabase()->clearAll();
  fl::filesystem::set_install_path(L"/opt/tool");
  int calls = 0;
  std::wstring seen;
  auto previous = UnitDatabase::setLoader([&](UnitDatabase& db, const std::wstring& path) {
    ++calls;
    seen = path;
    UnitDatabase::getUnitDatabase();  // the loader's own calls start no second load
    db.addUnitSystem(UnitSystem(L"SI"));
  });
  UnitDatabase::getUnitDatabase();
  UnitDatabase::getUnitDatabase();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(seen, L"/opt/tool/toolbox/quillon/ql_types/ud");
  EXPECT_EQ(UnitDatabase::getUnitDatabase()->getNumUnitSystems(), 1u);
  UnitDatabase::setLoader(previous);
  UnitDatabase::getUnitDatabase()->clearAll();
  fl::filesystem::set_install_path(before);
}

TEST(UnitDatabaseLoader, EmptyLoaderGivesAnEmptyCatalogue) {
  auto previous = UnitDatabase::setLoader(nullptr);
  UnitDatabase::getUnitDatabase()->clearAll();
  UnitDatabase* db = UnitDatabase::getUnitDatabase();
  EXPECT_EQ(db->getNumUnits(), 0u);
  EXPECT_TRUE(db->getUnit(L"kg").empty());
  db->clearAll();
  UnitDatabase::setLoader(previous);
}

}  // namespace
