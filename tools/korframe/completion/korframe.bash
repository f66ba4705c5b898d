# Completion for korframe in bash. It asks the program itself, so it knows every subcommand, option and layout.

_korframe_layouts() {
    "$1" formats 2>/dev/null | awk '/^[a-z]/ { print $1 } /^$/ { exit }'
}

# The values of an option; none if it takes a file or a free value.
_korframe_values() {
    case $2 in
        --from | --overlay-from | --order | --render) _korframe_layouts "$1" ;;
        --to) printf '%s\n' y4m y4m:i422 y4m:i444 png ppm && _korframe_layouts "$1" ;;
        --rotate) printf '%s\n' 0 90 180 270 ;;
        --dither) printf '%s\n' off 0 1 2 ;;
        --matrix) printf '%s\n' 601 709 ;;
        --range) printf '%s\n' full limited ;;
    esac
}

_korframe() {
    local program=$1 word=$2 before=$3 subcommand='' choices='' i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            subcommand=${COMP_WORDS[i]}
            break
        fi
    done
    COMPREPLY=()
    if [[ -z $subcommand && $word != -* ]]; then
        choices=$("$program" --help 2>/dev/null | awk 'list && NF > 1 { print $1 } /^Subcommands:/ { list = 1 }')
    elif [[ $word == -* ]]; then
        # shellcheck disable=SC2086  # there may be no subcommand
        choices=$("$program" $subcommand --help 2>/dev/null | grep -oE '^ +(-[a-z],)?--[a-z0-9-]+' | grep -oE -- '--.*')
    else
        choices=$(_korframe_values "$program" "$before")
    fi
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}

complete -o bashdefault -o default -F _korframe korframe
