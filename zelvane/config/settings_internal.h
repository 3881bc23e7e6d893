// The system-wide settings: the installation root, the version and the installed programs.
#ifndef ZELVANE_CONFIG_SETTINGS_INTERNAL_H
#define ZELVANE_CONFIG_SETTINGS_INTERNAL_H

#include <string>

#include "zelvane/config/cfgclass.h"

namespace zelvane::internal {

inline constexpr char kSettingsFile[] = "/etc/zelvane.conf";
inline constexpr char kSettingsSection[] = "ZELVANE";

// GetZelvanePath for internal use. Throws when memory runs out, and std::system_error if the settings file temporarily
// cannot be read (OpenOrThrow): a function that continued would use files elsewhere.
std::string InstallationRoot();

// The same, from settings that are already open or failed to open.
std::string RootIn(CfgClass& settings);

}  // namespace zelvane::internal

#endif
