# Shared by the commands at the top of the tree; sourced by bash, from the top of the tree.
# Says what it does, installs nothing that is there, and ends the run when something can't be had.

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P && printf .)
top=${top%$'\n'.}
wine=$top/tools/wine
for part in endings progress place packages npm; do
    . "$top/tools/shell/$part.sh"
done
check_place
check_build_folder

# What a build needs, and what it needs to be run.
log_packages=(libcli11-dev libfmt-dev nlohmann-json3-dev libz-mingw-w64-dev lnav)
compiler_packages=(cmake ninja-build clang-19 lld-19 llvm-19 g++-mingw-w64-x86-64-win32
    binutils-mingw-w64-x86-64)
build_packages=("${compiler_packages[@]}" g++ "${log_packages[@]}")
wine_packages=(wine64 wine)
# What ./run needs of all this.
run_packages=("${compiler_packages[@]}" wine64)
test_packages=(g++-mingw-w64-x86-64-posix googletest python3 zip unzip)
# The tests of what runs on this system too, the browser that its page is tested in, and what signs a
# driver package.
host_test_packages=(zlib1g-dev libgtest-dev chromium fonts-dejavu-core osslsigncode openssl)

# cached PRESET NAME: what the preset's build folder was configured with.
cached() { sed -n "s/^$2:[A-Z]*=//p" "$top/build/$1/CMakeCache.txt" 2>/dev/null || true; }

# renew PRESET: a build folder that was moved or copied here, or whose first configuration did not
# end, can't be gone on with.
renew() {
    local folder=$top/build/$1
    [ -e "$folder/CMakeCache.txt" ] || return 0
    if [ "$(cached "$1" CMAKE_HOME_DIRECTORY)" != "$top" ]; then
        say "build/$1 was made in another folder: building it anew"
        rm -rf "$folder"
    elif [ ! -e "$folder/build.ninja" ]; then
        rm -rf "$folder/CMakeCache.txt" "$folder/CMakeFiles"
    fi
}

# configured_for_targets PRESET: Ninja configures anew by itself when a file of CMake's has changed.
configured_for_targets() {
    [ -e "$top/build/$1/build.ninja" ] && [ "$(cached "$1" VOK_WERROR)" = "${VOK_WERROR:-OFF}" ] &&
        { [ -z "${VOK_TOOLS:-}" ] || [ "$(cached "$1" VOK_TOOLS)" = "$VOK_TOOLS" ]; }
}

# build PRESET [TARGET…]: configures and builds; of a new build folder for TARGETs alone the tools are
# left out, and what they need, unless VOK_TOOLS is ON. Warnings end a build only where VOK_WERROR is ON in the environment:
# another compiler's new warning is no reason to leave a user without a build.
build() {
    local log=$top/build/$1.log
    say "building $1 (log: build/$1.log)"
    doing="building"
    exec 8>>"$top/build/$1.lock"
    flock -n 8 || {
        say "build/$1 is being built by another call: waiting until it ends"
        flock 8
    }
    renew "$1"
    logged "$log" configure_and_build "$@" || {
        LC_ALL=C grep -aE 'error|FAILED|Error' "$log" | head -20 >&2 || true
        die "the build of $1 failed$(why "$log"); see build/$1.log"
    }
    exec 8>&-
    doing=
}

configure_and_build() {
    local preset=$1 with=("-DVOK_WERROR=${VOK_WERROR:-OFF}")
    shift
    cd "$top"
    if [ $# = 0 ]; then
        cmake --preset "$preset" "${with[@]}" && cmake --build --preset "$preset"
        return
    fi
    configured_for_targets "$preset" || cmake --preset "$preset" "${with[@]}" "-DVOK_TOOLS=${VOK_TOOLS:-OFF}" || return
    cmake --build --preset "$preset" --target "$@"
}

# use_prefix DIR: makes DIR the Wine prefix of this run, and makes it first if there is none. No
# display is needed; a crash ends the program that crashed instead of starting a debugger.
use_prefix() {
    check_prefix "$1"
    export WINEPREFIX=$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="mscoree,mshtml=" DISPLAY=
    [ ! -e "$1/ready" ] || return 0
    local log=$top/build/wine.log
    say "preparing a Windows system in ${1#"$top"/}"
    doing="preparing Wine"
    # What an interrupted call has left.
    [ ! -e "$1" ] || end_prefix
    rm -rf "$1"
    mkdir -p "$1" || die "can't make $1: is there space?"
    logged "$log" take_prefix "$1" || {
        end_prefix
        die "could not prepare Wine$(why "$log"); see build/wine.log"
    }
    end_prefix
    touch "$1/ready"
    doing=
}

# A prefix that nothing has run in since it was made, to be copied: as good as a new one, and there in a
# twentieth of the time.
new_prefix=$top/build/wine/new

take_prefix() { # DIR
    if [ -O "$new_prefix/ready" ]; then
        find "$new_prefix" -mindepth 1 -maxdepth 1 ! -name ready -exec cp -a -t "$1" {} +
    else
        make_prefix
    fi
}

make_prefix() {
    local debugger='HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug'
    "$wine" wineboot -i &&
        "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f &&
        "$wine" reg add "$debugger" /v Auto /d 0 /f &&
        "$wine" reg add "$debugger" /v Debugger /d false /f
}

# keep_prefix: starts the prefix's services and its desktop and keeps them until its end, by a
# program with a window. Whichever test comes first would start them otherwise, and they would hold
# its output open.
keep_prefix() {
    /usr/lib/wine/wineserver64 -p 9>&-
    "$wine" wineboot </dev/null >/dev/null 2>&1 || die "the Windows system does not start"
    "$wine" notepad </dev/null >/dev/null 2>&1 9>&- &
}

# end_prefix: ends everything that runs in the prefix, so that nobody waits for it.
end_prefix() {
    /usr/lib/wine/wineserver64 -k >/dev/null 2>&1 || true
    /usr/lib/wine/wineserver64 -w >/dev/null 2>&1 || true
}
