# Where the tree lies, and whose it is: what would end in a riddle later is told at once.

# check_place: the folder's name goes through CMake, Ninja, shells, compilers and Windows, and not all of
# them take every character.
check_place() {
    local LC_ALL=C odd
    odd=$(printf %s "$top" | tr -d "A-Za-z0-9/._+@~^%&!{}\\200-\\377 []-"; printf .)
    odd=${odd%.}
    [ -z "$odd" ] || die "$(printf 'the folder %q can not be built in, because of %q in its name: move the tree' \
        "$top" "$odd")" 2
}

# check_build_folder: made if it isn't there, and ours to write.
check_build_folder() {
    local build=$top/build other owner
    mkdir -p -- "$build" 2>/dev/null ||
        die "can't make $build: is the tree yours to write, and is there space?"
    if [ "$(id -u)" = 0 ]; then
        return 0
    fi
    # What is below a Wine prefix belongs to whom the prefix belongs to; the Debian systems are root's.
    other=$(find "$build" -path "$build/wine/*/*" -prune -o -path "$build/debian" -prune -o ! -user "$(id -u)" -print -quit 2>/dev/null || true)
    [ -n "$other" ] || return 0
    owner=$(stat -c %U -- "$other")
    die "$(printf '%s belongs to %s: an earlier call was theirs, with sudo perhaps. Mend it with: sudo chown -R %q: %q' \
        "${other#"$top"/}" "$owner" "$(id -un)" "$build")"
}

# check_prefix DIR: Wine serves a prefix's owner alone, root too.
check_prefix() {
    [ -e "$1" ] && [ "$(stat -c %u -- "$1")" != "$(id -u)" ] || return 0
    die "$(printf '%s belongs to %s, and Wine serves nobody else. Call this as %s, or have it made anew: rm -rf %q' \
        "${1#"$top"/}" "$(stat -c %U -- "$1")" "$(stat -c %U -- "$1")" "$1")"
}

# one_at_a_time NAME: waits for another NAME at work in this tree. The lock goes with the process.
one_at_a_time() {
    exec 9>>"$top/build/$1.lock"
    flock -n 9 && return 0
    say "another ./$1 is at work in this tree: waiting until it ends"
    flock 9
}
