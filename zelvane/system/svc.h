// The services of this machine that have an init script, and starting and stopping them.
//
//   SvcManager services;
//   SvcClass* server = services.GetSvcByName("upssrv");
//   if (server != nullptr && !server->IsRunning()) server->Start(-1);
//
// A service has the name of its script, and counts as running when some process has that name (proc.h tells what a
// process's name is; a service whose name is longer than 15 characters never counts as running). While a script runs,
// it is itself a process of its file's name: one that bears the bare name of its service passes for the service to
// whoever looks meanwhile. What else the machine may use to manage services is not asked.
//
// Scripts are run by the shell, with the host's environment, streams and rights; a script is found by its full path,
// whatever characters that has. An operation returns when the script has returned. The script's exit status is not
// looked at. While it runs the host ignores SIGINT and SIGQUIT, as system() has it. A host that ignores SIGCHLD is
// served all the same.
//
// Start, Stop and Restart look at the processes when the script has returned: a service that takes the name of its
// process only later is not seen.
//
// An object is used by one thread at a time. Nothing here throws, except that a text cannot be returned without memory
// (std::bad_alloc). Elsewhere an operation that runs out of memory fails: it never tells that a service is not running.
#ifndef ZELVANE_SYSTEM_SVC_H
#define ZELVANE_SYSTEM_SVC_H

#include <string>
#include <vector>

#include "zelvane/export.h"

// One service. The time-outs of its operations are not used.
class ZELVANE_API SvcClass {
 public:
  // No service: no name, not running, not automatic.
  SvcClass();
  SvcClass(SvcClass const& other);
  SvcClass(SvcClass&& other) noexcept;
  SvcClass& operator=(SvcClass const& other);
  SvcClass& operator=(SvcClass&& other) noexcept;
  ~SvcClass();

  // Runs the script with "start". True, and the service is marked as running, when a process of its name is there
  // afterwards. False, with the mark as it was: it is not; no name; no script, or one that nobody may execute (nothing
  // is run then); the shell could not be started.
  bool Start(long timeout);

  // Runs the script with "stop" if anybody may execute it; then the first process that still has the service's name is
  // killed (ProcClass::Kill, without a pause: a script that does not wait for its service's end gives it no time for
  // it). The result is that of Kill if it came to that, otherwise whether the script could be run, which is true as
  // well when nobody may execute it. When true, the service is marked as not running. False, with nothing done: no
  // name, no script. False, with the mark as it was, when memory runs out: the script may have run by then. Where `ps`
  // cannot be run there is no survivor to be seen, and true says no more than that.
  bool Stop(long timeout);

  // Runs the script with "restart" if anybody may execute it; whether a process of the service's name is there
  // afterwards. The mark stays. False, with nothing run: the service is not marked as running, no script. False, too,
  // when the shell could not be started.
  bool Restart(long timeout1, long timeout2);

  // The name; the same for display; the script's path; the script's own description ("" where it has none).
  std::string GetName() const;
  std::string GetDisplayName() const;
  std::string GetFileName() const;
  std::string GetDescription() const;

  // The mark that the table's reading, Start and Stop have left. The processes are not looked at again.
  bool IsRunning() const;

  // Whether the service is started with the system: as a whole (also for a negative level), or in run level 0 to 6.
  // False for 7 and above.
  bool GetAutomatic() const;
  bool GetAutomatic(int level) const;

  // Sets what GetAutomatic() gives, until the table is read again. NOTHING IS CHANGED IN THE SYSTEM, nor for the run
  // levels. False when there is no name.
  bool SetAutomatic(bool on);
  // Changes nothing at all; true for every level up to 6, negative ones too.
  bool SetAutomatic(int level, bool on);

 private:
  friend class SvcManager;

  std::string name_;
  std::string fileName_;
  std::string description_;
  bool running_ = false;
  bool automatic_ = false;
  bool automaticInLevel_[7] = {};
};

// The table of services, in the order of the folders and, in each, of the scripts' file names. The order of the virtual
// operations is part of the interface, and they call each other virtually: a subclass may replace any step, as to read
// other folders.
//
// Questions to an empty table read it first; none reads a filled one anew. Pointers to entries are the table's own and
// good until the next Update, Clear or GetDaemonInfo.
class ZELVANE_API SvcManager {
 public:
  SvcManager();
  SvcManager(SvcManager const&) = delete;
  SvcManager& operator=(SvcManager const&) = delete;

  // Appends the services of one folder, given with its trailing "/": everything in it but folders, whether or not it
  // may be executed. The name is the file's without a leading "rc." and without what follows the last ".": "rc.inetd"
  // is inetd, "x.y.sh" is x.y. False when the folder may not be entered or read; otherwise whether the table has any
  // service now, from whichever folder. False, too, with nothing appended, when memory runs out.
  virtual bool GetDaemonInfo(std::string const& dir);

  // The script's description: what follows the colon in its first comment line that begins with "description" (in
  // either case) and has one. One that ends in "\" goes on in the next comment line; the pieces are joined without the
  // backslash and with no blank added. "" when there is none, and when `path` cannot be read or is not a regular file:
  // devices and FIFOs are not opened. The script is read up to the end of its description. A line longer than 1 MiB, or
  // a description that has become longer, ends the search with what was found before.
  virtual std::string GetDaemonDescr(std::string const& path);

  // Sets or clears what GetAutomatic tells, for the service as a whole and all run levels alike: set for a script
  // directly in "/usr/local/etc/rc.d/" that anybody may execute, clear for all others. Those of the other folders are
  // started through links in other places, which are not examined.
  virtual void GetDaemonAuto(SvcClass& svc, std::string const& path);

  virtual ~SvcManager();

  // Reads the table anew: from "/etc/init.d/", or, when that gives no service, from "/etc/rc.d/" and
  // "/usr/local/etc/rc.d/" both. Whether there are any. False, with an empty table, when memory runs out.
  virtual bool Update();
  virtual void Clear();
  virtual unsigned long GetSvcCount();
  // The entry at `index`, counted from 0; null when there is none.
  virtual SvcClass* GetSvcByIndex(unsigned long index);
  // The first entry of that name, to the byte; null when there is none and for a null name.
  virtual SvcClass* GetSvcByName(char const* name);
  SvcClass* GetSvcByName(std::string const& name);
  // IsRunning() of that entry; false when there is none.
  virtual bool IsRunning(char const* name);
  bool IsRunning(std::string const& name);

 private:
  ZELVANE_HIDDEN bool AppendServices(std::string const& dir);

  std::vector<SvcClass> table_;
  bool outOfMemory_ = false;  // in the last Update, or in a GetDaemonInfo since
};

#endif
