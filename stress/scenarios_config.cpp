#include <unistd.h>

#include <cstdio>
#include <new>

#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

std::string ManyKeys(int count = 40) {
  std::string file = "[S]\n";
  for (int i = 10; i < 10 + count; i++) file += "K" + std::to_string(i) + " = " + std::to_string(i) + "\n";
  return file;
}

// Returns whether the only file is unchanged, except for lines that begin with this letter.
bool KeepsAllBut(char letter, Files const& before, Files const& after) {
  std::string kept = after.at("root/a.cfg");
  for (std::size_t at = 0; (at = kept.find(std::string("\n") + letter, at)) != std::string::npos;)
    kept.erase(at, kept.find('\n', at + 1) - at);
  return after.size() == 1 && kept == before.at("root/a.cfg");
}

template <class File, class Body>
bool Change(World& world, char const* name, bool cached, Body&& body) {
  File file;
  file.SetCached(cached);
  if (!file.Open(world.Root(name))) return false;
  return body(file) && (!cached || file.Flush()) && file.Close();
}

// An object that is destroyed saves the changes that it took before it ran out of memory, each of them complete.
bool IsChangedInOrder(Files const& before, Files const& after, bool ok) {
  std::string file = before.at("root/a.cfg");
  auto const insert = [&](std::string const& anchor, std::string const& line) {
    file.insert(file.find(anchor) + anchor.size(), line);
  };
  bool known = !ok && after.at("root/a.cfg") == file;
  auto const step = [&](bool last) { known = known || ((last || !ok) && after.at("root/a.cfg") == file); };
  insert("POPUP = 1\n", "NEW = 5\n");
  step(false);
  file += "\n[NEW]";
  step(false);
  file += "\nA = 1";
  step(false);
  file.erase(file.find("1 = b;10.0.0.2;1\n"), 17);
  step(false);
  insert("\nA = 1", "\nT = " + DateTimeToStr(nullptr, kNow));
  step(false);
  file += "\nF = 1.500";
  step(true);
  return known && after.size() == 1;
}

}  // namespace

Table ConfigScenarios() {
  Files const cfg = {{"root/a.cfg", kClientFile}};
  return {
      {"CfgClass: a change", cfg,
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.WriteStr("SHUTSRV", "POPUP", "0"); });
       },
       kClass},
      {"CfgClass: many changes, one save",
       cfg,
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", true, [](auto& f) {
           return f.WriteInt("SHUTSRV", "NEW", 5) && f.WriteBool("NEW", "A", true) && f.DeleteKey("CLILIST", "1") &&
                  f.WriteDateTime("NEW", "T", nullptr, kNow) && f.WriteFloat("NEW", "F", 1.5, 0, 4);
         });
       },
       kClass,
       {},
       IsChangedInOrder},
      {"CfgClass: a change tried three times", cfg,
       [](World& w) {
         CfgClass file;
         if (!file.Open(w.Root("a.cfg"))) return false;
         for (int i = 0; i < 3; i++) {
           try {
             if (file.WriteStr("NEW", "A", "1") && file.WriteStr("NEW", "B", "2")) return file.Close();
           } catch (std::bad_alloc const&) {
           }
         }
         return false;
       },
       kClass | kForgives},  // tries again
      {"CfgClass: numbers of keys after a change tried three times",
       {{"root/a.cfg", ManyKeys()}},
       [](World& w) {
         CfgClass file;
         if (!file.Open(w.Root("a.cfg"))) return false;
         file.SetCached(true);
         bool done = false;
         for (int i = 0; i < 3 && !done; i++) {
           try {
             done = file.GetKeyName("S", 30) != "" && file.WriteStr("S", "K15x", "1") &&
                    file.WriteStr("S", "K15y", "1") && file.WriteStr("S", "K10", "11");
           } catch (std::bad_alloc const&) {
           }
         }
         for (unsigned long i = 0; i < file.GetKeyCount("S"); i++) w.Note("%s ", file.GetKeyName("S", i).c_str());
         return done && file.Close();
       },
       kClass},
      {"CfgClass: a change to a file that could not be opened", cfg,
       [](World& w) {
         CfgClass file;
         try {
           file.Open(w.Root("a.cfg"));
         } catch (std::bad_alloc const&) {
         }
         return file.WriteStr("SHUTSRV", "POPUP", "0") && file.Close();
       },
       kClass},
      {"CfgClass: a change to a file that could not be loaded anew", cfg,
       [](World& w) {
         CfgClass file;
         try {
           if (!file.Open(w.Root("a.cfg"))) return false;
           file.LoadFile(false);
         } catch (std::bad_alloc const&) {
         }
         return file.WriteStr("SHUTSRV", "POPUP", "0") && file.Close();
       },
       kClass | kMemoryOnly},
      {"CfgClass: a change after its lines were to be forgotten",
       cfg,
       [](World& w) {
         CfgClass file;
         if (!file.Open(w.Root("a.cfg"))) return false;
         try {
           file.ClearWriteCache();
         } catch (std::bad_alloc const&) {
         }
         return file.WriteStr("SHUTSRV", "POPUP", "0") && file.Close();
       },
       kClass | kTwice | kMemoryOnly,
       {},
       [](Files const& before, Files const& after, bool ok) {
         std::string changed = before.at("root/a.cfg");
         changed.replace(changed.find("POPUP = 1"), 9, "POPUP = 0");
         return after.at("root/a.cfg") == "" || after.at("root/a.cfg") == changed || (!ok && after == before);
       }},
      {"CfgClass: changes, another file being opened",
       {{"root/a.cfg", "k=1\nbad[\nlater=2\n"}, {"root/b.cfg", ""}},
       [](World& w) {
         CfgClass file;
         unlink(w.Root("a.cfg.lost"));
         if (!file.Open(w.Root("a.cfg")) || !file.SetCached(true) || !file.WriteStr("", "k", "2")) return false;
         for (int i = 0; i < 3; i++) {
           try {
             return file.Open(w.Root("b.cfg"));
           } catch (std::bad_alloc const&) {
           }
         }
         return false;
       },
       kClass | kTwice | kMemoryOnly},
      {"CfgClass: a section erased", cfg,
       [](World& w) { return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.EraseSection("CLILIST"); }); },
       kClass},
      {"CfgClass: many links to the file", cfg,
       [](World& w) {
         unlink(w.Root("linked"));
         if (link(w.Root("a.cfg"), w.Root("linked")) != 0) return false;
         bool const done =
             Change<CfgClass>(w, "linked", true, [](auto& f) { return f.WriteStr("NEW", "A", std::string(5, 'n')); });
         unlink(w.Root("linked"));
         return done;
       },
       kClass},
      {"CfgClass: a link to the file", cfg,
       [](World& w) {
         unlink(w.Root("link"));
         if (symlink("a.cfg", w.Root("link")) != 0) return false;
         bool const done = Change<CfgClass>(w, "link", false, [](auto& f) { return f.WriteStr("NEW", "A", "1"); });
         unlink(w.Root("link"));
         return done;
       },
       kClass},
      {"CfgClass: lines after a syntax error are kept",
       {{"root/a.cfg", "[A]\nk = 1\n=\nlost = 1\n"}},
       [](World& w) { return Change<CfgClass>(w, "a.cfg", false, [](auto& f) { return f.WriteStr("A", "k", "2"); }); },
       kClass},
      {"CfgClass: SaveAs", cfg,
       [](World& w) {
         CfgClass file;
         return file.OpenReadOnly(w.Root("a.cfg")) && file.SaveAs(w.Root("b.cfg"));
       },
       kClass},
      {"CfgClass: Rename", cfg,
       [](World& w) {
         CfgClass file;
         return file.Open(w.Root("a.cfg")) && file.Rename(w.Root("b.cfg")) && file.WriteStr("N", "A", "1") &&
                file.Close();
       },
       kClass | kTwice},
      {"CfgClass: reading", cfg,
       [](World& w) {
         CfgClass file;
         if (!file.OpenReadOnly(w.Root("a.cfg"))) return false;
         for (unsigned long i = 0; i < file.GetSectionCount(); i++)
           w.Note("%s %lu ", file.GetSectionName(i).c_str(), file.GetKeyCount(file.GetSectionName(i)));
         w.Note("%ld %s", file.ReadInt("CLILIST", 0UL, 5), file.ReadStr("UPSCLI", "LIBNAME", "").c_str());
         return true;
       },
       kClass},
      {"CfgClass: a thousand keys by number, made and removed",
       {{"root/a.cfg", ManyKeys(1024)}},
       [](World& w) {
         return Change<CfgClass>(w, "a.cfg", true, [&](auto& f) {
           char name[8];
           unsigned sum = 0;
           for (int const way : {0, 1}) {
             for (int i = 0; i < 1100; i++) {
               std::snprintf(name, sizeof name, "J%04d", i);
               if (!(way == 0 ? f.WriteStr("S", name, "1") : f.DeleteKey("S", name))) return false;
               if (i % 50 == 0) sum = sum * 31 + static_cast<unsigned char>(f.GetKeyName("S", 900)[4]);
             }
           }
           w.Note("%x", sum);
           return f.GetKeyCount("S") == 1024;
         });
       },
       kClass | kTwice,  // leftovers of a failure change the numbers
       {},
       [](Files const& before, Files const& after, bool ok) {
         return ok ? after == before : KeepsAllBut('J', before, after);
       }},
      {"RegCfgClass: a change",
       {{"home/a.cfg", kUserFile}},
       [](World& w) {
         RegCfgClass file;
         return file.Open(w.Path("home/a.cfg")) && file.WriteInt("Zelvane", "New", 7) && file.Close();
       },
       kClass},
      {"ParseMacroFileName", WithRoot({}),
       [](World&) {
         std::string const name = ParseMacroFileName("//LOGDOCSAVE//", "3");
         return !name.empty();
       }},
  };
}

}  // namespace stress
