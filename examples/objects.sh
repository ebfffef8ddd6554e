#!/usr/bin/env bash
# Two processes that share a named event, and a mutex whose owner is killed. In a throw-away profile,
# and checked.
# Usage: examples/objects.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

tvutil=$build/bin/tvutil
mkdir -p "$TVUTIL_PROFILE"
mkfifo "$work/in" "$work/out"

# What a command prints, shown and checked.
told() { # WHAT EXPECTED SAID
    printf '   | %s\n' "$3"
    check "$1" test "$3" = "$2"
}

title 'Two processes share a named event'
check 'nobody has it yet' test "$("$tvutil" object set 'Global\ready' || echo $?)" = 1
"$tvutil" object wait event 'Global\ready' --timeout 60000 >"$work/waited" &
waiter=$!
until "$tvutil" object set 'Global\ready'; do :; done
wait "$waiter"
told 'one set lets the other through' signalled "$(cat "$work/waited")"

title 'The owner of a mutex is killed'
"$tvutil" object hold 'Global\install' <"$work/in" >"$work/out" &
owner=$!
exec 3>"$work/in" 4<"$work/out"
read -r said <&4
told 'a process has the mutex' taken "$said"
told 'another one does not get it' timeout \
    "$("$tvutil" object wait mutex 'Global\install' --timeout 0 || true)"
# The name goes with the last process that has it, so the next one waits already.
"$tvutil" object wait mutex 'Global\install' --timeout 60000 >"$work/next" &
waiter=$!
until [ -n "$(find "/proc/$waiter/fd" -lname '*tvutil2-object*' 2>/dev/null)" ]; do :; done
kill -9 "$owner"
wait "$owner" 2>/dev/null || true
wait "$waiter"
told 'the next one hears of it' abandoned "$(cat "$work/next")"

finish
