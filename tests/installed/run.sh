#!/usr/bin/env bash
# run.sh PREFIX WORKDIR: builds the consumers against the tree installed at PREFIX, with pkg-config and with CMake, and
# runs each. Every installed header must also compile on its own.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
prefix=$1
mkdir -p "$2"
work=$(cd "$2" && pwd)
libdir=$(dirname "$(find "$prefix" -name zelvane.pc -printf '%h\n')")
export PKG_CONFIG_PATH=$libdir/pkgconfig LD_LIBRARY_PATH=$libdir
read -ra flags <<<"$(pkg-config --cflags --libs zelvane)"
strict=(-Wall -Wextra -Wpedantic -Werror)

try() {
  mkdir -p "$work/home"
  HOME=$work/home "$@" "$work"
}

for cc in gcc clang; do
  "$cc" -std=c11 "${strict[@]}" "$here/consumer.c" -o "$work/c11_$cc" "${flags[@]}"
  try "$work/c11_$cc"
done
for cxx in g++ clang++; do
  "$cxx" -std=c++17 "${strict[@]}" "$here/consumer.cpp" -o "$work/cxx17_$cxx" "${flags[@]}"
  try "$work/cxx17_$cxx"
done

# Each header on its own, in every language that it supports; those with a C section support C.
c_headers=$(cd "$prefix/include" && grep -rlE '^ZELVANE_C_BEGIN$' zelvane | sort)
alone() {
  local compiler=$1 standard=$2 language=$3
  shift 3
  printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} sh -c "printf '#include <{}>\nextern int zelvane_alone;\n' |
    $compiler -std=$standard ${strict[*]} -I'$prefix/include' -fsyntax-only -x $language -"
}
mapfile -t all < <(cd "$prefix/include" && find zelvane -name '*.h' | sort)
read -ra for_c <<<"zelvane/zelvane.h zelvane/export.h ${c_headers//$'\n'/ }"
for cxx in g++ clang++; do
  alone "$cxx" c++17 c++ "${all[@]}"
  alone "$cxx" c++20 c++ "${all[@]}"
done
for cc in gcc clang; do
  alone "$cc" c99 c "${for_c[@]}"
  alone "$cc" c11 c "${for_c[@]}"
done

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
for program in c_zelvane c_static cxx_zelvane cxx_static; do try "$work/cmake/$program"; done
