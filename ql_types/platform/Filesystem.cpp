// The install path: set by the host, or found from where this library was loaded from.
#include "ql_types/platform/Filesystem.hpp"

#include <dlfcn.h>

#include <memory>
#include <stdexcept>

#include "ql_types/platform/Text.hpp"

namespace fl {
namespace filesystem {

namespace {

// The directory above this library's own directory; "." if the loader cannot say.
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

}  // namespace

std::wstring get_install_path() {
  auto& path = installPath();
  if (!path) path = std::make_unique<std::wstring>(defaultInstallPath());
  return *path;
}

void set_install_path(std::wstring const& path) { installPath() = std::make_unique<std::wstring>(path); }

}  // namespace filesystem
}  // namespace fl
