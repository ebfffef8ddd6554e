#!/usr/bin/env bash
# Makes a throw-away maker in a folder: root.pem, and maker.pem (the signer's certificate and the root's)
# with maker.key. The root's own key isn't kept.
# Usage: make_maker.sh FOLDER
set -euo pipefail
mkdir -p "$1"
cd "$1"
umask 077

new_key=(-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
openssl req -x509 "${new_key[@]}" -keyout "$work/root.key" -out "$work/root.pem" -days 3650 \
  -subj '/O=Tolvarine Computer/CN=Tolvarine throw-away root' -addext basicConstraints=critical,CA:TRUE
openssl req "${new_key[@]}" -keyout "$work/maker.key" -out "$work/maker.csr" \
  -subj '/O=Tolvarine Computer/CN=Tolvarine Computer, throw-away'
printf 'keyUsage=digitalSignature\nextendedKeyUsage=codeSigning\n' >"$work/usage"
openssl x509 -req -in "$work/maker.csr" -CA "$work/root.pem" -CAkey "$work/root.key" -days 3650 \
  -extfile "$work/usage" -out "$work/leaf.pem"
cat "$work/leaf.pem" "$work/root.pem" >"$work/maker.pem"
mv "$work/maker.pem" "$work/maker.key" "$work/root.pem" .
