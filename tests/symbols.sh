#!/usr/bin/env bash
# symbols.sh LIBRARY [--update]: compares the names that the built library exports with abi/symbols.txt. A missing or
# new name changes the ABI and must be reviewed: --update writes the list again.
set -euo pipefail
list=$(dirname "$0")/../abi/symbols.txt
# Version nodes are not functions. Some names are mangled differently on 32 bits, so the list is for 64 bits. The
# complete-object constructor of an abstract class cannot be called, and clang does not emit it.
abstract='^_ZN(11CipherClass|11ClassBase64|13ProgressClass|9HashClass)C1E'
exported() { nm -D --defined-only "$1" | awk '$2 != "A" {print $3}' | grep -vE "$abstract" | LC_ALL=C sort; }
if [ "${2:-}" = --update ]; then
  exported "$1" >"$list"
elif ! difference=$(diff -u "$list" <(exported "$1") 2>&1); then
  printf 'exported names differ from abi/symbols.txt (- lost, + new):\n%s\n' "$difference"
  exit 1
fi
