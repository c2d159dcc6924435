# Completion of zorvane's arguments for bash.
_zorvane() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local words=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words="record sources info permissions --help --version"
    elif [[ $command == record ]]; then
        case $prev in
        --display) words="main" ;;
        --exclude) words="current indicator current,indicator" ;;
        --color-space) words="sRGB displayP3" ;;
        --platform) words="linux virtual" ;;
        --log-level) words="trace debug info warning error critical" ;;
        --camera | --microphone) words="default" ;;
        --seconds | --window | --device | --exclude-process | --application-audio) return ;;
        -o | --output)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$cur")
            return
            ;;
        *) words="--display --window --exclude --audio --mouse --keyboard --top-window --camera --microphone --device --system-audio --exclude-process --application-audio --segmented --events --color-space --no-cursor --seconds -o --output --platform --json -q --quiet --log-level --help" ;;
        esac
    elif [[ $command == sources ]]; then
        case $prev in
        --platform) words="linux virtual" ;;
        --log-level) words="trace debug info warning error critical" ;;
        *) words="displays windows cameras microphones applications devices --watch --json --platform --log-level --help" ;;
        esac
    elif [[ $command == permissions && $prev == --platform ]]; then
        words="linux virtual"
    elif [[ $command == permissions ]]; then
        words="--platform --json --help"
    elif [[ $command == info && $cur == -* ]]; then
        words="--json --help"
    elif [[ $command == info ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$cur")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
}
complete -F _zorvane zorvane
