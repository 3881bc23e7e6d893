#!/usr/bin/env bash
# completion.sh ZELCTL SCRIPT: what the completion of the shell offers behind some words.
set -euo pipefail
# shellcheck disable=SC1090
. "$2"

offers() {
  local expected=$1 found
  shift
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _zelctl
  found=${COMPREPLY[*]}
  [ "$found" = "$expected" ] && return
  printf 'behind "%s": %s instead of %s\n' "${*:2}" "$found" "$expected"
  exit 1
}

offers 'cfg' "$1" cf
offers 'list get set unset lint --help' "$1" cfg ''
offers 'lint' "$1" cfg lin
offers '--json' "$1" cfg lint --j
offers '--json' "$1" cfg --json lint upscli.cfg --j
offers 'get' "$1" help cfg g
offers '' "$1" cfg lint upscli
offers '--smallest' "$1" browse add group Office --sm
offers '' "$1" nothing ''
