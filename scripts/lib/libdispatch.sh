# SPDX-License-Identifier: Apache-2.0
# Finds libdispatch or builds it into .deps/dispatch; to be sourced after common.sh.
#
# Debian 12 has no package of it, but Debian 13's source package of Swift contains it. Only the source is taken,
# and it is verified: apt checks the signature of the newer release's index against the keyring that Debian 12
# ships, the index gives the digest of the archive, and the download is refused if it differs.
# cmake/FindDispatch.cmake looks in the same places.

dispatchPrefix=$root/.deps/dispatch
dispatchRelease=trixie
dispatchKeyring=/usr/share/keyrings/debian-archive-keyring.gpg
dispatchCache=${XDG_CACHE_HOME:-${HOME:-/var/tmp}/.cache}/vorlan-foundation
dispatchSource=$dispatchCache/libdispatch.tar.xz

# Whether a libdispatch that serves our run loops is installed under the given prefix.
isDispatchUnder() {
    local header library
    for header in "$1"/include/dispatch/dispatch.h "$1"/lib/swift/dispatch/dispatch.h; do
        [[ -e $header ]] || continue
        for library in "$1"/lib{,64,/*-linux-gnu*,/swift/linux}/libdispatch.so; do
            [[ -e $library ]] && grep -q _dispatch_main_queue_callback_4CF "$library" && return 0
        done
    done
    return 1
}

findDispatch() {
    local prefix swift places
    IFS=':;' read -r -a places <<<"${CMAKE_PREFIX_PATH:-}"
    places+=(/usr/local /usr)
    if swift=$(command -v swift); then places+=("$(dirname -- "$(dirname -- "$(readlink -f -- "$swift")")")"); fi
    for prefix in "${places[@]}" "$dispatchPrefix"; do
        [[ -n $prefix ]] && isDispatchUnder "$prefix" && return 0
    done
    return 1
}

# Prints the URIs of the archives which this machine takes its own release from, Debian's own first.
# apt reads its configuration itself, so every form of it is understood.
archives() {
    local codename
    codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
    apt-get indextargets --format '$(ORIGIN) $(COMPONENT) $(RELEASE) $(REPO_URI)' 'Created-By: Packages' |
        sed -nE -e "/^Debian main $codename /s/^/1 /p" -e "/^Debian main $codename /!s/^(.*) main (.*)/2 \1 main \2/p" |
        sort -s -k1,1 | sed -E 's/.* //' | awk '!seen[$0]++'
}

# Prints apt's options for an apt state of its own in the given folder, one a line.
aptState() {
    printf -- '-o\n%s\n' "Dir::State::Lists=$1/lists" "Dir::Cache=$1/cache" "Dir::Etc::sourcelist=$1/sources.list" \
        Dir::Etc::sourceparts=/dev/null APT::Sandbox::User= Acquire::Languages=none Acquire::Retries=3
}

# Downloads the source package's archive from one archive URI, into archive.tar.xz in the given folder.
downloadFrom() {
    local uri=${1%/} folder=$2 options record path digest name
    mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
    printf 'deb-src [signed-by=%s] %s %s main\n' "$dispatchKeyring" "$uri" "$dispatchRelease" >"$folder/sources.list"
    mapfile -t options < <(aptState "$folder")
    apt-get update -q -o APT::Update::Error-Mode=any "${options[@]}" </dev/null >&2 || return 1
    record=$(apt-cache "${options[@]}" showsrc --only-source swiftlang | sed '/^$/,$d') || return 1
    path=$(sed -nE 's/^Directory: //p' <<<"$record")
    read -r digest name < <(sed -nE 's/^ ([0-9a-f]{64}) [0-9]+ (.*\.orig\.tar\.xz)$/\1 \2/p' <<<"$record") || return 1
    say "downloading $name (some 220 MB, of which 1 MB is kept)"
    /usr/lib/apt/apt-helper "${options[@]}" download-file "$uri/$path/$name" "$folder/archive.tar.xz" \
        "SHA256:$digest" >&2
}

# Puts libdispatch's source into the user's cache folder, where the next checkout finds it.
fetchDispatchSource() {
    local folder=$1 uri from=()
    mapfile -t from < <(archives)
    [[ ${#from[@]} -gt 0 ]] || fail "apt is configured here with no archive that libdispatch's source could come from"
    for uri in "${from[@]}"; do
        downloadFrom "$uri" "$folder" && break
        say "libdispatch's source could not be had from $uri"
    done
    [[ -s $folder/archive.tar.xz ]] || fail "libdispatch's source could not be downloaded: is there a network?
Run this again when there is, or set CMAKE_PREFIX_PATH to where a libdispatch is installed"
    say "taking libdispatch's part out of it"
    mkdir -p "$folder/part"
    tar -C "$folder/part" -xJf "$folder/archive.tar.xz" --strip-components=2 --wildcards '*/swift-corelibs-libdispatch/*'
    tar -C "$folder/part" -cJf "$folder/libdispatch.tar.xz" .
    mv -f "$folder/libdispatch.tar.xz" "$dispatchSource"
}

buildDispatch() {
    local folder=$1
    say "building libdispatch"
    mkdir -p "$folder/source"
    tar -C "$folder/source" -xJf "$dispatchSource"
    if ! {
        cmake -S "$folder/source" -B "$folder/build" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
            -DCMAKE_BUILD_TYPE=Release -DENABLE_SWIFT=OFF -DBUILD_TESTING=OFF -DCMAKE_INSTALL_LIBDIR=lib \
            -DCMAKE_INSTALL_PREFIX="$folder/prefix" &&
            cmake --build "$folder/build" && cmake --install "$folder/build" &&
            install -D -m 644 "$folder/source/LICENSE" "$folder/prefix/share/doc/libdispatch/LICENSE"
    } >"$folder/log" 2>&1; then
        cat -- "$folder/log" >&2
        fail "libdispatch could not be built; its output is above"
    fi
    isDispatchUnder "$folder/prefix" || fail "libdispatch was built, but does not let a run loop serve its main queue"
}

# Everything is made beside its place and renamed into it, so that an interruption leaves the old state or the new.
# The locks keep two set-ups apart; who holds one may clear what an interrupted one left. They are held until the
# script and what it called are gone, so that what a killed script started is over before the next one begins.
installDispatch() {
    findDispatch && return 0
    mkdir -p "$root/.deps" "$dispatchCache"
    exec {treeLock}>"$root/.deps/lock" {cacheLock}>"$dispatchCache/lock"
    takeLock "$treeLock"
    findDispatch && return 0
    provideDispatchSource "$dispatchCache/fetching"
    buildAside "$root/.deps/building"
    say "libdispatch is in .deps/dispatch"
}

takeLock() {
    flock -n "$1" && return 0
    say "waiting for another set-up to finish"
    flock "$1"
}

# Clears a folder, now and when the script ends, whichever way.
useFolder() {
    usedFolder=$1
    trap 'rm -rf -- "$usedFolder"' EXIT
    rm -rf -- "$usedFolder"
    mkdir -p "$usedFolder"
}

provideDispatchSource() {
    takeLock "$cacheLock"
    useFolder "$1"
    xz -tq "$dispatchSource" 2>/dev/null || fetchDispatchSource "$1"
    rm -rf -- "$1"
    trap - EXIT
    flock -u "$cacheLock"
}

buildAside() {
    useFolder "$1"
    buildDispatch "$1"
    rm -rf -- "$dispatchPrefix"
    mv -T -- "$1/prefix" "$dispatchPrefix"
    rm -rf -- "$1"
    trap - EXIT
}
