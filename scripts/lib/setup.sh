# Sourced by the other scripts: installs what a purpose needs on Debian and its relatives.
#
#   need_packages tools [tests] [bench] [lint]

packages_for() {
    case "$1" in
    tools) echo cmake ninja-build g++ libcli11-dev nlohmann-json3-dev libfmt-dev ;;
    tests) echo libgtest-dev libgmock-dev zlib1g-dev python3 ;;
    bench) echo libbenchmark-dev ;;
    lint) echo clang clang-format clang-tidy ;;
    *)
        echo "setup: no such purpose: $1" >&2
        return 1
        ;;
    esac
}

missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            echo "$package"
    done
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "setup: neither root nor sudo; cannot run: $*" >&2
        return 1
    fi
}

need_packages() {
    local purpose wanted="" missing
    for purpose in "$@"; do
        wanted="$wanted $(packages_for "$purpose")" || return 1
    done
    if ! command -v dpkg-query >/dev/null; then
        echo "setup: not a Debian system; install the likes of:$wanted" >&2
        return 0
    fi
    # shellcheck disable=SC2086  # a list of words
    missing=$(missing_packages $wanted)
    [ -z "$missing" ] && return 0
    echo "setup: installing" $missing
    as_root apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -qq --no-install-recommends $missing >/dev/null
}
