#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The contact sheet in a real browser: every picture loads with the network cut off, and the filter
# shows what it should.
set -euo pipefail
source_dir=$1
sorvik=$2/sorvik
browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  echo "left out: there is no Chromium on this machine"
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bash "$source_dir/tools/make-sample-card" "$work/CARD"
"$sorvik" sheet "$work/CARD" -o "$work/sheet.html"

# What a user would do, written into a copy of the page; the answers go into the document's title.
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
[ "$answers" = '3|3|Gull on the pier|0|3' ] || { echo "the page answered '$answers'"; exit 1; }
if grep -Eo '(src|href)="(https?:)?//[^"]*"' "$work/sheet.html"; then
  echo "the page asks for something from outside"
  exit 1
fi
echo "the contact sheet works"
