# SPDX-License-Identifier: MIT
# Bash completion for qmini. Commands, options and places of arguments come from the help texts, names from the file.
_qmini() {
    local current=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} word
    local -a given=() places=() names=()
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "--help --version $(qmini --help |
            sed -n 's/^  \([a-z]*\) *FILE .*/\1/p')" -- "$current")
        return
    elif [[ $current == -?* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--help $(qmini "$command" --help 2>/dev/null |
            sed -n 's/^  \(-[-a-z]*\).*/\1/p')" -- "$current")
        return
    fi
    for word in "${COMP_WORDS[@]:2:COMP_CWORD-2}"; do
        [[ $word == -?* ]] || given+=("${word//[\\\"\']/}") # without quotes
    done
    read -ra places < <(qmini "$command" --help 2>/dev/null | sed -n 's/^usage: qmini [a-z]* //p')
    case ${places[${#given[@]}]} in
    FILE) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    SECTION | OLD) mapfile -d '' -t names < <(qmini sections -z "${given[0]}" 2>/dev/null) ;;
    KEY | '[KEY]') mapfile -d '' -t names < <(qmini keys -z "${given[@]:0:2}" 2>/dev/null) ;;
    esac
    for word in "${names[@]}"; do
        word=$(printf %q "$word")
        [[ $word == "$current"* ]] && COMPREPLY+=("$word")
    done
}
complete -F _qmini qmini
