#!/bin/bash
# Shows the library's main jobs on real files, in three acts of one screen each: change the settings of a hand-edited
# installation, with every other line unchanged byte for byte; build and change a network; read a month of mains
# failures from an event log, and show it as a page for a browser. Works on a copy; the page is kept.
# Usage: tools/demo.sh PATH-OF-ZELCTL
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
# The output is already UTF-8: in any locale, nothing may convert it again.
export LC_ALL=C

act() { printf '\n\033[1m%s\033[0m\n' "$*"; }
say() { printf '\033[1m$\033[0m %s\n' "$*"; }
zelctl() { "$zelctl" "$@"; }
run() {
  say "zelctl $*"
  zelctl "$@"
}
# The differing lines, with Latin-1 as UTF-8 and a carriage return as ^M.
readable() { iconv -f latin1 -t utf-8 "$1" | sed 's/\r$/^M/'; }
changes() {
  printf '\033[36m%s\033[0m\n' "$1"
  # Exit code 1 means that they differ; anything above is a failure.
  diff --unchanged-line-format= --old-line-format=$'\033[31m- %L\033[0m' --new-line-format=$'\033[32m+ %L\033[0m' \
    <(readable "before/$1") <(readable "root/$1") || [ $? -eq 1 ]
}

act 'Settings: five lines change, every other byte of the hand-kept files stays'
fields=(popup popupInterval shutMessage mailPassword langId)
run shutdown show --dir root --utf8 "${fields[@]}"
printf 'nova senha\n' > password.txt
say "zelctl shutdown set --dir root --utf8 popup=on popupInterval=30 langId=1 mailPassword=- \\
    shutMessage='Salve já! %c desliga em %r s.' < password.txt"
zelctl shutdown set --dir root --utf8 popup=on popupInterval=30 langId=1 mailPassword=- \
  shutMessage='Salve já! %c desliga em %r s.' < password.txt
say 'diff before root'
changes upscli.cfg
changes home/.zelvane
run shutdown show --dir root --utf8 --show-password "${fields[@]}"

act "A company's network: built, a computer's address changed, a group removed with all that is below it"
browse() { zelctl browse add "$@" --file root/zelbrws.cfg --utf8 >> identifiers; }
say 'zelctl browse add group|computer|ups ... --file root/zelbrws.cfg   (9 entries)'
browse group Matriz
browse group Servidores 1
browse group Recepção 1
browse computer correio 192.168.0.10 2
browse computer arquivos 192.168.0.11 2
browse computer balcão 192.168.0.50 3
browse ups 'Rack 3 kVA' 1 7
browse ups 'Rack 1 kVA' 2 8
browse ups 'Mesa 600 VA' 3
run browse tree root/zelbrws.cfg --utf8
run browse edit computer 3 address=10.0.0.50 --file root/zelbrws.cfg
run browse remove group 2 --yes --file root/zelbrws.cfg
run browse tree root/zelbrws.cfg --utf8

act 'When did the mains fail? A month of events: code 1 is "Mains failed", 2 "Mains back", 4 "Shutdown ordered"'
run log count root/logevt.rgt --code 4
run log outages root/logevt.rgt --start 1 --end 2 --by day
run log outages root/logevt.rgt --start 1 --end 2 --last 3
run status --root root || [ $? -eq 1 ]  # 1: something needs attention
page=$(mktemp -d)/report.html
run report --root root --out "$page"
printf "\nOpen file://%s in a browser.\n" "$page"
