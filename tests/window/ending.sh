# Ending the host, tried as a user would. Ctrl+C in the terminal of ./run.sh
# without a display (SIGINT to its whole process group): the host ends in
# order with status 0 and no leak report, and the display server it started
# goes too. The display server dying under a running host: one clear line
# and a non-zero status.
HARBOR="$1"
BUILD="${2:-$PWD}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
ROOT="$(cd "$(dirname "$0")/../.." && pwd)"

# Ctrl+C: run.sh in a process group of its own, as a terminal's job would be.
log="$ARTIFACTS/ending.interrupt.stderr"
out="$ARTIFACTS/ending.interrupt.stdout"
set -m
env -u DISPLAY HARBOR_PROGRAM="$HARBOR" bash "$ROOT/run.sh" </dev/null >"$out" 2>"$log" &
APP_PID=$!
set +m
trap '[ -n "${APP_PID:-}" ] && kill -KILL -- -"$APP_PID" 2>/dev/null || true' EXIT
HOST_LOG="$log"
wait_for_trace '^Application : execute\.' 30
display=$(sed -n 's/^Harbor runs on virtual display \(:[0-9]*\).*/\1/p' "$out")
[ -n "$display" ] || { cat "$out" >&2; fail "run.sh did not say which display it started"; }
kill -INT -- -"$APP_PID"
wait_exit
[ "$EXIT_STATUS" -eq 0 ] || { cat "$log" >&2; fail "Ctrl+C ended run.sh with status $EXIT_STATUS"; }
expect_traces_in_order "$log" "HarborApp end." "SystemManager : end." "Application : end."
grep -q "leak detected" "$log" && { cat "$log" >&2; fail "a leak report after Ctrl+C"; }
for _ in $(seq 100); do xdpyinfo -display "$display" >/dev/null 2>&1 || break; sleep 0.05; done
xdpyinfo -display "$display" >/dev/null 2>&1 && fail "the display server $display outlived run.sh"

# The display server goes away under the running host.
log="$ARTIFACTS/ending.lost.stderr"
start_x_session
start_host "$HARBOR" "Harbor Application" "$log"
wait_for_trace '^Application : execute\.'
kill "$XVFB_PID"
wait_exit
[ "$EXIT_STATUS" -ne 0 ] || fail "the host ended with status 0 after losing its display"
[ "$(tail -n1 "$log")" = "Lost the connection to the display: the program ends." ] \
  || { cat "$log" >&2; fail "no clear last line after losing the display"; }
grep -q "leak detected" "$log" && { cat "$log" >&2; fail "a leak report after losing the display"; }
echo "ending: PASS"
