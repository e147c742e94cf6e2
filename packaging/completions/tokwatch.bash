# Completion for tokwatch in bash. Needs nothing but bash itself.

# The command among the words before the cursor, and the first word after it that is no option.
_tokwatch_scan() {
  local i word skip=""
  command="" argument=""
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == "=" ]]; then
      skip=1
    elif [[ -n $skip ]]; then
      skip=
    elif [[ $word == --@(home|data-dir|days|unit|by|provider|format) ]]; then
      # Its value is the next word, or the one after a "=" that bash has split off.
      [[ ${COMP_WORDS[i + 1]-} == "=" ]] || skip=1
    elif [[ $word != -* ]]; then
      if [[ -z $command ]]; then command=$word; elif [[ -z $argument ]]; then argument=$word; fi
    fi
  done
}

_tokwatch_values() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_tokwatch_preference_values() {
  case $1 in
    showDockIcon | hasCompletedOnboarding | showResetTime | tintEnabled | claudeLiveLimits) _tokwatch_values "true false" ;;
    menuBarStyle) _tokwatch_values "icon provider" ;;
    pinnedProvider | providerOrder | disabledProviders) _tokwatch_values "claude codex grok cursor" ;;
    summaryUnit) _tokwatch_values "cost tokens" ;;
    popoverTab) _tokwatch_values "usage stats models" ;;
  esac
}

_tokwatch() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command argument common="--home --data-dir --help"
  local keys="showDockIcon hasCompletedOnboarding menuBarStyle pinnedProvider showResetTime menuBarWindows
    warningThreshold criticalThreshold tintEnabled providerOrder disabledProviders claudeLiveLimits summaryUnit
    popoverTab"
  COMPREPLY=()

  # "--unit=cost" arrives as three words.
  if [[ $current == "=" ]]; then
    current=
  elif [[ $previous == "=" ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  _tokwatch_scan

  case $previous in
    --home | --data-dir)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return ;;
    --days) _tokwatch_values "1 7 14 30 90"; return ;;
    --unit) _tokwatch_values "cost tokens"; return ;;
    --by) _tokwatch_values "tool model day"; return ;;
    --format) _tokwatch_values "text json waybar"; return ;;
    --provider) _tokwatch_values "claude codex grok cursor"; return ;;
  esac

  case $command in
    "")
      if [[ $current == -* ]]; then
        _tokwatch_values "$common --version"
      else
        _tokwatch_values "index summary limits status refresh reread doctor snapshot preferences"
      fi ;;
    index | snapshot) _tokwatch_values "$common --json" ;;
    doctor) _tokwatch_values "$common --json --fix" ;;
    summary) _tokwatch_values "$common --json --days --unit --by --no-index" ;;
    limits) _tokwatch_values "$common --json --refresh --provider" ;;
    status) _tokwatch_values "$common --json --follow --format" ;;
    refresh) _tokwatch_values "--help" ;;
    reread)
      if [[ $current == -* || -n $argument ]]; then
        _tokwatch_values "$common --json"
      else
        _tokwatch_values "claude codex grok cursor"
      fi ;;
    preferences)
      if [[ $current == -* ]]; then
        _tokwatch_values "--json --help"
      elif [[ -z $argument ]]; then
        _tokwatch_values "get set list"
      elif [[ $previous == "$argument" && $argument == @(get|set) ]]; then
        _tokwatch_values "$keys"
      elif [[ $argument == set ]]; then
        _tokwatch_preference_values "$previous"
      fi ;;
  esac
}

complete -F _tokwatch tokwatch
