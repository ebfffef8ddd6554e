#!/usr/bin/env bash
# Hands sessions from one program to another and checks what arrives, in a throw-away profile.
# Usage: examples/road.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

fact() { printf '   %-16s %s\n' "$1" "$2"; }

# A folder with the command-line program and the products named.
family() { # FOLDER PRODUCT...
    local folder=$1
    shift
    mkdir -p "$folder"
    cp "$build/bin/tvutil" "$folder/"
    for product in "$@"; do cp "$build/products/$product.exe" "$folder/"; done
}

# Launches a URL from a folder and waits for what the other program reports of itself.
launch() { # FOLDER URL
    local pipe=$work/pipe
    : >"$work/report"
    rm -f "$pipe"
    mkfifo "$pipe"
    fact 'launching' "$2"
    TVUTIL_EXAMPLE_REPORT=$pipe "$1/tvutil" url launch "$2"
    timeout 20 cat "$pipe" >"$work/report"
    sed 's/^/   | /' "$work/report"
}

reported() { grep -qxF -- "$1" "$work/report"; }
command_line() { grep '^command line: ' "$work/report"; }
hidden() { ! command_line | grep -qF -- "$1"; }

beside=$work/beside
alone=$work/alone
installed=$work/opt/tolvarine
family "$beside" Pelrin Dovr Ombrelia
family "$alone"
mkdir -p "$installed"
cp "$build/products/Dovr.exe" "$installed/"

printf '%s' 'open sesame' >"$work/password"
printf '%s' 'speak friend & enter' >"$work/passphrase"

title 'A terminal session with a password and a pass phrase, to the sibling beside'
url=$("$beside/tvutil" url make --scheme ssh --user alice --password-file "$work/password" \
    --host 192.0.2.10 --port 2222 --path /var/log --passphrase-file "$work/passphrase" \
    --item 'Session=lab 1' --item 'Agent=1' --item 'UserKey=work key')
launch "$beside" "$url"
check 'the terminal client was started' reported 'product: Pelrin'
check 'the password is not on its command line' hidden 'open sesame'
check 'nor is a word of it' hidden 'sesame'
check 'the pass phrase is not there either' hidden 'friend'
check 'the password arrived' reported 'password: open sesame'
check 'the pass phrase arrived' reported 'item Passphrase: speak friend & enter'
check 'so did user, host, port and path' eval 'reported "user: alice" && reported "host: 192.0.2.10" &&
    reported "port: 2222" && reported "path: /var/log"'
check 'and the items' eval 'reported "item Session: lab 1" && reported "item UserKey: work key"'
check 'a user key sets the method of authentication' reported 'item AuthMethod: 11'

title 'A file-transfer session'
url=$("$beside/tvutil" url make --scheme sftp --user 'a@b' --password-file "$work/password" \
    --host files.example.org --path '/home/a b')
launch "$beside" "$url"
check 'the file-transfer client was started' reported 'product: Dovr'
check 'the password is not on its command line' hidden 'open sesame'
check 'the password arrived' reported 'password: open sesame'
check 'the user keeps the "@", the path its blank' \
    eval 'reported "user: a@b" && reported "path: /home/a b"'

title 'A display session'
launch "$beside" 'xdmcp://alice@display.example.org'
check 'the display server was started' reported 'product: Ombrelia'
check 'it got the host alone' \
    eval 'command_line | grep -qxE "command line: .*/Ombrelia.exe :\[0\] -query display.example.org"'

title 'A sibling that only the registry knows'
check 'without an entry nothing is found' eval '! "$alone/tvutil" url launch sftp://h'
"$alone/tvutil" reg add 'HKLM\Software\Tolvarine\Dovr\8' Version '8.0.0061'
"$alone/tvutil" reg add 'HKLM\Software\Tolvarine\Dovr\8' Path "$(platform_path "$installed")"
fact 'registered' "$("$alone/tvutil" product version 4) in $(platform_path "$installed")"
launch "$alone" 'sftp://files.example.org:2022'
check 'the registered program was started' \
    eval 'command_line | grep -qF "'"$installed"'/Dovr.exe -url sftp://files.example.org:2022"'

title 'What must not be started'
check 'no product takes rdp://' eval '"$beside/tvutil" url launch rdp://192.0.2.20; test $? = 1'
check 'a text that is no session URL is refused' \
    eval '"$beside/tvutil" url launch "ssh://"; test $? = 3'

finish
