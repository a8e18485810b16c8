# bash completion for orvia and orvia-demo-service

_orvia() {
    local current=$2 previous=$3
    case $previous in
        --config)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            compopt -o filenames
            ;;
        --port | --seed | --conversations | --messages | --events-per-second) ;;
        *)
            local options='--help --version --config --background'
            if [[ ${1##*/} == orvia-demo-service ]]; then
                options='--help --version --port --seed --quiet --conversations --messages --events-per-second'
            fi
            mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
            ;;
    esac
}
complete -F _orvia orvia orvia-demo-service
