/// @file
/// The processes of this machine, as `ps` lists them. Also starts new processes through the shell.
///
///     ProcManager table;                                   // empty; the first query reads it
///     ProcClass* server = table.GetProcByName("upssrv");   // or "/usr/sbin/upssrv"
///     if (server != nullptr) server->Kill();
///
/// ENTRIES
///
/// A table is a snapshot. A process can have ended since, and the system can have given its id to another process: Kill
/// and SetPriority then act on that one. Read a fresh table immediately before acting.
///
/// A name is the command name as `ps` shows it: the first 15 bytes of the program's file name (for a script with a
/// `"#!"` line, the script's), or the name that the process has given itself. So a longer name is never found, a
/// process can have any name, and daemons whose names agree in 15 bytes cannot be told apart. `ps` replaces characters
/// that its locale cannot show, usually with "?": a name outside ASCII may not be found. A name with blanks is cut at
/// the first one, and the remainder becomes the beginning of the file name. If a process has no name, or only blanks,
/// its name is the first word of its command line.
///
/// A finished process that nobody has waited for (zombie) is listed and counts as running. This includes children of
/// the caller. Forked children have the caller's own name until they execute another program.
///
/// CHILDREN AND SIGNALS of the host program are not affected. No signal disposition is changed. An operation waits only
/// for the `ps` that it has started itself. It also works in a host that ignores SIGCHLD.
///
/// One thread at a time may use an object. ProcManager does not throw: when memory runs out, an operation returns its
/// failure value. ProcClass throws std::bad_alloc where it copies a name.
#ifndef ZELVANE_SYSTEM_PROC_H
#define ZELVANE_SYSTEM_PROC_H

#include <string>
#include <vector>

#include "zelvane/export.h"

/// One process. The operations are virtual hooks, and their order is part of the interface.
class ZELVANE_API ProcClass {
 public:
  /// No process: ids 0, no names, priority 1.
  ProcClass();
  /// `priority` is a level, 0 to 3.
  ProcClass(unsigned long pid, unsigned long ppid, std::string name, std::string fileName, int priority);
  ProcClass(ProcClass const& other);
  ProcClass(ProcClass&& other) noexcept;
  ProcClass& operator=(ProcClass const& other);
  ProcClass& operator=(ProcClass&& other) noexcept;
  virtual ~ProcClass();

  /// Sends SIGTERM and, if that could be sent, SIGKILL without a pause. Kept: callers rely on the process being gone
  /// afterwards. Returns true if SIGTERM could be sent. Returns false and sends nothing unless the id is 1 to 2^31-1:
  /// to the system, 0 means the caller's own process group, and negative ids mean other groups.
  virtual bool Kill();

  /// Returns the priority level: 0 low, 1 normal, 2 high, 3 highest. The levels correspond to nice values of 11 and
  /// above, 0 to 10, -10 to -1, and -11 and below. Returns 1 if `ps` shows "-" (real-time processes).
  virtual int GetPriority();
  /// Sets the nice value 20, 0, -10 or -20 for level 0, 1, 2 or 3, and stores the level. Any other level counts as 1.
  /// Returns false and keeps the stored level if the system refuses, or for ids that Kill refuses. On Linux each thread
  /// has its own nice value: threads that the process has already started, other than its first, keep theirs.
  virtual bool SetPriority(int level);

  /// Return the name, and the command line as far as it is known. A line of `ps` counts up to its 1023rd byte. `ps`
  /// itself cuts its lines at the greater of COLUMNS and 132 if the environment has COLUMNS.
  virtual std::string GetName();
  virtual std::string GetFileName();
  /// Return the id of the process, and the id of its parent.
  virtual unsigned long GetPID();
  virtual unsigned long GetPPID();

 private:
  unsigned long pid_ = 0;
  unsigned long ppid_ = 0;
  std::string name_;
  std::string fileName_;
  int priority_ = 1;
};

/// The table, in the order of `ps`. The operations are virtual hooks: they call each other through the virtual table,
/// and their order is part of the interface. The std::string overloads call the pointer overloads.
///
/// A query to an empty table reads it first; a filled table is not read again. Pointers to entries belong to the table
/// and are valid until the next Update or Clear.
class ZELVANE_API ProcManager {
 public:
  ProcManager();
  ProcManager(ProcManager const&) = delete;
  ProcManager& operator=(ProcManager const&) = delete;
  virtual ~ProcManager();

  /// Reads the table again, with the `ps` found in PATH. Returns false with an empty table if `ps` cannot be started:
  /// no pipe, no process, no such command.
  virtual bool Update();
  /// Empties the table: the next query reads it again.
  virtual void Clear();
  /// Returns the number of entries.
  virtual unsigned long GetProcCount();
  /// Returns the entry at `index`, counted from 0; null if there is none.
  virtual ProcClass* GetProcByIndex(unsigned long index);

  /// Returns the first entry with that name, byte for byte; null if there is none, or for a null name. Only the part of
  /// `name` after the last "/" counts, so a full path works too. A process whose own name contains "/" (kernel threads)
  /// is never found. Command lines are not searched.
  virtual ProcClass* GetProcByName(char const* name);
  ProcClass* GetProcByName(std::string const& name);
  /// Returns the first entry with that id; null if there is none.
  virtual ProcClass* GetProcByPID(unsigned long pid);

  /// Returns whether GetProcByName or GetProcByPID finds an entry.
  virtual bool IsRunning(char const* name);
  virtual bool IsRunning(unsigned long pid);
  bool IsRunning(std::string const& name);

  /// Runs a command line with "/bin/sh -c": in a session of its own if `detach` is 1 (the default), in the caller's
  /// session for any other value. Returns true in the caller as soon as the process exists; it does not learn whether
  /// the command can be run or how it ends. Returns false for null, or if no process could be created. The child has
  /// the host's environment and streams. Nobody waits for it here: once finished, it stays a zombie until the host
  /// waits for it.
  ///
  /// BEWARE: if the shell itself cannot be executed (for example, because the command line is above the system's limit
  /// of 128 KiB), the CHILD returns false from this call and continues to run the caller's code, as a second copy of
  /// the program. Kept: callers depend on it. To guard against it, compare getpid() with its value before the call and
  /// end the copy with _exit().
  virtual bool CreateNew(char const* command);
  virtual bool CreateNew(char const* command, unsigned long detach);
  bool CreateNew(std::string const& command);
  bool CreateNew(std::string const& command, unsigned long detach);

  /// Same as CreateNew(command). Kept: the other arguments are not used and, in spite of the name, nothing is waited
  /// for.
  virtual bool CreateNewAndWait(char const* command, long timeout);
  virtual bool CreateNewAndWait(char const* command, long timeout, unsigned long flags);
  bool CreateNewAndWait(std::string const& command, long timeout);
  bool CreateNewAndWait(std::string const& command, long timeout, unsigned long flags);

 private:
  std::vector<ProcClass> table_;
};

#endif
