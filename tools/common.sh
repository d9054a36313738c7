# Shared by the commands at the top of the tree; sourced by bash, from the top of the tree.
# Says what it does, installs nothing that is there, and ends the run when something can't be had.

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
wine=$top/tools/wine

say() { printf '== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "$(basename "$0")" "$1" >&2
    exit "${2:-1}"
}

# install_packages NAME…: installs the Debian packages that are missing.
install_packages() {
    local missing=() package as_root=()
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" = 0 ] || as_root=(sudo)
    say "installing ${missing[*]}"
    "${as_root[@]}" apt-get update >"$top/build/apt.log" 2>&1 &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y \
            --no-install-recommends "${missing[@]}" >>"$top/build/apt.log" 2>&1 ||
        die "could not install ${missing[*]}; see build/apt.log"
}

# What a build needs, and what it needs to be run.
log_packages=(libcli11-dev libfmt-dev nlohmann-json3-dev libz-mingw-w64-dev)
build_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64
    "${log_packages[@]}")
wine_packages=(wine64 wine)
test_packages=(g++-mingw-w64-x86-64-posix googletest python3 zip unzip)
# The tests of what runs on this system too, and the browser that its page is tested in.
host_test_packages=(zlib1g-dev libgtest-dev chromium fonts-dejavu-core)

# build PRESET: configures once, then builds. Warnings end a build only where VOK_WERROR is ON in the
# environment: another compiler's new warning is no reason to leave a user without a build.
build() {
    local log="$top/build/$1.log"
    say "building $1 (log: build/$1.log)"
    (cd "$top" && cmake --preset "$1" "-DVOK_WERROR=${VOK_WERROR:-OFF}" && cmake --build --preset "$1") >"$log" 2>&1 || {
        grep -E 'error|FAILED|Error' "$log" | head -20 >&2
        die "the build of $1 failed; see build/$1.log"
    }
}

# use_prefix DIR: makes DIR the Wine prefix of this run, and makes it first if there is none. No
# display is needed; a crash ends the program that crashed instead of starting a debugger.
use_prefix() {
    export WINEPREFIX=$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="mscoree,mshtml=" DISPLAY=
    [ ! -e "$1/ready" ] || return 0
    say "preparing a Windows system in ${1#"$top"/}"
    rm -rf "$1"
    mkdir -p "$1"
    local debugger='HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug'
    {
        "$wine" wineboot -i &&
            "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f &&
            "$wine" reg add "$debugger" /v Auto /d 0 /f &&
            "$wine" reg add "$debugger" /v Debugger /d false /f
    } >"$top/build/wine.log" 2>&1 || die "could not prepare Wine; see build/wine.log"
    end_prefix
    touch "$1/ready"
}

# keep_prefix: starts the prefix's services and its desktop and keeps them until its end, by a
# program with a window. Whichever test comes first would start them otherwise, and they would hold
# its output open.
keep_prefix() {
    /usr/lib/wine/wineserver64 -p
    "$wine" wineboot </dev/null >/dev/null 2>&1 || die "the Windows system does not start"
    "$wine" notepad </dev/null >/dev/null 2>&1 &
}

# end_prefix: ends everything that runs in the prefix, so that nobody waits for it.
end_prefix() {
    /usr/lib/wine/wineserver64 -k >/dev/null 2>&1 || true
    /usr/lib/wine/wineserver64 -w >/dev/null 2>&1 || true
}
