// The browse list as it is in the file, for zelvane/_browse.py.
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

#include "fields.h"
#include "zelvane/browse/browselist.h"

namespace {

// An entry: identifier, name, address or unit number (each for its kind), and the identifier that it belongs to.
using Group = std::tuple<long, Text, long>;
using Computer = std::tuple<long, Text, Text, long>;
using Unit = std::tuple<long, Text, unsigned, long>;

template <std::size_t Width>
void Put(char (&field)[Width], Text const& text) {
  if (text.bytes.find(';') != std::string::npos) throw py::value_error("the browse list cannot hold \";\"");
  SetText(field, Width, text);
}

BrwsGroupRec Record(Group const& group) {
  BrwsGroupRec record{static_cast<int32_t>(std::get<0>(group)), "", static_cast<int32_t>(std::get<2>(group))};
  Put(record.name, std::get<1>(group));
  return record;
}

BrwsComputerRec Record(Computer const& computer) {
  BrwsComputerRec record{static_cast<int32_t>(std::get<0>(computer)), "", "",
                         static_cast<int32_t>(std::get<3>(computer))};
  Put(record.name, std::get<1>(computer));
  Put(record.address, std::get<2>(computer));
  return record;
}

BrwsNobreakRec Record(Unit const& unit) {
  BrwsNobreakRec record{static_cast<int32_t>(std::get<0>(unit)), "", std::get<2>(unit),
                        static_cast<int32_t>(std::get<3>(unit))};
  Put(record.name, std::get<1>(unit));
  return record;
}

class Browse {
 public:
  explicit Browse(Path const& path) : path_(path.bytes), list_(nullptr, CloseBrwsList) {
    list_.reset(Unlocked([&] { return OpenBrwsList(path_.c_str()); }));
    if (list_ == nullptr) throw std::bad_alloc();
  }
  ~Browse() {
    Unlocked([&] { list_.reset(); });
  }

  template <class Entry, class Item, class Count, class Get, class Make>
  std::vector<Entry> Read(Count count, Get get, Make make) {
    return Alone(mutex_, [&] {
      std::vector<Entry> entries;
      Item item;
      for (unsigned long i = 0, all = count(List()); i < all; i++) {
        if (get(List(), i, &item) != 0) entries.push_back(make(item));
      }
      return entries;
    });
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

// Gives the identifier.
template <class Entry, class Add>
unsigned long Adding(Browse& browse, Entry const& entry, Add add) {
  auto const record = Record(entry);
  unsigned long id = 0;
  browse.Do("an entry without a name, or with a text that the file cannot hold",
            [&](void* list) { return add(list, &record, false, &id, false); });
  return id;
}

template <class Entry, class Edit>
void Editing(Browse& browse, Entry const& entry, Edit edit) {
  auto const record = Record(entry);
  browse.Do("no such entry, or one without a name, address or computer",
            [&](void* list) { return edit(list, &record, false); });
}

template <class Remove>
void Removing(Browse& browse, long id, Remove remove) {
  if (id < 0) throw py::value_error("identifiers count from 0");  // -1 would stand for all that belong to nothing
  browse.Do("the file cannot be written", [&](void* list) { return remove(list, id, false); });
}

}  // namespace

void BindBrowse(py::module_& module) {
  py::class_<Browse>(module, "Browse")
      .def(py::init<Path const&>())
      .def("groups",
           [](Browse& browse) {
             return browse.Read<Group, BrwsGroupRec>(GetBrwsGroupsCount, GetBrwsGroupByIndex, [](auto const& g) {
               return Group{g.id, {g.name}, g.parent};
             });
           })
      .def("computers",
           [](Browse& browse) {
             return browse.Read<Computer, BrwsComputerRec>(GetBrwsComputersCount, GetBrwsComputerByIndex,
                                                           [](auto const& c) {
                                                             return Computer{c.id, {c.name}, {c.address}, c.group};
                                                           });
           })
      .def("units",
           [](Browse& browse) {
             return browse.Read<Unit, BrwsNobreakRec>(GetBrwsNobreaksCount, GetBrwsNobreakByIndex, [](auto const& u) {
               return Unit{u.id, {u.name}, u.number, u.computer};
             });
           })
      .def("add_group", [](Browse& b, Group const& entry) { return Adding(b, entry, AddBrwsGroup); })
      .def("add_computer", [](Browse& b, Computer const& entry) { return Adding(b, entry, AddBrwsComputer); })
      .def("add_unit", [](Browse& b, Unit const& entry) { return Adding(b, entry, AddBrwsNobreak); })
      .def("edit_group", [](Browse& b, Group const& entry) { Editing(b, entry, EditBrwsGroup); })
      .def("edit_computer", [](Browse& b, Computer const& entry) { Editing(b, entry, EditBrwsComputer); })
      .def("edit_unit", [](Browse& b, Unit const& entry) { Editing(b, entry, EditBrwsNobreak); })
      .def("remove_group", [](Browse& b, long id) { Removing(b, id, RemoveBrwsGroup); })
      .def("remove_computer", [](Browse& b, long id) { Removing(b, id, RemoveBrwsComputer); })
      .def("remove_unit", [](Browse& b, long id) { Removing(b, id, RemoveBrwsNobreak); })
      .def("stamp",
           [](Browse& browse) {
             long const stamp = browse.Ask(GetBrwsFileDate);
             return stamp > 0 ? std::optional(Moment{stamp}) : std::nullopt;
           })
      .def("save",
           [](Browse& browse) {
             browse.Do("cannot be written", [](void* list) { return UpdateBrwsFileDate(list, true); });
           })
      .def("close", &Browse::Close);
}
