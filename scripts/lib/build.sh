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
