#!/usr/bin/env bash
# stateless.sh LIBRARY: checks that threads with separate objects share no state. The library may have no variable
# except the root that a program has set, and may call no C function that returns its result in a
# static buffer.
set -euo pipefail
variables=$(nm -f sysv "$1" | awk -F'[ |]+' '$NF ~ /^\.t?(data|bss)$/ {print $1}' |
  grep -vE '^(DW\.ref\.|__dso_handle|__TMC_END__|completed\.|__(gcov|llvm)|_ZN12_GLOBAL__N_1L?6g_root(B5cxx11)?E$)' || true)
shared=$(nm -D --undefined-only "$1" | awk '{sub(/@.*/, "", $2); print $2}' |
  grep -xE '(local|gm|c|asc)time|strtok|strerror|s?rand(om)?|getpw(nam|uid)|getgr(nam|gid)|getlogin|ttyname|tmpnam|setlocale|(un)?setenv|putenv' || true)
[ -z "$variables$shared" ] || { printf 'variables: %s\nfunctions with one buffer: %s\n' "$variables" "$shared" && exit 1; }
