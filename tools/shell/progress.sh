# Long steps: their output goes to a log. A terminal sees how far they are, in a line that is gone
# when they end; whatever is no terminal sees nothing of it.

on_terminal() { [ -t 1 ] && [ "${TERM:-dumb}" != dumb ]; }

clear_progress() { ! on_terminal || printf '\r\033[K'; }

# progress_line LOG: the last line of a log, apt-get's reports of its progress put into words.
progress_line() {
    tail -c 2000 -- "$1" 2>/dev/null | tr '\r' '\n' | LC_ALL=C tr -d '\000-\011\013-\037\177' |
        sed -E '/^[[:space:]]*$/d; s/^(dl|pm)status:[^:]*:([0-9]+)[0-9.]*:/\2 % /' | tail -n 1
}

# show_progress LOG: until it is killed, or the command is.
show_progress() {
    trap - EXIT HUP INT TERM
    local line started=$SECONDS
    exec 8>&- 9>&-
    while sleep 0.3 && kill -0 $$ 2>/dev/null; do
        line="$((SECONDS - started)) s  $(progress_line "$1")"
        printf '\r\033[K   %s' "${line:0:$((${COLUMNS:-80} - 4))}"
    done
}

# with_progress LOG COMMAND…: runs it in the foreground, where it may ask for a password.
with_progress() {
    local log=$1 shown= status=0
    shift
    if on_terminal; then
        show_progress "$log" &
        shown=$!
    fi
    "$@" || status=$?
    stop_progress "$shown"
    return $status
}

# logged LOG COMMAND…: runs it with its output in LOG. A signal ends it and all that it has started.
logged() {
    local log=$1 shown= status=0
    shift
    : >"$log" || die "can't write $log"
    # Job control gives it a process group of its own.
    set -m
    (
        trap - EXIT HUP INT TERM
        "$@"
    ) >"$log" 2>&1 </dev/null 9>&- &
    running=$!
    set +m
    if on_terminal; then
        show_progress "$log" &
        shown=$!
    fi
    wait "$running" || status=$?
    running=
    stop_progress "$shown"
    return $status
}

stop_progress() {
    [ -n "$1" ] || return 0
    kill "$1" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
    clear_progress
}

# What a log says, and what it means to whoever called the command.
causes=(
    'no space left on device|enough free space'
    'there is no space left on the disk'
    'temporary failure (in name )?resolv|could not (resolve|connect)|cannot initiate the connection|network is unreachable|connection timed out'
    'the package server can not be reached: is there a network?'
    'dpkg was interrupted'
    'an earlier installation was interrupted: sudo dpkg --configure -a'
    'could not get lock|unable to acquire the dpkg'
    'another program is installing packages: call this again when it is done'
    'unable to locate package|no installation candidate'
    'this system does not have them: the commands are made for Debian 12 and 13'
    'unmet dependencies|held broken packages'
    'its packages do not fit together: sudo apt-get --fix-broken install'
    'error processing package|sub-process .* returned an error'
    'a package is broken: sudo dpkg --configure -a, or see the log'
)

# cause LOG: why, as far as it can be told from the log.
cause() {
    local number
    for ((number = 0; number < ${#causes[@]}; number += 2)); do
        if LC_ALL=C grep -qiE "${causes[number]}" "$1"; then
            printf %s "${causes[number + 1]}"
            return
        fi
    done
    return 1
}

# why LOG: the same as a part of a sentence.
why() {
    local reason
    ! reason=$(cause "$1") || printf ' (%s)' "$reason"
}
