#!/usr/bin/env bash
# A program crashes and leaves a report, which is shown; nobody is there to take it. In a throw-away
# profile, and checked.
# Usage: examples/crash.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

tvutil=$build/bin/tvutil
mkdir -p "$TVUTIL_PROFILE"
# Reports go this way, which ends here.
export http_proxy=http://127.0.0.1:1

title 'A program crashes'
status=0
(
    ulimit -c 0
    SECRET='speak friend' "$build/products/Pelrin.exe" -crash "$(platform_path "$work/data")" \
        'open sesame' || exit
) 2>/dev/null || status=$?
check 'it ended by the signal of its fault' test "$status" -eq 139

title 'What it left'
"$tvutil" crash list | sed 's/^/   | /'
name=$("$tvutil" crash list | cut -d ' ' -f 1)
"$tvutil" crash show "$name" >"$work/shown"
head -n 14 "$work/shown" | sed 's/^/   | /'
shows() { grep -qF -- "$1" "$work/shown"; }
check 'the report names the program' shows "program=$build/products/Pelrin.exe"
check 'and its version' shows 'program_version=8.0.0.61'
check 'and the function that failed' shows '::count_sessions('
check 'all threads are there' test "$(grep -c 'thread:$' "$work/shown")" -eq 2
folder=$TVUTIL_PROFILE/user/crash/$name
check 'the log is part of it' eval 'ls "$folder"/Pelrin_*.log'
check 'an archive stands beside it' test -s "$folder.zip"
check 'neither command line nor environment is' eval '! grep -rqE "sesame|friend" "$folder"'

title 'Nobody took it'
check 'it waits to be sent' eval '"$tvutil" crash list | grep -q "  waiting$"'
code=0
"$tvutil" crash send 2>"$work/why" || code=$?
sed 's/^/   | /' "$work/why"
check 'so it is said, and it goes on waiting' eval '[ $code -eq 4 ] && test -s "$folder.zip"'

finish
