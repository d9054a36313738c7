# The Windows system that ./run prints in, with the demo in it.

base='HKEY_LOCAL_MACHINE\SOFTWARE\DEMO\Printer'

# registry VERSION_OF_INSTALLER: versions of the programs, logging, and the scripts.
registry() {
    local program reply who event
    printf 'REGEDIT4\r\n'
    for program in vok-print.exe vok-drive.exe DEMODRAL.EXE DEMONEMB.EXE; do
        printf '\r\n[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\%s]\r\n' "$program"
        printf '"Version"="%s"\r\n' "$windows"
    done
    printf '\r\n[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\vok-install.exe]\r\n'
    printf '"Version"="%s"\r\n' "$1"
    # Nothing stays of an earlier run's scripts.
    printf '\r\n[-%s]\r\n' "$base"
    printf '\r\n[%s]\r\n"TraceFile"="C:\\\\demo\\\\trace.txt"\r\n' "$base"
    printf '\r\n[%s\\XFiles\\Logger]\r\n"startLog"=dword:00000001\r\n' "$base"
    for reply in "${replies[@]}"; do
        who=${reply%%=*} event=OPENJOB
        [[ $who != *.* ]] || event=${who#*.}
        who=${who%%.*}
        printf '\r\n[%s\\Companion\\%s]\r\n"%s"="%s"\r\n' "$base" "${who^^}" "${event^^}" \
            "${reply#*=}"
    done
}

setup_registry() {
    registry "$1" >"$demo/setup.reg"
    "$wine" reg import 'C:\demo\setup.reg' >>"$log" 2>&1 </dev/null ||
        die "could not set up the registry; see build/run.log"
}

# installer ACTION OPTION…: what it says goes to the log, and to the screen when it fails.
installer() {
    local status=0
    "$wine" build/bin/vok-install.exe "$@" >"$demo/installer.txt" 2>&1 </dev/null || status=$?
    from_windows <"$demo/installer.txt" >>"$log"
    [ $status = 0 ] || from_windows <"$demo/installer.txt" >&2
    return $status
}

install_printer() { # NAME PORT
    installer install --printer "$1" --port "$2" ||
        die "the demo could not be installed; see build/run.log"
}

# printer_port NAME: the port of an installed printer.
printer_port() {
    "$wine" build/bin/vok-install.exe status --printer "$1" >"$demo/status.txt" 2>>"$log" </dev/null || true
    LC_ALL=C grep -q '^printer .* installed' "$demo/status.txt" || return 1
    from_windows <"$demo/status.txt" | sed -nE 's/^port +(.*[^ ]) +of the printer$/\1/p'
}

# prepare: a system with the demo in it and nothing running, whatever an earlier run left.
prepare() {
    use_prefix "$top/build/wine/run"
    on_exit end_prefix
    end_prefix
    doing="installing the demo"
    demo=$WINEPREFIX/drive_c/demo vok_log=$WINEPREFIX/drive_c/DEMOVok.log
    rm -rf "$demo" "$vok_log"
    mkdir -p "$demo"
    mv -- "$document" "$demo/document"
    document=$demo/document
    # The spooler of the NT versions makes the printer, for the 9x versions as well.
    local installed_as=$windows
    [ $nine = 0 ] || installed_as=win10
    setup_registry "$installed_as"
    say "installing the demo printer ($windows)"
    install_default
    choose_printer
    if [ $nine = 1 ]; then
        setup_registry "$windows"
        install_printer "$printer" "$port"
    fi
    sed 's/^/   /' "$log"
    check_nothing_runs
}

# install_default: with the port that it has to have, whichever an earlier run has given it.
install_default() {
    local own='C:\demo\port.prn' now
    install_printer 'Demo Printer' "$own"
    now=$(printer_port 'Demo Printer') || die "the demo printer is not installed; see build/run.log"
    [ "$now" = "$own" ] || install_anew 'Demo Printer' "$own" "$now"
}

install_anew() { # NAME PORT OLD_PORT
    installer remove --printer "$1" --port "$3" || die "the printer '$1' could not be removed"
    # That takes the settings too.
    setup_registry "$installed_as"
    install_printer "$1" "$2"
}

# choose_printer: what the job is sent to, and the file that it comes to.
choose_printer() {
    local now
    if now=$(printer_port "$printer"); then
        if [ -n "$port" ] && [ "$now" != "$port" ]; then
            install_anew "$printer" "$port" "$now"
        fi
        port=${port:-$now}
    elif [ -n "$port" ]; then
        install_printer "$printer" "$port"
    else
        die "can't open the printer '$printer': the demo's Windows system has none of that name (with --port it is installed)" 2
    fi
    is_port_file "$port" ||
        die "the printer '$printer' prints to $port, which can't be compared with the document: give it a file with --port" 2
    local path=${port#?:\\}
    port_file=$WINEPREFIX/drive_c/${path//\\//}
    mkdir -p -- "${port_file%/*}"
}

check_nothing_runs() {
    [ "$(LC_ALL=C grep -c '^companion .* not running' "$demo/status.txt")" = 2 ] ||
        die "a companion runs before the first job"
    say "no companion is running"
}
