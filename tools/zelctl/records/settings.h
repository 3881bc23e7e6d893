// The records of settings, for commands that show them: report. The commands `ups` and `shutdown` have the rest.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_SETTINGS_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_SETTINGS_H

#include <vector>

#include "records/fields.h"

// The fields of an UpsSrvConfig and of a ShutSrvConfig.
std::vector<Field> UpsFields();
std::vector<Field> ShutdownFields();

#endif
