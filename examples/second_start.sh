#!/usr/bin/env bash
# A program of which one runs: a second start hands its text to the first, and a first one that is
# killed leaves nothing in the way. In a throw-away profile, and checked.
# Usage: examples/second_start.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

program=$build/products/Vantrosa.exe
mkdir -p "$TVUTIL_PROFILE"
mkfifo "$work/said"
exec 3<>"$work/said"
running=
trap 'stop; rm -rf "$work"' EXIT

# Starts the program and leaves it running; what it says goes to the pipe.
start() { # ARGUMENT...
    "$program" "$@" >&3 3>&- &
    running=$!
}

stop() {
    [ -z "$running" ] || kill -9 "$running" || true
    wait "$running" 2>/dev/null || true
    running=
}

heard() { # SECONDS
    line=
    IFS= read -r -t "$1" line <&3 && printf '   | %s\n' "$line"
}

# A first instance that hasn't begun to listen, or is busy, misses a text: another start tells it.
hand_over() { # ARGUMENT...
    for _ in 1 2 3 4 5; do
        "$program" "$@" | sed 's/^/   | /'
        if heard 2; then return; fi
    done
}

title 'A first start goes on'
start -url ssh://192.0.2.10
heard 20
check 'it is the first' test "$line" = 'first: -url ssh://192.0.2.10'

title 'A second start hands its text to the first, and ends'
hand_over -url ssh://alice@192.0.2.20:2222
check 'the text arrived' test "$line" = 'told: -url ssh://alice@192.0.2.20:2222'

title 'A first one that is killed leaves nothing in the way'
stop
start
heard 20
check 'the next start is the first' test "$line" = 'first: '
hand_over -url ssh://192.0.2.30
check 'and is told of others' test "$line" = 'told: -url ssh://192.0.2.30'

finish
