// The processes of this machine, as `ps` lists them, and starting new ones through the shell.
//
//   ProcManager table;                                   // empty; the first question reads it
//   ProcClass* server = table.GetProcByName("upssrv");   // or "/usr/sbin/upssrv"
//   if (server != nullptr) server->Kill();
//
// WHAT AN ENTRY TELLS
//
// A table is a snapshot. Its processes may have ended since, and the system may have given an id to another process:
// Kill and SetPriority then act on that one. Take a fresh table directly before acting.
//
// A name is the command name as `ps` shows it: the first 15 bytes of the program's file name (for a script with a "#!"
// line, the script's), or what the process has called itself. So a longer name is never found, a process may bear any
// name it likes, and daemons whose names agree in 15 bytes cannot be told apart. `ps` replaces what its locale cannot
// show, usually by "?": a name outside ASCII may not be found. A name that holds blanks is cut at the first one, and
// the rest of it begins the file name. A process without a name, or with one of nothing but blanks, takes the first
// word of its command line.
//
// A finished process that nobody has waited for (zombie) is listed, and counts as running. That goes for children of
// the caller too: those that it has forked bear its own name until they execute another program.
//
// THE HOST PROGRAM'S CHILDREN AND SIGNALS are left alone: no signal disposition is changed and nothing is waited for
// but the `ps` that an operation has started itself. A host that ignores SIGCHLD is served all the same.
//
// An object is used by one thread at a time. ProcManager does not throw, out of memory is its failing result; ProcClass
// throws std::bad_alloc where it copies a name.
#ifndef ZELVANE_SYSTEM_PROC_H
#define ZELVANE_SYSTEM_PROC_H

#include <string>
#include <vector>

#include "zelvane/export.h"

// One process. The order of the virtual operations is part of the interface.
class ZELVANE_API ProcClass {
 public:
  // No process: ids 0, no names, priority 1.
  ProcClass();
  // `priority` is a level, 0 to 3.
  ProcClass(unsigned long pid, unsigned long ppid, std::string name, std::string fileName, int priority);
  ProcClass(ProcClass const& other);
  ProcClass(ProcClass&& other) noexcept;
  ProcClass& operator=(ProcClass const& other);
  ProcClass& operator=(ProcClass&& other) noexcept;
  virtual ~ProcClass();

  // Sends SIGTERM and, if that could be sent, SIGKILL directly behind it, without a pause: callers rely on the process
  // being gone afterwards. True when SIGTERM could be sent. False, with nothing sent, unless the id is 1 to 2^31-1: the
  // system takes 0 for the caller's own group, and negative ids for other groups.
  virtual bool Kill();

  // The priority level: 0 low, 1 normal, 2 high, 3 highest. Read from the nice value of 11 and above, 0 to 10, -10 to
  // -1, -11 and below; 1 where `ps` has "-" for it (real-time processes).
  virtual int GetPriority();
  // Sets the nice value 20, 0, -10 or -20 for level 0, 1, 2 or 3, and stores the level; any other level counts as 1.
  // False, with the stored level kept, when the system refuses, and for ids that Kill refuses. Linux has a
  // nice value for each thread: those that the process has started already, besides its first one, keep theirs.
  virtual bool SetPriority(int level);

  // Name, and the command line as far as it is known: a line of `ps` counts up to its 1023rd byte, and `ps` itself cuts
  // its lines, at the greater of COLUMNS and 132, when the environment has COLUMNS.
  virtual std::string GetName();
  virtual std::string GetFileName();
  // Own id and parent's.
  virtual unsigned long GetPID();
  virtual unsigned long GetPPID();

 private:
  unsigned long pid_ = 0;
  unsigned long ppid_ = 0;
  std::string name_;
  std::string fileName_;
  int priority_ = 1;
};

// The table, in the order of `ps`. The order of the virtual operations is part of the interface, and they call each
// other virtually: a subclass may replace any step. Forms taking a string go through those taking a pointer.
//
// Questions to an empty table read it first; none reads a filled one anew. Pointers to entries are the table's own and
// good until the next Update or Clear.
class ZELVANE_API ProcManager {
 public:
  ProcManager();
  ProcManager(ProcManager const&) = delete;
  ProcManager& operator=(ProcManager const&) = delete;
  virtual ~ProcManager();

  // Reads the table anew, with the `ps` that PATH finds. False, with an empty table, when it cannot be started: no
  // pipe, no process, no such command.
  virtual bool Update();
  virtual void Clear();
  virtual unsigned long GetProcCount();
  // The entry at `index`, counted from 0; null when there is none.
  virtual ProcClass* GetProcByIndex(unsigned long index);

  // The first entry of that name, to the byte; null when there is none and for a null name. Only what follows the last
  // "/" of `name` counts, so that a full path may be given; a process whose own name has a "/" (kernel threads) is
  // never found. Command lines are not searched.
  virtual ProcClass* GetProcByName(char const* name);
  ProcClass* GetProcByName(std::string const& name);
  // The first entry with that id; null when there is none.
  virtual ProcClass* GetProcByPID(unsigned long pid);

  // Whether GetProcByName or GetProcByPID finds one.
  virtual bool IsRunning(char const* name);
  virtual bool IsRunning(unsigned long pid);
  bool IsRunning(std::string const& name);

  // Runs a command line with "/bin/sh -c", in a session of its own when `detach` is 1 (the form without it: 1) and in
  // the caller's for any other value. True in the caller as soon as the process exists: whether the command can be run,
  // or what becomes of it, is not learned. False for null and when no process could be made. The child has the host's
  // environment and streams, is not waited for and, when finished, stays a zombie until the host waits for it.
  //
  // BEWARE: when the shell itself cannot be executed (a command line above the system's limit, 128 KiB, will do), the
  // CHILD returns false from this call and goes on running the caller's code, a second copy of the program. Callers
  // depend on it. One that may meet this compares getpid() with that from before and ends the copy with _exit().
  virtual bool CreateNew(char const* command);
  virtual bool CreateNew(char const* command, unsigned long detach);
  bool CreateNew(std::string const& command);
  bool CreateNew(std::string const& command, unsigned long detach);

  // Same as CreateNew(command): neither argument is used and, in spite of the name, nothing is waited for.
  virtual bool CreateNewAndWait(char const* command, long timeout);
  virtual bool CreateNewAndWait(char const* command, long timeout, unsigned long flags);
  bool CreateNewAndWait(std::string const& command, long timeout);
  bool CreateNewAndWait(std::string const& command, long timeout, unsigned long flags);

 private:
  std::vector<ProcClass> table_;
};

#endif
