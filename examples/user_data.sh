#!/usr/bin/env bash
# A person's first run: the data folder is made, a session folder is moved with its files, and an
# old settings file is read without losing an entry. In a throw-away profile, and checked.
# Usage: examples/user_data.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

# Shows a command and what it says, and keeps that in $work/said; its failures are counted.
show() { # ARGUMENT...
    printf '   $ tvutil %s\n' "$*"
    if ! "$build/bin/tvutil" "$@" >"$work/said"; then
        fail 'the command failed'
    fi
    sed 's/^/   | /' "$work/said"
}

said() { grep -qF -- "$1" "$work/said"; }
missing() { [ ! -e "$1" ]; }

data="$TVUTIL_PROFILE/home/Documents/Tolvarine Computer/8"
old=$data/Pelrin/Sessions
new=$work/sessions
mkdir -p "$TVUTIL_PROFILE"

title 'A first run decides where the data lives'
show data
check 'the default was stored' said 'and stored now'
check 'the folder is there' test -d "$data"
show data
check 'the second run takes what the first one stored' said 'stored: UserDataPath'

title 'A session folder is moved with its files'
show sessions where Pelrin
mkdir -p "$old/lab"
echo 'one' >"$old/office.pln"
echo 'two' >"$old/lab/server.pln"
echo 'mine' >"$old/notes.txt"
show sessions move Pelrin "$(platform_path "$new")" --dry-run
check 'the rehearsal moved nothing' missing "$new"
show sessions move Pelrin "$(platform_path "$new")" --yes
check 'both sessions arrived' test -s "$new/office.pln" -a -s "$new/lab/server.pln"
check 'they left the old folder' missing "$old/office.pln"
check 'what is no session stayed' test -e "$old/notes.txt"
show sessions where Pelrin
check 'the new folder is in effect' said "$(platform_path "$new")"

title 'An old settings file in narrow text'
printf '[Own]\r\nNote=kept\r\n[Pelrin]\r\nJumpHost=1\r\n' >"$data/Features.ini"
show features
check 'its switch was read' said 'pelrin.jumphost=1'
check 'the file is UTF-16 now' test "$(head -c 2 "$data/Features.ini" | od -An -tx1 | tr -d ' \n')" = fffe
show features set dovr.filefilter on
iconv -f UTF-16 -t UTF-8 "$data/Features.ini" >"$work/features.txt"
check 'entries of others are kept' grep -q '^Note=kept' "$work/features.txt"
check 'the new switch is in it' grep -q '^FileFilter=1' "$work/features.txt"

title 'An INI file in Latin-1 becomes UTF-16'
letters=$work/letters.ini
printf '; M\xfcller, 1998\r\n[S\xfcd]\r\nOrt=K\xf6ln\r\n[Nord]\r\nOrt=Kiel\r\n' >"$letters"
cp "$letters" "$work/before.ini"
show ini convert "$letters" --from 28591 --to utf-16
check 'the file is UTF-16' test "$(head -c 2 "$letters" | od -An -tx1 | tr -d ' \n')" = fffe
show ini list "$letters"
check 'its entries are kept, by their names' said 'Ort=Köln'
iconv -f UTF-16 -t ISO-8859-1 "$letters" >"$work/back.ini"
check 'so are comments, order and line ends' cmp "$work/back.ini" "$work/before.ini"
show ini lint "$letters"

finish
