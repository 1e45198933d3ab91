# SPDX-License-Identifier: MIT
# bash completion for sorvik

# _sorvik_offer PREFIX: offers the lines of standard input that begin with PREFIX, quoted for the shell.
_sorvik_offer() {
  local line
  while IFS= read -r line; do
    [[ -n $line && $line == "$1"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
  done
}

# The short names of the providers, one per line.
_sorvik_providers() {
  sorvik providers --json 2> /dev/null | grep -o '"identification":"[^"]*"' | cut -d '"' -f 4 |
    sed 's/.*[.]//; s/^WinProvider//; s/^Provider//' | tr '[:upper:]' '[:lower:]'
}

# _sorvik_keys PATH: the keys of the entries, without the quotes that hid a path's blanks.
_sorvik_keys() {
  local path
  eval "path=$1" 2> /dev/null || return
  sorvik ls "$path" --tsv --fields '' 2> /dev/null | tail -n +2 | cut -f 1
}

_sorvik() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word command= operands=()
  local commands='ls who entry files places owner thumb sheet check cards join catalog providers fields meta help'
  local -A options=(
    [ls]='--json --tsv --csv --provider --fields --all --thumbs --size --icon --cache'
    [who]='--json --tsv --csv'
    [entry]='--json --provider --fields --all'
    [files]='--json --provider -0 --dirs --all-cards --relative --catalog'
    [places]='--json --tsv --csv --provider'
    [thumb]='--json --ndjson --provider --size --folder --icon --cache --force -o'
    [sheet]='--json --provider --fields --all --size --icon --cache --force -o'
    [owner]='--json --ndjson --clips-only --catalog'
    [check]='--json --provider --files --quick --against --hash --catalog'
    [cards]='--json -0'
    [join]='--provider --format --allow-gaps --force -o'
    [catalog]='--only --quick --here --jobs --timeout-per-card --shard --since -o --sqlite --force'
    [providers]='--json'
    [fields]='--json --tsv --csv'
    [meta]='--json --ndjson --fields --all --sources --packet'
  )
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -z $command && -n $word && " $commands " == *" $word "* ]]; then
      command=$word
    elif [[ $word != -* ]]; then
      operands+=("$word")
    fi
  done
  case $previous in
    --provider)
      _sorvik_offer "$cur" < <(_sorvik_providers)
      return
      ;;
    --format)
      _sorvik_offer "$cur" < <(printf '%s\n' ffconcat otio ale edl fcpxml csv)
      return
      ;;
    --fields)
      local before=${cur%"${cur##*,}"}
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "$(sorvik fields --tsv 2> /dev/null |
        tail -n +2 | cut -f 1)" -- "${cur##*,}")
      compopt -o nospace 2> /dev/null
      return
      ;;
    --only)
      mapfile -t COMPREPLY < <(compgen -W 'card clip file problem' -- "$cur")
      return
      ;;
    --size | --jobs | --shard | --timeout-per-card) return ;;
  esac
  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "${options[${command:-ls}]} --core --help --version" -- "$cur")
    return
  fi
  case $command in
    help)
      mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$cur")
      return
      ;;
    fields)
      _sorvik_offer "$cur" < <(_sorvik_providers)
      return
      ;;
    entry | files | thumb | join)
      if ((${#operands[@]} > 0)); then
        _sorvik_offer "$cur" < <(_sorvik_keys "${operands[0]}")
        return
      fi
      ;;
  esac
  compopt -o filenames 2> /dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$cur")
  if [[ -z $command ]]; then
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$commands volumes:" -- "$cur")
  fi
}
complete -F _sorvik sorvik
