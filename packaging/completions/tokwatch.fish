# Completion for tokwatch in fish: the program itself knows what may follow.
function __tokwatch_offers
    set -l offers (tokwatch complete (commandline -opc)[2..-1] (commandline -ct) 2>/dev/null)
    switch "$offers[1]"
        case :directories
            __fish_complete_directories (commandline -ct)
        case :files
            __fish_complete_path (commandline -ct)
        case '*'
            printf '%s\n' $offers
    end
end

complete -c tokwatch -f -a '(__tokwatch_offers)'
