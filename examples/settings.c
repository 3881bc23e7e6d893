/* Prints the shutdown settings of this computer, changes the delay, and lists the known servers.

     settings [SECONDS]      in the installation root; writes upscli.cfg there if SECONDS is given */
#include <stdio.h>
#include <stdlib.h>
#include <zelvane/zelvane.h>

/* The files are Latin-1, terminals expect UTF-8: at most 512 bytes for the texts of the settings. */
static char const* Shown(char const* latin1) {
  static char utf8[512];
  Latin1ToUtf8(latin1, utf8, sizeof utf8);
  return utf8;
}

static int ChangeDelay(ShutSrvConfig* settings, char const* seconds) {
  char* end;
  settings->cmdDelay = (uint32_t)strtoul(seconds, &end, 10);
  if (seconds[0] < '0' || seconds[0] > '9' || *end != '\0') return 0;
  /* Null is the installation root. All keys of the struct are written. */
  if (!SetShutSrvConfig(NULL, settings)) return 0;
  printf("The command now waits %u seconds.\n", (unsigned)settings->cmdDelay);
  return 1;
}

static void ListServers(void) {
  ServerListItem server;
  unsigned int i, key;
  void* list = OpenServerList();
  int const count = GetServerListCount(list);
  printf("%d known servers:\n", count);
  for (i = 0; i < (unsigned int)count; i++)
    if (GetServerListItem2(list, i, &server, &key))
      printf("  %u. %s at %s, port %d\n", key, server.serverName, server.serverAddress, (int)server.serverPort);
  CloseServerList(list);
}

int main(int argc, char** argv) {
  ShutSrvConfig settings;
  if (!GetShutSrvConfig(NULL, &settings)) {
    fputs("The shutdown settings cannot be read.\n", stderr);
    return 1;
  }
  printf("This computer listens to %s (%s).\n", settings.serverName, settings.serverAddress);
  printf("At a shutdown it waits %u seconds and runs \"%s\".\n", (unsigned)settings.cmdDelay, Shown(settings.cmdLine));
  printf("Its users read \"%s\".\n", Shown(settings.shutMessage));
  if (argc > 1 && !ChangeDelay(&settings, argv[1])) {
    fputs("SECONDS is not a number, or upscli.cfg cannot be written.\n", stderr);
    return 1;
  }
  ListServers();
  return 0;
}
