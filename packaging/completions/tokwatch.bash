# Completion for tokwatch in bash: the program itself knows what may follow.
_tokwatch() {
  local current=${COMP_WORDS[COMP_CWORD]} offers
  mapfile -t offers < <("$1" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null | cut -f 1)
  if [[ $current == "=" ]]; then current=; fi # "--unit=cost" arrives as three words
  case ${offers[0]-} in
    :directories) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    :files) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "${offers[*]}" -- "$current") ;;
  esac
  if [[ ${offers[0]-} == :* ]]; then compopt -o filenames 2>/dev/null; fi
}

complete -F _tokwatch tokwatch
