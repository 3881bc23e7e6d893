// The product's settings records: one table of fields for each, with meanings, limits and places in the files. The
// commands, their help, `cfg lint` and the manual use them.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_TABLES_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_TABLES_H

#include <vector>

#include "records/fields.h"

std::vector<Field> ShutdownFields();  // of ShutSrvConfig
std::vector<Field> ClientFields();    // of ClientConfig
std::vector<Field> UpsFields();       // of UpsSrvConfig

#endif
