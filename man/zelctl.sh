#!/bin/sh
# zelctl.sh ZELCTL TEMPLATE: prints the manual page of zelctl, with the commands of the built one.
set -eu
commands=$("$1" help --manual)
[ -n "$commands" ]
while IFS= read -r line; do
  if [ "$line" = @COMMANDS@ ]; then line=$commands; fi
  printf '%s\n' "$line"
done < "$2"
