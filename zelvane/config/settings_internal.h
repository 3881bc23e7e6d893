// The system-wide settings: where the product is installed, its version, which programs there are.
#ifndef ZELVANE_CONFIG_SETTINGS_INTERNAL_H
#define ZELVANE_CONFIG_SETTINGS_INTERNAL_H

namespace zelvane::internal {

inline constexpr char kSettingsFile[] = "/etc/zelvane.conf";
inline constexpr char kSettingsSection[] = "ZELVANE";

}  // namespace zelvane::internal

#endif
