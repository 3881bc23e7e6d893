# Fish completion for zelctl. The command itself lists the candidates, so they match the installed version.
function __zelctl_offered
    set -l words (commandline -opc) "$(commandline -ct)"
    set -l offered (command $words[1] help --words -- $words[2..] 2>/dev/null)
    switch "$offered"
        case '<file>'
            __fish_complete_path "$words[-1]"
        case '<directory>'
            __fish_complete_directories "$words[-1]"
        case '*'
            printf '%s\n' $offered
    end
end
complete -c zelctl -f -a '(__zelctl_offered)'
