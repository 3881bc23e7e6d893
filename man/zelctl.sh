#!/bin/sh
# zelctl.sh ZELCTL TEMPLATE: the manual page of zelctl, with the commands that the built one has.
set -eu
commands=$("$1" help | awk '
  function rest() { $1 = ""; sub(/^ +/, ""); return $0 }
  function close_list() { if (open) print ".El"; open = 0 }
  /^`/ || /^$/ { next }
  /^ / { if (!open) print ".Bl -tag -width defaults"; open = 1; print ".It Cm " $1; print rest(); next }
  { close_list(); print ".Ss " $1; print rest() }
  END { close_list() }')
[ -n "$commands" ]
awk -v commands="$commands" '$0 == "@COMMANDS@" { print commands; next } { print }' "$2"
