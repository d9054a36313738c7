# How the commands end: one sentence that says what failed, and nothing left running.

doing=     # what is under way, for whoever interrupts it
running=   # the process group of what is under way, if it has one of its own
endings=() # commands that are run at the end
told=      # a failure was told already
tells_all= # this command tells of every failure itself

say() { printf '== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    told=1
    exit "${2:-1}"
}

# on_exit COMMAND: is run when this command ends, however it ends; the last one comes first.
on_exit() { endings=("$1" "${endings[@]}"); }

end_running() {
    [ -n "$running" ] || return 0
    kill -TERM -- "-$running" 2>/dev/null || true
    wait "$running" 2>/dev/null || true
    # The others of its group may need a moment more, and some don't listen.
    local tries
    for tries in {1..50}; do
        kill -0 -- "-$running" 2>/dev/null || break
        sleep 0.1
    done
    kill -KILL -- "-$running" 2>/dev/null || true
    running=
}

at_the_end() {
    local status=$? ending
    trap '' HUP INT TERM
    end_running
    [ "$status" = 0 ] || [ -n "$told" ] || [ -z "$tells_all" ] ||
        printf '%s: failed%s (status %s); the logs are in build/\n' "${0##*/}" "${doing:+ while $doing}" \
            "$status" >&2
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
    told=1
    exit "$1"
}

trap at_the_end EXIT
trap 'interrupted 129' HUP
trap 'interrupted 130' INT
trap 'interrupted 143' TERM
