#!/usr/bin/env bash
# run.sh BUILD [--quick]: runs every benchmark program in BUILD/bench and prints the medians beside their peers.
set -euo pipefail
build=$1
shift
repetitions=5
[ "${1:-}" = --quick ] && repetitions=1
for program in "$build"/bench/bench_*; do
  [ -x "$program" ] && [ -f "$program" ] || continue
  "$program" --benchmark_repetitions=$repetitions --benchmark_min_time=0.2 --benchmark_out_format=json \
    --benchmark_out="$program.json" >/dev/null
done
"$(dirname "$0")/table.py" "$build"/bench/bench_*.json
