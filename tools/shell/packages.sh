# Debian's packages.

missing_packages() {
    local package installed
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
    for package in "$@"; do
        grep -qxF "installed $package" <<<"$installed" || printf '%s\n' "$package"
    done
}

# install_packages NAME…: installs those that are missing.
install_packages() {
    local missing as_root=() log=$top/build/apt.log
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0
    local command="apt-get install --no-install-recommends ${missing[*]}"
    command -v apt-get >/dev/null ||
        die "${missing[*]} are missing and there is no apt-get: this needs Debian 12 or 13"
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null ||
            die "installing packages needs root, and there is no sudo: as root, call $command"
        sudo -v || die "sudo refuses to install packages: have somebody call, as root, $command"
        as_root=(sudo)
    fi
    say "installing ${missing[*]} (log: build/apt.log)"
    : >"$log" || die "can't write build/apt.log"
    doing="installing packages"
    with_progress "$log" apt "${missing[@]}" ||
        die "could not install ${missing[*]}$(why "$log"); see build/apt.log"
    doing=
    rm -f "$top/build/apt.unfinished"
}

# apt NAME…: lists of packages that can't be had whole may still be enough. In a shell of its own, so
# that a signal's message doesn't go to the log.
apt() (
    trap - EXIT HUP INT TERM
    exec >>"$log" 2>&1 </dev/null 8>&- 9>&-
    # Its reports have a descriptor of their own, which it closes to the packages' scripts; and sudo
    # hands none on.
    apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -c
        'exec apt-get -q -o APT::Status-Fd=3 -o DPkg::Lock::Timeout=60 "$@" 3>&1' apt-get)
    # What an interrupted call of ours has left half done.
    [ ! -e "$top/build/apt.unfinished" ] || "${as_root[@]}" dpkg --configure -a
    "${apt_get[@]}" update || true
    touch "$top/build/apt.unfinished"
    "${apt_get[@]}" install -y --no-install-recommends "$@"
)
