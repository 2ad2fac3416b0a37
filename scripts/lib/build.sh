# SPDX-License-Identifier: Apache-2.0
# Configures and builds; to be sourced after common.sh.

# Configures a preset where that was not done yet, or where the presets changed since; otherwise the build itself
# configures again when it must. A tree that was moved is configured afresh.
configure() {
    local folder=$root/build/$1 fresh=()
    [[ -e $folder/build.ninja && $folder/configured -nt $root/CMakePresets.json ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt" && return 0
    [[ -e $folder/CMakeCache.txt ]] && fresh=(--fresh)
    (cd "$root" && cmake --preset "$1" "${fresh[@]}") && touch "$folder/configured"
}

# Builds the given targets of a preset, or everything.
build() {
    local preset=$1 targets=()
    shift
    [[ $# -gt 0 ]] && targets=(--target "$@")
    configure "$preset" || return
    (cd "$root" && cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}")
}

# Runs the tests of a preset that was built; further arguments go to ctest.
runTests() {
    local preset=$1
    shift
    (cd "$root" && ctest --preset "$preset" "$@" </dev/null)
}

# Says which tests of a preset failed when they were run last, and how that ended which each of them printed.
showFailedTests() {
    local folder=$root/build/$1/Testing/Temporary name
    [[ -s $folder/LastTestsFailed.log ]] || return 0
    say "failed as $1:"
    cut -d: -f2- "$folder/LastTestsFailed.log"
    while IFS= read -r name; do
        printf '\n--- %s, as %s:\n' "$name" "$1"
        # Its part of the log ends with eight lines by ctest.
        name=$name awk '/^[0-9]+\/[0-9]+ Testing: / { its = substr($0, index($0, ": ") + 2) == ENVIRON["name"] }
                        its' "$folder/LastTest.log" | tail -n 68
    done < <(cut -d: -f2- "$folder/LastTestsFailed.log")
}
