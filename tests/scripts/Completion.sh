#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The completions contain all commands and options of --help.
set -euo pipefail
source_dir=$1
sorvik=$2/sorvik
help=$("$sorvik" --help)
commands=$(printf '%s\n' "$help" | sed -n '/^commands/,/^options/s/^  \([a-z]\{2,\}\) .*/\1/p')
options=$(printf '%s\n' "$help" | sed -n '/^options/,/^$/s/^  \(-[-a-zA-Z0-9]*\).*/\1/p')
[ "$(printf '%s\n' "$commands" | wc -l)" -ge 11 ] || { echo "too few commands in --help"; exit 1; }
for file in "$source_dir"/host/completion/sorvik.bash "$source_dir"/host/completion/_sorvik; do
  for word in $commands $options; do
    grep -qF -e "$word" "$file" || { echo "$(basename "$file") lacks $word"; exit 1; }
  done
done

# The completions of bash.
PATH=$2:$PATH
. "$source_dir/host/completion/sorvik.bash"
offers() {
  COMP_WORDS=(sorvik "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _sorvik
  printf '%s ' "${COMPREPLY[@]}"
}
cd "$(mktemp -d)"
[ "$(offers che)" = "check " ] || { echo "bash completes che to '$(offers che)'"; exit 1; }
[ "$(offers owner --cl)" = "--clips-only " ] || { echo "the option of owner isn't completed"; exit 1; }
case $(offers ls --provider com.halvane.Merisk.ProviderR) in
  'com.halvane.Merisk.ProviderRED ') ;;
  *) echo "providers aren't completed"; exit 1 ;;
esac
rmdir "$PWD"
