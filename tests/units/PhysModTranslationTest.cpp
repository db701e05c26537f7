// Physical-modelling translation: announcements sorted on activation or at once, the relative tolerance,
// offsets, fixed pairs from the catalogue, both directions of translation, each failure key, and the two
// unit table entry points. The observer is process-wide and keeps every announcement, so each test
// announces names of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "ql_types/units/PhysModUnitsObserver.hpp"
#include "ql_types/units/UnitTable.hpp"
#include "support/ExpectRaises.hpp"
#include "unitdb/TestCatalogue.hpp"

namespace {

using namespace QLTypeSys;
using qltest::CatalogueTest;

PhysModUnitsObserver& observer() { return PhysModUnitsObserver::getObserver(); }

struct Near {
  double a, b;
  bool equal;
};

class NearlyEqual : public ::testing::TestWithParam<Near> {};

TEST_P(NearlyEqual, RelativeToleranceOfOneInTenThousandAndTen) {
  EXPECT_EQ(PhysModUnitsObserver::nearlyEqual(GetParam().a, GetParam().b), GetParam().equal);
}

INSTANTIATE_TEST_SUITE_P(Cases, NearlyEqual,
                         ::testing::Values(Near{0.0, 0.0, true}, Near{0.0, -0.0, true}, Near{0.0, 1e-300, false},
                                           Near{1e-300, 0.0, false}, Near{1.0, 1.0 + 1e-6, true},
                                           Near{1000.0, 1000.0 * (1 - 1e-6), true}, Near{1.0, 1.0 + 1e-4, false},
                                           Near{-5.0, -5.0, true}, Near{5.0, -5.0, false},
                                           Near{1.0, std::nan(""), false}, Near{1e300, 1e300 * (1 + 2e-5), false}));

class PhysModTranslation : public CatalogueTest {};

TEST_F(PhysModTranslation, ActivatedByTheLoadAndSwitchedOffByClearAll) {
  EXPECT_TRUE(observer().isActive());
  db->clearAll();
  EXPECT_FALSE(observer().isActive());
  db = UnitDatabase::getUnitDatabase();
  EXPECT_TRUE(observer().isActive());
}

TEST_F(PhysModTranslation, ToleranceOffsetsAndUnknownNames) {
  observer().announce(L"mi", L"m", 1609.344 * (1 + 1e-6), 0.0);
  observer().announce(L"ft", L"m", 0.3048 * (1 + 1e-4), 0.0);
  observer().announce(L"degC", L"K", 1.0, 0.0);  // the catalogue's Celsius has an offset
  observer().announce(L"degF", L"K", 5.0 / 9.0, 45967.0 / 180.0);
  observer().announce(L"furlong", L"m", 201.168, 0.0);
  observer().announce(L"km", L"m", 1000.0, 0.0);
  observer().announce(L"min", L"s", 60.0, 0.0);
  EXPECT_EQ(observer().getTranslation(L"mi"), L"mi");
  EXPECT_TRUE(observer().isIncompatible(L"ft"));
  EXPECT_TRUE(observer().isIncompatible(L"degC"));
  EXPECT_EQ(observer().getTranslation(L"degF"), L"degF");
  EXPECT_TRUE(observer().isUnknown(L"furlong"));
  EXPECT_EQ(observer().getTranslation(L"km"), L"km");

  EXPECT_EQ(observer().translateToQuillon(L"km/min"), L"km*min^-1");
  EXPECT_EQ(observer().translateToQuillon(L"mi^2*km/km"), L"mi^2*km^0");
  EXPECT_EQ(observer().translateToPhysMod(L"km*min^-1"), L"km*min^-1");
  EXPECT_RAISES(observer().translateToQuillon(L"ft/min"), "QuillonTypes:Unit", "PhysModUnitIncompatible", {"ft/min"});
  EXPECT_RAISES(observer().translateToQuillon(L"furlong"), "QuillonTypes:Unit", "PhysModUnitUnknown", {"furlong"});
  EXPECT_RAISES(observer().translateToQuillon(L""), "QuillonTypes:Unit", "PhysModUnitIncompatible", {""});
  EXPECT_RAISES(observer().translateToQuillon(L"m^0"), "QuillonTypes:Unit", "PhysModUnitIncompatible", {"m^0"});
  EXPECT_RAISES(observer().translateToQuillon(L"km/"), "QuillonTypes:Unit", "PhysModUnitIncompatible", {"km/"});
  EXPECT_RAISES(observer().translateToPhysMod(L"km*kg"), "QuillonTypes:Unit", "QuillonUnitToPhysModUnitUnknown",
                {"km*kg"});
  EXPECT_EQ(observer().translateToPhysMod(L"km/"), L"");  // kept: a failed parse is not reported here
  // A name in neither set and with no pair gives an empty piece.
  EXPECT_EQ(observer().translateToQuillon(L"zz*km"), L"*km");
  EXPECT_EQ(observer().translateToQuillon(L"km*zz^3"), L"km*^3");
}

TEST_F(PhysModTranslation, AnnouncedBeforeActivationWaitsForIt) {
  observer().setActive(false);
  observer().announce(L"hr", L"s", 3600.0, 0.0);  // no catalogue unit is named "hr"
  observer().announce(L"h", L"s", 3600.0, 0.0);
  EXPECT_EQ(observer().getTranslation(L"h"), L"");
  EXPECT_FALSE(observer().isUnknown(L"hr"));
  observer().setActive(true);
  EXPECT_EQ(observer().getTranslation(L"h"), L"h");
  EXPECT_TRUE(observer().isUnknown(L"hr"));
  // A second announcement of a sorted name changes nothing.
  observer().announce(L"h", L"s", 7.0, 0.0);
  EXPECT_EQ(observer().getTranslation(L"h"), L"h");
  EXPECT_FALSE(observer().isIncompatible(L"h"));
}

TEST_F(PhysModTranslation, OddAnnouncementsLandSomewhere) {
  observer().announce(L"cm", L"not a unit(", 0.01, 0.0);
  EXPECT_TRUE(observer().isUnknown(L"cm"));
  // Net comparison is weak (m against s passes), so the other dimension differs in exponent too.
  observer().announce(L"dm", L"s^2", 0.1, 0.0);
  EXPECT_TRUE(observer().isUnknown(L"dm"));
  observer().announce(L"mm", L"m", std::nan(""), 0.0);
  EXPECT_TRUE(observer().isIncompatible(L"mm"));
  observer().announce(L"Lp100km", L"m^2", 1e-8, 0.0);  // 1 L/100 km is 1e-8 m^2
  EXPECT_EQ(observer().getTranslation(L"Lp100km"), L"Lp100km");
  PhysModUnitsObserverInterface door;
  door("g", "kg", 0.001, 0.0);
  EXPECT_EQ(observer().getTranslation(L"g"), L"g");
}

TEST_F(PhysModTranslation, FixedPairsAndTheTableEntryPoints) {
  observer().addTranslation(L"kph", L"km/h");
  observer().addTranslation(L"sec", L"s");
  observer().addTranslation(L"metre", L"m");
  UnitTable t;
  const int id = t.getQuillonUnitForPhysModUnit(L"metre/sec");
  EXPECT_EQ(t.getUserSpecifiedUnitExpr(id), L"m*s^-1");
  EXPECT_EQ(t.getPhysModUnitForQuillonUnit(id), L"metre*sec^-1");
  EXPECT_EQ(t.getPhysModUnitForQuillonUnit(t.registerUnit(L"s")), L"sec");
  EXPECT_RAISES(t.getPhysModUnitForQuillonUnit(t.registerUnit(L"kg")), "QuillonTypes:Unit",
                "QuillonUnitToPhysModUnitUnknown", {"kg"});
  EXPECT_RAISES(t.getQuillonUnitForPhysModUnit(L"qq*sec"), "QuillonTypes:Unit", "InvalidUnitExpression", {"*s"});
  EXPECT_RAISES(t.getPhysModUnitForQuillonUnit(99), "QuillonTypes:Unit", "InvalidUnitId", {"99"});
  db->clearAll();  // forgets the pairs
  db = UnitDatabase::getUnitDatabase();
  EXPECT_EQ(observer().getTranslation(L"sec"), L"");
}

}  // namespace
