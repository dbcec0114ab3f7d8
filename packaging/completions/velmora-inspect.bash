# Completion of velmora-inspect's command line in bash.

_velmora_inspect()
{
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]}
    local options=--json
    case $command in
        disks) options='--json --registry --watch' ;;
        volumes | system | boot | registry) options='--json --registry' ;;
    esac
    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'processes files disks volumes system boot registry capture --help' -- "$word")
    elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --registry || ($command == files && $word != -*) ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ $command == capture && $word != -* ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $command == processes ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(ps -eo comm=)" -- "$word")
    elif [[ $command == disks || $command == volumes ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(velmora-inspect "$command" --json 2>/dev/null |
            grep -o '"name":"disk[0-9s]*"' | cut -d'"' -f4)" -- "$word")
    fi
}
complete -F _velmora_inspect velmora-inspect
