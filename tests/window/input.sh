# Keyboard and mouse in a real window: the host with an input trace
# (tests/inputprobe) gets key presses and a right click from xdotool, and its
# KeyboardSystem and MouseSystem must report them by HID usage and button bit,
# held over several frames, with one press edge and one release edge each.
BUILD="${2:?build folder}"
PROBE="$BUILD/tests/inputprobe/inputprobe"
source "$(dirname "$0")/lib/xsession.sh"
[ -x "$PROBE" ] || fail "no probe program at $PROBE"
start_x_session

log="$ARTIFACTS/input.stderr"
"$PROBE" </dev/null 2>"$log" &
APP_PID=$!
wid=$(find_window "Harbor Input Probe")
activate "$wid"
for _ in $(seq 200); do grep -q '^probe ready' "$log" && break; sleep 0.05; done
grep -q '^probe ready' "$log" || { cat "$log" >&2; fail "the probe runs no frames"; }

# The pointer rests at a known point of the content while everything happens.
xdotool mousemove --window "$wid" 200 150
sleep 0.2

# Each key is held across several frames (at least 20 ms each at the lowest rate).
for key in a Shift_L Return F5; do
  xdotool keydown "$key"
  sleep 0.15
  xdotool keyup "$key"
  sleep 0.15
done
xdotool mousedown 3
sleep 0.15
xdotool mouseup 3
sleep 0.15

close_and_wait "$wid"
status=$EXIT_STATUS
[ "$status" -eq 0 ] || { cat "$log" >&2; fail "exit status $status"; }

# lines FIELD VALUE: trace lines whose comma list FIELD holds VALUE.
lines() { grep -E "^input .* $1=[^ ]*,$2," "$log" || true; }
count() { lines "$1" "$2" | grep -c . || true; }

for usage in 4 225 40 62; do
  pressed=$(count trgon "$usage")
  released=$(count trgoff "$usage")
  held=$(count on "$usage")
  [ "$pressed" -eq 1 ] || { cat "$log" >&2; fail "usage $usage: $pressed press edges"; }
  [ "$released" -eq 1 ] || { cat "$log" >&2; fail "usage $usage: $released release edges"; }
  [ "$held" -ge 2 ] || { cat "$log" >&2; fail "usage $usage: held in $held frames"; }
  # In frame order: press edge, held, release edge with the key no longer down.
  first=$(lines trgon "$usage" | sed 's/^input frame=\([0-9]*\).*/\1/')
  last=$(lines on "$usage" | tail -n1 | sed 's/^input frame=\([0-9]*\).*/\1/')
  off=$(lines trgoff "$usage" | sed 's/^input frame=\([0-9]*\).*/\1/')
  lines on "$usage" | head -n1 | grep -q "frame=$first " || fail "usage $usage down before its press edge"
  [ "$off" -gt "$last" ] || fail "usage $usage: release edge in frame $off, still down in $last"
  lines trgon "$usage" | grep -q " first=$usage " || fail "usage $usage: getKeyTrgOn() reports another key"
done

press=$(grep -E '^input .* btrgon=2 ' "$log" || true)
[ "$(echo "$press" | grep -c .)" -eq 1 ] || { cat "$log" >&2; fail "right button: press edges '$press'"; }
echo "$press" | grep -q ' buttons=2 .* pos=200,150$' || fail "right button press not at 200,150: $press"
held=$(grep -cE '^input .* buttons=2 .* pos=200,150$' "$log" || true)
[ "$held" -ge 2 ] || fail "right button held in $held frames"
[ "$(grep -cE '^input .* buttons=0 .* btrgoff=2 ' "$log" || true)" -eq 1 ] || fail "right button: no single release edge"
[ "$(grep -cE '^input .* buttons=[^02]' "$log" || true)" -eq 0 ] || fail "a button other than the right one was seen"

echo "PASS: usages 4 225 40 62 and right button (mask 2) at 200,150, each held $held+ frames with one edge each way"
