# Packages from npm, for tests alone.

# install_npm FOLDER: what its package-lock.json has, into build/npm. Without them the tests that want them
# fail, and no others.
install_npm() {
    local log=$top/build/npm.log folder=$top/build/npm
    ! cmp -s "$1/package-lock.json" "$folder/installed.json" || return 0
    command -v npm >/dev/null || install_packages nodejs npm
    say "installing the packages of $1 (log: build/npm.log)"
    doing="installing packages"
    rm -rf "$folder"
    mkdir -p "$folder"
    cp "$1/package.json" "$1/package-lock.json" "$folder"
    if logged "$log" npm ci --prefix "$folder" --no-audit --no-fund --fetch-retries=1; then
        cp "$1/package-lock.json" "$folder/installed.json"
    else
        say "npm could not install them$(why "$log"); see build/npm.log"
    fi
    doing=
}
