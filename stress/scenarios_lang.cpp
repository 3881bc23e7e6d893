#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {

Table LangScenarios() {
  Files const files = WithRoot({{"root/zellang.cfg", "[LANG]\n1 = English\n[1]\n12 = on\n13 = off\n"},
                                {"home/.zellang.cfg", "[1]\n12 = mine\n"}});
  return {
      {"language, reading", files,
       [](World& w) {
         void* const lang = OpenLang(1);
         if (lang == nullptr) return false;
         w.Note("%s %s", GetLangStr(lang, 12), GetLangStr(lang, 13));
         CloseLang(lang);
         return true;
       },
       kReader | kTable},
      {"language, what there is", files,
       [](World& w) {
         void* const lang = OpenLang(1);
         char text[20] = "";
         bool const done = GetLangCount(lang) == 1 && GetLangDesc(lang, 1, text, sizeof text) == 1 && text[0] != '\0';
         if (done) w.Note("%s", text);
         CloseLang(lang);
         return done;
       }},
      {"language, writing",
       files,
       [](World&) {
         void* const lang = OpenLang(1);
         bool const done = SetLangStr(lang, 13, "ours") == 1;
         CloseLang(lang);
         return done;
       },
       kForgives,  // a text that the user's table does not take goes to the system's
       {},
       [](Files const& before, Files const& after, bool ok) {
         bool const user = after.at("home/.zellang.cfg") == "[1]\n12 = mine\n13 = ours\n";
         std::string const system = "[LANG]\n1 = English\n[1]\n12 = on\n13 = ours\n";
         bool const sound =
             (user || after.at("home/.zellang.cfg") == before.at("home/.zellang.cfg")) &&
             (after.at("root/zellang.cfg") == system || after.at("root/zellang.cfg") == before.at("root/zellang.cfg"));
         // If the settings may not be read, the system's file is beside the program.
         bool const elsewhere = after.count("program/zellang.cfg") != 0;
         return sound && (!ok || user || elsewhere || after.at("root/zellang.cfg") == system) &&
                after.size() == before.size() + (elsewhere ? 1 : 0);
       }},
  };
}

}  // namespace stress
