#!/usr/bin/env bash
# The data of version 6, sessions and proxies among it, is brought to the present folder once, and the
# old folder stays as it was. In a throw-away profile, and checked.
# Usage: examples/import.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

# Shows a command and what it says, and keeps that in $work/said; its code is the result.
show() { # ARGUMENT...
    printf '   $ tvutil %s\n' "$*"
    local code=0
    "$build/bin/tvutil" "$@" >"$work/said" || code=$?
    sed 's/^/   | /' "$work/said"
    return "$code"
}

said() { grep -qF -- "$1" "$work/said"; }
content() { [ "$(cat "$1")" = "$2" ]; }
proxy_says() { iconv -f UTF-16 -t UTF-8 "$data/Common/Proxy/office.ini" | tr -d '\r' | grep -qxF -- "$1"; }
all_of() { (cd "$1" && find . -type f -exec md5sum {} + | sort); }

data="$TVUTIL_PROFILE/home/Documents/Tolvarine Computer/8"
old=$work/six
elsewhere=$work/lab
mkdir -p "$old/Common" "$old/Pelrin/Sessions" "$old/Dovr/Sessions/home" "$elsewhere" "$data/Pelrin" "$data/Common"
echo 'a key' >"$old/Common/known_hosts"
echo 'newer' >"$data/Common/known_hosts"
echo 'old aliases' >"$old/Pelrin/alias.ini"
echo 'my aliases' >"$data/Pelrin/alias.ini"
echo 'files' >"$old/Dovr/Sessions/home/nas.dvf"
echo 'terminal' >"$elsewhere/office.pln"
printf '[SessionPath]\r\nPelrin=%s\r\n' "$(platform_path "$elsewhere")" >"$old/SessionPath.ini"
reg() { "$build/bin/tvutil" reg add "$@" >/dev/null; }
reg 'HKCU\Software\Tolvarine\Common\6\UserData' UserDataPath "$(platform_path "$old")"
reg 'HKCU\Software\Tolvarine\Proxy\office' Host proxy.example.org
reg 'HKCU\Software\Tolvarine\Proxy\office' Port 8080 --type dword
before=$(all_of "$old")

title 'What an import would do'
show import plan
check 'it names the version' said 'version 6'
check 'and what would be overwritten' said 'over'
check 'it copied nothing' content "$data/Common/known_hosts" newer

title 'The import'
show import run
check 'sessions arrived' content "$data/Dovr/Sessions/home/nas.dvf" files
check 'those of a chosen folder too' content "$data/Pelrin/Sessions/office.pln" terminal
check 'common files of the old version go over those that are there' content "$data/Common/known_hosts" 'a key'
check 'settings that are there stay' content "$data/Pelrin/alias.ini" 'my aliases'
check 'the proxy of the registry is a file' proxy_says 'HOST=proxy.example.org'
check 'with its port' proxy_says 'PORT=8080'
check 'the old folder is what it was' test "$(all_of "$old")" = "$before"

title 'It happens once'
echo 'changed' >"$data/Common/known_hosts"
check 'there is nothing to do any more' eval 'show import run; test $? = 1'
check 'nothing was touched' content "$data/Common/known_hosts" changed
show import status

finish
