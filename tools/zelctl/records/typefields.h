// Fields that a type record and the settings of the UPS service share.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_TYPEFIELDS_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_TYPEFIELDS_H

#include <vector>

#include "records/fields.h"

template <class Record>
std::vector<Field> TypeFields() {
  return {
      Number<&Record::upsType>("upsType", "type: number in upstype.cfg"),
      Number<&Record::modelIndex>("modelIndex", "type: model file number, -1 for none"),
      Text<&Record::upsName>("upsName", "type: display name"),
      Text<&Record::upsDriver>("upsDriver", "type: protocol driver"),
      Text<&Record::cfgModule>("cfgModule", "type: module of the configuration tool"),
      Text<&Record::cliModule>("cliModule", "type: module of the client"),
  };
}

#endif
