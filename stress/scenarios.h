// The tables of scenarios, one for each module of the library, and their shared files.
#ifndef ZELVANE_STRESS_SCENARIOS_H
#define ZELVANE_STRESS_SCENARIOS_H

#include <cstring>
#include <string>
#include <vector>

#include "stress/shim.h"
#include "stress/world.h"

namespace stress {

using Table = std::vector<Scenario>;

Table CoreScenarios();
Table ConfigScenarios();
Table ApiScenarios();
Table LogsScenarios();
Table LangScenarios();
Table BrowseScenarios();
Table SystemScenarios();
Table CryptoScenarios();

constexpr long kNow = SHIM_NOW;

// Settings of a user, and settings of the machine with their servers.
constexpr char kUserFile[] = "; mine\n[ZELVANE]\nLangId = 2\nColorSch = 1\n";
constexpr char kClientFile[] =
    "# kept\n[SHUTSRV]\nZELSRV = ups;10.0.0.1;4000\nPOPUP = 1\n[CLILIST]\n0 = ups;10.0.0.1;4000\n1 = b;10.0.0.2;1\n"
    "[MAILSEND]\nPASSWORD = c2VjcmV0AA==\n[UPSCLI]\nLIBNAME = zelcli03\n";

// Returns these files and the settings file that names the root.
inline Files WithRoot(Files files) {
  files["zelvane.conf"] = "[ZELVANE]\nPATH = <root>\nVERSION = 5.1\nZELSRV = 1\n";
  return files;
}

// Fills a char array; a text that fills it gets no NUL.
template <std::size_t N>
void Put(char (&field)[N], char const* text) {
  std::strncpy(field, text, N);
}

}  // namespace stress

#endif
