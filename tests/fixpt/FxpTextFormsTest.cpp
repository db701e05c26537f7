// Text forms of fixed-point records, their cache, and agreement with the table's name test.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/fixpt/fxpDataTypeText.hpp"
#include "ql_types/platform/Text.hpp"

namespace {

using FxpDT::baseCtorPrefer;
using FxpDT::scalingRepPrefer;

fxpDataTypeProp fixpt(unsigned sign, int wl, double saf, int exponent, double bias, fxpModeDataType mode = FXP_DT_FIXPT,
                      fxpDataTypeDTOMode dto = FXP_DTO_DEFAULT) {
  return fxpDataTypeProp(mode, sign, wl, saf, exponent, bias, dto);
}

std::string ctor(const fxpDataTypeProp& p, int base, int scaling) {
  return *fxpDataTypeToConstructorString(p, static_cast<baseCtorPrefer>(base), static_cast<scalingRepPrefer>(scaling));
}

std::string ident(const fxpDataTypeProp& p) { return *fxpDataTypeToIdentifierString(&p); }

struct CtorCase {
  fxpDataTypeProp prop;
  int base, scaling;
  const char* text;
};

class FxpConstructorText : public testing::TestWithParam<CtorCase> {};

TEST_P(FxpConstructorText, Writes) {
  EXPECT_EQ(ctor(GetParam().prop, GetParam().base, GetParam().scaling), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FxpConstructorText,
    testing::Values(CtorCase{fixpt(1, 16, 1.0, -3, 0.0), 1, 0, "fixdt(1,16,3)"},
                    CtorCase{fixpt(0, 8, 1.0, 0, 0.0), 0, 0, "numerictype(0,8,0)"},
                    CtorCase{fixpt(1, 16, 1.0, -3, 0.0), 1, 2, "fixdt(1,16)"},
                    CtorCase{fixpt(1, 16, 1.0, -3, 0.0, FXP_DT_SCALED_DOUBLE), 1, 0,
                             "numerictype(1,16,3,'DataType','ScaledDouble')"},
                    CtorCase{fxpDataTypeProp::doubleDataType(), 1, 0, "fixdt('double')"},
                    CtorCase{fixpt(0, 8, 1.0, 0, 0.0, FXP_DT_BOOLEAN, FXP_DTO_OFF), 0, 0, "numerictype('boolean')"},
                    CtorCase{fixpt(1, 32, 1.0, 0, 0.0, FXP_DT_SINGLE, FXP_DTO_OFF), 1, 0,
                             "fixdt('single','DataTypeOverride','Off')"},
                    CtorCase{fixpt(2, 16, 1.0, -3, 0.0), 1, 0, "fixdt([],16,3)"},
                    CtorCase{fixpt(1, 16, 1.5, -2, 2.5), 1, 0, "fixdt(1,16,0.375,2.5)"},  // bias forces the slope form
                    CtorCase{fixpt(1, 16, 1.0, -3, 0.0), 1, 1, "fixdt(1,16,0.125,0)"},    // bias written even when 0
                    CtorCase{fixpt(1, 16, 1.5, 1024, 0.0), 1, 1, "fixdt(1,16,1.5,1024,0)"},
                    CtorCase{fixpt(1, 16, 1.5, 1023, 0.0), 1, 1, "fixdt(1,16,1.348269851146737e+308,0)"},
                    CtorCase{fixpt(1, 16, 1.0, 0, 0.0, static_cast<fxpModeDataType>(9), FXP_DTO_OFF), 1, 0,
                             "fixdt('boolean','DataTypeOverride','Off')"}));

struct IdentCase {
  fxpDataTypeProp prop;
  const char* text;
};

class FxpIdentifierText : public testing::TestWithParam<IdentCase> {};

TEST_P(FxpIdentifierText, Writes) { EXPECT_EQ(ident(GetParam().prop), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(
    Table, FxpIdentifierText,
    testing::Values(
        IdentCase{fixpt(1, 16, 1.0, -3, 0.0), "sfix16_En3"}, IdentCase{fixpt(0, 12, 1.0, 0, 0.0), "ufix12"},
        IdentCase{fixpt(1, 16, 1.0, 0, 0.0, FXP_DT_SCALED_DOUBLE), "flts16"},
        IdentCase{fixpt(1, 16, 1.5, 0, 2.5), "sfix16_S1p5_B2p5"},
        IdentCase{fixpt(1, 32, 1.5, 2000, 0.0), "sfix32_F1p5_E2000"}, IdentCase{fixpt(1, 64, 1.0, 0, 0.0), "sfix64"},
        IdentCase{fixpt(0, 64, 1.0, 0, 0.0), "ufix64"}, IdentCase{fixpt(1, 8, 1.0, 1, 0.0), "sfix8_E1"},
        IdentCase{fixpt(1, 8, 1.0, 0, 0.0), "int8"}, IdentCase{fixpt(2, 32, 1.0, 0, 0.0), "uint32"},
        IdentCase{fixpt(1, 16, 0.5, 1, 0.0), "sfix16"}, IdentCase{fixpt(2, 16, 1.0, -3, 0.0), "ufix16_En3"},
        IdentCase{fixpt(1, 16, 1.0, -2000, 0.0), "sfix16_En2000"}, IdentCase{fixpt(1, 16, 1.0, 0, -0.5), "sfix16_Bnp5"},
        IdentCase{fixpt(1, 16, 1.0, 0, 0.5), "sfix16_Bp5"}, IdentCase{fixpt(1, 16, 1.0, 0, 1e-05), "sfix16_B1en05"},
        IdentCase{fxpDataTypeProp::singleDataType(), "single"},
        IdentCase{fixpt(0, 8, 1.0, 0, 0.0, static_cast<fxpModeDataType>(7)), "boolean"}));

TEST(FxpTextCache, SamePointerStableTextAndSharedSlots) {
  const fxpDataTypeProp p = fixpt(1, 16, 1.0, -3, 0.0);
  const std::string* first = fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, FxpDT::scalingRepBinaryPoint);
  const std::string* id = fxpDataTypeToIdentifierString(&p);
  for (int wl = 1; wl < 300; ++wl) (void)ident(fixpt(1, wl, 1.25, wl, 0.5 * wl));  // grow both containers
  EXPECT_EQ(first, fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, FxpDT::scalingRepBinaryPoint));
  EXPECT_EQ(*first, "fixdt(1,16,3)");
  EXPECT_EQ(id, fxpDataTypeToIdentifierString(&p));
  EXPECT_EQ(fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, FxpDT::scalingRepNone),
            fxpDataTypeToConstructorString(p, FxpDT::baseCtorFixdt, static_cast<scalingRepPrefer>(3)));
  const fxpDataTypeProp sd = fixpt(1, 16, 1.0, -3, 0.0, FXP_DT_SCALED_DOUBLE);
  const std::string* a = fxpDataTypeToConstructorString(sd, FxpDT::baseCtorNumerictype, FxpDT::scalingRepBinaryPoint);
  const std::string* b = fxpDataTypeToConstructorString(sd, FxpDT::baseCtorFixdt, FxpDT::scalingRepBinaryPoint);
  EXPECT_NE(a, b);
  EXPECT_EQ(*a, *b);
}

TEST(FxpTextCache, OverrideSeparatesEntries) {
  const fxpDataTypeProp on = fixpt(1, 20, 1.0, -5, 0.0);
  const fxpDataTypeProp off = fixpt(1, 20, 1.0, -5, 0.0, FXP_DT_FIXPT, FXP_DTO_OFF);
  EXPECT_EQ(ctor(on, 1, 0), "fixdt(1,20,5)");
  EXPECT_EQ(ctor(off, 1, 0), "fixdt(1,20,5,'DataTypeOverride','Off')");
  const fxpDataTypeProp onB = fixpt(1, 20, 1.5, -5, 1.0);
  const fxpDataTypeProp offB = fixpt(1, 20, 1.5, -5, 1.0, FXP_DT_FIXPT, FXP_DTO_OFF);
  EXPECT_EQ(ctor(onB, 1, 0), "fixdt(1,20,0.046875,1)");
  EXPECT_EQ(ctor(offB, 1, 0), "fixdt(1,20,0.046875,1,'DataTypeOverride','Off')");
}

// Over records with unit factor and zero bias (the hashed ones): one entry exactly per distinct record,
// overrides included, and -0.0 bias the same entry as 0.0.
TEST(FxpTextCache, HashedEntriesAreOnePerDistinctRecord) {
  std::map<std::tuple<int, unsigned, int, int, unsigned>, const std::string*> seen;
  for (int mode : {0, 1, 2})
    for (unsigned sign : {0u, 1u})
      for (int wl : {8, 16, 33})
        for (int e : {-3, 0, 40})
          for (unsigned dto : {0u, 1u, 2u, 0x9E3779B9u})
            for (double bias : {0.0, -0.0}) {
              const fxpDataTypeProp p = fixpt(sign, wl, 1.0, e, bias, static_cast<fxpModeDataType>(mode),
                                              static_cast<fxpDataTypeDTOMode>(dto));
              const std::string* text = fxpDataTypeToIdentifierString(&p);
              auto [it, fresh] = seen.try_emplace({mode, sign, wl, e, dto}, text);
              EXPECT_EQ(it->second, text);
            }
  std::set<const std::string*> distinct;
  for (const auto& kv : seen) distinct.insert(kv.second);
  EXPECT_EQ(distinct.size(), seen.size());
}

TEST(FxpTextCache, NaNBiasRecordsGetTheirOwnEntry) {
  const fxpDataTypeProp a = fixpt(1, 16, 1.5, 0, std::nan(""));
  const fxpDataTypeProp b = fixpt(1, 16, 1.5, 0, 2.0);
  EXPECT_EQ(ident(b), "sfix16_S1p5_B2");
  EXPECT_EQ(ident(a), "sfix16_S1p5_BNaN");
  EXPECT_EQ(fxpDataTypeToIdentifierString(&a), fxpDataTypeToIdentifierString(&a));
}

// The general-form names written for any record are the names the table recognises, with
// the record's word length.
TEST(FxpIdentifierAgreement, GeneratedNamesAreIntrinsicFixptNames) {
  const double factors[] = {1.0, 1.5, 0.5, 1.25, 1.9999999999999998, 3.0, 1.0 / 3.0, 1e-300, 7e300};
  const double biases[] = {0.0, 2.5, -0.5, 1e-5, -1e300, 0.1};
  const int exponents[] = {0, 1, -1, -3, 20, -40, -1022, 1023, -1023, 1024, 1100, -1100, 30000};
  int checked = 0;
  for (fxpModeDataType mode : {FXP_DT_FIXPT, FXP_DT_SCALED_DOUBLE})
    for (unsigned sign : {0u, 1u, 2u})
      for (int wl = 1; wl <= 128; ++wl)
        for (double saf : factors)
          for (int e : exponents)
            for (double bias : biases) {
              if ((wl * 7 + e + static_cast<int>(sign)) % 5 != 0 && wl > 3) continue;  // sample the space
              const fxpDataTypeProp p = fixpt(sign, wl, saf, e, bias, mode);
              const std::string name = ident(p);
              if (mode == FXP_DT_FIXPT && p.isScalingTrivial() && (wl == 8 || wl == 16 || wl == 32)) {
                EXPECT_EQ(name, (sign == 1 ? "int" : "uint") + std::to_string(wl));
                continue;
              }
              int bits = -1;
              ASSERT_TRUE(QLTypeSys::DataTypeTable::isInstrinsicFixptName(name.c_str(), &bits)) << name;
              EXPECT_EQ(bits, wl) << name;
              EXPECT_TRUE(qlIsValidANSICIdentifier(name.c_str(), true)) << name;
              ++checked;
            }
  EXPECT_GT(checked, 10000);
}

TEST(FxpDumps, PrintfForms) {
  const fxpDataTypeProp p = fixpt(1, 16, 1.5, -3, 0.25);
  testing::internal::CaptureStdout();
  displayFxpDTPFlat(&p);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nMode=0(FXP_DT_FIXPT)  Signed=1  WL=16  SAF=       1.5000000000000000  FE=-3  B=      "
            "0.25000000000000000\n");
  testing::internal::CaptureStdout();
  const fxpDataTypeProp u = fixpt(0, 8, 1.0, 0, 0.0, static_cast<fxpModeDataType>(9));
  EXPECT_FALSE(fxpDtpPreAssert(false, &u));
  EXPECT_TRUE(fxpDtpPreAssert(true, &u));
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("Data Type Assertion\n\nDataTypeMode        9   UNKNOWN\n", 0), 0u) << out;
  EXPECT_NE(out.find("WordLength            8\n"), std::string::npos);
}

}  // namespace
