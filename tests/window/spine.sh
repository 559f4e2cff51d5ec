# The host in a real window: it opens "Harbor Application" with 1024 by 768
# content, runs frames, closes through the window manager with status 0, and
# traces its start and end in order.
HARBOR="$1"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
start_x_session

log="$ARTIFACTS/spine.stderr"
"$HARBOR" </dev/null 2>"$log" &
APP_PID=$!
wid=$(find_window "Harbor Application")

size=$(xwininfo -id "$wid" | awk '/Width:/{w=$2} /Height:/{h=$2} END{print w"x"h}')
[ "$size" = "1024x768" ] || fail "content size $size"

sleep 0.5
first=$(read_frame "$APP_PID")
sleep 1
second=$(read_frame "$APP_PID")
[ -n "$first" ] && [ -n "$second" ] || fail "could not read the frame number"
[ "$second" -gt "$first" ] || fail "frames do not advance ($first -> $second)"
# The highest rate is 240; the debugger's attach time adds to the second.
advance=$((second - first))
[ "$advance" -le 1000 ] || fail "$advance frames in about one second"

close_and_wait "$wid"
status=$EXIT_STATUS
[ "$status" -eq 0 ] || fail "exit status $status"

expect_traces_in_order "$log" "${HOST_TRACES[@]}"
echo "PASS: window opened 1024x768, $advance frames in 1 s, closed with status 0"

# SIGTERM ends the event loop like a close: the whole tear-down runs, status 0.
log="$ARTIFACTS/spine-sigterm.stderr"
"$HARBOR" </dev/null 2>"$log" &
APP_PID=$!
find_window "Harbor Application" >/dev/null
sleep 0.3
kill -TERM "$APP_PID"
wait_exit
status=$EXIT_STATUS
[ "$status" -eq 0 ] || fail "exit status $status after SIGTERM"
tail -n1 "$log" | grep -q -F "Application : end." || { cat "$log" >&2; fail "no tear-down after SIGTERM"; }
echo "PASS: SIGTERM ends the program normally"
