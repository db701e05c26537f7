// The install path: set by the host, or found from where this library was loaded from.
#include "ql_types/platform/Filesystem.hpp"

#include <dlfcn.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ql_types/platform/Text.hpp"

namespace fl {
namespace filesystem {

namespace {

// The directory above this library's own directory (see below for multiarch); "." if the loader cannot say.
std::wstring defaultInstallPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&defaultInstallPath), &info) == 0 || info.dli_fname == nullptr) return L".";
  std::string path(info.dli_fname);
  for (int up = 0; up < 2; ++up) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return L".";
    path.erase(slash);
  }
  if (path.empty()) path = "/";
  // A multiarch library directory (lib/x86_64-linux-gnu) sits one level deeper: the nearest ancestor
  // holding toolbox/ wins, else the directory above the library's.
  std::string probe = path;
  for (int up = 0; up < 2; ++up) {
    struct stat st;
    if (::stat((probe + "/toolbox").c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
      path = probe.empty() ? "/" : probe;
      break;
    }
    const std::size_t slash = probe.find_last_of('/');
    if (slash == std::string::npos || probe.empty()) break;
    probe.erase(slash);
  }
  try {
    return ConvertStdStringToUString(path);
  } catch (const std::out_of_range&) {  // a path that is not UTF-8
    return L".";
  }
}

std::unique_ptr<std::wstring>& installPath() {
  static std::unique_ptr<std::wstring> path;
  return path;
}

std::string narrowPath(std::wstring const& path) {
  try {
    return ConvertUStringToStdString(path);
  } catch (const std::out_of_range&) {  // not representable: nothing can be there
    return std::string();
  }
}

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

// The private temporary directory, made once; removed with everything in it when the process ends.
struct TempDirectory {
  std::string path;
  TempDirectory() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = (base && *base) ? base : "/tmp";
    while (pattern.size() > 1 && pattern.back() == '/') pattern.pop_back();
    pattern += "/ql_types.XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    // mkdtemp makes the directory with mode 0700.
    if (!mkdtemp(buffer.data()))
      throw std::runtime_error(std::string("cannot make a temporary directory: ") + std::strerror(errno));
    path = buffer.data();
  }
  ~TempDirectory() { nftw(path.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
};

}  // namespace

bool exists(std::wstring const& path) {
  const std::string native = narrowPath(path);
  struct stat st;
  return !native.empty() && ::stat(native.c_str(), &st) == 0;
}

bool remove(std::wstring const& path) {
  const std::string native = narrowPath(path);
  return !native.empty() && ::remove(native.c_str()) == 0;
}

std::wstring temp_directory_name() {
  // A function-local static: made on first use, destroyed (and the directory removed) at exit.
  static TempDirectory directory;
  return ConvertStdStringToUString(directory.path);
}

std::wstring get_install_path() {
  auto& path = installPath();
  if (!path) path = std::make_unique<std::wstring>(defaultInstallPath());
  return *path;
}

void set_install_path(std::wstring const& path) { installPath() = std::make_unique<std::wstring>(path); }

}  // namespace filesystem
}  // namespace fl
