#!/usr/bin/env bash
# examples.sh FOLDER REDIRECT [LIBRARY]: runs the built examples in an installation of their own. The one in Python needs
# a library of the interpreter's word size, without sanitizers: it runs if there is one.
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
LC_ALL=C "$examples/events.py" "$work/logevt.rgt" "$3" >"$work/said"
same events.py <<'TEXT'
3 events, the last one on 07 March 2026 at 22:34:30
  event 301: 1 time
  event 300: 1 time
  event 302: 1 time
TEXT
