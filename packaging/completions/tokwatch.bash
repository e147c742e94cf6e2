# Completion for tokwatch in bash: the program itself knows what may follow.
_tokwatch() {
  local current=${COMP_WORDS[COMP_CWORD]} offers
  mapfile -t offers < <("$1" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null | cut -f 1)
  if [[ $current == "=" ]]; then current=; fi # "--unit=cost" arrives as three words
  if [[ ${offers[0]-} == :directories ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -W "${offers[*]}" -- "$current")
  fi
}

complete -F _tokwatch tokwatch
