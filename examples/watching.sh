#!/usr/bin/env bash
# A tree that is watched while it grows, and a registry key. In a throw-away profile, and checked.
# Usage: examples/watching.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

tvutil=$build/bin/tvutil
tree=$work/tree
told=$work/told
mkdir -p "$TVUTIL_PROFILE" "$tree"

# A watch tells nobody when it has begun: something is changed until it is told.
until_told() { # PATTERN CHANGE...
    local pattern=$1
    shift
    until grep -qF -- "$pattern" "$told"; do
        "$@"
    done
}
number=0
probe() {
    number=$((number + 1))
    : >"$tree/probe-$number"
}
write_value() {
    number=$((number + 1))
    "$tvutil" reg add 'HKCU\Software\Tolvarine\Pelrin\8' Count --type dword "$number"
}

title 'A tree is watched as it grows'
: >"$told"
"$tvutil" watch "$tree" --recursive --of files folders >"$told" 2>/dev/null &
watch=$!
until_told 'added: ' probe
mkdir -p "$tree/sessions/office"
: >"$tree/sessions/office/host.ssh"
mv "$tree/sessions/office/host.ssh" "$tree/sessions/office/server.ssh"
: >"$tree/end"
until_told '\end' true
grep -v probe "$told" | sed "s|$(platform_path "$tree")|TREE|; s/^/   | /"
check 'what a new folder got at once is told' grep -qF 'office\host.ssh' "$told"
check 'the old name is told' grep -qF 'old name: ' "$told"
check 'and the new one behind it' grep -qF 'new name: ' "$told"
rm -r "$tree"
wait "$watch" || status=$?
check 'the end of the folder ends the watch with an error' test "${status:-0}" -eq 4

title 'A registry key is watched by another process'
: >"$told"
write_value
"$tvutil" reg watch 'HKCU\Software\Tolvarine' --recursive --once >"$told" &
watch=$!
until_told 'changed' write_value
wait "$watch"
sed 's/^/   | /' "$told"

finish
