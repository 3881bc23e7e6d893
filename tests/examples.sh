#!/usr/bin/env bash
# examples.sh DIRECTORY REDIRECT [PACKAGES]: runs the built examples in an installation of their own, and the Python
# ones if PACKAGES, the directory of the built Python package, is given.
set -euo pipefail
built=$1
examples=$(cd "$(dirname "$0")/../examples" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work ZELVANE_TEST_SETTINGS=$work/zelvane.conf ASAN_OPTIONS=verify_asan_link_order=0
printf '[ZELVANE]\nPATH = %s\n' "$work" >"$work/zelvane.conf"
cat >"$work/upscli.cfg" <<'TEXT'
; the shutdown service
[SHUTSRV]
ZELSRV = tower;10.0.0.7;4375
[RUNCOMMAND]
DELAY = 5
CMDLINE = /bin/sync
[CLILIST]
1 = tower;10.0.0.7;4375
2 = cellar;10.0.0.9;4376
TEXT
printf '[POPUP]\nSHUTMESSAGE = S\363 mais %%r s at\351 o fim\n' >>"$work/upscli.cfg"

same() {
  diff -u - "$work/said" || { echo "of $1"; exit 1; }
}

LD_PRELOAD=$2 "$built/example_settings" 30 >"$work/said"
same settings <<'TEXT'
This computer listens to tower (10.0.0.7).
At a shutdown it waits 5 seconds and runs "/bin/sync".
Its users read "Só mais %r s até o fim".
The command now waits 30 seconds.
2 known servers:
  1. tower at 10.0.0.7, port 4375
  2. cellar at 10.0.0.9, port 4376
TEXT
grep -qx 'DELAY = 30' "$work/upscli.cfg"

"$built/example_loudlog" "$work/logevt.rgt" >"$work/said"
same loudlog <<'TEXT'
07/03/2026 22:30:00  event 300
07/03/2026 22:31:30  event 301
07/03/2026 22:33:00  event 300
07/03/2026 22:34:30  event 302
3 records are left in the log.
TEXT

[ $# -lt 3 ] && exit
export PYTHONPATH=$3 PYTHONDONTWRITEBYTECODE=1
/usr/bin/python3 "$examples/outages.py" "$examples/../tests/fixtures/demo-root/logevt.rgt" 2005-03 >"$work/outages"
head -n 3 "$work/outages" >"$work/said"
same outages.py <<'TEXT'
04 Mar 13:07:10  0:01:07
04 Mar 13:57:07  0:36:04
04 Mar 14:39:38  0:02:32
TEXT

/usr/bin/python3 "$examples/watch.py" "$work/upscli.cfg" 0.01 >"$work/said" &
watcher=$!
# Whether the line appears within ten seconds.
says() {
  for _ in $(seq 100); do
    grep -qF "$1" "$work/said" && return
    sleep 0.1
  done
  kill "$watcher"
  echo "watch.py does not say: $1"
  exit 1
}
says "watching $work/upscli.cfg"
LD_PRELOAD=$2 "$built/example_settings" 45 >/dev/null
says "[RUNCOMMAND] DELAY: '30' -> '45'"
kill "$watcher"
