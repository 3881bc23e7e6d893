/// @file
/// The services of this machine that have an init script. Starts and stops them.
///
///     SvcManager services;
///     SvcClass* server = services.GetSvcByName("upssrv");
///     if (server != nullptr && !server->IsRunning()) server->Start(-1);
///
/// A service has the name of its script. It counts as running if some process has that name. proc.h describes process
/// names. They have at most 15 bytes, so a service with a longer name never counts as running. A running script is
/// itself a process with the name of its file: if that is the bare name of its service, it counts as the service for
/// callers that look meanwhile. Other service managers of the machine are not consulted.
///
/// The shell runs the scripts, with the host's environment, streams and privileges. A script is run by its full path,
/// whatever characters the path contains. An operation returns when the script has returned; the exit status of the
/// script is ignored. While the script runs, the host ignores SIGINT and SIGQUIT, as with system(). Operations also
/// work in a host that ignores SIGCHLD.
///
/// Start, Stop and Restart look at the processes when the script has returned. They miss a service whose process
/// appears, or takes its name, after that.
///
/// One thread at a time may use an object. Only operations that return a text throw (std::bad_alloc). When memory runs
/// out, every other operation fails: it never reports that a service is not running.
#ifndef ZELVANE_SYSTEM_SVC_H
#define ZELVANE_SYSTEM_SVC_H

#include <string>
#include <vector>

#include "zelvane/export.h"

/// One service. The time-outs of its operations are not used.
class ZELVANE_API SvcClass {
 public:
  /// No service: no name, not running, not automatic.
  SvcClass();
  SvcClass(SvcClass const& other);
  SvcClass(SvcClass&& other) noexcept;
  SvcClass& operator=(SvcClass const& other);
  SvcClass& operator=(SvcClass&& other) noexcept;
  ~SvcClass();

  /// Runs the script with "start". Returns true and marks the service as running if a process with its name exists
  /// afterwards. Returns false with the mark unchanged if it does not exist, if there is no name, if there is no script
  /// or nobody may execute it (then nothing is run), or if the shell could not be started.
  bool Start(long timeout);

  /// Runs the script with "stop" if anybody may execute it. Then kills the first process that still has the service's
  /// name (ProcClass::Kill, without a pause: a script that does not wait for its service to end gives it no time).
  /// Returns the result of Kill if there was such a process, otherwise whether the script could be run; this is also
  /// true if nobody may execute it. If true, marks the service as not running.
  /// False, nothing done: no name, no script.
  /// False, mark unchanged: out of memory; the script may have run.
  /// If `ps` cannot be run, remaining processes are not seen, and true does not mean that the service has ended.
  bool Stop(long timeout);

  /// Runs the script with "restart" if anybody may execute it. Returns whether a process with the service's name exists
  /// afterwards. The mark stays. Returns false and runs nothing if the service is not marked as running, or there is no
  /// script. Also returns false if the shell could not be started.
  bool Restart(long timeout1, long timeout2);

  /// Return the name, the name for display (the same), the path of the script, and the script's own description ("" if
  /// it has none).
  std::string GetName() const;
  std::string GetDisplayName() const;
  std::string GetFileName() const;
  std::string GetDescription() const;

  /// Returns the mark left by the last reading of the table, Start or Stop. Does not look at the processes again.
  bool IsRunning() const;

  /// Returns whether the service is started with the system: in general (also for a negative level), or in run level 0
  /// to 6. False for 7 and above.
  bool GetAutomatic() const;
  bool GetAutomatic(int level) const;

  /// Sets the result of GetAutomatic() until the table is read again. NOTHING IS CHANGED IN THE SYSTEM, nor for the run
  /// levels. Returns false if there is no name.
  bool SetAutomatic(bool on);
  /// Changes nothing. Returns true for every level up to 6, including negative ones.
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

/// The table of services, in the order of the directories and, in each directory, of the file names of the scripts. The
/// operations are virtual hooks: they call each other through the virtual table, and their order is part of the
/// interface. A subclass can use this to read other directories.
///
/// A query to an empty table reads it first; a filled table is not read again. Pointers to entries belong to the table
/// and are valid until the next Update, Clear or GetDaemonInfo.
class ZELVANE_API SvcManager {
 public:
  SvcManager();
  SvcManager(SvcManager const&) = delete;
  SvcManager& operator=(SvcManager const&) = delete;

  /// Appends the services of one directory, named with its trailing "/": everything in it except directories,
  /// executable or not. The service name is the file name without a leading "rc." and without the last "." and what
  /// follows it: "rc.inetd" is inetd, "x.y.sh" is x.y. Returns false if the directory may not be entered or read;
  /// otherwise whether the table now has any service, from any directory. When memory runs out, returns false and
  /// appends nothing.
  virtual bool GetDaemonInfo(std::string const& dir);

  /// Returns the script's description: the text after the colon in the first comment line that begins with
  /// "description" (in upper or lower case) and has a colon. A description that ends in a backslash continues in the
  /// next comment line; the parts are joined without the backslash, and no blank is added. Returns "" if there is none,
  /// or if `path` cannot be read or is not a regular file: devices and FIFOs are not opened. The script is read only to
  /// the end of its description. A line longer than 1 MiB, or a longer description, ends the search; the result is the
  /// text found before.
  virtual std::string GetDaemonDescr(std::string const& path);

  /// Sets the results of GetAutomatic, in general and for all run levels: true for a script directly in
  /// "/usr/local/etc/rc.d/" that anybody may execute, false for all others. Scripts in the other directories are
  /// started through links elsewhere, which are not examined.
  virtual void GetDaemonAuto(SvcClass& svc, std::string const& path);

  virtual ~SvcManager();

  /// Reads the table again: from "/etc/init.d/" or, if that has no service, from both "/etc/rc.d/" and
  /// "/usr/local/etc/rc.d/". Returns whether there are any services. When memory runs out, returns false with an empty
  /// table.
  virtual bool Update();
  /// Empties the table: the next query reads it again.
  virtual void Clear();
  /// Returns the number of entries.
  virtual unsigned long GetSvcCount();
  /// Returns the entry at `index`, counted from 0; null if there is none.
  virtual SvcClass* GetSvcByIndex(unsigned long index);
  /// Returns the first entry with that name, byte for byte; null if there is none, or for a null name.
  virtual SvcClass* GetSvcByName(char const* name);
  SvcClass* GetSvcByName(std::string const& name);
  /// Returns IsRunning() of that entry; false if there is none.
  virtual bool IsRunning(char const* name);
  bool IsRunning(std::string const& name);

 private:
  ZELVANE_HIDDEN bool AppendServices(std::string const& dir);

  std::vector<SvcClass> table_;
  bool outOfMemory_ = false;  // in the last Update, or in a GetDaemonInfo since
};

#endif
