#!/usr/bin/env bash
# report.sh ZELCTL ROOT PRELOAD: checks the page of `zelctl report` in a real browser. It must contain the numbers of
# `log outages` and no script, and fit windows of 1280, 390 and 320 pixels without horizontal scrolling. Pictures of
# both widths, light and dark, are kept in the directory REPORT_PICTURES, if that is set.
set -euo pipefail
zelctl=$1 root=$2 preload=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$root" "$work/demo-root"
cd "$work"

fail() { echo "report.sh: $*" >&2; exit 1; }
report() { TZ=UTC0 ZELVANE_TEST_NOW=1111910400 LD_PRELOAD=$preload "$zelctl" report --root "$1" --out "$1.html" >/dev/null; }
browse() {
  HOME=$work chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --hide-scrollbars \
    --user-data-dir="$work/profile" "$@" 2>/dev/null
}
# The visible text, without tags.
text_of() { sed -e 's/<style>.*//' -e '/^<\/style>/d' -e 's/<[^>]*>/ /g' -e 's/&#8211;/-/g' "$1" | tr -s ' \n' ' '; }
# A log with many months, one with many years, one with hostile texts, one without records.
site() {
  mkdir "$1"
  perl -e '
    my ($count, $step, $text) = @ARGV;
    for my $i (0 .. $count - 1) {
      my $begin = 1104537600 + $i * $step;
      print pack("l<vZ62l<vZ62l<vZ62", $begin, 1, "Mains failed", $begin + 30, 3, $text, $begin + 60 + $i * 7 % 4000, 2, "Mains back");
    }' "$2" "$3" "$4" >"$1/logevt.rgt"
}
site months 300 90000 "Battery low"
site years 480 777777 "$(printf 'W%.0s' {1..61})"
site hostile 3 333333 '</td><script>document.title="x"</script>&"'
site empty 0 1 ''

for name in demo-root months years hostile empty; do
  report "$name"
  [ "$(grep -ci '<script' "$name.html")" -eq 0 ] || fail "$name: a script"
  sed 's|</body>|<script>document.body.dataset.fits = document.documentElement.scrollWidth + " in " + document.documentElement.clientWidth</script></body>|' \
    "$name.html" >measured.html
  for width in 1280 390 320; do
    # A browser window is at least 500 pixels wide, so the page is shown in a frame of the requested width.
    printf '<iframe width=%s height=900 srcdoc="%s"></iframe><script>onload = () => document.body.dataset.fits = frames[0].document.body.dataset.fits</script>' \
      "$width" "$(sed -e 's/&/\&amp;/g' -e 's/"/\&quot;/g' measured.html)" >frame.html
    fits=$(browse --dump-dom "file://$work/frame.html" | grep -o 'data-fits="[0-9]* in [0-9]*"' | tail -n 1 | tr -dc '0-9 ')
    read -r wide window <<<"$fits"
    [ -n "${window-}" ] || fail "$name: nothing measured at $width"
    [ "$wide" -le "$width" ] && [ "$window" -ge $((width - 20)) ] || fail "$name: $wide pixels in a window of $width"
  done
done

text=$(text_of demo-root.html)
for number in $("$zelctl" log outages demo-root/logevt.rgt --start 1 --end 2 | grep -oE '[0-9]+:[0-9]{2}:[0-9]{2}') \
  '2005-03-27 08:00' '0.38 % of the 25.3 days logged' '8 findings'; do
  grep -qF -- "$number" <<<"$text" || fail "demo-root: the page lacks $number"
done

if [ -n "${REPORT_PICTURES-}" ]; then
  for name in demo-root months years; do
    for width in 1280 390; do
      browse --window-size="$width,2400" --screenshot="$REPORT_PICTURES/$name-$width.png" "file://$work/$name.html"
    done
  done
fi
