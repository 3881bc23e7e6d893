#!/usr/bin/env bash
# completion.sh ZELCTL SCRIPTS: tests the candidates of shell completion after some words. Tests fish too if it is
# installed; the script for zsh is only parsed.
set -euo pipefail
zelctl=$1 scripts=$2
here=$(dirname "$(readlink -f "$0")")
root=$here/fixtures/demo-root
# shellcheck disable=SC1091
. "$scripts/completion.bash"
cd "$root"

offers() {
  local expected=$1 found
  shift
  COMP_WORDS=("$zelctl" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _zelctl
  found=${COMPREPLY[*]}
  [ "$found" = "$expected" ] && return
  printf 'bash, after "%s": %s instead of %s\n' "$*" "$found" "$expected"
  exit 1
}

offers 'cfg' cf
offers 'list get set unset lint' cfg ''
offers 'lint' cfg lin
offers '--json' cfg lint --j
offers '--json' cfg --json lint upscli.cfg --j
offers 'get' help cfg g
offers 'upscli.cfg' cfg lint upscli
offers 'logevt.rgt' log outages --start 1 --end 2 loge
offers 'home' shutdown show --dir ho
offers 'upscli.cfg' b64 encode --file upscli.cfg upscl
offers '--smallest' browse add group Office --sm
offers 'popup= popupInterval=' shutdown set pop
offers 'on off' shutdown set popup = ''
offers 'on' shutdown set popupInterval = 30 popup = on
offers 'week weekday' log chart logevt.rgt --by we
offers 'safer-sk128' cipher decode --algorithm safer-sk1
offers '007' --root "$root" ups show 007
offers '' nothing ''

if command -v zsh > /dev/null; then zsh -n "$scripts/completion.zsh"; fi
if command -v fish > /dev/null; then
  home=$(mktemp -d)
  trap 'rm -rf "$home"' EXIT
  found=$(env -u XDG_CONFIG_HOME -u XDG_DATA_HOME HOME="$home" PATH=$(dirname "$zelctl"):$PATH fish --no-config -c "source '$scripts/completion.fish'
    complete -C 'zelctl cfg li'; complete -C 'zelctl cfg lint upscli'; complete -C 'zelctl shutdown set popup=o'" |
    cut -f 1 | LC_ALL=C sort | tr '\n' ' ')
  expected='lint list popup=off popup=on upscli.cfg '
  [ "$found" = "$expected" ] || { printf 'fish: %s instead of %s\n' "$found" "$expected"; exit 1; }
fi
