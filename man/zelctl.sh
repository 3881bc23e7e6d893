#!/bin/sh
# zelctl.sh ZELCTL TEMPLATE: the manual page of zelctl, with the commands that the built one has.
set -eu
commands=$("$1" help --manual)
[ -n "$commands" ]
while IFS= read -r line; do
  if [ "$line" = @COMMANDS@ ]; then line=$commands; fi
  printf '%s\n' "$line"
done < "$2"
