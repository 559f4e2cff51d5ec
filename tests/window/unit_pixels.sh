# Units' pixel tests in a real GL context: test_unit under a private X
# server, where the pixel test may not skip.
HARBOR="$1"
BUILD="$2"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session

program="$BUILD/tests/test_unit"
[ -x "$program" ] || fail "no test program at $program"
log="$ARTIFACTS/unit_pixels.log"
status=0
"$program" --gtest_color=no --gtest_filter='*.QuadsAppear*' >"$log" 2>&1 || status=$?
[ "$status" -eq 0 ] || { tail -n 40 "$log" >&2; fail "test_unit exit status $status"; }
grep -q '^\[       OK \] UnitSystemTest\.QuadsAppear' "$log" || fail "the pixel test did not run (skipped or missing)"
echo "PASS: units' pixel test in a real GL context"
