// The commands, a family or a command in each source of this directory; main.cpp puts them together.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_FAMILIES_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_FAMILIES_H

#include "commands/command.h"

Command ShutdownCommands();
Command CfgCommands();
Command B64Commands();
Command UpsCommands();
Command TypeCommands();
Command ServerCommands();
Command ClientCommands();
Command InfoCommand();
Command PortsCommand();
Command DigestCommand();
Command CipherCommands();
Command ProcCommands();
Command SvcCommands();
Command LogCommands();
// Of the family of `log`.
Command FollowCommand();
Command OutagesCommand();
Command ScheduleCommands();
Command LangCommands();
Command BrowseCommands();
Command StatusCommand();
Command ReportCommand();
// It shows the commands of the root, which must outlive it.
Command HelpCommand(Command const& root);

#endif
