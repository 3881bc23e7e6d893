// The commands: one source of this directory for each command or group. main.cpp puts them together.
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
// Part of the group `log`.
Command FollowCommand();
Command OutagesCommand();
Command ScheduleCommands();
Command LangCommands();
Command BrowseCommands();
Command StatusCommand();
Command ReportCommand();
// Shows the commands of `root`, which must outlive it.
Command HelpCommand(Command const& root);

#endif
