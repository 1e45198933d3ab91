# SPDX-License-Identifier: MIT
# bash completion for sorvik
_sorvik() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word command=
  local commands='ls who entry files places owner thumb sheet check cards providers meta'
  local -A options=(
    [ls]='--json --provider --fields --all --thumbs --size'
    [who]='--json'
    [entry]='--json --provider --fields --all'
    [files]='--json --provider -0 --dirs --all-cards --relative'
    [places]='--json --provider'
    [owner]='--json --clips-only'
    [thumb]='--json --provider --size --folder --force -o'
    [sheet]='--json --provider --fields --all --size --force -o'
    [check]='--json --provider --files --quick --against --hash'
    [cards]='--json -0'
    [providers]='--json'
    [meta]='--json --fields --all --packet'
  )
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -n $word && " $commands " == *" $word "* ]]; then
      command=$word
      break
    fi
  done
  case $previous in
    --provider)
      mapfile -t COMPREPLY < <(compgen -W "$(sorvik providers --json 2>/dev/null |
          grep -o '"identification":"[^"]*"' | cut -d'"' -f4)" -- "$cur")
      return
      ;;
    --fields | --size) return ;;
  esac
  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "${options[${command:-ls}]} --core --help --version" -- "$cur")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -f -- "$cur")
  if [[ -z $command ]]; then
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$commands volumes:" -- "$cur")
  fi
}
complete -o filenames -F _sorvik sorvik
