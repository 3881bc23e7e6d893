// The families of commands. Each adds one subcommand with its own below it; main.cpp lists them.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_FAMILIES_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_FAMILIES_H

namespace CLI {
class App;
}
struct Terminal;

void AddShutdown(CLI::App& app, Terminal& terminal);
void AddCfg(CLI::App& app, Terminal& terminal);
void AddB64(CLI::App& app, Terminal& terminal);
void AddUps(CLI::App& app, Terminal& terminal);
void AddType(CLI::App& app, Terminal& terminal);
void AddServer(CLI::App& app, Terminal& terminal);
void AddClient(CLI::App& app, Terminal& terminal);
void AddInfo(CLI::App& app, Terminal& terminal);
void AddPorts(CLI::App& app, Terminal& terminal);
void AddDigest(CLI::App& app, Terminal& terminal);
void AddCipher(CLI::App& app, Terminal& terminal);
void AddProc(CLI::App& app, Terminal& terminal);
void AddSvc(CLI::App& app, Terminal& terminal);
void AddLog(CLI::App& app, Terminal& terminal);
// Below the family of `log`.
void AddFollow(CLI::App* log, Terminal& terminal);
void AddOutages(CLI::App* log, Terminal& terminal);
void AddSchedule(CLI::App& app, Terminal& terminal);
void AddLang(CLI::App& app, Terminal& terminal);
void AddBrowse(CLI::App& app, Terminal& terminal);
void AddStatus(CLI::App& app, Terminal& terminal);
void AddReport(CLI::App& app, Terminal& terminal);
void AddHelp(CLI::App& app, Terminal& terminal);

#endif
