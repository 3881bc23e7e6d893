#!/usr/bin/env bash
# Runs every fuzzer for SECONDS, with as many in parallel as there are processors:
# fuzz/run.sh BUILD_DIRECTORY SECONDS [SEED]. With a seed, an empty corpus always leads to the same inputs.
# Findings stay in BUILD_DIRECTORY/found; the corpus stays in BUILD_DIRECTORY/corpus for the next run.
set -euo pipefail
build=$1
seconds=$2
seed=${3:-0}  # 0: a different one each time
here=$(cd "$(dirname "$0")" && pwd)
# The library syncs the input files, so they are in memory if programs can be executed there.
if [ -w /dev/shm ] && ! findmnt -no OPTIONS /dev/shm | grep -q noexec; then export TMPDIR=/dev/shm; fi
export here build seconds seed
one() {
  mkdir -p "$build/corpus/$1" "$build/found"
  "$build/fuzz/fuzz_$1" -seed="$seed" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=1024 \
    -print_final_stats=1 -artifact_prefix="$build/found/$1-" "$build/corpus/$1" "$here/seeds/$1" >"$build/$1.log" 2>&1 ||
    { tail -n 40 "$build/$1.log" && exit 255; }
  printf 'fuzz: %-10s %10d inputs in %d s, nothing found\n' "$1" \
    "$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$1.log")" "$seconds"
}
export -f one
find "$here/seeds" -mindepth 1 -maxdepth 1 -printf '%f\n' | sort | xargs -P "$(nproc)" -I{} bash -c 'one {}'
