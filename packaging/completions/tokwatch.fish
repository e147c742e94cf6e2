# Completion for tokwatch in fish.
set -l commands index summary limits status refresh reread doctor snapshot preferences
set -l providers claude codex grok cursor
set -l none "not __fish_seen_subcommand_from $commands"
set -l data "not __fish_seen_subcommand_from refresh preferences"

complete -c tokwatch -f
complete -c tokwatch -s h -l help -d 'Show help'
complete -c tokwatch -n $none -l version -d 'Show the version'
complete -c tokwatch -n $data -l home -x -a '(__fish_complete_directories)' -d 'Where the assistants\' files are'
complete -c tokwatch -n $data -l data-dir -x -a '(__fish_complete_directories)' -d 'Where Tokwatch keeps its data'

complete -c tokwatch -n $none -a index -d 'Read what the assistants logged since the last time'
complete -c tokwatch -n $none -a summary -d 'Show tokens and what they would have cost'
complete -c tokwatch -n $none -a limits -d 'Show how much of each limit is left'
complete -c tokwatch -n $none -a status -d 'Print the title of the status area'
complete -c tokwatch -n $none -a refresh -d 'Make the running application refresh'
complete -c tokwatch -n $none -a reread -d 'Forget how far a provider\'s logs were read, and read them again'
complete -c tokwatch -n $none -a doctor -d 'Tell what was found, what works and what does not'
complete -c tokwatch -n $none -a snapshot -d 'Print the widget snapshot'
complete -c tokwatch -n $none -a preferences -d 'Print and change settings'

complete -c tokwatch -n '__fish_seen_subcommand_from index summary limits status reread doctor snapshot preferences' \
    -l json -d 'Print JSON for programs'

complete -c tokwatch -n '__fish_seen_subcommand_from summary' -l days -x -a '1 7 14 30 90' -d 'How many days, today included'
complete -c tokwatch -n '__fish_seen_subcommand_from summary' -l unit -x -a 'cost tokens' -d 'Lead with money or tokens'
complete -c tokwatch -n '__fish_seen_subcommand_from summary' -l by -x -a 'tool model day' -d 'Show this table only'
complete -c tokwatch -n '__fish_seen_subcommand_from summary' -l no-index -d 'Show what is stored without reading the logs first'

complete -c tokwatch -n '__fish_seen_subcommand_from doctor' -l fix -d 'Close the data to other users'

complete -c tokwatch -n '__fish_seen_subcommand_from limits' -l refresh -d 'Ask the services'
complete -c tokwatch -n '__fish_seen_subcommand_from limits' -l provider -x -a "$providers" -d 'One provider only'

complete -c tokwatch -n '__fish_seen_subcommand_from status' -l follow -d 'Print a line at each change'
complete -c tokwatch -n '__fish_seen_subcommand_from status' -l format -x -a 'text json waybar' -d 'How it is written'

complete -c tokwatch -n "__fish_seen_subcommand_from reread; and not __fish_seen_subcommand_from $providers" -a "$providers"

set -l keys showDockIcon hasCompletedOnboarding menuBarStyle pinnedProvider showResetTime menuBarWindows \
    warningThreshold criticalThreshold tintEnabled providerOrder disabledProviders claudeLiveLimits summaryUnit popoverTab
set -l preferences '__fish_seen_subcommand_from preferences'
complete -c tokwatch -n "$preferences; and not __fish_seen_subcommand_from get set list" -a get -d 'Print one setting'
complete -c tokwatch -n "$preferences; and not __fish_seen_subcommand_from get set list" -a set -d 'Change one setting'
complete -c tokwatch -n "$preferences; and not __fish_seen_subcommand_from get set list" -a list -d 'Print all settings'
complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from get set; and not __fish_seen_subcommand_from $keys" -a "$keys"
for key in showDockIcon hasCompletedOnboarding showResetTime tintEnabled claudeLiveLimits
    complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from set; and __fish_seen_subcommand_from $key" -a 'true false'
end
for key in pinnedProvider providerOrder disabledProviders
    complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from set; and __fish_seen_subcommand_from $key" -a "$providers"
end
complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from set; and __fish_seen_subcommand_from menuBarStyle" -a 'icon provider'
complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from set; and __fish_seen_subcommand_from summaryUnit" -a 'cost tokens'
complete -c tokwatch -n "$preferences; and __fish_seen_subcommand_from set; and __fish_seen_subcommand_from popoverTab" -a 'usage stats models'
