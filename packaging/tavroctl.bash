# Completion of tavroctl's commands, options, item IDs and files for bash.

_tavroctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="setup register signup login remind shop wizard logout sync books download map
        status info cover replace replay journal drop help"
    local command="" device=() word index files words
    COMPREPLY=()

    # 1. What stands on the line already?
    for ((index = 1; index < COMP_CWORD; ++index)); do
        word=${COMP_WORDS[index]}
        if [[ $word == --device ]]; then
            ((++index < COMP_CWORD)) && device=(--device "${COMP_WORDS[index]}")
        elif [[ -z $command && " ${commands//[[:space:]]/ } " == *" $word "* ]]; then
            command=$word
        fi
    done

    # 2. The value of an option.
    case $previous in
        --device | --folder) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
        --output) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
        --service | --email | --first-name | --last-name | --serial | --consumer | --type | --size) return ;;
    esac

    # 3. Options, the command, its arguments.
    words="--help --version --device --json --trace"
    case $command in
        setup) words+=" --service --email --first-name --last-name --serial --consumer --type --folder --force" ;;
        register) words+=" --renew" ;;
        signup | login) words+=" --password-stdin" ;;
        logout) words+=" --yes" ;;
        sync) words+=" --background --wait" ;;
        download) words+=" --all" ;;
        cover) words+=" --size --output --ascii" ;;
        replace) words+=" --upload" ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    elif [[ -z $command || $command == help ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    elif [[ $command == download ]]; then
        # With their titles where they are only shown: nothing but the number may go onto the line.
        # A title must not steer the terminal: of it, control characters go.
        mapfile -t files < <("${COMP_WORDS[0]}" books --json "${device[@]}" 2>/dev/null |
            LC_ALL=C sed -nE '/^ *"item": "(-?[0-9]+)",$/{s//\1/;N;s/\n *"title": "(.*)",$/  \1/
                s/\xC2[\x80-\x9F]|[\x01-\x1F\x7F]|\\u[0-9a-f]{4}|\\[bfnrt]//g;s/\\(.)/\1/g;p}')
        for word in "${files[@]}"; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
        [[ ${#COMPREPLY[@]} -gt 1 && ${COMP_TYPE:-} =~ ^(9|33|63|64)$ ]] || COMPREPLY=("${COMPREPLY[@]%%  *}")
    elif [[ $command == drop ]]; then
        mapfile -t files < <("${COMP_WORDS[0]}" journal --json "${device[@]}" 2>/dev/null | sed -nE 's/^ *"old": "(.*)",$/\1/p' | sort -u)
        compopt -o filenames
        for word in "${files[@]}"; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
    elif [[ $command =~ ^(status|info|cover|replace)$ ]]; then
        compopt -o filenames
        mapfile -t files < <("${COMP_WORDS[0]}" map "${device[@]}" 2>/dev/null | sed -nE 's/^(.*[^ ]) +-?[0-9]+ +[a-z]+$/\1/p')
        for word in "${files[@]}"; do
            [[ $word != "$current"* ]] || COMPREPLY+=("$word")
        done
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -F _tavroctl tavroctl
