// fl::filesystem: where the host tool is installed, which is where the unit database file lies.
//
// The default is the directory above the one holding this library (an install prefix holds lib/ and
// toolbox/ side by side); set_install_path replaces it. The unit database reads the path when it loads,
// so a change takes effect at the next load (after UnitDatabase::clearAll).
#pragma once

#include <string>

namespace fl {
namespace filesystem {

/// The install path, without a trailing separator.
std::wstring get_install_path();
/// Replaces the install path for every later get_install_path.
void set_install_path(std::wstring const& path);

}  // namespace filesystem
}  // namespace fl
