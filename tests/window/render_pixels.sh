# The renderer's pixel tests in a real GL context: test_render under a
# private X server, where none of its pixel tests may skip.
HARBOR="$1"
BUILD="$2"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session

program="$BUILD/tests/test_render"
[ -x "$program" ] || fail "no test program at $program"
log="$ARTIFACTS/render_pixels.log"
status=0
"$program" --gtest_color=no >"$log" 2>&1 || status=$?
grep -E '^\[  (PASSED|FAILED|SKIPPED) ' "$log" || true
[ "$status" -eq 0 ] || { tail -n 60 "$log" >&2; fail "test_render exit status $status"; }
if grep -q '^\[  SKIPPED \] PixelTest\.' "$log"; then
  fail "pixel tests skipped although a display was there"
fi
ran=$(grep -c '^\[       OK \] PixelTest\.' "$log" || true)
[ "$ran" -ge 10 ] || fail "only $ran pixel tests ran"
echo "PASS: $ran pixel tests in a real GL context"
