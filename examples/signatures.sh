#!/usr/bin/env bash
# Products carry their maker's signature, and one that was tampered with is refused: by the check, and in
# the list of add-ons, where nobody gets a path to start it by. In a throw-away profile, and checked.
# Usage: examples/signatures.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

# Shows a command and what it says, keeps that in $work/said and its exit code in $code.
show() { # ARGUMENT...
    printf '   $ tvutil %s\n' "$*"
    code=0
    "$build/bin/tvutil" "$@" >"$work/said" 2>&1 || code=$?
    sed 's/^/   | /' "$work/said"
}
said() { grep -qF -- "$1" "$work/said"; }
ended_with() { [ "$code" -eq "$1" ]; }

sibling=$work/Dovr.exe
cp "$build/products/Dovr.exe" "$sibling"

title 'A sibling as its maker signed it'
show verify "$sibling" --maker
check 'it is intact, and the maker is one' ended_with 0

title 'It is listed as an add-on of the suite'
addons="$TVUTIL_PROFILE/home/Documents/Tolvarine Computer/8/Ombrelia/addons"
mkdir -p "$addons"
printf '[Info]\r\nCount=1\r\n[0]\r\nName=Transfer\r\nIdentity=dovr\r\nAddonPath=%s\r\nExt=.dvf\r\n' \
    "$(platform_path "$sibling")" >"$addons/Addons.ini"
show addons for .dvf --host
check 'its path may be started' said "$sibling"
check 'and it starts' sh -c "'$sibling' :[0] -query 192.0.2.10 | grep -q 192.0.2.10"

title 'One byte of it is changed'
printf 'X' | dd of="$sibling" bs=1 seek=4096 conv=notrunc status=none
show verify "$sibling" --maker
check 'the check tells' said 'state=changed'
check 'the answer is no' ended_with 1
show addons for .dvf --host
check 'nobody gets a path to start it by' ended_with 3

title 'Its signature is cut off, and another one put on'
cp "$build/products/Dovr.exe" "$sibling"
"$(dirname "$0")/products/make_maker.sh" "$work/other" 2>/dev/null
show sign "$sibling" --certificates "$work/other/maker.pem" --key "$work/other/maker.key"
show verify "$sibling" --maker
check 'a name alone is all that is looked at' ended_with 0

title 'So a machine may ask for more: a chain that ends in its trust folder'
mkdir -p -m 755 "$TVUTIL_PROFILE/machine/trust"
cp "$build/maker/root.pem" "$TVUTIL_PROFILE/machine/trust/"
show reg add 'HKLM\Software\Tolvarine\Common\8\Trust' TrustedSignersOnly 1 --type dword
show verify "$sibling" --maker
check 'the other signer is no maker any more' ended_with 1
cp "$build/products/Dovr.exe" "$sibling"
show verify "$sibling" --maker
check 'the maker still is' ended_with 0

finish
