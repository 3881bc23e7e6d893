#include "zelvane/version.h"

char const* ZelvaneVersion() { return ZELVANE_VERSION; }
