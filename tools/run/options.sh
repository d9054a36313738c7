# What ./run is asked for.

usage() {
    cat <<'TEXT'
./run [FILE] [--printer NAME] [--port PATH] [--route message|pipe] [--windows VERSION]
      [--reply WHO=SCRIPT]…

FILE       the document; form feeds part its pages (default: samples/document.txt)
--printer  a printer of the demo's Windows system (default: Demo Printer, which is installed)
--port     installs the printer anew, with this file as its port (default: as the printer is
           installed; that of Demo Printer is C:\demo\port.prn)
--route    how the companions are reached (default: message; pipe from winxp on)
--windows  win95 win98 winme nt40 win2k winxp win2003 win7 win10 (default: win10)
--reply    what a companion answers: dral=0 refuses the job, nemb.closejob=2,1 is busy once. WHO is
           dral or nemb, with an event behind a dot: openjob (default), startpage, endpage,
           closejob, canceljob, or startup (late:MS: its window comes late). SCRIPT is a list of
           0, 1, 2 or any number, sum (of the event block's bytes), late:MS, short:BYTES, never,
           die; the last is repeated. The library waits for an answer without bound: with never,
           the run ends by its time limit.
--help     this text (-h)
--         what follows is the FILE, though it may begin with a dash

A value may follow its option behind a space or a =. One ./run at a time works in a tree; another
one waits. What it makes is below build/.

Exit status: 0 all of it held, 1 something did not, 2 misused, 130 interrupted.
TEXT
}

file=samples/document.txt printer='Demo Printer' port='' route=message windows=win10 replies=()
declare -i file_given=0

parse() {
    while [ $# -gt 0 ]; do
        case $1 in
            -h | --help) usage && exit 0 ;;
            --printer=* | --port=* | --route=* | --windows=* | --reply=*) take "${1%%=*}" "${1#*=}" ;;
            --printer | --port | --route | --windows | --reply)
                [ $# -gt 1 ] || die "no value for $1" 2
                take "$1" "$2"
                shift
                ;;
            --)
                shift
                while [ $# -gt 0 ]; do
                    take_file "$1"
                    shift
                done
                return
                ;;
            -*) die "unknown option $(printable "$1") (see ./run --help)" 2 ;;
            *) take_file "$1" ;;
        esac
        shift
    done
}

take() {
    [ -n "$2" ] || die "no value for $1" 2
    case $1 in
        --printer) printer=$2 ;;
        --port) port=$2 ;;
        --route) route=$2 ;;
        --windows) windows=$2 ;;
        --reply) replies+=("$2") ;;
    esac
}

take_file() {
    [ $file_given = 0 ] || die "one file at a time: $(printable "$1")" 2
    file=$1 file_given=1
    [[ $file = /* ]] || file=$called_from/$file
}

check_options() {
    case $windows in
        win95 | win98 | winme) nine=1 ;;
        nt40 | win2k | winxp | win2003 | win7 | win10) nine=0 ;;
        *) die "unknown Windows version: $(printable "$windows") (see ./run --help)" 2 ;;
    esac
    case $route in
        message) ;;
        pipe)
            case $windows in
                winxp | win2003 | win7 | win10) ;;
                *) die "no pipes on $windows: the library uses them from winxp on" 2 ;;
            esac
            ;;
        *) die "unknown route: $(printable "$route") (message or pipe)" 2 ;;
    esac
    check_replies
    check_names
}

check_replies() {
    local reply number='-?[0-9]+'
    local item="($number|sum|late:[0-9]+(:$number)?|short:[0-4](:$number)?|never|die)"
    local who='(dral|nemb)(\.(startup|openjob|startpage|endpage|closejob|canceljob))?'
    for reply in "${replies[@]}"; do
        [[ $reply =~ ^$who=$item(,$item)*$ ]] ||
            die "unknown reply: $(printable "$reply") (see ./run --help)" 2
    done
}

# check_names: what the demo's Windows system can call a printer, and which of its files may be a port.
check_names() {
    local name
    for name in "$printer" "$port"; do
        [ "$name" = "$(printable "$name")" ] && to_windows <<<"$name" >/dev/null 2>&1 ||
            die "'$(printable "$name")' has a character that the demo's Windows system lacks (code page 1252)" 2
    done
    [ -z "$port" ] || is_port_file "$port" ||
        die "a port is a file on drive C of the demo's Windows system, as C:\\out.prn: '$port'" 2
}

# is_port_file PORT: a file of its own, that is: none of the demo's or of the system's.
is_port_file() {
    local LC_ALL=C path=${1,,}
    [[ $path = 'c:\'*[!\\] ]] && [[ $path != *[\"*/\<\>?\|]* ]] && [[ $path != *'..'* ]] &&
        [[ $path != 'c:\windows\'* ]] && [[ $path != 'c:\users\'* ]] && [[ $path != 'c:\program'* ]] &&
        [[ $path != 'c:\demovok.log' ]] && { [[ $path != 'c:\demo\'* ]] || [[ $path = 'c:\demo\'*.prn ]]; }
}
