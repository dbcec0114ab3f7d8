# Completion of velmora-inspect's command line in bash.

_velmora_inspect()
{
    local word=${COMP_WORDS[COMP_CWORD]}
    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'processes files --help' -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--json' -- "$word")
    elif [[ ${COMP_WORDS[1]} == files ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ ${COMP_WORDS[1]} == processes ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(ps -eo comm=)" -- "$word")
    fi
}
complete -F _velmora_inspect velmora-inspect
