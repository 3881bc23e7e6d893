// The browse list as it is in the file, for zelvane/_browse.py.
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

#include "fields.h"
#include "zelvane/browse/browselist.h"

namespace {

// An entry: identifier, name, address or unit number (each for its kind), and the identifier of its owner.
using Group = std::tuple<int32_t, Text, int32_t>;
using Computer = std::tuple<int32_t, Text, Text, int32_t>;
using Unit = std::tuple<int32_t, Text, uint32_t, int32_t>;

template <std::size_t Width>
void Put(char (&field)[Width], Text const& text, char const* name) {
  SetText(field, Width, Part(text, name), name);
}

BrwsGroupRec Record(Group const& group) {
  BrwsGroupRec record{std::get<0>(group), "", std::get<2>(group)};
  Put(record.name, std::get<1>(group), "name");
  return record;
}

BrwsComputerRec Record(Computer const& computer) {
  BrwsComputerRec record{std::get<0>(computer), "", "", std::get<3>(computer)};
  Put(record.name, std::get<1>(computer), "name");
  Put(record.address, std::get<2>(computer), "address");
  return record;
}

BrwsNobreakRec Record(Unit const& unit) {
  BrwsNobreakRec record{std::get<0>(unit), "", std::get<2>(unit), std::get<3>(unit)};
  Put(record.name, std::get<1>(unit), "name");
  return record;
}

Group Entry(BrwsGroupRec const& group) { return {group.id, {group.name}, group.parent}; }
Computer Entry(BrwsComputerRec const& computer) {
  return {computer.id, {computer.name}, {computer.address}, computer.group};
}
Unit Entry(BrwsNobreakRec const& unit) { return {unit.id, {unit.name}, unit.number, unit.computer}; }

class Browse {
 public:
  explicit Browse(Path const& path) : path_(path.bytes), list_(nullptr, CloseBrwsList) {
    list_.reset(Unlocked([&] {
      ReadableSize(path_);
      return OpenBrwsList(path_.c_str());
    }));
    if (list_ == nullptr) throw std::bad_alloc();
  }
  ~Browse() {
    Unlocked([&] { list_.reset(); });
  }

  template <class Work>
  auto Ask(Work&& work) {
    return Alone(mutex_, [&] { return work(List()); });
  }

  template <class Work>
  void Do(char const* message, Work&& work) {
    Alone(mutex_, [&] {
      if (work(List()) == 0) throw Failure(0, path_, message);
    });
  }

  void Close() {
    Alone(mutex_, [&] {
      if (list_ != nullptr)
        Must(path_, "cannot be written: the changes are lost", [&] { return CloseBrwsList(list_.release()); });
    });
  }

 private:
  void* List() const {
    if (list_ == nullptr) throw Failure(0, path_, "the browse list is closed");
    return list_.get();
  }

  std::mutex mutex_;
  std::string path_;
  std::unique_ptr<void, int (*)(void*)> list_;
};

// The operations on one kind of entry. Numbers are the position or identifier; no operation saves but the removal.
template <class Item, class Count, class Get, class Add, class Edit, class Remove>
void BindKind(py::class_<Browse>& browse, std::string const& kind, Count count, Get get, Add add, Edit edit,
              Remove remove) {
  using Values = decltype(Entry(Item()));
  browse.def((kind + "s").c_str(), [=](Browse& self) {
    return self.Ask([&](void* list) {
      std::vector<Values> entries;
      Item item;
      for (unsigned long i = 0, all = count(list); i < all; i++) {
        if (get(list, i, &item) != 0) entries.push_back(Entry(item));
      }
      return entries;
    });
  });
  browse.def(("add_" + kind).c_str(), [=](Browse& self, Values const& entry) {
    Item const record = Record(entry);
    unsigned long id = 0;
    self.Do("an entry without a name", [&](void* list) { return add(list, &record, false, &id, false); });
    return id;
  });
  browse.def(("edit_" + kind).c_str(), [=](Browse& self, Values const& entry) {
    Item const record = Record(entry);
    self.Do("no such entry, or an entry without a name, address or computer",
            [&](void* list) { return edit(list, &record, false); });
  });
  browse.def(("remove_" + kind).c_str(), [=](Browse& self, int32_t id) {
    if (id < 0) throw py::value_error("expected an identifier from 0");  // -1 stands for all without an owner
    self.Do("the file cannot be written", [&](void* list) { return remove(list, id, false); });
  });
}

}  // namespace

void BindBrowse(py::module_& module) {
  py::class_<Browse> browse(module, "Browse");
  browse.def(py::init<Path const&>())
      .def("stamp",
           [](Browse& self) {
             long const stamp = self.Ask(GetBrwsFileDate);
             return stamp > 0 ? std::optional(Moment{stamp}) : std::nullopt;
           })
      .def("save",
           [](Browse& self) {
             self.Do("the file cannot be written", [](void* list) { return UpdateBrwsFileDate(list, true); });
           })
      .def("close", On(&Browse::Close));
  BindKind<BrwsGroupRec>(browse, "group", GetBrwsGroupsCount, GetBrwsGroupByIndex, AddBrwsGroup, EditBrwsGroup,
                         RemoveBrwsGroup);
  BindKind<BrwsComputerRec>(browse, "computer", GetBrwsComputersCount, GetBrwsComputerByIndex, AddBrwsComputer,
                            EditBrwsComputer, RemoveBrwsComputer);
  BindKind<BrwsNobreakRec>(browse, "unit", GetBrwsNobreaksCount, GetBrwsNobreakByIndex, AddBrwsNobreak, EditBrwsNobreak,
                           RemoveBrwsNobreak);
}
