#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

// Runs every operation that changes a browse list, and returns how many succeeded. After one that ran out of memory the
// others fail.
int ChangeBrowseList(void* list) {
  BrwsGroupRec const group = {1, "a group with a long name", 1};
  BrwsComputerRec const computer = {1, "a computer with a long name", "2001:db8:0:0:0", 1};
  BrwsNobreakRec const unit = {1, "a unit with a long name", 0, 1}, orphan = {0, "a unit without a computer", 0, 77};
  int done = 0;
  for (int const told :
       {AddBrwsGroup(list, &group, true, nullptr, true), AddBrwsComputer(list, &computer, false, nullptr, true),
        AddBrwsNobreak(list, &unit, true, nullptr, false), AddBrwsNobreak(list, &orphan, false, nullptr, true),
        EditBrwsGroup(list, &group, true), EditBrwsComputer(list, &computer, true), EditBrwsNobreak(list, &unit, true),
        UpdateBrwsFileDate(list, true), RemoveBrwsNobreak(list, 2, true), RemoveBrwsNobreakByComputer(list, 1, true),
        RemoveBrwsComputer(list, 1, true), RemoveBrwsComputerByGroup(list, 1, true),
        RemoveBrwsGroupByGroup(list, 1, true), RemoveBrwsGroup(list, 0, true), ClearBrwsGroupsList(list, true),
        ClearBrwsComputersList(list, true), ClearBrwsNobreaksList(list, true)})
    done += told;
  return done;
}

}  // namespace

Table BrowseScenarios() {
  Files const browse = WithRoot(
      {{"root/zelbrws.cfg",
        "[GROUPS]\n0 = all;-1\n1 = sub;0\n2 = deep;1\n[COMPUTERS]\n0 = pc;10.0.0.1;1\n1 = pd;10.0.0.2;2\n[NOBREAKS]\n"
        "0 = u0;10.0.0.1;1;0\n1 = u1;10.0.0.2;1;1\n2 = u2;127.0.0.1;1;-1\n[DATE]\nDATETIME = 5\n"}});
  return {
      {"browse list, reading", browse,
       [](World& w) {
         void* const list = OpenBrwsList(nullptr);
         BrwsComputerRec computer = {};
         BrwsNobreakRec unit = {};
         BrwsGroupRec group = {};
         int const a = GetBrwsComputerByIndex(list, 0, &computer), b = GetBrwsNobreakByIndex(list, 1, &unit),
                   c = GetBrwsGroupByIndex(list, 2, &group);
         long const date = GetBrwsFileDate(list);
         bool const whole = GetBrwsGroupsCount(list) == 3 && a == 1 && b == 1 && c == 1 && date != 0;
         if (whole) w.Note("%s %s %s %ld", computer.name, unit.name, group.name, date);
         return CloseBrwsList(list) == 1 && whole;
       }},
      {"browse list, adding and changing", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         BrwsComputerRec computer = {};
         Put(computer.name, "new");
         Put(computer.address, "10.0.0.9");
         bool const added = AddBrwsComputer(list, &computer, true, nullptr, true) == 1 &&
                            EditBrwsComputer(list, &computer, false) == 1;
         return CloseBrwsList(list) == 1 && added;
       },
       kTwice},
      {"browse list, every change", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         int const done = ChangeBrowseList(list);
         return CloseBrwsList(list) == 1 && done == 17;
       },
       kTwice},
      {"browse list, cascade", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         bool const done = RemoveBrwsGroup(list, 0, true) == 1;
         return CloseBrwsList(list) == 1 && done;
       }},
      {"browse list, a change after a cascade that ran out of memory", browse,
       [](World& w) {
         void* const list = OpenBrwsList(w.Root("zelbrws.cfg"));
         bool const done = RemoveBrwsGroup(list, 0, true) == 1;
         if (!done) UpdateBrwsFileDate(list, true);  // would save half of the cascade
         return CloseBrwsList(list) == 1 && done;
       },
       kMemoryOnly},
  };
}

}  // namespace stress
