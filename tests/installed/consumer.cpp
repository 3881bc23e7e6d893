// A C++ program that uses only the installed headers and the library. The library must not call its Trim.
#include <zelvane/zelvane.h>

#include <cstdio>
#include <string>

std::string Trim(std::string const&, int) { return "mine"; }

namespace mine {
class Upper : public RegCfgClass {
 public:
  bool GetUpperCaseWriteCache() override { return true; }
};
}  // namespace mine

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  std::string const path = std::string(argv[1]) + "/consumer.cfg";
  {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return 2;
    std::fputs("; kept\n[Net]\n speed = 10 \n", file);
    std::fclose(file);
    mine::Upper cfg;
    if (!cfg.Open(path) || cfg.ReadInt("NET", "Speed", 0) != 10 || !cfg.WriteBool("Net", "On", true)) return 3;
  }
  CfgClass cfg;
  if (!cfg.OpenReadOnly(path) || !cfg.ReadBool("Net", "On", false) || cfg.WriteInt("Net", "On", 2)) return 4;
  if (Trim(" a ") != "a" || DateTimeToStr(0) != "01/01/1970 00:00:00" || ExtractFileName(path) != "consumer.cfg")
    return 5;
  std::string text = "abc";
  if (EncodeBase64FromStr(text) != "YWJjAA==" || ParseMacroFileName("plain", "/x/") != "plain") return 6;
  std::puts("C++ consumer: ok");
  return 0;
}
