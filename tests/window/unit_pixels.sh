# Units' pixel tests in a real GL context: test_unit under a private X
# server, where the pixel test may not skip.
HARBOR="$1"
BUILD="$2"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session
run_pixel_test "$BUILD" test_unit '*.QuadsAppear*' UnitSystemTest.QuadsAppear
echo "PASS: units' pixel test in a real GL context"
