#!/usr/bin/env bash
# hardened.sh FILE...: checks that each file has relocations that are read-only from the start, and stack canaries.
set -euo pipefail
for file in "$@"; do
  readelf -dW "$file" | grep 'BIND_NOW\|Flags:.*NOW' >/dev/null || { echo "$file is bound lazily" && exit 1; }
  readelf -lW "$file" | grep GNU_RELRO >/dev/null || { echo "$file has writable relocations" && exit 1; }
  readelf -sW "$file" | grep __stack_chk_fail >/dev/null || { echo "$file has no stack protector" && exit 1; }
done
