# Sourced by ./run and ./test: makes sure that the named Debian packages are there, and says plainly what it does.

say() { printf '%s\n' "velamo: $*" >&2; }

# timed WHAT COMMAND...: runs the command and says how many minutes it took.
timed() {
    local what=$1 start=$SECONDS status=0
    shift
    say "$what"
    "$@" || status=$?
    say "$what: $(((SECONDS - start + 3) / 60)).$((((SECONDS - start + 3) % 60) / 6)) minutes"
    return "$status"
}

# What building needs, and what the tests need besides.
build_packages=(g++ cmake ninja-build pkg-config libplist-dev libicu-dev libsqlite3-dev libcairo2-dev libseccomp-dev libarchive-dev zlib1g-dev nettle-dev liblcms2-dev libcli11-dev nlohmann-json3-dev)
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-dev clang-format clang-tidy lld llvm python3 strace zip p7zip-full bzip2 xz-utils zstd)
# What the tests with the desktops' own programs need, a text for each host; they are installed one after the other.
desktop_packages=(
    # file types
    "shared-mime-info libxml2-utils libglib2.0-bin xdg-utils libfile-mimeinfo-perl" "qtbase5-dev"
    # thumbnails
    "bubblewrap gir1.2-gnomedesktop-3.0 python3-gi dbus-daemon" "tumbler python3-gi dbus-daemon"
    "libkf5kio-dev extra-cmake-modules kio-extras dbus-daemon"
    # search
    "recollcmd bubblewrap" "baloo-kf5 dbus-daemon bubblewrap" "tracker tracker-extract tracker-miner-fs dbus-daemon"
    # packages, in a fresh system too, and the shells that complete
    "lintian dpkg-dev" "mmdebstrap" "bash-completion" "zsh" "fish"
)

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# install_missing PACKAGE...
install_missing() {
    local package missing=() as_root=()
    for package in "$@"; do is_installed "$package" || missing+=("$package"); done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "these packages are missing, and only root may install them: ${missing[*]}"
            say "as root: apt-get install ${missing[*]}"
            exit 1
        fi
        as_root=(sudo)
    fi
    say "installing what is missing: ${missing[*]}"
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o=Dpkg::Use-Pty=0)
    "${apt[@]}" update >/dev/null
    "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" >/dev/null
}

# install_hosts: the desktops' packages. What cannot be installed stops nothing but CI; the tests of that host are skipped.
install_hosts() {
    local host
    for host in "${desktop_packages[@]}"; do
        # shellcheck disable=SC2086 # a text holds several names
        (install_missing $host) && continue
        say "not to be had, and so their tests will be skipped: $host"
        [ -z "${CI:-}" ] || exit 1
    done
}

# build PRESET [cmake argument...] -- [target...]: configures once, then builds; the full output only where something fails.
build() {
    local preset=$1 options=() targets=() log
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do options+=("$1"); shift; done
    [ $# -gt 0 ] && shift
    [ $# -gt 0 ] && targets=(--target "$@")
    log=$(mktemp)
    if ! { cmake --preset "$preset" "${options[@]}" && cmake --build --preset "$preset" "${targets[@]}"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        say "the build failed"
        exit 1
    fi
    rm -f "$log"
}
