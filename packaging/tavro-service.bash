# Completion of tavro-service's commands, options, operations and keys of faults for bash.

_tavro_service() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local operations="RegisterDevice CreateUser LoginUser ForgetPassword GetShopURL SysnWithCloud
        UploadContent DownloadContent"
    local keys="delay= code= status= body= body-hex= body-file= cut= malformed close filename= times="
    local command="" operation="" word words
    COMPREPLY=()

    # 1. What stands on the line already?
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ -z $command && $word =~ ^(fault|requests)$ ]]; then
            command=$word
        elif [[ " ${operations//[[:space:]]/ } " == *" $word "* ]]; then
            operation=$word
        fi
    done

    # 2. The value of an option.
    case $previous in
        --books) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
        --state | --faults | --file) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
        --operation) mapfile -t COMPREPLY < <(compgen -W "$operations" -- "$current"); return ;;
        --fault) compopt -o nospace; mapfile -t COMPREPLY < <(compgen -W "$operations" -S : -- "$current"); return ;;
        --address | --port | --host | --max-body | --consumer | --service) return ;;
    esac

    # 3. Options, the command, its arguments.
    case $command in
        fault) words="--help --service --file --clear" ;;
        requests) words="--help --service --operation --json --clear" ;;
        *) words="--help --version --books --address --port --host --state --entity-references --max-body
            --consumer --fault --faults --json --quiet" ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    elif [[ -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "fault requests" -- "$current")
    elif [[ $command == fault && -z $operation ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$operations" -- "$current")
    elif [[ $command == fault ]]; then
        compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -W "$keys" -- "$current")
    fi
}

complete -F _tavro_service tavro-service
