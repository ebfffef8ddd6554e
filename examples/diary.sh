#!/usr/bin/env bash
# The diary of a run: its header, a line that another program adds, two programs that share the common
# log, and a sweep. In a throw-away profile, and checked.
# Usage: examples/diary.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

tvutil=$build/bin/tvutil
folder=$work/data
mkdir -p "$TVUTIL_PROFILE"

# The text of a log as this terminal shows it.
shown() { iconv -f UTF-16LE -t UTF-8 "$1" | tr -d '\r' | sed 's/^/   | /'; }
holds() { iconv -f UTF-16LE -t UTF-8 "$1" | grep -qF -- "$2"; }
newest() { find "$folder/applog" -name "$1" | sort | tail -n 1; }

title 'A run begins its log'
"$tvutil" log start "$(platform_path "$folder")" Pelrin --mode 2 >"$work/path"
log=$(newest 'Pelrin_*.log')
"$tvutil" log write "$log" 'session opened: 192.0.2.10'
"$tvutil" log write "$log" 'terminal is 80 x 24' --debug
shown "$log"
check 'the mark of UTF-16 stands first' test "$(head -c 2 "$log" | od -An -tx1 | tr -d ' \n')" = fffe
check 'the path is the first line' holds "$log" "$(cat "$work/path")"
check 'the header names the program that wrote it' holds "$log" 'Module Version: 8.0.0.0'
check 'a debug line says so' holds "$log" '] [DEB] terminal is 80 x 24'
"$tvutil" log header "$log" --json >"$work/header"
check 'the header can be had as data' grep -q '"mode": "2"' "$work/header"

title 'What the header tells comes from the system'
"$tvutil" os | sed 's/^/   | /'
check 'the version of a product of the family' \
    test "$("$tvutil" file-version "$build/products/Pelrin.exe")" = 8.0.0.61

title 'Two programs share the common log'
writer() { # NAME
    local i
    for i in 1 2 3 4 5 6 7 8; do
        until "$tvutil" log global "$1 installs part $i" 2>/dev/null; do :; done
    done
}
writer Pelrin &
writer Dovr
wait
common=$TVUTIL_PROFILE/home/Documents/'Tolvarine Computer/8/Common/Log/GlobalLog.txt'
shown "$common" | head -n 4
check 'every line that was written is there' test "$(shown "$common" | wc -l)" -eq 16
check 'each is whole' test "$(shown "$common" | grep -c '\] [A-Za-z]* installs part [1-8]$')" -eq 16

title 'A later start sweeps older logs'
"$tvutil" log sweep "$folder" --dry-run | sed 's/^/   | /'
check 'the rehearsal moved nothing' test -e "$log"
"$tvutil" log start "$folder" Pelrin --sweep >/dev/null
check 'the log became a backup' test -e "${log%.log}.bak"
"$tvutil" log start "$folder" Pelrin --sweep >/dev/null
check 'a backup is gone with the next start' test ! -e "${log%.log}.bak"

finish
