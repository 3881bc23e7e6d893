/* A C program that uses only the installed headers and the library: reads a record, writes it, reads it back. */
#include <stdio.h>
#include <string.h>
#include <zelvane/zelvane.h>

int main(int argc, char** argv) {
  ShutSrvConfig config;
  if (argc != 2 || GetShutSrvConfig(NULL, NULL) != 0) return 1;
  if (GetShutSrvDefConfig(&config) != 1 || config.serverPort != 4375) return 2;
  config.cmdDelay = 7;
  config.actions.popup = 1;
  strcpy(config.mailPassword, "secret");
  if (SetShutSrvConfig(argv[1], &config) != 1) return 3;
  memset(&config, 0, sizeof config);
  if (GetShutSrvConfig(argv[1], &config) != 1) return 4;
  if (config.cmdDelay != 7 || !config.actions.popup || strcmp(config.mailPassword, "secret") != 0) return 5;
  puts("C consumer: ok");
  return 0;
}
