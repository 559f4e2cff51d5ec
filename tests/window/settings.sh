# The settings file across two runs of the host: a first start without
# harbor.xml is no error; a System property changed while the program runs
# ends up in the file when the window closes; the next start reads it back.
# The property is the UI system's theme colour "WindowColor", whose red
# channel is changed through the debugger as a property editor would change it. The build's own settings
# file is restored afterwards.
HARBOR="$1"
BUILD="${2:-$PWD}"
source "$(dirname "$0")/lib/xsession.sh"

SETTINGS="$BUILD/resources/intermediate/harbor.xml"
SAVED=$(mktemp)
had_settings=0
if [ -e "$SETTINGS" ]; then cp "$SETTINGS" "$SAVED"; had_settings=1; fi
restore_settings() {
  if [ "$had_settings" = 1 ]; then cp "$SAVED" "$SETTINGS"; else rm -f "$SETTINGS"; fi
  rm -f "$SAVED"
}
start_x_session
trap 'restore_settings; stop_x_session' EXIT

# window_red PID: the red channel of the UI's window colour, read with the debugger.
window_red() {
  timeout 30 gdb -p "$1" -batch -ex 'print (int)UISystem::mpInstance->mWindowColor.r' 2>/dev/null \
    | sed -n 's/^\$1 = \([0-9]*\).*/\1/p' || true
}

# saved_red: the red channel of "WindowColor" in the settings file.
saved_red() {
  sed -n 's/.*<WindowColor [^>]*red="\([0-9]*\)".*/\1/p' "$SETTINGS"
}

run_host() { # run_host LOG: starts the host, sets APP_PID and WID
  "$HARBOR" </dev/null 2>"$1" &
  APP_PID=$!
  WID=$(find_window "Harbor Application")
}

# First run: no settings file.
rm -f "$SETTINGS" "$SETTINGS.new"
log1="$ARTIFACTS/settings.first.stderr"
run_host "$log1"
default=$(window_red "$APP_PID")
[ -n "$default" ] || fail "could not read the window colour"
wanted=77
[ "$default" = 77 ] && wanted=78
timeout 30 gdb -p "$APP_PID" -batch -ex "set var UISystem::mpInstance->mWindowColor.r = $wanted" >/dev/null 2>&1 || true
changed=$(window_red "$APP_PID")
[ "$changed" = "$wanted" ] || fail "the property did not change ($changed, wanted $wanted)"
close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$log1" >&2; fail "first run ended with status $EXIT_STATUS"; }
grep -q -F "File open error." "$log1" || { cat "$log1" >&2; fail "a missing settings file was not traced"; }
[ -e "$SETTINGS" ] || fail "no settings file written"
[ ! -e "$SETTINGS.new" ] || fail "the file written beside the settings was left behind"
head -c 23 "$SETTINGS" | grep -q -F '<?xml version="1.0"?>' || fail "the settings file has no declaration"
grep -q '^<HarborApp typeinfo="HarborApp" id="[0-9]*" stable="true" >$' "$SETTINGS" \
  || { cat "$SETTINGS" >&2; fail "the settings file has no HarborApp root"; }
[ "$(saved_red)" = "$wanted" ] || { cat "$SETTINGS" >&2; fail "WindowColor red $wanted was not saved"; }
grep -q '<JobThreadNum' "$SETTINGS" && fail "the job system's thread count was saved"

# Second run: the value is read back before the first frame.
log2="$ARTIFACTS/settings.second.stderr"
run_host "$log2"
read_back=$(window_red "$APP_PID")
close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$log2" >&2; fail "second run ended with status $EXIT_STATUS"; }
[ "$read_back" = "$wanted" ] || fail "WindowColor red read back as '$read_back', wanted $wanted"
grep -q -F "File open error." "$log2" && fail "the settings file did not open on the second run"
grep -q "not found\|missmatch" "$log2" && { cat "$log2" >&2; fail "the settings file did not match its Systems"; }
[ "$(saved_red)" = "$wanted" ] || fail "WindowColor lost on the second save"
echo "PASS: WindowColor red $default -> $wanted saved at exit and read back at the next start"
