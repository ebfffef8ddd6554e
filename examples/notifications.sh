#!/usr/bin/env bash
# Notifications of the desktop: without a server, with one, and answered when the program has ended
# long since. On a bus and with a server of its own, in a throw-away profile, and checked.
# Usage: examples/notifications.sh BUILD-FOLDER
# shellcheck source=examples/support/checks.sh
. "$(dirname "$0")/support/checks.sh"

# Where programs leave what desktop and bus read.
export XDG_DATA_HOME=$TVUTIL_PROFILE/home/.local/share
mkdir -p "$XDG_DATA_HOME/dbus-1/services"
export TVUTIL_EXAMPLE_REPORT=$work/pipe
mkfifo "$TVUTIL_EXAMPLE_REPORT"
cat >"$work/bus.conf" <<END
<busconfig>
  <type>session</type>
  <listen>unix:path=$work/bus</listen>
  <servicedir>$XDG_DATA_HOME/dbus-1/services</servicedir>
  <policy context="default">
    <allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/>
  </policy>
</busconfig>
END
coproc bus { exec dbus-daemon --config-file="$work/bus.conf" --nofork --print-address 2>/dev/null; }
# shellcheck disable=SC2154 # the coprocess is who sets it
trap 'kill "$bus_PID"; rm -rf "$work"' EXIT
read -r DBUS_SESSION_BUS_ADDRESS <&"${bus[0]}"
export DBUS_SESSION_BUS_ADDRESS

dovr=$build/products/Dovr.exe
tvutil=$build/bin/tvutil
show() { # COMMAND...
    code=0
    "$@" >"$work/said" 2>&1 || code=$?
    sed 's/^/   | /' "$work/said"
}
refused() { [ "$code" -eq 4 ] && grep -q 'no notification server' "$work/said"; }
is_unknown() { ! grep -rqF Dovr.exe "$XDG_DATA_HOME"; }

title 'Nobody shows notifications'
show "$tvutil" notify send 'Transfer done' '3 files'
check 'it is said, and the exit code is that of the system' refused

title 'A server comes up, and a program shows one and ends'
mkfifo "$work/orders" "$work/told"
"$build/tests/started/notification_server.exe" 1 org.freedesktop.Notifications actions body \
    <"$work/orders" >"$work/told" 2>/dev/null &
exec 4>"$work/orders" 5<"$work/told"
hear() {
    IFS= read -r -t 20 line <&5 && printf '   server: %s\n' "$line"
}
hear
show "$dovr" -notify 'Transfer done' '3 files <of> 3'
hear
check 'the server was told its name, title and text' \
    grep -qF $'Dovr 8\t\tTransfer done\t3 files <of> 3' <<<"$line"
show "$tvutil" notify list
check 'the registry knows of it' grep -qF '1 shown' "$work/said"

title 'The person answers; the program is started for it'
echo 'invoke 1 1:action=update&conversationId=9813' >&4
hear
timeout 20 cat "$TVUTIL_EXAMPLE_REPORT" | sed 's/^/   Dovr: /' | tee "$work/answer"
check 'by the desktop'"'"'s switch' grep -q 'command line: .*Dovr.exe -ToastActivated$' "$work/answer"
check 'and hears which button it was' \
    grep -qF 'answered: action=update&conversationId=9813' "$work/answer"

title 'Forgotten'
show "$tvutil" notify forget --id Tolvarine.Dovr.Notifications
hear
check 'the server takes it back' test "$line" = $'close\t1'
check 'and nothing starts the program any more' is_unknown
exec 4>&- 5<&-

finish
