/* Uses the plain C functions in a program whose classes have the library's names (own_classes.cpp). */
#define _POSIX_C_SOURCE 200809L
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "callers/check.h"
#include "zelvane/zelvane.h"

static char path[99];

static char const* In(char const* directory, char const* name) {
  snprintf(path, sizeof path, "%s/%s", directory, name);
  return path;
}

static void Logs(char const* directory) {
  reg_proglist entry = {2000000000};
  void* const list = OpenProgList(In(directory, "schedule"));
  CHECK(AddProgListReg(list, &entry) == 1);
  CHECK(GetProgListRegCount(list) == 1);
  CHECK(CloseProgList(list) == 1);
  void* const log = LogReaderOpen(path); /* a file, but not a log */
  LogReaderRegCount(log);
  LogReaderClose(log);
  CHECK(remove(path) == 0);
}

static void Lists(char const* directory) {
  BrwsGroupRec group = {0, "g", -1};
  unsigned long id = 0;
  void* const list = OpenBrwsList(In(directory, "browse"));
  CHECK(AddBrwsGroup(list, &group, true, &id, true) == 1);
  CHECK(CloseBrwsList(list) == 1);
  CHECK(remove(path) == 0);
}

int main(void) {
  char directory[] = "/tmp/zelvane-own-names-XXXXXX";
  int running = 7;
  CHECK(mkdtemp(directory) != NULL);
  Logs(directory);
  Lists(directory);
  CHECK(rmdir(directory) == 0);
  CHECK(GetProcStatus("no such process", &running));
  CHECK(running == 0);
  AlreadyRunning();
  CloseSvcManager(OpenSvcManager());
  return 0;
}
