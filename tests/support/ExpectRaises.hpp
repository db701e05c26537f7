// The assertion every test uses for raised diagnostics:
//
//   EXPECT_RAISES(table.setSize(0), "QuillonTypes:general", "InvalidDataTypeSize", {"T", "0"});
//
// passes when the statement throws an fl::except::IException whose diagnostic has that
// catalogue, key and argument texts (integers in decimal).
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace qltest {

/// Runs fn and checks the diagnostic it throws.
testing::AssertionResult raises(const std::function<void()>& fn, const std::string& catalog, const std::string& key,
                                const std::vector<std::string>& args);

}  // namespace qltest

#define EXPECT_RAISES(statement, catalog, key, ...) \
  EXPECT_TRUE(::qltest::raises([&] { statement; }, catalog, key, __VA_ARGS__))
#define ASSERT_RAISES(statement, catalog, key, ...) \
  ASSERT_TRUE(::qltest::raises([&] { statement; }, catalog, key, __VA_ARGS__))
