#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The completions contain all commands and options of --help.
set -euo pipefail
source_dir=$1
sorvik=$2/sorvik
help=$("$sorvik" --help)
commands=$(printf '%s\n' "$help" | sed -n '/^commands/,/^options/s/^  \([a-z]\{2,\}\) .*/\1/p')
options=$(printf '%s\n' "$help" | sed -n '/^options/,/^$/s/^  \(-[-a-zA-Z0-9]*\).*/\1/p')
[ "$(printf '%s\n' "$commands" | wc -l)" -ge 14 ] || { echo "too few commands in --help"; exit 1; }
for file in "$source_dir"/host/completion/{sorvik.bash,_sorvik,sorvik.fish}; do
  for word in $commands $options; do
    case $file in *.fish) [[ $word == -* ]] && word="-${word#"${word%%[!-]*}"}" word=${word#-} ;; esac
    grep -qwF -e "$word" "$file" || { echo "$(basename "$file") lacks $word"; exit 1; }
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
bash "$source_dir/tools/make-sample-card" "my card"
# expect WORDS... OFFERS: the last argument is what is offered for the words in front of it.
expect() {
  local offered
  offered=$(offers "${@:1:$#-1}")
  [ "$offered" = "${!#}" ] || { echo "bash offers '$offered' for ${*:1:$#-1}"; exit 1; }
}
expect ls --provider avc 'avchd '
expect fields cine 'cinemadng '
expect ls --fields Name,dur 'Name,duration '
expect entry 'my\ card' 000 '0001AB 0002CC 0003ED '
expect files 'my\ card' 0003 '0003ED '
expect help che 'check '
rm -r "my card"

# zsh and fish parse their files.
if command -v zsh > /dev/null; then zsh -n "$source_dir/host/completion/_sorvik"; fi
if command -v fish > /dev/null; then
  fish --no-execute "$source_dir/host/completion/sorvik.fish"
fi
rmdir "$PWD"
