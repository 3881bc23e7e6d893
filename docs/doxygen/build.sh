#!/usr/bin/env bash
# build.sh VERSION OUT: builds the reference from headers, pages and manual as OUT/html. Fails on any warning, and if
# the page of a header lacks the header's overview.
set -euo pipefail
cd "$(dirname "$0")/../.."
out=$2
mkdir -p "$out/manual"

# Converts a manual page to a reference page, zelvane-cfg.5 to zelvane_cfg. Page and header names become links.
for page in man/*.[35]; do
  section=${page##*.}
  title=$(basename "$page" ".$section")
  name=${title//[.-]/_}
  mandoc -T html -O fragment "$page" |
    sed -E -e '/<table class="(head|foot)">/,/<\/table>/d' \
      -e 's#<a class="Xr">(zelvane[-.]([a-z]+)[(]5[)])</a>#<a class="Xr" href="zelvane_\2.html">\1</a>#g' \
      -e 's#<a class="In">(zelvane/([a-z]+/)?([a-z0-9]+)[.]h)</a>#<a class="In" href="\3_8h.html">\1</a>#g' >"$out/manual/$name.html"
  printf '# %s(%s) {#%s}\n@htmlinclude %s.html\n' "$title" "$section" "$name" "$name" >"$out/manual/$name.md"
done

ZELVANE_VERSION=$1 ZELVANE_DOCS=$out doxygen docs/doxygen/Doxyfile
docs/doxygen/overviews.py "$out/html"
if grep -l '@ref' "$out"/html/*.html; then
  echo "build.sh: links.sed made a link where none is possible: in a block of code" >&2
  exit 1
fi
