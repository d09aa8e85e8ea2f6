# Completes the command line of tolvix-installer.
_tolvix_installer() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local options="--partnerName --partnerID --campaignID --auto-start --help"
    COMPREPLY=()
    case $before in
    --partnerName | --partnerID | --campaignID) ;;
    --auto-start) mapfile -t COMPREPLY < <(compgen -W "YES NO $options" -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word") ;;
    esac
}
complete -F _tolvix_installer tolvix-installer
