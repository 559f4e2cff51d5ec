# Animation units' pixel test in a real GL context: test_animation under a
# private X server, where the pixel test may not skip.
HARBOR="$1"
BUILD="$2"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session

program="$BUILD/tests/test_animation"
[ -x "$program" ] || fail "no test program at $program"
log="$ARTIFACTS/animation_pixels.log"
status=0
"$program" --gtest_color=no --gtest_filter='*.TheWalkSampleShows*' >"$log" 2>&1 || status=$?
[ "$status" -eq 0 ] || { tail -n 40 "$log" >&2; fail "test_animation exit status $status"; }
grep -q '^\[       OK \] AnimTest\.TheWalkSampleShows' "$log" || fail "the pixel test did not run (skipped or missing)"
echo "PASS: the walk animation's frames on screen with one and with all job threads"
