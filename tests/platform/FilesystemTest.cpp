// fl::filesystem: exists, remove and the private temporary directory.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <string>

#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/Text.hpp"

namespace {

TEST(Filesystem, TemporaryDirectoryIsPrivateAndStable) {
  const std::wstring dir = fl::filesystem::temp_directory_name();
  EXPECT_EQ(dir, fl::filesystem::temp_directory_name());
  EXPECT_TRUE(fl::filesystem::exists(dir));
  struct stat st;
  ASSERT_EQ(::stat(ConvertUStringToStdString(dir).c_str(), &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
  EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(Filesystem, ExistsAndRemoveAFile) {
  const std::wstring file = fl::filesystem::temp_directory_name() + L"/probe \u00e9";
  EXPECT_FALSE(fl::filesystem::exists(file));
  EXPECT_FALSE(fl::filesystem::remove(file));
  std::ofstream(ConvertUStringToStdString(file)) << "x";
  EXPECT_TRUE(fl::filesystem::exists(file));
  EXPECT_TRUE(fl::filesystem::remove(file));
  EXPECT_FALSE(fl::filesystem::exists(file));
}

TEST(Filesystem, UnrepresentableOrEmptyPathsAreAbsent) {
  const std::wstring lone(1, static_cast<wchar_t>(0xD800));  // a lone surrogate has no UTF-8 form
  EXPECT_FALSE(fl::filesystem::exists(lone));
  EXPECT_FALSE(fl::filesystem::remove(lone));
  EXPECT_FALSE(fl::filesystem::exists(L""));
}

TEST(Filesystem, InstallPathDefaultsAboveTheLibraryDirectory) {
  const std::wstring previous = fl::filesystem::get_install_path();
  EXPECT_FALSE(previous.empty());
  fl::filesystem::set_install_path(L"/opt/x");
  EXPECT_EQ(fl::filesystem::get_install_path(), L"/opt/x");
  fl::filesystem::set_install_path(previous);
}

}  // namespace
