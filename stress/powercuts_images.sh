#!/usr/bin/env bash
# Power failures on real file systems. Usage: powercuts_images.sh ZELVANE_STRESS
# Each case runs on its own mounted image. The image file is copied while mounted, 1 s and 7 s after the last reported
# success, with no sync in between, so the copy contains what the kernel had written by then. The copies are then
# mounted and checked.
set -euo pipefail

stress=$1
jobs=4
size=320M # the minimum of mkfs.xfs is 300 MB

skip() {
  echo "power cut: $1: skipped: $2"
}
[ "$(id -u)" -eq 0 ] || { skip "real file systems" "takes root"; exit 0; }
[ -e /dev/loop-control ] || { skip "real file systems" "no loop devices here"; exit 0; }

work=$(mktemp -d)
clean() {
  wait
  for folder in "$work"/*/mounted; do mountpoint -q "$folder" && umount "$folder"; done
  rm -rf "$work"
}
trap clean EXIT

make_disk() { # SYSTEM FILE
  truncate -s "$size" "$2"
  case "$1" in
    ext4) mkfs.ext4 -q "$2" ;;
    xfs) mkfs.xfs -q "$2" ;;
    btrfs) mkfs.btrfs -q "$2" >/dev/null ;; # still prints a lot
  esac
}

# Whether such a disk can be mounted here.
can_mount() { # SYSTEM
  local folder=$work/$1.probe
  mkdir -p "$folder/mounted"
  make_disk "$1" "$folder/disk" && mount -o loop "$folder/disk" "$folder/mounted" && umount "$folder/mounted"
}

judge() { # SYSTEM NUMBER SECONDS
  local folder=$work/$1.$2 options=loop
  [ "$1" != xfs ] || options=loop,nouuid
  mount -o "$options" "$folder/after$3" "$folder/mounted" || { echo "cannot be mounted" && return; }
  "$stress" powercuts-judge "$folder/mounted/w/" "$2" || true
  umount "$folder/mounted"
}

one_case() { # SYSTEM NUMBER NAME
  local folder=$work/$1.$2 seconds
  mkdir -p "$folder/mounted"
  make_disk "$1" "$folder/disk"
  mount -o loop "$folder/disk" "$folder/mounted"
  mkdir "$folder/mounted/w"
  if "$stress" powercuts-write "$folder/mounted/w/" "$2"; then
    sleep 1
    cp --sparse=always "$folder/disk" "$folder/after1"
    sleep 6
    cp --sparse=always "$folder/disk" "$folder/after7"
  fi
  umount "$folder/mounted"
  for seconds in 1 7; do
    printf '%-6s %-28s %s s: %s\n' "$1" "$3" "$seconds" "$(judge "$1" "$2" "$seconds")"
  done | tee "$folder/result"
  rm -f "$folder/disk" "$folder"/after*
}

failed=0
for system in ext4 xfs btrfs; do
  command -v "mkfs.$system" >/dev/null || { skip "$system" "mkfs.$system is not installed"; continue; }
  can_mount "$system" >/dev/null 2>&1 || { skip "$system" "cannot be mounted from a file here"; continue; }
  while read -r number name; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n; done
    one_case "$system" "$number" "$name" </dev/null &
  done < <("$stress" powercuts-cases)
  wait
  all=$(cat "$work/$system".*/result | wc -l)
  kept=$(cat "$work/$system".*/result | grep -c ' s: kept$' || true)
  echo "power cut: $system: $kept of $all kept what had been told"
  [ "$kept" -eq "$all" ] || failed=1
done
exit "$failed"
