# shellcheck shell=bash
# The head of an example, which has the build folder as its argument: $build, a throw-away profile in
# $work, and checks that are counted. An example ends with `finish`.
set -euo pipefail

build=$(cd "${1:?a build folder}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TVUTIL_PROFILE=$work/profile
unset TVUTIL_DRIVES
# Programs are copied to other places here, away from the library that stands beside the build's.
export LD_LIBRARY_PATH=$build/lib
failures=0

title() { printf '\n== %s\n' "$1"; }

fail() { # WHAT
    printf '   FAIL  %s\n' "$1"
    failures=$((failures + 1))
}

check() { # WHAT COMMAND...
    local what=$1
    shift
    if "$@" >/dev/null 2>&1; then
        printf '   ok    %s\n' "$what"
    else
        fail "$what"
    fi
}

# The platform's name of a host path: C:\ is /.
platform_path() { printf 'C:%s' "${1//\//\\}"; }

finish() {
    if [ "$failures" -ne 0 ]; then
        printf '\n%d of the checks FAILED\n' "$failures"
        exit 1
    fi
    printf '\nAll checks hold.\n'
}
