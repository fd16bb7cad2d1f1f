# SPDX-License-Identifier: MIT
# Bash completion for qmini. Commands, options and arguments come from the help texts, names from the file.
_qmini() {
    local line=${COMP_LINE:0:COMP_POINT} word previous='' command usage place quote='' typed='' commented=''
    local -a words=() given=() places=() names=()
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do # which are also split at ":" and "="
        if [[ ${#words[@]} == 0 || $line == [[:blank:]]* ]]; then words+=("$word"); else words[-1]+=$word; fi
        line=${line#*"$word"}
    done
    local current=${words[-1]}
    case $current in
    [\"\']*) quote=${current:0:1} current=${current:1} ;;
    "${COMP_WORDS[COMP_CWORD]}") ;;
    *) typed=${current%"${current##*[:=]}"} ;; # stays on the line
    esac
    for word in "${words[@]:1:${#words[@]}-2}"; do
        if ! [[ $previous == --default || $previous == --with || $word == -?* ]]; then # unquoted
            given+=("$(sed -E "s/\\\\(.)|'([^']*)'|\"/\\1\\2/g" <<<"${word/#\~\//$HOME/}")")
        fi
        previous=$word
    done
    if [[ ${#given[@]} == 0 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--help --parser --version $(qmini --help |
            sed -n 's/^  \([a-z]*\) FILE .*/\1/p')" -- "$current")
        return
    fi
    command=${given[0]}
    usage=$(qmini "$command" --help 2>/dev/null | sed -n 's/^usage: qmini [a-z]* //p')
    read -ra places <<<"$usage"
    place=${places[${#given[@]} - 1]}
    [[ $current != -?* ]] || place=OPTION
    [[ $previous != --with ]] || place=CHAR
    [[ $command != uncomment && " ${words[*]} " != *' --commented '* ]] || commented=--commented
    case $place in
    OPTION)
        mapfile -t COMPREPLY < <(compgen -W "--help $(grep -o -e '-[-a-z][-a-z]*' <<<"$usage")" -- "$current")
        ;;
    CHAR) names=('#' ';') ;;
    FILE) compopt -o default ;; # readline's own completion of file names
    SECTION | '[SECTION]' | OLD)
        mapfile -d '' -t names < <(qmini sections -z $commented "${given[1]}" 2>/dev/null)
        ;;
    KEY | '[KEY]') mapfile -d '' -t names < <(qmini keys -z $commented "${given[@]:1:2}" 2>/dev/null) ;;
    esac
    for word in "${names[@]}"; do
        case $quote in
        \") word=$(sed 's/[\\"$`]/\\&/g' <<<"$word") ;;
        \') word=${word//\'/\'\\\'\'} ;;
        *) word=$(printf %q "$word") ;;
        esac
        [[ $word == "$current"* ]] && COMPREPLY+=("${word#"$typed"}")
    done
}
complete -F _qmini qmini
