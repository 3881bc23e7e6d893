// zelctl type: the table of UPS types.
#include "commands/families.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/typefields.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"

namespace {

struct Arguments {
  std::string table;
  std::string number;

  std::string Table() const { return table.empty() ? GetZelvanePath() + "upstype.cfg" : table; }
};

Handle Open(std::string const& table, Terminal const& terminal) {
  NoteState(table, "no types defined", terminal);
  return OpenHandle(table, OpenUPSTypeList(table.c_str()), CloseUPSTypeList);
}

void List(Arguments const& arguments, Terminal const& terminal) {
  std::string const table = arguments.Table();
  Handle const types = Open(table, terminal);
  CfgClass keys;  // the table says only that an entry is malformed
  keys.OpenReadOnly(table);
  std::vector<UpsTypeItem> items;
  auto const count = static_cast<unsigned int>(GetUPSTypeListCount(types.get()));
  for (unsigned int i = 0; i < count; i++) {
    UpsTypeItem item;
    if (GetUPSTypeListItem(types.get(), i, &item) == 0)
      terminal.Note(table + ": [UPSTYPE] " + keys.GetKeyName("UPSTYPE", i) +
                    ": expected NUMBER = NAME;DRIVER;MODULE;MODULE;MODEL");
    else
      items.push_back(item);
  }
  PrintRecords(TypeFields<UpsTypeItem>(), items, terminal);
}

void Show(Arguments const& arguments, Terminal const& terminal) {
  std::int64_t const number = NumberArgument("N", arguments.number, 0, kHighestNumber);
  std::string const table = arguments.Table();
  UpsTypeItem item;
  if (GetUPSTypeListItemByType(Open(table, terminal).get(), static_cast<unsigned int>(number), &item) == 0)
    throw Failed(table + ": type " + std::to_string(number) + " does not exist or has fewer than five fields");
  PrintRecord(TypeFields<UpsTypeItem>(), &item, terminal);
}

}  // namespace

Command TypeCommands() {
  auto const arguments = std::make_shared<Arguments>();
  Option const table =
      Value("--table", &arguments->table, "FILE", "Use FILE instead of upstype.cfg in the installation root");
  return Family("type", "UPS types supported by the product", "", {"zelctl type list", "zelctl type show 3"},
                {{"list", "List all types in the table", On(arguments, List), {table}},
                 {"show",
                  "Show one type",
                  On(arguments, Show),
                  {table, Argument("N", &arguments->number, "Number of the type").Required()}}});
}
