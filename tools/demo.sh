#!/bin/bash
# The library's main job on real files: the shutdown settings of a hand-kept installation are changed, and every line
# that was not meant stays byte for byte what it was. Then a month of mains failures, from its event log. Works on a
# copy. Usage: tools/demo.sh PATH-OF-ZELCTL
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

# A small company's network: built, a computer's address changed, a group removed with all that is below it.
browse() { zelctl browse "$@" --file root/zelbrws.cfg --utf8 >> identifiers; }
say 'zelctl browse add group|computer|ups ... --file root/zelbrws.cfg   (9 entries)'
browse add group Matriz
browse add group Servidores 1
browse add group Recepção 1
browse add computer correio 192.168.0.10 2
browse add computer arquivos 192.168.0.11 2
browse add computer balcão 192.168.0.50 3
browse add ups 'Rack 3 kVA' 1 7
browse add ups 'Rack 1 kVA' 2 8
browse add ups 'Mesa 600 VA' 3
say 'zelctl browse tree root/zelbrws.cfg --utf8'
zelctl browse tree root/zelbrws.cfg --utf8
say 'zelctl browse edit computer 3 address=10.0.0.50 --file root/zelbrws.cfg'
browse edit computer 3 address=10.0.0.50
say 'zelctl browse remove group 2 --file root/zelbrws.cfg'
zelctl browse remove group 2 --file root/zelbrws.cfg
say 'zelctl browse tree root/zelbrws.cfg --utf8'
zelctl browse tree root/zelbrws.cfg --utf8

# The month: code 1 is "mains failed", 2 "mains back".
run() {
  say "zelctl $*"
  zelctl "$@"
}
run log chart root/logevt.rgt --code 1
run log time root/logevt.rgt --start 1 --end 2 --from 2005-03-17 --to 2005-03-18
run log show root/logevt.rgt --code 4 --last 3
