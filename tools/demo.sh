#!/bin/bash
# The library's main job on real files: the shutdown settings of a hand-kept installation are changed, and every line
# that was not meant stays byte for byte what it was. Works on a copy. Usage: tools/demo.sh PATH-OF-ZELCTL
set -euo pipefail

[ $# -eq 1 ] || { echo "usage: $0 PATH-OF-ZELCTL" >&2; exit 2; }
zelctl=$(realpath "$1")
fixture=$(dirname "$(realpath "$0")")/../tests/fixtures/demo-root
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cp -R "$fixture" "$scratch/before"
cp -R "$fixture" "$scratch/root"
export HOME=$scratch/root/home
cd "$scratch"
# The answers are UTF-8 already: whatever the terminal's locale, nothing may touch their bytes again.
export LC_ALL=C

say() { printf '\n\033[1m$ %s\033[0m\n' "$*"; }
zelctl() { "$zelctl" "$@"; }
# Latin-1 as UTF-8, a carriage return as ^M.
readable() { iconv -f latin1 -t utf-8 "$1" | sed 's/\r$/^M/'; }
changes() {
  say "diff -U0 before/$1 root/$1"
  # 1 is "they differ"; anything above is a failure.
  diff -U0 --color=always --label "before/$1" --label "root/$1" \
    <(readable "before/$1") <(readable "root/$1") || [ $? -eq 1 ]
}

say 'zelctl shutdown show --dir root --utf8'
zelctl shutdown show --dir root --utf8

printf 'nova senha\n' > password.txt
say "zelctl shutdown set --dir root --utf8 popup=on popupInterval=30 langId=1 mailPassword=- \\
    shutMessage='Salve já! %c desliga em %r s.' < password.txt"
zelctl shutdown set --dir root --utf8 popup=on popupInterval=30 langId=1 mailPassword=- \
  shutMessage='Salve já! %c desliga em %r s.' < password.txt

changes upscli.cfg
changes home/.zelvane

say 'zelctl shutdown show --dir root --utf8 --show-password popup popupInterval shutMessage mailPassword langId'
zelctl shutdown show --dir root --utf8 --show-password popup popupInterval shutMessage mailPassword langId
