#!/usr/bin/env bash
# run.sh BUILD [--quick] [--keep DIRECTORY]: runs every benchmark of the programs in BUILD/bench and prints the medians
# next to those of the comparison libraries. Each benchmark has its own process, so that the heap left by one does not
# affect the next. --keep also writes the table and the plots of docs/performance.md to DIRECTORY.
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
    *) echo "usage: $0 BUILD [--quick] [--keep DIRECTORY]" >&2 && exit 2 ;;
  esac
  shift
done
runs=$build/bench/runs
rm -rf "$runs"
mkdir "$runs"
for program in "$build"/bench/bench_*; do
  [ -x "$program" ] && [ -f "$program" ] || continue
  number=100
  while read -r name; do
    "$program" --benchmark_filter="^${name//+/\\+}\$" --benchmark_repetitions=$repetitions --benchmark_min_time=0.1 \
      --benchmark_out_format=json --benchmark_out="$runs/$(basename "$program")-$number.json" >/dev/null 2>&1 </dev/null
    number=$((number + 1))
  done < <("$program" --benchmark_list_tests)
done
PYTHONPATH=$build/python /usr/bin/python3 "$here/python.py" "$build/tools/zelctl/zelctl" >"$runs/python.json"
"$here/table.py" "$runs"/*.json
machine() {
  printf '# Speed: the last run\n\nMeasured on %s: %s, %s processors; Linux %s, %s.\n\n' "$(date +%F)" \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" "$(uname -r | cut -d- -f1)" \
    "$(${CXX:-g++} --version | head -n 1)"
}
if [ -n "$keep" ]; then
  { machine; "$here/table.py" --markdown "$runs"/*.json; } > "$keep/performance-table.md"
  "$here/plot.py" "$runs"/bench_cfg-*.json > "$keep/performance.svg"
  "$here/plot.py" --ratios "$runs"/*.json > "$keep/performance-ratios.svg"
fi
