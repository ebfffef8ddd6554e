#!/usr/bin/env bash
# Checks for updates: the first one starts the clock, a due one starts the update module, and a module
# that somebody changed isn't started. In a throw-away profile, and checked.
# Usage: examples/update.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

family=$work/family
mkdir -p "$family"
cp "$build/bin/tvutil" "$build/products/LiveUpdate.exe" "$family/"
pipe=$work/pipe
mkfifo "$pipe"
export TVUTIL_EXAMPLE_REPORT=$pipe
updates='HKCU\Software\Tolvarine\Pelrin\8\LiveUpdate'

show() { # ARGUMENT...
    printf '   $ tvutil %s\n' "$*"
    code=0
    "$family/tvutil" "$@" >"$work/said" 2>&1 || code=$?
    sed 's/^/   | /' "$work/said"
}
said() { grep -qF -- "$1" "$work/said"; }
ended() { [ "$code" -eq "$1" ]; }

# What the module reports of itself.
report() {
    timeout 20 cat "$pipe" >"$work/report"
    sed 's/^/   module: /' "$work/report"
}
reported() { grep -qE -- "$1" "$work/report"; }

# Checks are due by periods that are counted from 1970 on. No period of 20,000 days ends soon.
"$family/tvutil" reg add "$updates" LiveUpdateInterval 20000 --type dword

title 'A first check starts the clock, and nothing else'
"$family/tvutil" reg add 'HKLM\Software\Tolvarine\Pelrin\8' Version 8.0.0.61
show update status 1
check 'nothing was checked yet' said 'last check: never'
show update check 1
check 'the clock runs' said 'first check'
show update check 1
check 'the next one is not due' eval 'ended 1 && said "no check is due"'

title 'A period later'
# A SYSTEMTIME: Tuesday, 2 January 2024, 08:30.
show reg add "$updates" LastUpdateCheck 'e80701000200020008001e0000000000' --type binary
show update status 1
check 'a check is due' said 'due: yes'
show update check 1 --checked
report
check 'the module got its switches, in their order' reported '^switches: /silent /checked$'
check 'and the product'"'"'s record' reported '^record: kind=1&product=1&.*version=8\.0\.0\.61'
id=$("$family/tvutil" update id)
check 'and the id of this user' reported "^id: $id\$"
show update due 1
check 'the period began anew' ended 1

title 'By hand'
show update force 1
report
check 'the module was told so' reported '^switches: /force$'

title 'A module that was changed is not started'
printf tampered | dd of="$family/LiveUpdate.exe" bs=1 seek=4096 conv=notrunc status=none
show update force 1
check 'it was refused' eval 'ended 3 && said "not signed by the maker"'

finish
