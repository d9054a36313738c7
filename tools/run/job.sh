# One job, and what has to hold of it.

start_job() { # NUMBER
    local program=(build/bin/vok-print.exe 'C:\demo\document' --route "$route")
    if [ $nine = 1 ]; then
        program=(build/bin/vok-drive.exe 'C:\demo\document' --output "$port")
    fi
    # A file takes the output, because the companions inherit it and live on.
    timeout "$time_limit" "$wine" "${program[@]}" --printer "$printer" --title "$title" --job "$1" \
        >"$demo/console.txt" 2>&1 </dev/null 9>&- &
}

# show_account: what a job writes, line by line, as it is written.
show_account() {
    local LC_ALL=C line
    while IFS= read -r line; do
        line=${line%$'\r'}
        [[ $line != *[!\ -~]* ]] || line=$(from_windows <<<"$line")
        printf '   %s\n' "$line"
    done
}

# print_job NUMBER: prints the document and shows the account of it as it is written.
print_job() {
    doing="printing"
    say "job $1: $(printable "$file") ($size bytes) on $windows, $route route"
    [ $nine = 0 ] || say "no spooler loads a print processor on $windows: vok-drive stands in for it"
    rm -f -- "$port_file"
    : >"$demo/trace.txt"
    : >"$demo/console.txt"
    local status=0
    start_job "$1"
    job=$!
    # Waited for in the background, so that a signal ends the run at once.
    tail -q -n +1 -f -s 0.1 --pid=$job "$demo/trace.txt" "$demo/console.txt" 9>&- | show_account 9>&- &
    wait $!
    wait $job || status=$?
    job=
    [ $status != 124 ] || die "the job did not end within $time_limit seconds"
    [ $status = 0 ] || wrong "the job ended with exit status $status"
    check_port
    check_companion DRAL "$1"
    check_companion NEMB "$1"
}

end_job() {
    [ -n "$job" ] || return 0
    kill "$job" 2>/dev/null || true
    wait "$job" 2>/dev/null || true
}

wrong() {
    printf 'WRONG: %s\n' "$1" >&2
    result=1
}

# account PATTERN: what the account says, taken from the lines of the print processor.
account() {
    LC_ALL=C sed -nE "s/^[^ ]+ (processor|driver)\[[0-9]+\] $1\$/\2/p" "$demo/trace.txt"
}

# verdict: what became of the job, by the print processor's own words.
verdict() { account 'job [0-9]+ (printed|refused|cancelled|failed)'; }

check_port() {
    local became
    became=$(verdict)
    if [ "$became" = printed ]; then
        if cmp -- "$document" "$port_file"; then
            say "the port has $(stat -c %s -- "$port_file") bytes, equal to the document"
        else
            wrong "what reached the port is not the document"
        fi
        return
    fi
    [ ${#replies[@]} -gt 0 ] || wrong "the job was not printed but ${became:-lost}"
    if [ -s "$port_file" ]; then
        pages_refused || wrong "bytes of a job that was ${became:-lost} reached the port"
    else
        say "the job was ${became:-lost}: nothing reached the port"
    fi
}

# pages_refused: a job refused at a page has its earlier pages at the port already, and no more.
pages_refused() {
    [[ " ${replies[*]} " =~ (startpage|endpage)= ]] || return 1
    cmp -n "$(stat -c %s -- "$port_file")" -- "$document" "$port_file" || return 1
    say "the job was $(verdict): the port has its first $(stat -c %s -- "$port_file") bytes"
}

# check_companion NAME JOB: the first job starts each companion once, the second finds it again.
check_companion() {
    local started route_taken
    started=$(LC_ALL=C sed -nE "s/^[^ ]+ $1\[([0-9]+)\] started:.*/\1/p" "$demo/trace.txt")
    route_taken=$(account "launch: .*$1 by (message|pipe).*")
    [ "$route_taken" = "$route" ] || wrong "$1 was reached by '$route_taken', not by $route"
    if [ "$2" = 1 ]; then
        first[$1]=$started
        [[ $started =~ ^[0-9]+$ ]] || wrong "$1 was not started once by the first job: '$started'"
        say "$1 was started by this job (process $started) and is reached by $route_taken"
    elif [[ " ${replies[*]} " =~ " ${1,,}"[^\ ]*die ]]; then
        say "$1 may die by its script: ${first[$1]} served the first job, ${started:-it} this one"
    elif [ -n "$started" ]; then
        wrong "$1 was started again by the second job (process $started)"
    else
        say "$1 was found running (process ${first[$1]}) and is reached by $route_taken"
    fi
}

show_log() {
    [ -s "$vok_log" ] || {
        wrong "the library has logged nothing"
        return
    }
    say "the library's log: ${vok_log#"$top"/} ($(wc -l <"$vok_log") lines), its last lines:"
    tail -n 8 "$vok_log" | show_account
}
