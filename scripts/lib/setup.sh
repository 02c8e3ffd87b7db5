# shellcheck shell=bash
# Sourced by the other scripts: installs what a purpose needs on Debian and its relatives.
#
#   need_packages tools [tests] [sources] [browser] [bench] [lint] [coverage] [fuzz] [package] [windows] [armel]

packages_for() {
    case "$1" in
    tools) printf '%s\n' cmake ninja-build g++ libcli11-dev nlohmann-json3-dev libfmt-dev \
        libcpp-httplib-dev libpugixml-dev pkg-config ;;
    tests) printf '%s\n' libgtest-dev libgmock-dev python3 python3-pytest tzdata ;;
    browser) printf '%s\n' chromium chromium-driver python3-selenium ;;
    sources) printf '%s\n' gpsd gpsd-clients python3 ;;
    bench) printf '%s\n' libbenchmark-dev zlib1g-dev libdeflate-dev libfmt-dev libicu-dev python3 ;;
    package) printf '%s\n' binutils dpkg-dev file git gzip lintian mmdebstrap pkg-config ;;
    armel) printf '%s\n' g++-arm-linux-gnueabi qemu-user googletest ;;
    windows) printf '%s\n' g++-mingw-w64-x86-64-posix ;;
    fuzz) printf '%s\n' clang libclang-rt-dev llvm ;;
    coverage) printf '%s\n' gcovr ;;
    lint) printf '%s\n' clang clang-format clang-tidy ;;
    *)
        echo "setup: no such purpose: $1" >&2
        return 1
        ;;
    esac
}

# Reads package names, writes those that are not installed.
missing_packages() {
    local package
    while read -r package; do
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
        wanted+=$(packages_for "$purpose")$'\n' || return 1
    done
    if ! command -v dpkg-query >/dev/null; then
        echo "setup: not a Debian system; it needs the likes of" "${wanted//$'\n'/ }" >&2
        return 0
    fi
    mapfile -t missing < <(printf '%s' "$wanted" | missing_packages)
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "setup: installing ${missing[*]}"
    as_root apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
