// The diagnostics round trip: create, chain, throw, catch as each exception class, read back.
#include <gtest/gtest.h>

#include "ql_types/platform/Diagnostic.hpp"
#include "support/ExpectRaises.hpp"

namespace {

qlsvDiagnostic make(const char* name) { return qlMakeDiagnostic(qlmsg::general::InvalidDataType, name); }

TEST(Diagnostics, CarryCatalogKeyArgumentsAndText) {
  qlsvDiagnostic d = qlMakeDiagnostic(qlmsg::general::CannotModifyDataTypePropertiesSize, "T", 8, 16);
  EXPECT_EQ(d->getCatalog(), "QuillonTypes:general");
  EXPECT_EQ(d->getKey(), "CannotModifyDataTypePropertiesSize");
  EXPECT_EQ(d->getArgumentTexts(), (std::vector<std::string>{"T", "8", "16"}));
  EXPECT_EQ(d->getMessage(), "The properties size of data type 'T' is already 8 and cannot be changed to 16.");
  ASSERT_EQ(d->getArguments().size(), 3u);
  EXPECT_EQ(std::get<std::int64_t>(d->getArguments()[2]), 16);
}

TEST(Diagnostics, WideAndLargeArgumentsReadBackAsUtf8AndDecimal) {
  qlsvDiagnostic d = qlsvCreateDiagnosticFromMessageID(
      resource_core::BaseMsgID::make("QuillonTypes:Unit", "UnitDatabaseFileLoadFieldError", L"/t/\u00b5m",
                                     static_cast<long long>(-9007199254740993LL)));
  EXPECT_EQ(d->getArgumentTexts(), (std::vector<std::string>{"/t/\xc2\xb5m", "-9007199254740993"}));
}

TEST(Diagnostics, UnknownKeyStillFormats) {
  auto d = qlsvCreateDiagnosticFromMessageID(resource_core::BaseMsgID::make("Nowhere:cat", "NoSuchKey", "a", 3));
  EXPECT_EQ(d->getMessage(), "Nowhere:cat:NoSuchKey(a, 3)");
  auto e = qlsvCreateDiagnosticFromMessageID(resource_core::BaseMsgID("Nowhere:cat", "Bare"));
  EXPECT_EQ(e->getMessage(), "Nowhere:cat:Bare");
}

TEST(Diagnostics, MissingArgumentsLeavePlaceholdersAndDoNotCrash) {
  auto d = qlsvCreateDiagnosticFromMessageID(resource_core::BaseMsgID("QuillonTypes:general", "InvalidDataTypeSize"));
  EXPECT_NE(d->getMessage().find("{1}"), std::string::npos);
}

TEST(DiagnosticChains, FlatConcatenationKeepsOrder) {
  qlsvDiagnostic chain;
  chain = qlsvConcatenateDiagnostics(std::move(chain), make("a"), false);
  ASSERT_TRUE(chain);
  EXPECT_EQ(chain->getArgumentTexts()[0], "a");
  qlsvDiagnostic b = make("b");
  b->addCause(make("b1"));
  chain = qlsvConcatenateDiagnostics(std::move(chain), std::move(b), false);
  chain = qlsvConcatenateDiagnostics(std::move(chain), make("c"), false);
  std::vector<std::string> names;
  for (const auto* c : chain->getCauses()) names.push_back(c->getArgumentTexts()[0]);
  EXPECT_EQ(names, (std::vector<std::string>{"b", "b1", "c"}));
}

TEST(DiagnosticChains, NestedConcatenationKeepsTheSecondsCausesUnderIt) {
  qlsvDiagnostic b = make("b");
  b->addCause(make("b1"));
  qlsvDiagnostic chain = qlsvConcatenateDiagnostics(make("a"), std::move(b), true);
  ASSERT_EQ(chain->getCauses().size(), 1u);
  ASSERT_EQ(chain->getCauses()[0]->getCauses().size(), 1u);
  EXPECT_EQ(chain->getCauses()[0]->getCauses()[0]->getArgumentTexts()[0], "b1");
  EXPECT_EQ(chain->getReport(), "'a' is not a valid data type name: use letters, digits and underscores, not "
                                "starting with a digit.\n    'b' is not a valid data type name: use letters, digits "
                                "and underscores, not starting with a digit.\n        'b1' is not a valid data type "
                                "name: use letters, digits and underscores, not starting with a digit.\n");
}

TEST(DiagnosticChains, NullSidesPassTheOtherThrough) {
  EXPECT_EQ(qlsvConcatenateDiagnostics(nullptr, nullptr, true), nullptr);
  EXPECT_EQ(qlsvConcatenateDiagnostics(make("x"), nullptr, false)->getArgumentTexts()[0], "x");
}

TEST(DiagnosticExceptions, ThrownDiagnosticIsCaughtAsEveryInterface) {
  auto thrower = [] {
    qlsvDiagnostic d = make("a");
    d->addCause(make("cause"));
    qlsvThrowIExceptionFromDiagnostic(std::move(d), nullptr);
  };
  try {
    thrower();
    FAIL();
  } catch (const fl::except::IUserException& e) {
    EXPECT_EQ(e.getDiagnostic()->getKey(), "InvalidDataType");
    EXPECT_EQ(e.getDiagnostic()->getCauses().size(), 1u);
  }
  try {
    thrower();
    FAIL();
  } catch (const fl::except::IMsgIDException& e) {
    EXPECT_STREQ(e.what(), e.getDiagnostic()->getMessage().c_str());
  }
  try {
    thrower();
    FAIL();
  } catch (const fl::except::IException& e) {
    qlsvDiagnostic copy = qlsvCreateDiagnosticFromIException(e, true);
    EXPECT_EQ(copy->getCauses().size(), 1u);
    EXPECT_EQ(qlsvCreateDiagnosticFromIException(e, false)->getCauses().size(), 0u);
    qlsvDiscardDiagnostic(std::move(copy));
  }
}

TEST(DiagnosticExceptions, ServiceFailureIsNotAUserError) {
  // A per-row IUserException catch must let a service failure pass to the per-stage catch.
  bool rowCaught = false, stageCaught = false;
  try {
    try {
      qlsvThrowMsgIDException(make("db"));
    } catch (const fl::except::IUserException&) {
      rowCaught = true;
    }
  } catch (const fl::except::IMsgIDException& e) {
    stageCaught = true;
    EXPECT_EQ(e.getDiagnostic()->getArgumentTexts()[0], "db");
  }
  EXPECT_FALSE(rowCaught);
  EXPECT_TRUE(stageCaught);
}

TEST(DiagnosticExceptions, CopiesShareTheDiagnostic) {
  try {
    qlRaise(qlmsg::general::InvalidDataTypeId, -7);
  } catch (const fl::except::IException& e) {
    fl::except::IException copy = e;
    EXPECT_EQ(copy.getDiagnostic(), e.getDiagnostic());
    EXPECT_EQ(copy.getDiagnostic()->getArgumentTexts()[0], "-7");
  }
}

TEST(DiagnosticExceptions, NullDiagnosticThrowsTheMemoryDiagnostic) {
  EXPECT_RAISES(qlsvThrowIExceptionFromDiagnostic(nullptr, nullptr), "ql_services:core", "OutOfMemory", {});
}

TEST(DiagnosticExceptions, ExpectRaisesChecksKeyAndArguments) {
  EXPECT_RAISES(qlRaise(qlmsg::general::InvalidDataTypeSize, "T", 0), "QuillonTypes:general", "InvalidDataTypeSize",
                {"T", "0"});
  EXPECT_FALSE(qltest::raises([] { qlRaise(qlmsg::general::InvalidDataTypeSize, "T", 0); }, "QuillonTypes:general",
                              "InvalidDataTypeSize", {"T", "1"}));
  EXPECT_FALSE(qltest::raises([] {}, "QuillonTypes:general", "InvalidDataTypeSize", {}));
  EXPECT_FALSE(qltest::raises([] { throw std::runtime_error("x"); }, "a", "b", {}));
}

class WarningSink : public testing::Test {
 protected:
  void SetUp() override {
    previous_ = qlsvSetWarningHandler([this](const qlsvDiagnosticImpl& d) { seen_.push_back(d.getKey()); });
  }
  void TearDown() override { qlsvSetWarningHandler(previous_); }
  std::vector<std::string> seen_;
  qlsvWarningHandler previous_;
};

TEST_F(WarningSink, ReportsGoToTheInstalledHandler) {
  qlsvReportAsWarning(make("w"));
  qlsvReportAsWarning(nullptr);
  EXPECT_EQ(seen_, std::vector<std::string>{"InvalidDataType"});
}

TEST_F(WarningSink, DefaultHandlerWritesToStandardError) {
  qlsvWarningHandler mine = qlsvSetWarningHandler(nullptr);
  testing::internal::CaptureStderr();
  qlsvReportAsWarning(make("loud"));
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_NE(err.find("'loud' is not a valid data type name"), std::string::npos);
  qlsvSetWarningHandler(mine);
}

}  // namespace
