#!/usr/bin/env bash
# run.sh PREFIX WORKDIR: builds the consumers against the tree installed at PREFIX, through pkg-config and through CMake,
# and runs each. Every installed header must also compile alone.
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

while read -r header; do
  printf '#include <%s>\n' "$header" >"$work/alone.cpp"
  g++ -std=c++17 "${strict[@]}" -fsyntax-only "$work/alone.cpp" -I"$prefix/include"
  clang++ -std=c++20 "${strict[@]}" -fsyntax-only "$work/alone.cpp" -I"$prefix/include"
done < <(cd "$prefix/include" && find zelvane -name '*.h')
printf '#include <zelvane/zelvane.h>\n' >"$work/alone.c"
gcc -std=c99 "${strict[@]}" -fsyntax-only "$work/alone.c" -I"$prefix/include"
clang -std=c11 "${strict[@]}" -fsyntax-only "$work/alone.c" -I"$prefix/include"

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
for program in c_zelvane c_static cxx_zelvane cxx_static; do try "$work/cmake/$program"; done
