#!/usr/bin/env bash
# widths.sh HTML: opens reference pages in a real browser with a phone's width. No page may be wider than the window,
# and the page tree must be hidden.
set -euo pipefail
html=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for page in index cfgclass_8h classCfgClass shutsrvconfig_8h zelvane_cfg md_docs_reliability; do
  cat >"$work/frame.html" <<TEXT
<iframe width=390 height=800 src="file://$html/$page.html"></iframe>
<script>
onload = () => {
  const page = frames[0].document, tree = page.getElementById("side-nav");
  document.body.dataset.seen = page.documentElement.scrollWidth + " in " + page.documentElement.clientWidth + ", " + (tree.offsetWidth ? "tree" : "folded");
};
</script>
TEXT
  seen=$(HOME=$work chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --allow-file-access-from-files \
    --user-data-dir="$work/profile" --virtual-time-budget=5000 --dump-dom "file://$work/frame.html" 2>/dev/null |
    grep -o 'data-seen="[^"]*"' || true)
  if [[ ! $seen =~ \"([0-9]+)\ in\ ([0-9]+),\ folded ]] || [ "${BASH_REMATCH[1]}" -gt "${BASH_REMATCH[2]}" ]; then
    echo "widths.sh: $page in a window of 390: ${seen:-nothing measured}" >&2
    exit 1
  fi
done
