# Widgets under a real mouse and keyboard: the host with test widgets
# (tests/widgetprobe) gets pointer moves, clicks, a double click, a right
# click and a key from xdotool, and its widgets must receive them as the
# messages the toolkit promises, at positions relative to themselves; the
# program still ends cleanly with status 0 and all its traces in order.
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
start_widget_probe "${2:?build folder}" widgets
log="$HOST_LOG"

# The button spans (220,170)-(320,210); its middle is (50, 20) for itself.
point_at 270 190
click_at 270 190
wait_for_trace ' button MouseUp 50,20/1$'
double_click_at 270 190
wait_for_trace ' button DoubleClick 50,20/1$'
click_at 270 190 3
wait_for_trace ' button MouseUp 50,20/2$'

# The floating badge outside its window's rectangle still takes the press.
click_at 510 350
wait_for_trace ' badge MouseUp 30,20/1$'
type_keys s
wait_for_trace ' badge KeyDown 83,0/0$'
capture=$(debugger_print 'UISystem::mpInstance->mpCapture')
[[ "$capture" == *") 0x0" ]] || fail "the capture outlived the release: $capture"

close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$log" >&2; fail "exit status $EXIT_STATUS"; }

expect_traces_in_order "$log" \
  " button MouseMove 50,20/0" " button Focus " " button MouseDown 50,20/1" " button MouseUp 50,20/1" \
  " button MouseDown 50,20/1" " button MouseUp 50,20/1" " button DoubleClick 50,20/1" " button MouseUp 50,20/1" \
  " button MouseDown 50,20/2" " button MouseUp 50,20/2" \
  " button Defocus " " badge Focus " " badge MouseDown 30,20/1" " badge MouseUp 30,20/1" " badge KeyDown 83,0/0"
[ "$(grep -c ' DoubleClick ' "$log")" -eq 1 ] || { cat "$log" >&2; fail "not exactly one double click"; }
[ "$(grep -c ' button MouseDown ' "$log")" -eq 3 ] || { cat "$log" >&2; fail "not three plain presses on the button"; }
expect_traces_in_order "$log" "${HOST_TRACES[@]}"
echo "PASS: moves, clicks, a double click, a right click and a key reached the widgets; status 0, traces in order"
