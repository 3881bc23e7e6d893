#!/usr/bin/env bash
# symbols.sh LIBRARY [--update]: the names that the built library exports, compared with abi/symbols.txt. A lost or a new
# name is a change of the ABI and wants to be seen: --update writes the list anew.
set -euo pipefail
list=$(dirname "$0")/../abi/symbols.txt
# Version nodes are no functions; on 32 bits some names are mangled otherwise, so the list is that of 64 bits.
# Nobody can call the complete-object constructor of an abstract class, and clang makes none.
abstract='^_ZN(11CipherClass|11ClassBase64|13ProgressClass|9HashClass)C1E'
exported() { nm -D --defined-only "$1" | awk '$2 != "A" {print $3}' | grep -vE "$abstract" | LC_ALL=C sort; }
if [ "${2:-}" = --update ]; then
  exported "$1" >"$list"
elif ! difference=$(diff -u "$list" <(exported "$1") 2>&1); then
  printf 'exported names differ from abi/symbols.txt (- lost, + new):\n%s\n' "$difference"
  exit 1
fi
