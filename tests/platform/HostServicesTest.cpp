// Memory, host arrays, host function calls and features.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "ql_types/platform/HostArray.hpp"
#include "ql_types/platform/Memory.hpp"
#include "ql_types/platform/QlFeature.hpp"

namespace {

TEST(Memory, AllocatesZeroedAndFrees) {
  auto* p = static_cast<unsigned char*>(utCalloc(16, 2));
  ASSERT_NE(p, nullptr);
  for (int i = 0; i < 32; ++i) EXPECT_EQ(p[i], 0);
  utFree(p);
  utFree(nullptr);
  EXPECT_EQ(utMalloc(0), nullptr);
  EXPECT_EQ(utStrlen("abc"), 3u);
  EXPECT_EQ(utStrlen(nullptr), 0u);
}

TEST(HostArrays, ZeroedDataAndReferenceCounting) {
  qxArray_tag* a = qxCreateNumericArray(qxINT16_CLASS, {2, 3}, true);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(qxGetNumberOfElements(a), 6u);
  const auto* bytes = static_cast<const unsigned char*>(a->data);
  for (int i = 0; i < 24; ++i) EXPECT_EQ(bytes[i], 0);
  EXPECT_EQ(a->flags & qxFLAG_TEMPORARY, qxFLAG_TEMPORARY);
  qxAddReference(a);
  EXPECT_EQ(a->refCount, 2);
  qxDestroyArray(a);
  EXPECT_EQ(a->refCount, 1);
  qxDestroyArray(a);  // frees; the sanitizer build checks nothing leaks
  EXPECT_EQ(qxCreateNumericArray(qxNO_CLASS, {1}, false), nullptr);
}

TEST(HostArrays, CallocExIsZeroed) {
  auto* p = static_cast<std::int32_t*>(qxCallocEx(4, sizeof(std::int32_t)));
  ASSERT_NE(p, nullptr);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(p[i], 0);
  qxFree(p);
}

TEST(HostFunctions, RegisteredFunctionIsCalledAndUnknownNameGivesADiagnostic) {
  qlsvRegisterHostFunction("twice", [](int, qxArray_tag* out[], int, qxArray_tag* in[]) {
    out[0] = qxCreateNumericArray(in[0]->classId, in[0]->dimensions, false);
    static_cast<double*>(out[0]->data)[0] = 2 * static_cast<double*>(in[0]->data)[0];
  });
  qxArray_tag* in = qxCreateNumericArray(qxDOUBLE_CLASS, {1, 1}, false);
  static_cast<double*>(in->data)[0] = 21;
  qxArray_tag* out[1] = {nullptr};
  qxArray_tag* ins[1] = {in};
  EXPECT_EQ(qlsvFEVAL_NoThrow(1, out, 1, ins, "twice", true, nullptr), nullptr);
  ASSERT_NE(out[0], nullptr);
  EXPECT_EQ(static_cast<double*>(out[0]->data)[0], 42.0);
  qxDestroyArray(out[0]);

  qlsvDiagnostic d = qlsvFEVAL_NoThrow(1, out, 1, ins, "nosuch", true, nullptr);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->getKey(), "UndefinedHostFunction");
  EXPECT_EQ(d->getArgumentTexts(), std::vector<std::string>{"nosuch"});
  qxDestroyArray(in);
  qlsvRegisterHostFunction("twice", nullptr);
}

TEST(HostFunctions, ThrowingFunctionBecomesItsDiagnostic) {
  qlsvRegisterHostFunction(
      "fails", [](int, qxArray_tag**, int, qxArray_tag**) { qlRaise(qlmsg::general::InvalidDataType, "E"); });
  qlsvRegisterHostFunction("std", [](int, qxArray_tag**, int, qxArray_tag**) { throw std::runtime_error("boom"); });
  qlsvDiagnostic d = qlsvFEVAL_NoThrow(0, nullptr, 0, nullptr, "fails", true, nullptr);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->getKey(), "InvalidDataType");
  d = qlsvFEVAL_NoThrow(0, nullptr, 0, nullptr, "std", true, nullptr);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->getArgumentTexts(), (std::vector<std::string>{"std", "boom"}));
  qlsvRegisterHostFunction("fails", nullptr);
  qlsvRegisterHostFunction("std", nullptr);
}

int lastCallbackValue = 0;

TEST(Features, ValueDefaultReadCountAndRegistry) {
  QlFeature f("TestFeature", "a test feature", __FILE__, "Tests", 11111, 2, [](int v) { lastCallbackValue = v; });
  EXPECT_EQ(QlFeature::find("TestFeature"), &f);
  EXPECT_EQ(f.getReadCount(), 0u);
  EXPECT_EQ(f.getValue(), 2);
  f.setValue(5);
  EXPECT_EQ(lastCallbackValue, 5);
  EXPECT_EQ(f.getValue(), 5);
  EXPECT_EQ(f.getReadCount(), 2u);
  f.reset();
  EXPECT_EQ(f.getValue(), 2);
  EXPECT_EQ(f.getNumber(), 11111);
  EXPECT_EQ(f.getGroup(), "Tests");
}

// Two models compiled on two threads read the same feature: no read may be lost from the count.
TEST(Features, ReadsFromTwoThreadsAreAllCounted) {
  QlFeature f("SharedFeature", "", "", "", 0, 7);
  constexpr unsigned long kReads = 200000;
  auto reader = [&f] {
    for (unsigned long i = 0; i < kReads; ++i) ASSERT_EQ(f.getValue(), 7);
  };
  std::thread a(reader), b(reader);
  a.join();
  b.join();
  EXPECT_EQ(f.getReadCount(), 2 * kReads);
}

TEST(Features, UnregisteredAtDestruction) {
  { QlFeature f("Transient", "", "", "", 0, 0); }
  EXPECT_EQ(QlFeature::find("Transient"), nullptr);
}

}  // namespace
