#!/usr/bin/env bash
# One text through ten code pages and back, and a character taken a byte at a time.
# Usage: examples/code_pages.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"
tvutil=$build/bin/tvutil

# What a page doesn't hold becomes "?", so each page gets a text in its own letters.
round_trip() { # PAGE TEXT
    printf '%s' "$2" | "$tvutil" encode "$1" >"$work/bytes"
    if [ "$("$tvutil" decode "$1" "$work/bytes")" = "$2" ]; then
        printf '   ok    %5s  %-24s %s\n' "$1" "$2" "$(od -An -tx1 "$work/bytes" | tr -d '\n' | cut -c1-48)"
    else
        fail "$1  $2 doesn't come back"
    fi
}

title "One greeting in ten code pages and back"
round_trip 65001 'Grüße, мир, 世界 🌍'
round_trip 1252 'Grüße aus Köln'
round_trip 28592 'Dobrý večer'
round_trip 1251 'Добрый вечер'
round_trip 20866 'Добрый вечер'
round_trip 1253 'Καλησπέρα'
round_trip 932 'こんばんは、世界'
round_trip 51932 'こんばんは、世界'
round_trip 949 '안녕하세요'
round_trip 54936 '晚上好，世界 🌍'

title "A euro sign taken a byte at a time"
printf '\342\202\254' | "$tvutil" decode 65001 --trace | tee "$work/trace" | sed 's/^/   | /'
check 'the euro sign is there' grep -qx 'AC  U+20AC €  from E2 82 AC' "$work/trace"

title "A bad byte never stops the stream"
printf 'before \201\040 after\n' | "$tvutil" decode 54936 | sed 's/^/   | /'

finish
