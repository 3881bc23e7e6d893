#!/usr/bin/env bash
# run.sh BUILD [--quick] [--keep FOLDER]: runs every benchmark program in BUILD/bench and prints the medians beside
# their peers. --keep also writes the table and the plot of docs/performance.md there.
set -euo pipefail
here=$(dirname "$0")
build=$1
shift
repetitions=5
keep=
while [ $# -gt 0 ]; do
  case "$1" in
    --quick) repetitions=1 ;;
    --keep) keep=$2 && shift ;;
    *) echo "usage: $0 BUILD [--quick] [--keep FOLDER]" >&2 && exit 2 ;;
  esac
  shift
done
for program in "$build"/bench/bench_*; do
  [ -x "$program" ] && [ -f "$program" ] || continue
  "$program" --benchmark_repetitions=$repetitions --benchmark_min_time=0.1 --benchmark_out_format=json \
    --benchmark_out="$program.json" >/dev/null
done
"$here/table.py" "$build"/bench/bench_*.json
machine() {
  printf 'Measured on %s: %s, %s processors; Linux %s, %s.\n\n' "$(date +%F)" \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" "$(uname -r | cut -d- -f1)" \
    "$(${CXX:-g++} --version | head -n 1)"
}
if [ -n "$keep" ]; then
  { machine; "$here/table.py" --markdown "$build"/bench/bench_*.json; } > "$keep/performance-table.md"
  "$here/plot.py" "$build"/bench/bench_cfg.json > "$keep/performance.svg"
fi
