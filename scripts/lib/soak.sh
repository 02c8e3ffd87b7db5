# shellcheck shell=bash
# Sourced by the parts of scripts/soak, which run in the root of the source tree with
#   SOAK_SHORT   not empty in the short form
#   SOAK_WORK    a folder of the part's own, removed afterwards
set -euo pipefail
. scripts/lib/setup.sh

# amount FULL SHORT: the one that this form asks for
amount() {
    if [ -n "$SOAK_SHORT" ]; then echo "$2"; else echo "$1"; fi
}

# build PRESET TARGET...: builds quietly, the log shown when it fails
build() {
    local preset=$1
    shift
    need_packages tools tests bench
    { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@"; } \
        >"$SOAK_WORK/build.log" 2>&1 || { tail -n 30 "$SOAK_WORK/build.log" >&2 && return 1; }
}
