# How the commands end: one sentence that says what failed, and nothing left running.

doing=   # what is under way, for whoever interrupts it
running= # the process group of what is under way, if it has one of its own
endings=()

say() { printf '== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit "${2:-1}"
}

# on_exit COMMAND: is run when this command ends, however it ends; the last one comes first.
on_exit() { endings=("$1" "${endings[@]}"); }

end_running() {
    [ -n "$running" ] || return 0
    kill -TERM -- "-$running" 2>/dev/null || true
    wait "$running" 2>/dev/null || true
    running=
}

at_the_end() {
    local status=$? ending
    trap '' HUP INT TERM
    end_running
    for ending in "${endings[@]}"; do
        "$ending" || true
    done
    exit "$status"
}

# interrupted STATUS: a signal ends the command.
interrupted() {
    trap '' HUP INT TERM
    clear_progress
    printf '%s: interrupted%s; call it again and it goes on from there\n' "${0##*/}" \
        "${doing:+ while $doing}" >&2
    exit "$1"
}

trap at_the_end EXIT
trap 'interrupted 129' HUP
trap 'interrupted 130' INT
trap 'interrupted 143' TERM
