# Completion of the installer's command line in bash.

_zek_velmora_installer()
{
    local choices='' word
    case $COMP_CWORD:${COMP_WORDS[1]} in
        1:*) choices='--unattended --status --help --version' ;;
        2:--unattended) choices='install update uninstall' ;;
        *:--unattended) choices='--accept-license --driver --no-usage-data --wait --json' ;;
        *:--status) choices='--json' ;;
    esac
    # A number follows; nothing can be proposed.
    [[ ${COMP_WORDS[COMP_CWORD - 1]} == --wait ]] && choices=''
    # None twice.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        choices=" $choices "
        choices=${choices/" $word "/ }
    done
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _zek_velmora_installer zek-velmora-installer
