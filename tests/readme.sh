#!/usr/bin/env bash
# readme.sh ZELCTL LIBRARY [PACKAGES]: runs the blocks of README.md. The commands must print the output shown, on a copy
# of the demo's files. The programs in C, C++ and, with PACKAGES, the directory of the built Python package, in Python
# must work.
# readme.sh --install WORKDIR: runs the shell commands of README.md, with WORKDIR in place of the system.
set -euo pipefail
source=$(cd "$(dirname "$0")/.." && pwd)

# The lines of all blocks of one kind.
blocks() { awk -v kind="\`\`\`$1" '$0 == "```" { on = 0 } on { print } $0 == kind { on = 1 }' "$source/README.md"; }

if [ "$1" = --install ]; then
  mkdir -p "$2"
  blocks c >"$2/program.c"
  blocks cpp >"$2/program.cpp"
  cd "$source"
  PKG_CONFIG_PATH=$2/usr/lib/pkgconfig:$2/usr/lib/$(cc -print-multiarch)/pkgconfig
  export PKG_CONFIG_PATH
  blocks sh | sed -e 's/^sudo //' -e '/^apt-get\|^ldconfig/d' -e "s|build/plain|$2/build|; s|--install .*|& --prefix $2/usr|" \
    -e "s|program|$2/&|; s|zelvane)$|& -o $2/program|" | bash -euxo pipefail
  [ -x "$2/program" ]
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

[ -n "${3-}" ] || exit 0
PYTHONPATH=$3 /usr/bin/python3 -B - <<<"$(blocks python)" >"$work/answers"
grep -qx '74 events, mains off for 2:16:54' "$work/answers"
grep -qx 'DELAY = 30' upscli.cfg
