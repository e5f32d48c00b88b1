# Sourced by the other scripts: every package of the distribution that the project needs, by purpose.
#
#   need PURPOSE...   installs what is missing, as root or with sudo, and says what; at once when all is there

packages_for() {
    case $1 in
    build)   echo g++ python3 cmake ninja-build ccache pkg-config libjsoncpp-dev liblua5.1-0-dev ;;
    test)    echo libgtest-dev libgmock-dev lua5.1 luajit ;;
    demo)    echo lua-sql-sqlite3 lua-cjson libedit-dev libssl-dev ;;
    windows) echo g++-mingw-w64-x86-64-posix wine wine64 googletest dpkg-dev ;;
    bench)   echo libbenchmark-dev libglib2.0-dev libsqlite3-dev ;;
    fuzz)    echo clang-14 libclang-rt-14-dev ;;
    format)  echo clang-format-14 ;;
    tidy)    echo clang-tidy-14 ;;
    *)       echo "packages.sh: unknown purpose '$1'" >&2; return 1 ;;
    esac
}

need() {
    local purpose package missing=() sudo=
    for purpose in "$@"; do
        for package in $(packages_for "$purpose"); do
            dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
        done
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing packages: ${missing[*]}"
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get -qq update
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends \
        -o DPkg::Lock::Timeout=300 install "${missing[@]}" >/dev/null
}
