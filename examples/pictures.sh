#!/usr/bin/env bash
# Pictures of every control and dialog, made without a display. They stay in the build folder.
# Usage: examples/pictures.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"
pictures=$build/pictures

title "What the library looks like, in every language"
rm -rf "$pictures"
"$build/products/Gallery.exe" --screenshot "$pictures" | sed 's/^/   | /'
for name in buttons-dark-200 message-question-light-100 package-ja select-ru language-ko; do
    check "there is a picture $name.png" test -s "$pictures/$name.png"
done
printf '   Open %s to look at them.\n' "$pictures"

finish
