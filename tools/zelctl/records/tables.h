// The records of the product's settings: for each, one table of its fields, with what they mean, what they may hold and
// where they are written. The commands, their help, `cfg lint` and the manual go by them.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_TABLES_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_TABLES_H

#include <vector>

#include "records/fields.h"

std::vector<Field> ShutdownFields();  // of ShutSrvConfig
std::vector<Field> ClientFields();    // of ClientConfig
std::vector<Field> UpsFields();       // of UpsSrvConfig

#endif
