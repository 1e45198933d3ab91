# SPDX-License-Identifier: MIT
# bash completion for sorvik. Commands and options come from its help.

_sorvik_commands() {
  sorvik help 2> /dev/null | sed -n '/^commands:/,/^$/s/^  \([a-z]*\) .*/\1/p'
}

# _sorvik_options [COMMAND]: one option per line, followed by the name of its value.
_sorvik_options() {
  sorvik help "$@" 2> /dev/null | sed -n '/^options:/,/^$/s/^  \(-[-a-z0]*\) \([^ ]*\) .*/\1 \2/p'
}

_sorvik_providers() {
  sorvik providers --json 2> /dev/null | grep -o '"identification":"[^"]*"' | cut -d '"' -f 4 |
    sed 's/.*[.]//; s/^WinProvider//; s/^Provider//' | tr '[:upper:]' '[:lower:]'
}

# _sorvik_keys PATH PROVIDER: the keys of the entries of a path as typed.
_sorvik_keys() {
  local path
  case $1 in *\$\(* | *\`* | *\<\(* | *\>\(*) return ;; esac # completion executes no command of the line
  eval "path=$1" 2> /dev/null || return
  sorvik ls "$path" ${2:+--provider "$2"} --tsv --fields '' 2> /dev/null | tail -n +2 | cut -f 1
}

# Offers those lines of standard input that begin with what was typed, quoted for the shell unless the
# word begins with a quote.
_sorvik_offer() {
  local line
  compopt +o default 2> /dev/null
  while IFS= read -r line; do
    case $cur in
      [\"\']*) [[ $line == "${cur:1}"* ]] && COMPREPLY+=("$line") ;;
      *) [[ -n $line && $line == "${cur//\\/}"* ]] && COMPREPLY+=("$(printf '%q' "$line")") ;;
    esac
  done
}

# Offers the values of an option; without any, bash completes file names.
_sorvik_value() {
  case $1 in
    --provider) _sorvik_offer < <(_sorvik_providers) ;;
    --format) _sorvik_offer < <(printf '%s\n' ffconcat otio ale edl fcpxml csv json) ;;
    --thumbs) _sorvik_offer < <(printf '%s\n' auto kitty sixel none) ;;
    --fields | --only)
      local before=${cur%"${cur##*,}"} names='card clip file problem'
      [[ $1 == --only ]] || names=$(sorvik fields --tsv 2> /dev/null | tail -n +2 | cut -f 1)
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "$names" -- "${cur##*,}")
      compopt -o nospace 2> /dev/null
      ;;
    --size | --jobs | --shard | --timeout-per-card) compopt +o default 2> /dev/null ;;
  esac
}

_sorvik() {
  local cur=${COMP_WORDS[COMP_CWORD]} word previous= pending= command= provider= operands=() commands options
  commands=$'\n'$(_sorvik_commands)$'\n'
  options=$'\n'$(_sorvik_options)$'\n'
  COMPREPLY=()
  # bash splits --provider=p2 into three words.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word == = ]]; then
      pending=$previous
    elif [[ -n $pending ]]; then
      [[ $pending == --provider ]] && provider=$word
      pending=
    elif [[ $word == -* ]]; then
      [[ $options == *$'\n'"$word "[A-Z]* ]] && pending=$word
    elif [[ -z $command && ${#operands[@]} -eq 0 && $commands == *$'\n'"$word"$'\n'* ]]; then
      command=$word
    else
      operands+=("$word")
    fi
    previous=$word
  done
  if [[ $cur == = ]]; then
    pending=$previous cur=
  fi
  if [[ -n $pending ]]; then
    _sorvik_value "$pending"
    return
  fi
  if [[ $cur == -* ]]; then
    _sorvik_offer < <(_sorvik_options "${command:-ls}" | cut -d ' ' -f 1; printf '%s\n' --help --version)
    return
  fi
  case $command:${#operands[@]} in
    :0)
      _sorvik_offer <<< "${commands:1}volumes:"
      compopt -o default -o plusdirs 2> /dev/null
      ;;
    help:0) _sorvik_offer <<< "$commands" ;;
    fields:0) _sorvik_offer < <(_sorvik_providers) ;;
    entry:1 | files:1 | join:1 | thumb:[1-9]*)
      _sorvik_offer < <(_sorvik_keys "${operands[0]}" "$provider")
      ;;
  esac
}
complete -o default -F _sorvik sorvik
