# The document, and texts on their way between this system and Windows.

# printable TEXT: without what would move the cursor, or end a line of the account.
printable() { printf %s "$1" | LC_ALL=C tr '\000-\037\177' '?'; }

# The demo's programs know Windows' Western code page.
to_windows() { iconv -f UTF-8 -t CP1252; }
from_windows() { tr -d '\r' | iconv -c -f CP1252 -t UTF-8; }

# check_document: says what is wrong with the file that can't be printed.
check_document() {
    local name
    name=$(printable "$file")
    if [ -L "$file" ] && [ ! -e "$file" ]; then
        die "$name is a symbolic link that leads nowhere" 2
    elif [ ! -e "$file" ]; then
        die "no such file: $name" 2
    elif [ -d "$file" ]; then
        die "$name is a directory, not a document" 2
    elif [ -p "$file" ]; then
        die "$name is a pipe, not a file" 2
    elif [ ! -f "$file" ]; then
        die "$name is a device or socket, not a file" 2
    elif [ ! -r "$file" ]; then
        die "$name can't be read by $(id -un): its permissions are $(stat -L -c %A -- "$file"), its owner is $(stat -L -c %U -- "$file")" 2
    fi
}

# take_document: a copy, made before anything of an earlier run is deleted: that may be the document.
take_document() {
    document=$(mktemp "$top/build/run-document.XXXXXX") || die "can't write below build/: is there space?"
    on_exit drop_document
    cp -- "$file" "$document" || die "can't copy $(printable "$file") to build/: is there space?"
    title=$(printable "${file##*/}")
    size=$(stat -c %s "$document")
}

drop_document() { rm -f "$document"; }
