#!/usr/bin/env bash
# check.sh LIBRARY [--update]: compares the types and virtual tables of the built library (with debug information) with
# those of the release in abi/libzelvane.abi. Every difference must be reviewed: --update writes the description again.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
describe() {
  abidw --suppressions "$here/abidiff.suppr" --headers-dir "$here/../zelvane" --no-show-locs --no-comp-dir-path \
    --no-corpus-path --drop-undefined-syms --no-elf-needed --type-id-style hash "$1" |
    sed "s|path='[^']*/zelvane/|path='zelvane/|"
}
if [ "${2:-}" = --update ]; then
  describe "$1" >"$here/libzelvane.abi"
  exit
fi
now=$(mktemp)
trap 'rm -f "$now"' EXIT
describe "$1" >"$now"
abidiff --no-default-suppression "$here/libzelvane.abi" "$now"
