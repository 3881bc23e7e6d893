// zelctl browse: the groups, computers and UPS units of the monitored network.
#include <errno.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <set>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "files/handle.h"
#include "records/browsetree.h"
#include "records/fields.h"
#include "terminal/latin1.h"
#include "zelvane/browse/browselist.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"

namespace {

struct Arguments {
  std::string file;
  std::string id;
  std::vector<std::string> items;  // values of the fields for add, FIELD=VALUE for edit
  bool smallest = false;
  Writing writing;

  std::string File() const { return file.empty() ? GetZelvanePath() + "zelbrws.cfg" : file; }
};

Handle Open(std::string const& file) { return OpenHandle(file, OpenBrwsList(file.c_str()), CloseBrwsList); }

// ---- The kinds ----

// A kind of entry and its functions, all of which flush immediately. The first field is "id"; then come the fields that
// `add` takes, in their order.
struct Kind {
  BrowseKind kind;
  std::vector<Field> fields;
  char const* owner;  // name of the field with the owner's number
  std::shared_ptr<void> (*make)();
  int (*get)(void* list, unsigned long index, void* record);
  int (*add)(void* list, void const* record, bool maxPlusOne, unsigned long* id);
  int (*edit)(void* list, void const* record);
  int (*remove)(void* list, long id, bool flush);

  Field const& operator[](char const* name) const { return *FieldNamed(fields, name); }
};

template <class Record, auto GetOne, auto AddOne, auto EditOne>
Kind MakeKind(BrowseKind kind, std::vector<Field> fields, char const* owner, int (*remove)(void*, long, bool)) {
  return {kind,
          std::move(fields),
          owner,
          [] { return std::shared_ptr<void>(std::make_shared<Record>()); },
          [](void* list, unsigned long i, void* record) { return GetOne(list, i, static_cast<Record*>(record)); },
          [](void* list, void const* record, bool maxPlusOne, unsigned long* id) {
            return AddOne(list, static_cast<Record const*>(record), maxPlusOne, id, true);
          },
          [](void* list, void const* record) { return EditOne(list, static_cast<Record const*>(record), true); },
          remove};
}

std::vector<Kind> Kinds() {
  using G = BrwsGroupRec;
  using C = BrwsComputerRec;
  using U = BrwsNobreakRec;
  constexpr FieldKind kList = FieldKind::kListText;
  return {MakeKind<G, GetBrwsGroupByIndex, AddBrwsGroup, EditBrwsGroup>(
              BrowseKind::kGroup,
              {Number<&G::id>("id", ""), Text<&G::name>("name", "name", kList),
               Number<&G::parent>("parent", "parent group, -1 for none", kHighestNumber, -1)},
              "parent", RemoveBrwsGroup),
          MakeKind<C, GetBrwsComputerByIndex, AddBrwsComputer, EditBrwsComputer>(
              BrowseKind::kComputer,
              {Number<&C::id>("id", ""), Text<&C::name>("name", "name", kList),
               Text<&C::address>("address", "network address", kList),
               Number<&C::group>("group", "group, -1 for none", kHighestNumber, -1)},
              "group", RemoveBrwsComputer),
          MakeKind<U, GetBrwsNobreakByIndex, AddBrwsNobreak, EditBrwsNobreak>(
              BrowseKind::kUps,
              {Number<&U::id>("id", ""), Text<&U::name>("name", "name", kList),
               Number<&U::computer>("computer", "computer, -1 for none", kHighestNumber, -1),
               Number<&U::number>("number", "number of the UPS at that computer")},
              "computer", RemoveBrwsNobreak)};
}

// ---- The tree ----

std::string IndentedName(BrowseRow const& row) {
  // A hand-written chain of groups can be as deep as the file is long.
  constexpr std::size_t kDeepest = 20;
  std::string const deep = row.depth > kDeepest ? "(" + std::to_string(row.depth) + ") " : "";
  return std::string(2 * std::min(row.depth, kDeepest), ' ') + deep + row.entry->name;
}

void PrintRows(std::vector<BrowseRow> const& rows, bool reasons, Terminal const& terminal) {
  Table table = {{"NAME", "KIND", "ID", "ADDRESS", "NUMBER"}};
  if (reasons) table[0].emplace_back("REASON");
  table.reserve(rows.size() + 1);
  for (BrowseRow const& row : rows) {
    BrowseEntry const& entry = *row.entry;
    table.push_back({IndentedName(row), NameOf(entry.kind), std::to_string(entry.id), entry.address,
                     entry.kind == BrowseKind::kUps ? std::to_string(entry.number) : ""});
    if (reasons) table.back().push_back(row.reason);
  }
  terminal.PrintTable(table);
}

Json RowsJson(std::vector<BrowseRow> const& rows, bool reasons) {
  Json::List list;
  for (BrowseRow const& row : rows) {
    BrowseEntry const& entry = *row.entry;
    Json::Object members = {
        {"depth", row.depth}, {"kind", NameOf(entry.kind)}, {"id", entry.id}, {"name", ToUtf8(entry.name)}};
    if (entry.kind != BrowseKind::kGroup) members.push_back({"address", ToUtf8(entry.address)});
    if (entry.kind == BrowseKind::kUps) members.push_back({"number", entry.number});
    members.push_back({"owner", entry.owner});
    if (reasons) members.push_back({"reason", row.reason.empty() ? Json() : Json(row.reason)});
    list.emplace_back(std::move(members));
  }
  return list;
}

void PrintTreeJson(std::string const& file, long date, BrowseTree const& tree, Terminal const& terminal) {
  Json::List invalid;
  for (BrowseFault const& fault : tree.faults)
    invalid.push_back({{"kind", NameOf(fault.kind)},
                       {"key", ToUtf8(fault.key)},
                       {"value", ToUtf8(fault.value)},
                       {"reason", fault.reason}});
  terminal.PrintJson({{"file", FileName{file}},
                      {"changed", date},
                      {"tree", RowsJson(tree.rows, false)},
                      {"orphans", RowsJson(tree.orphans, true)},
                      {"invalid", std::move(invalid)}});
}

void ShowTree(Arguments const& arguments, Terminal const& terminal) {
  std::string const file = arguments.File();
  NoteState(file, "the list is empty", terminal);
  Handle const list = Open(file);
  BrowseTree const tree(list.get(), file);
  long const date = GetBrwsFileDate(list.get());
  if (terminal.json) return PrintTreeJson(file, date, tree, terminal);
  if (date != 0) std::cout << "Changed " << DateTimeToStr("yyyy-mm-dd hh:nn:ss", date) << '\n';
  PrintRows(tree.rows, false, terminal);
  if (!tree.orphans.empty()) {
    std::cout << "\nOrphans (with their entries):\n";
    PrintRows(tree.orphans, true, terminal);
  }
  if (tree.faults.empty()) return;
  std::cout << "\nInvalid entries:\n";
  Table table = {{"SECTION", "KEY", "VALUE", "REASON"}};
  for (BrowseFault const& fault : tree.faults)
    table.push_back({SectionOf(fault.kind), fault.key, fault.value, fault.reason});
  terminal.PrintTable(table);
}

// ---- Changes ----

void Put(Field const& field, void* record, std::string const& argument, Terminal const& terminal) {
  std::string const value = CheckedArgument(field, argument, terminal);
  std::string const name = field.name;
  if (value.empty()) throw WrongUsage(name + ": must not be empty");
  if (value.find('\r') != std::string::npos) throw WrongUsage(name + ": contains a carriage return");
  field.put(record, value);
}

// The library would store an unknown owner, or -1, without a check.
void RequireOwner(Kind const& kind, void const* record, BrowseTree const& tree, std::string const& file) {
  Field const& field = kind[kind.owner];
  auto const owner = static_cast<std::int32_t>(std::stol(field.get(record)));
  auto const id = static_cast<std::int32_t>(std::stol(kind["id"].get(record)));
  if (owner >= 0 && tree.Find(OwnerKind(kind.kind), owner) == nullptr)
    throw Failed(std::string(field.name) + ": " + file + ": no " + NameOf(OwnerKind(kind.kind)) + " " +
                 std::to_string(owner));
  if (kind.kind == BrowseKind::kGroup && id >= 0 && tree.IsWithin(owner, id))
    throw Failed(std::string(field.name) + ": group " + std::to_string(owner) + " is group " + std::to_string(id) +
                 " itself or one of its subgroups");
}

std::string Missing(std::string const& file, Kind const& kind, std::int32_t id) {
  return file + ": " + NameOf(kind.kind) + " " + std::to_string(id) + " does not exist";
}

// Throws Failed if all sections are those of another file, which would get entries of a browse list.
void RequireList(std::string const& file) {
  CfgClass cfg;
  if (!cfg.OpenReadOnly(file) || cfg.GetSectionCount() == 0 || cfg.SectionExists("DATE")) return;
  for (Kind const& kind : Kinds())
    if (cfg.SectionExists(SectionOf(kind.kind))) return;
  throw Failed(file + ": not a browse list: expected a section GROUPS, COMPUTERS, NOBREAKS or DATE");
}

// Lets `act` change the list. False after a dry run.
bool Change(std::string const& file, Arguments const& arguments, Terminal const& terminal,
            std::function<int(void* list)> const& act) {
  RequireList(file);
  return Make({{file}}, arguments.writing, terminal, [&] {
    Handle const list = Open(At(file));
    errno = 0;
    if (act(list.get()) == 0) throw Failed(CannotWrite(file, errno));
  });
}

void Add(Kind const& kind, Arguments const& arguments, Terminal const& terminal) {
  std::string const file = arguments.File();
  std::shared_ptr<void> const record = kind.make();
  kind["id"].put(record.get(), "-1");
  kind[kind.owner].put(record.get(), "-1");
  for (std::size_t i = 0; i < arguments.items.size(); i++)
    Put(kind.fields[i + 1], record.get(), arguments.items[i], terminal);
  if (!arguments.writing.dryRun) LockFoldersOf({file});
  RequireWholeLoad(file, arguments.writing.force);
  RequireOwner(kind, record.get(), BrowseTree(Open(file).get(), file), file);
  unsigned long id = 0;
  bool const done = Change(file, arguments, terminal,
                           [&](void* list) { return kind.add(list, record.get(), !arguments.smallest, &id); });
  if (!done) return;
  kind["id"].put(record.get(), std::to_string(id));
  if (terminal.json)
    PrintRecord(kind.fields, record.get(), terminal);
  else
    std::cout << id << '\n';
}

Field const& FindField(Kind const& kind, std::string const& name) {
  Field const* const found = name == "id" ? nullptr : FieldNamed(kind.fields, name);
  if (found != nullptr) return *found;
  std::string names;
  for (std::size_t i = 1; i < kind.fields.size(); i++) {
    names.append(i == 1 ? "" : ", ").append(kind.fields[i].name);
  }
  throw WrongUsage("unknown field \"" + name + "\"; fields of kind " + NameOf(kind.kind) + ": " + names);
}

// Puts the new values of the fields in `items` into the record.
std::set<std::string> PutItems(Kind const& kind, void* record, std::vector<std::string> const& items,
                               Terminal const& terminal) {
  std::set<std::string> given;
  for (std::string const& item : items) {
    std::size_t const equals = item.find('=');
    if (equals == std::string::npos) throw WrongUsage("\"" + item + "\": expected FIELD=VALUE");
    std::string const name = item.substr(0, equals);
    Field const& field = FindField(kind, name);
    if (!given.insert(name).second) throw WrongUsage(name + ": given more than once");
    Put(field, record, item.substr(equals + 1), terminal);
  }
  return given;
}

std::int32_t IdArgument(Arguments const& arguments) {
  return static_cast<std::int32_t>(NumberArgument("ID", arguments.id, 0, kHighestNumber));
}

// A save writes every field, even one whose value in the file does not fit a record.
void RequireSavable(Kind const& kind, void const* record, BrowseEntry const& entry,
                    std::set<std::string> const& given) {
  for (Field const& field : kind.fields) {
    std::string const name = field.name;
    if (name == "id" || given.count(name) != 0) continue;
    std::string const value = name == "name" ? entry.name : name == "address" ? entry.address : field.get(record);
    std::string const fault = FieldFault(field, value);
    if (!fault.empty())
      throw Failed(std::string(field.name) + ": the value in the file cannot be saved again (" + fault +
                   "); set this field too");
  }
}

void EditEntry(Kind const& kind, Arguments const& arguments, Terminal const& terminal) {
  std::string const file = arguments.File();
  std::int32_t const id = IdArgument(arguments);
  PutItems(kind, kind.make().get(), arguments.items, terminal);  // reports errors before any file is read
  if (!arguments.writing.dryRun) LockFoldersOf({file});
  RequireWholeLoad(file, arguments.writing.force);
  Handle const list = Open(file);
  BrowseTree const tree(list.get(), file);
  BrowseEntry const* const entry = tree.Find(kind.kind, id);
  if (entry == nullptr) throw Failed(Missing(file, kind, id));
  std::shared_ptr<void> const record = kind.make();
  kind.get(list.get(), entry->index, record.get());
  std::set<std::string> const given = PutItems(kind, record.get(), arguments.items, terminal);
  RequireSavable(kind, record.get(), *entry, given);
  if (kind.kind == BrowseKind::kUps && kind["computer"].get(record.get()) == "-1")
    throw Failed("computer: missing; a UPS unit that is edited needs one");
  if (given.count(kind.owner) != 0 || kind.kind == BrowseKind::kUps) RequireOwner(kind, record.get(), tree, file);
  bool const done = Change(file, arguments, terminal, [&](void* now) { return kind.edit(now, record.get()); });
  if (done && terminal.json) PrintRecord(kind.fields, record.get(), terminal);
}

// Counts of groups, computers and UPS units.
using Gone = std::array<unsigned long, 3>;

Gone CountsOf(void* list) {
  return {GetBrwsGroupsCount(list), GetBrwsComputersCount(list), GetBrwsNobreaksCount(list)};
}

Gone RemoveFrom(std::string const& file, std::function<int(void* list)> const& remove) {
  Handle const list = Open(file);
  Gone gone = CountsOf(list.get());
  remove(list.get());
  Gone const left = CountsOf(list.get());
  for (std::size_t i = 0; i < gone.size(); i++) gone[i] -= left[i];
  return gone;
}

std::string InWords(Gone const& gone) {
  return Counted(gone[0], "group") + ", " + Counted(gone[1], "computer") + ", " + Counted(gone[2], "UPS unit");
}

void PrintGone(Gone const& gone, Terminal const& terminal) {
  if (terminal.json) return terminal.PrintJson({{"groups", gone[0]}, {"computers", gone[1]}, {"ups", gone[2]}});
  std::cout << "removed: " << InWords(gone) << '\n';
}

void Remove(Kind const& kind, Arguments const& arguments, Terminal const& terminal) {
  std::string const file = arguments.File();
  std::int32_t const id = IdArgument(arguments);
  RequireWholeLoad(file, arguments.writing.force);
  if (!HasKey(file, SectionOf(kind.kind), std::to_string(id))) throw Failed(Missing(file, kind, id));
  Gone gone;
  {
    // Reported before the change: the list counts what it removes without a flush, and is then dropped.
    Rehearsal const rehearsal({{file}, {}}, terminal);
    gone = RemoveFrom(At(file), [&](void* list) { return kind.remove(list, id, true); });
  }
  if (kind.kind == BrowseKind::kGroup || gone[0] + gone[1] + gone[2] > 1)
    RequireConsent(file, "removes " + InWords(gone), arguments.writing);
  bool const done = Change(file, arguments, terminal, [&](void* list) { return kind.remove(list, id, true); });
  if (done) PrintGone(gone, terminal);
}

void Clear(Arguments const& arguments, Terminal const& terminal) {
  std::string const file = arguments.File();
  RequireWholeLoad(file, arguments.writing.force);
  Gone const gone = CountsOf(Open(file).get());
  if (gone != Gone{}) RequireConsent(file, "removes " + InWords(gone), arguments.writing);
  bool const done = Change(file, arguments, terminal, [&gone](void* list) {
    bool const cleared =
        gone == Gone{} || (ClearBrwsNobreaksList(list, false) != 0 && ClearBrwsComputersList(list, false) != 0 &&
                           ClearBrwsGroupsList(list, true) != 0);
    return cleared ? 1 : 0;
  });
  if (done && (terminal.json || gone != Gone{})) PrintGone(gone, terminal);
}

// ---- The command line ----

struct Action {
  char const* name;
  char const* help;    // for one kind; the kind's name follows
  char const* family;  // for the whole group
  void (*act)(Kind const&, Arguments const&, Terminal const&);
};

Option File(Arguments& arguments) {
  return Value("--file", &arguments.file, "FILE", "Use FILE instead of zelbrws.cfg in the installation root");
}

Options EntryOptions(void (*act)(Kind const&, Arguments const&, Terminal const&), Kind const& kind,
                     Arguments& arguments) {
  if (act == Add) {
    static char const* const kWords[] = {"NAME [PARENT]", "NAME ADDRESS [GROUP]", "NAME [COMPUTER [NUMBER]]"};
    int const least = kind.kind == BrowseKind::kComputer ? 2 : 1;
    return {
        Argument(kWords[static_cast<std::size_t>(kind.kind)], &arguments.items, "The new entry")
            .Required()
            .Values(least, static_cast<int>(kind.fields.size()) - 1),
        Flag("--smallest", &arguments.smallest, "Use the smallest free identifier instead of the largest plus one")};
  }
  Options options = {Argument("ID", &arguments.id, "Identifier, as `zelctl browse tree` shows it").Required()};
  if (act == EditEntry) {
    std::vector<Field> const fields(kind.fields.begin() + 1, kind.fields.end());
    options.push_back(Argument("FIELD=VALUE", &arguments.items, "Fields and their new values")
                          .Required()
                          .Suggesting([fields](std::string const& begun) { return Assignments(fields, begun); }));
  }
  return options;
}

Command Change(Action const& action, Kind const& kind) {
  static char const* const kWhat[] = {"a group", "a computer", "a UPS unit"};
  auto const arguments = std::make_shared<Arguments>();
  std::string const fields = "Fields:\n" + FieldTable({kind.fields.begin() + 1, kind.fields.end()});
  char const* const below = action.act == Remove && kind.kind != BrowseKind::kUps ? " and everything below it" : "";
  bool const asks = action.act == Remove && kind.kind != BrowseKind::kUps;
  return {NameOf(kind.kind), std::string(action.help) + kWhat[static_cast<std::size_t>(kind.kind)] + below,
          [arguments, kind, act = action.act](Terminal const& terminal) { act(kind, *arguments, terminal); },
          Joined({{File(*arguments)},
                  WritingOptions(arguments->writing),
                  asks ? Options{Yes(arguments->writing)} : Options(),
                  EntryOptions(action.act, kind, *arguments)}),
          action.act == Add         ? fields + "Prints the identifier."
          : action.act == EditEntry ? fields
                                    : ""};
}

}  // namespace

Command BrowseCommands() {
  auto const arguments = std::make_shared<Arguments>();
  std::vector<Command> commands = {
      {"tree",
       "Print the network as a tree, then orphans and invalid entries",
       On(arguments, ShowTree),
       {Argument("FILE", &arguments->file, File(*arguments).help).Excludes("--file"),
        Value("--file", &arguments->file, "FILE", "The same")}},
      {"clear", "Remove all entries", On(arguments, Clear),
       Joined({{File(*arguments)}, WritingOptions(arguments->writing), {Yes(arguments->writing)}})}};
  std::vector<Kind> const kinds = Kinds();
  for (Action const& action : {Action{"add", "Add ", "Add an entry", Add},
                               Action{"edit", "Change fields of ", "Change fields of an entry", EditEntry},
                               Action{"remove", "Remove ", "Remove an entry and everything below it", Remove}}) {
    std::vector<Command> below;
    below.reserve(kinds.size());
    for (Kind const& kind : kinds) below.push_back(Change(action, kind));
    commands.push_back(Family(action.name, action.family, "", {}, std::move(below)));
  }
  return Family("browse", "Groups, computers and UPS units of the monitored network", "",
                {"zelctl browse tree", "zelctl browse add group Office",
                 "zelctl browse add computer mail 192.168.0.10 1", "zelctl browse add ups hall 1",
                 "zelctl browse edit group 1 name=Hall", "zelctl browse edit computer 1 address=192.168.0.11",
                 "zelctl browse edit ups 1 number=2", "zelctl browse remove group 1", "zelctl browse remove computer 1",
                 "zelctl browse remove ups 1", "zelctl browse clear --dry-run"},
                std::move(commands));
}
