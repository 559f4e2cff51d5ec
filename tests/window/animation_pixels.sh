# Animation units' pixel test in a real GL context: test_animation under a
# private X server, where the pixel test may not skip.
HARBOR="$1"
BUILD="$2"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session
run_pixel_test "$BUILD" test_animation '*.TheWalkSampleShows*' AnimTest.TheWalkSampleShows
echo "PASS: the walk animation's frames on screen with one and with all job threads"
