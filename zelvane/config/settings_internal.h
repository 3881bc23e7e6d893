// The system-wide settings: where the product is installed, its version, which programs there are.
#ifndef ZELVANE_CONFIG_SETTINGS_INTERNAL_H
#define ZELVANE_CONFIG_SETTINGS_INTERNAL_H

#include <string>

namespace zelvane::internal {

inline constexpr char kSettingsFile[] = "/etc/zelvane.conf";
inline constexpr char kSettingsSection[] = "ZELVANE";

// GetZelvanePath for the library's own use: throws std::bad_alloc, where the exported one says "" and its caller would
// go on in the current folder.
std::string InstallationRoot();

}  // namespace zelvane::internal

#endif
