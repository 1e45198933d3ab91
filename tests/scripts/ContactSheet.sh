#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Opens a contact sheet in Chromium: all pictures load without a network, and the filter works.
set -euo pipefail
source_dir=$1
sorvik=$2/sorvik
browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  echo "skipped: Chromium is not installed"
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bash "$source_dir/tools/make-sample-card" "$work/CARD"
"$sorvik" sheet "$work/CARD" -o "$work/sheet.html"

# A script in a copy of the page simulates the user and writes the results to the document's title.
cat "$work/sheet.html" - > "$work/driven.html" <<'HTML'
<script>
window.addEventListener("load", () => {
  const visible = () => [...document.querySelectorAll("article")].filter(a => a.offsetHeight > 0)
      .map(a => a.querySelector("h2").textContent);
  const type = text => { box.value = text; box.dispatchEvent(new Event("input")); };
  const answers = [visible().length];
  answers.push([...document.images].filter(i => i.complete && i.naturalWidth > 0).length);
  type("GULL pier"); answers.push(visible().join("+"));
  type("no such clip"); answers.push(visible().length);
  type(""); answers.push(visible().length);
  document.title = answers.join("|");
});
</script>
HTML
dom=$(HOME=$work timeout 90 "$browser" --headless --no-sandbox --disable-gpu --disable-quic \
    --no-first-run --disable-background-networking --disable-component-update --disable-sync \
    --host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir="$work/profile" \
    --virtual-time-budget=5000 --dump-dom "file://$work/driven.html" 2> "$work/browser.log") ||
  { cat "$work/browser.log"; exit 1; }
answers=$(printf '%s' "$dom" | sed -n 's/.*<title>\([^<]*\)<\/title>.*/\1/p' | head -n 1)
[ "$answers" = '3|3|Gull on the pier|0|3' ] || { echo "unexpected results: '$answers'"; exit 1; }
if grep -Eo '(src|href)="(https?:)?//[^"]*"' "$work/sheet.html"; then
  echo "the page has external references"
  exit 1
fi
echo "passed"
