# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Completion of vorlan-defaults for bash: its commands and options, the domains of the user and their keys.

# The words up to the cursor as the user sees them, in _vorlan_words: bash also parts them at colons and the like.
_vorlan_defaults_words() {
    local rest=${COMP_LINE:0:COMP_POINT} part index
    _vorlan_words=()
    for ((index = 0; index <= COMP_CWORD; index++)); do
        part=${COMP_WORDS[index]}
        if ((index > 0)) && [[ $rest != [[:blank:]]* && ${#_vorlan_words[@]} -gt 0 ]]; then
            _vorlan_words[-1]+=$part
        else
            rest=${rest#"${rest%%[![:blank:]]*}"}
            _vorlan_words+=("$part")
        fi
        rest=${rest:${#part}}
    done
}

# A word without the backslashes and quotes of the shell.
_vorlan_defaults_unquoted() {
    local word=$1
    case $word in
        \"*\" | \'*\') word=${word:1:${#word}-2} ;;
        *) IFS= read -rd '' word < <(printf '%s\0' "$word" | sed -z 's/\\\(.\)/\1/g') ;;
    esac
    printf '%s' "$word"
}

# Answers with those of the lines of standard input that begin with the word, quoted as the word is.
_vorlan_defaults_answer() {
    local word=$1 candidate quote='' split=''
    [[ $word == [\"\']* ]] && quote=${word:0:1} && word=${word:1}
    [[ -z $quote && $word == *:* && $COMP_WORDBREAKS == *:* ]] && split=${word%"${word##*:}"}
    while IFS= read -r candidate; do
        if [[ -z $quote ]]; then
            printf -v candidate '%q' "$candidate"
        elif [[ $candidate == *"$quote"* ]]; then
            continue
        fi
        [[ $candidate == "$word"* ]] && COMPREPLY+=("${candidate#"$split"}")
    done
}

# What may stand in the place of the last word, one a line.
_vorlan_defaults_candidates() {
    local program=$1 command=${_vorlan_words[1]} word=${_vorlan_words[-1]} last=${_vorlan_words[-2]}
    case ${#_vorlan_words[@]} in
        2) printf '%s\n' read write delete list domains --help --version ;;
        3) [[ $command == @(read|write|delete|list) ]] && "$program" domains ;;
        4) [[ $command == @(read|write|delete) ]] &&
            "$program" list -- "$(_vorlan_defaults_unquoted "${_vorlan_words[2]}")" ;;
    esac
    [[ $command == read && $word == -* && ${#_vorlan_words[@]} -gt 3 ]] && printf '%s\n' --json
    [[ $command == write && ${#_vorlan_words[@]} -gt 4 ]] || return
    case $last in
        -bool) printf '%s\n' true false yes no 1 0 ;;
        -int | -float | -string | -date | -data) ;;
        *) printf '%s\n' -bool -int -float -string -date -data -array -dict ;;
    esac
}

_vorlan_defaults() {
    local -a _vorlan_words
    COMPREPLY=()
    _vorlan_defaults_words
    _vorlan_defaults_answer "${_vorlan_words[-1]}" < <(_vorlan_defaults_candidates "$1" 2>/dev/null)
}

complete -F _vorlan_defaults vorlan-defaults
