# bash completion for zsp. Commands, options and their values are read from zsp's own help, so that
# they are those of the installed version.

# "--codec NAME" and the like: what stands behind an option in a command's help.
_zsp_value() {
    "${COMP_WORDS[0]}" "$1" --help 2>/dev/null |
        sed -nE "/^ +(-[a-z], )?$2[, ]/s/^ +(-[a-z], )?--[a-z-]+ ([^ ]+).*/\2/p"
}

_zsp_options() {
    "${COMP_WORDS[0]}" "$1" --help 2>/dev/null | sed -nE 's/^ +(-[a-z], )?(--[a-z-]+).*/\2/p'
}

_zsp_commands() {
    "${COMP_WORDS[0]}" --help 2>/dev/null | sed -nE '/^Commands:/,/^$/s/^  ([a-z]+) .*/\1/p'
}

_zsp() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} value
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_zsp_commands) --help --version" -- "$word")
        return
    fi
    if [ "$command" = help ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_zsp_commands)" -- "$word")
        return
    fi
    [[ $word == = ]] && word=
    [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
    if [[ $before == -* ]]; then
        value=$(_zsp_value "$command" "$before")
        case $before:$value in
        --codec:* | -c:*)
            mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" codecs --names 2>/dev/null)" -- "$word")
            return ;;
        *:*\|*)
            mapfile -t COMPREPLY < <(compgen -W "${value//|/ }" -- "$word")
            return ;;
        *:FILE | *:OUT | *:) ;;
        *:DIR)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            return ;;
        *) return ;; # a number: nothing to offer
        esac
    fi
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_zsp_options "$command")" -- "$word")
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
}

complete -F _zsp zsp
