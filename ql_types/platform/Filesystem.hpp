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

/// Whether something exists at path (a dangling link does not).
bool exists(std::wstring const& path);
/// Removes the file (or empty directory) at path; false when there was nothing to remove or it failed.
bool remove(std::wstring const& path);
/// A directory private to this process (mode 0700), made on first use under $TMPDIR or /tmp and removed
/// with its contents at exit. Throws std::runtime_error when it cannot be made.
std::wstring temp_directory_name();

}  // namespace filesystem
}  // namespace fl
