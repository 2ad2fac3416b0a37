# SPDX-License-Identifier: Apache-2.0
# Helpers of the scripts in this folder; to be sourced, with `set -euo pipefail` on.

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
export LC_ALL=C.UTF-8

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

fail() {
    say "$*"
    exit 1
}

# Prints the names in a list of packages, without its comments. A name may be followed by others that serve as well,
# as in a|b: the first is installed where none of them is.
packageList() { sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$root/scripts/packages/$1.txt"; }

# Prints those of the named packages that are not installed. Asks only the local package database.
missingPackages() {
    local installed name every
    IFS='|' read -r -a every <<<"$(IFS='|' && printf '%s' "$*")"
    installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${every[@]}" 2>/dev/null || true)
    for name in "$@"; do
        grep -qxE -- "(${name//[.+]/.}) installed" <<<"$installed" || printf '%s\n' "${name%%|*}"
    done
}

# Runs a command as root: directly, or through sudo.
asRoot() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    else
        sudo -- "$@"
    fi
}

# Whether `asRoot` can work: without a terminal, sudo has nobody to ask for a password.
canBecomeRoot() {
    [[ $EUID -eq 0 ]] && return 0
    command -v sudo >/dev/null || return 1
    sudo -n true 2>/dev/null || [[ -t 0 ]]
}

aptInstall() {
    asRoot env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        -o DPkg::Lock::Timeout=300 "$@" </dev/null
}

# Installs the packages named in the given lists, when any of them is missing.
installPackages() {
    local names missing
    mapfile -t names < <(for list in "$@"; do packageList "$list"; done | sort -u)
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "this is not a Debian system; the counterparts of these packages are taken to be here: ${names[*]}"
        return 0
    fi
    mapfile -t missing < <(missingPackages "${names[@]}")
    [[ ${#missing[@]} -eq 0 ]] && return 0
    canBecomeRoot || fail "these Debian packages are missing: ${missing[*]}
Installing them needs root, and there is no sudo that works here. As root, say:
    apt-get update && apt-get install --no-install-recommends ${missing[*]}"
    say "installing ${missing[*]}"
    asRoot apt-get update -q </dev/null >&2 || say "the package lists could not be refreshed; trying with the old ones"
    if ! aptInstall "${missing[@]}" >&2; then
        say "trying once more, after finishing what an interrupted installation may have left"
        asRoot env DEBIAN_FRONTEND=noninteractive dpkg --configure -a </dev/null >&2 || true
        aptInstall -f >&2 || true
        aptInstall "${missing[@]}" >&2 || fail "these Debian packages could not be installed: ${missing[*]}"
    fi
}
