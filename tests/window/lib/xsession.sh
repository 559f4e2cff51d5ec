# Sourced by the window tests: a private X server (Xvfb) with a window manager
# (openbox), torn down on exit. Sets DISPLAY and ARTIFACTS.
set -euo pipefail

fail() { echo "FAIL: $*" >&2; exit 1; }

start_x_session() {
  local fdfile
  fdfile=$(mktemp)
  Xvfb -displayfd 9 -screen 0 1280x1024x24 -nolisten tcp 9>"$fdfile" >/dev/null 2>&1 &
  XVFB_PID=$!
  for _ in $(seq 100); do [ -s "$fdfile" ] && break; sleep 0.05; done
  [ -s "$fdfile" ] || fail "Xvfb did not start"
  export DISPLAY=":$(head -n1 "$fdfile")"
  rm -f "$fdfile"
  # The window manager says when it manages windows: a window mapped before
  # that may never see its map notification.
  local ready
  ready=$(mktemp -u)
  # With WM_CLOSE_KEY set the window manager closes windows with that key
  # instead of Alt+F4, which then reaches the program.
  local config=()
  if [ -n "${WM_CLOSE_KEY:-}" ]; then
    OPENBOX_RC=$(mktemp --suffix=.xml)
    cat >"$OPENBOX_RC" <<RC
<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <keyboard><keybind key="W-F4"><action name="Close"/></keybind></keyboard>
</openbox_config>
RC
    config=(--config-file "$OPENBOX_RC")
  fi
  openbox "${config[@]}" --startup "touch $ready" >/dev/null 2>&1 &
  WM_PID=$!
  for _ in $(seq 200); do [ -e "$ready" ] && break; sleep 0.05; done
  [ -e "$ready" ] || fail "window manager did not start"
  rm -f "$ready"
  trap stop_x_session EXIT
}

stop_x_session() {
  [ -n "${APP_PID:-}" ] && kill -KILL "$APP_PID" 2>/dev/null || true
  kill "$WM_PID" 2>/dev/null || true
  kill "$XVFB_PID" 2>/dev/null || true
  [ -n "${OPENBOX_RC:-}" ] && rm -f "$OPENBOX_RC"
  wait 2>/dev/null || true
}

# find_window TITLE: prints the window id, waiting up to 10 s.
find_window() {
  local id=""
  for _ in $(seq 200); do
    id=$(xdotool search --name "^$1\$" 2>/dev/null | head -n1 || true)
    [ -n "$id" ] && xwininfo -id "$id" 2>/dev/null | grep -q 'Map State: IsViewable' && break
    id=""
    sleep 0.05
  done
  [ -n "$id" ] || fail "no window titled '$1'"
  echo "$id"
}

# read_frame PID: the program's current frame number, read with the debugger.
read_frame() {
  timeout 30 gdb -p "$1" -batch -ex 'print Application::mpInstance->mCurrentFrame' 2>/dev/null \
    | sed -n 's/^\$1 = \([0-9]*\).*/\1/p' || true
}

# activate WINDOW: gives it the focus through the window manager, within 10 s.
activate() {
  for _ in $(seq 20); do
    xdotool windowactivate "$1" 2>/dev/null || true
    [ "$(xdotool getactivewindow 2>/dev/null || true)" = "$1" ] && return 0
    sleep 0.5
  done
  fail "window $1 could not be activated"
}

# close_and_wait WINDOW: closes it through the window manager (Alt+F4) and
# sets EXIT_STATUS; fails when the program has not ended within 20 s.
close_and_wait() {
  # A busy machine may lose a key press: it is sent again until the program ends.
  for _ in $(seq 10); do
    activate "$1"
    xdotool key --clearmodifiers "${WM_CLOSE_KEY:-alt+F4}"
    for _ in $(seq 40); do kill -0 "$APP_PID" 2>/dev/null || break 2; sleep 0.05; done
  done
  wait_exit
}

# wait_exit: sets EXIT_STATUS once APP_PID has ended, within 20 s.
wait_exit() {
  for _ in $(seq 400); do kill -0 "$APP_PID" 2>/dev/null || break; sleep 0.05; done
  kill -0 "$APP_PID" 2>/dev/null && fail "the program did not end"
  EXIT_STATUS=0
  wait "$APP_PID" || EXIT_STATUS=$?
  APP_PID=""
}

ARTIFACTS="${2:-$PWD}/artifacts"
mkdir -p "$ARTIFACTS"

# run_pixel_test BUILD PROGRAM FILTER TEST: runs the build's test program
# PROGRAM (as test_unit) with the gtest FILTER under the X session, its
# output in $ARTIFACTS/<the calling script's name>.log; fails
# unless it passed and TEST (Suite.Name) ran, so that a pixel test that
# skipped for want of a display does not pass.
run_pixel_test() {
  local program="$1/tests/$2"
  [ -x "$program" ] || fail "no test program at $program"
  local log
  log="$ARTIFACTS/$(basename "$0" .sh).log"
  local status=0
  "$program" --gtest_color=no --gtest_filter="$3" >"$log" 2>&1 || status=$?
  [ "$status" -eq 0 ] || { tail -n 40 "$log" >&2; fail "$2 exit status $status"; }
  grep -q "^\[       OK \] ${4//./\\.}" "$log" || fail "the pixel test did not run (skipped or missing)"
}
