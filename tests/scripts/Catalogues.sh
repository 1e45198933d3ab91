#!/bin/bash
# SPDX-License-Identifier: MIT
# Catalogues.sh SOURCE_DIR: every localization key of the code is in the template, and every catalogue
# translates the complete template. Otherwise a misspelt key would show as English text.
set -u
source_dir=$1
locale=$source_dir/resources/locale
status=0
fail() {
  echo "FAIL: $*"
  status=1
}

# The template as "key=default text" lines.
template=$(awk '/^msgctxt "/ { key = substr($0, 10, length($0) - 10) }
                /^msgid "/ && key { print key "=" substr($0, 8, length($0) - 8); key = "" }' \
  "$locale/sorvik.pot")

# The keys of the code; adjacent string literals are joined first. A literal without an equals sign is a
# prefix of generated keys.
used=$(find "$source_dir/src" "$source_dir/host" -name '*.cpp' -o -name '*.h' 2>/dev/null |
  xargs cat | tr '\n' ' ' | sed 's/"  *"//g' | grep -oE '"\$\$\$/[^"]*=[^"]*"' | tr -d '"' | sort -u)
while IFS= read -r key; do
  [ -z "$key" ] || grep -qxF -- "$key" <<<"$template" || fail "not in sorvik.pot: [$key]"
done <<<"$used"

for catalogue in "$locale"/*.po; do
  msgcmp "$catalogue" "$locale/sorvik.pot" || fail "$catalogue is incomplete"
  # Texts that end in a blank in English do so in every language.
  blanks=$(grep -cE '^msgid ".* "$' "$catalogue")
  [ "$(grep -cE '^msgstr ".* "$' "$catalogue")" = "$blanks" ] || fail "$catalogue lacks a trailing blank"
done
exit $status
