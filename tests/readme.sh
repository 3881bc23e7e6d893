#!/usr/bin/env bash
# readme.sh ZELCTL LIBRARY: what README.md shows, tried as its readers would: the commands with their answers, on a copy
# of the demo's files, and the programs in C and C++, built against this tree.
# readme.sh --install WORKDIR: the commands of the section "Install", with WORKDIR in the place of the system.
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)

# The lines of all blocks of one kind.
blocks() { awk -v kind="\`\`\`$1" '$0 == "```" { on = 0 } on { print } $0 == kind { on = 1 }' "$source/README.md"; }

if [ "$1" = --install ]; then
  mkdir -p "$2"
  cd "$source"
  blocks sh | sed -e 's/^sudo //' -e '/^apt-get\|^ldconfig/d' -e "s|build/plain|$2/build|; s|--install .*|& --prefix $2/usr|" |
    bash -euxo pipefail
  [ -e "$2/usr/include/zelvane/zelvane.h" ]
  exit
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$source/tests/fixtures/demo-root" "$work/root"
cd "$work/root"
PATH=$(dirname "$1"):$PATH
export PATH HOME=$work/root/home COLUMNS=80 LC_ALL=C.UTF-8
while IFS= read -r line; do
  printf '%s\n' "$line"
  if [ "${line:0:2}" = '$ ' ]; then bash -c "${line:2}" 2>&1 </dev/null || true; fi
done < <(blocks console | grep '^\$ ') >"$work/answers"
diff -u <(blocks console) "$work/answers"

library=(-I"$source" -L"$(dirname "$2")" "-Wl,-rpath,$(dirname "$2")")
for kind in c cpp; do
  blocks "$kind" >"$work/program.$kind"
  "$([ "$kind" = c ] && echo cc || echo c++)" -Wall -Wextra -Werror "$work/program.$kind" -o "$work/program" "${library[@]}" -lzelvane
  "$work/program"
  grep -qx 'DELAY = 30' upscli.cfg
  cp "$source/tests/fixtures/demo-root/upscli.cfg" upscli.cfg
done
