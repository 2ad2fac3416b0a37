# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Completion of vorlan-strings for bash: its commands and options, bundles and tables, and the languages of a bundle.

# The languages and tables of the bundles that the line names, in columns.
_vorlan_strings_tables() {
    local word
    for word in "${COMP_WORDS[@]:2}"; do
        word=$(xargs printf %s <<<"${word/#\~/$HOME}") # which takes the shell's quotes away
        [[ -d $word ]] && "$1" list -- "$word"
    done
}

# Answers with the words of standard input, one a line, that begin with the one at the cursor.
_vorlan_strings_answer() {
    local candidate
    while IFS= read -r candidate; do
        [[ $candidate == "$1"* ]] && printf -v candidate '%q' "$candidate" && COMPREPLY+=("$candidate")
    done
}

_vorlan_strings_files() {
    local kind
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(
        compgen -d -- "$1"
        [[ $2 == print ]] && for kind in strings stringsdict; do compgen -f -X "!*.$kind" -- "$1"; done
    )
}

_vorlan_strings() {
    local word=$2 command=${COMP_WORDS[1]} last=$3
    COMPREPLY=()
    # Bash takes an equals sign for a word of its own.
    [[ $word == '=' ]] && word=''
    [[ $last == '=' ]] && last=${COMP_WORDS[COMP_CWORD - 2]}
    [[ ${COMP_WORDS[COMP_CWORD]} == '=' ]] && last=${COMP_WORDS[COMP_CWORD - 1]}
    if ((COMP_CWORD == 1)); then
        _vorlan_strings_answer "$word" < <(printf '%s\n' check print list --help --version)
    elif [[ $command == check && $last == --base ]]; then
        _vorlan_strings_answer "$word" < <(_vorlan_strings_tables "$1" 2>/dev/null | cut -f1 | sort -u)
    elif [[ $command == check && $last == --table ]]; then
        _vorlan_strings_answer "$word" < <(_vorlan_strings_tables "$1" 2>/dev/null | cut -sf2 | sort -u)
    elif [[ $word == -* ]]; then
        case $command in
            check) _vorlan_strings_answer "$word" < <(printf '%s\n' --base --table --strict --json --help) ;;
            print) _vorlan_strings_answer "$word" < <(printf '%s\n' --json --help) ;;
            list) _vorlan_strings_answer "$word" < <(printf '%s\n' --help) ;;
        esac
    elif [[ $command == @(check|print|list) ]]; then
        _vorlan_strings_files "$word" "$command"
    fi
}

complete -F _vorlan_strings vorlan-strings
