// The system-wide settings: where the product is installed, its version, which programs there are.
#ifndef ZELVANE_CONFIG_SETTINGS_INTERNAL_H
#define ZELVANE_CONFIG_SETTINGS_INTERNAL_H

#include <string>

#include "zelvane/config/cfgclass.h"

namespace zelvane::internal {

inline constexpr char kSettingsFile[] = "/etc/zelvane.conf";
inline constexpr char kSettingsSection[] = "ZELVANE";

// GetZelvanePath for the library's own use. Throws when memory runs out, and std::system_error when it cannot be known
// what the settings file says (OpenOrThrow): a function that went on would read and write files elsewhere.
std::string InstallationRoot();

// The same from the settings file that is open, or could not be opened.
std::string RootIn(CfgClass& settings);

}  // namespace zelvane::internal

#endif
