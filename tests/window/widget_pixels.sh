# Widgets on screen: the host with test widgets (tests/widgetprobe) paints
# each at its absolute place, a floating child outside its window's
# rectangle and over its later sibling, and the picture is the same pixel
# for pixel with one job thread, with all of the machine's and with four.
# Screenshots stay in $ARTIFACTS.
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
start_widget_probe "${2:?build folder}" widget_pixels
log="$HOST_LOG"
# The pointer rests over the desktop, away from every widget.
point_at 900 700
sleep 0.5

# shoot NAME: a screenshot without the overlay band at the right, whose
# frame counter changes every frame.
shoot() {
  screenshot "$ARTIFACTS/widgets-$1.png"
  convert "$ARTIFACTS/widgets-$1.png" -crop 820x768+0+0 +repage "$ARTIFACTS/widgets-$1-ui.png"
}

all=$(debugger_print 'JobSystem::mpInstance->mJobThreadNum')
[ -n "$all" ] || fail "could not read the thread count"
shoot all
shot="$ARTIFACTS/widgets-all-ui.png"
expect_pixel "$shot" 210 300 40,40,200   # the window
expect_pixel "$shot" 270 190 220,40,40   # the button
expect_pixel "$shot" 430 320 240,240,40  # the later sibling
expect_pixel "$shot" 490 340 40,220,40   # the floating badge over it
expect_pixel "$shot" 520 360 40,220,40   # and outside the window
expect_pixel "$shot" 501 340 40,220,40
expect_pixel "$shot" 200 150 40,40,200   # the window's top left pixel
expect_pixel "$shot" 199 150 76,76,76    # the desktop shows the clear colour
expect_pixel "$shot" 500 200 76,76,76    # right of the window

for threads in 1 4; do
  debugger_do "call JobSystem::mpInstance->setJobThreadNum($threads)"
  [ "$(debugger_print 'JobSystem::mpInstance->mJobThreadNum')" = "$threads" ] || fail "thread count not set to $threads"
  sleep 0.5
  shoot "$threads"
  diff=$(compare -metric AE "$shot" "$ARTIFACTS/widgets-$threads-ui.png" null: 2>&1 || true)
  [ "$diff" = "0" ] || fail "$diff pixels differ between $all and $threads job threads"
done

kill -TERM "$APP_PID"
wait_exit
[ "$EXIT_STATUS" -eq 0 ] || { cat "$log" >&2; fail "exit status $EXIT_STATUS"; }
echo "PASS: widgets at their places, floating badge on top, identical with $all, 1 and 4 job threads"
