# The timeline editor as a user drives it: "Tool select" opens the
# SequencerTool on a new sequence; "Add Track" with a CoordinateUnit, "Add
# Lane" with its Position; a key of (0, 0) at frame 0, a drag in the ruler to
# frame 60 and a key of (100, 50) there; "Current" 30 shows the straight-line
# value between them; "Save as" writes the file, which opens again with the
# same keys; a change asks "Causion" on close. Screenshots in
# build/artifacts/sequencer-*.png.
HARBOR="$1"
BUILD="${2:?build folder}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
shots="$ARTIFACTS/sequencer"
fresh_data "$BUILD"
saved="$ROOT/walktest.seq.xml"
rm -f "$saved"
export WM_CLOSE_KEY=super+F4 # Alt+F4 closes windows inside the program
start_harbor "$HARBOR" sequencer
trap 'restore_data; rm -f "$saved"' EXIT

tool=$(front SequencerTool)
group="$tool->mpControlForm->mpControlGroup"
position="((UICompositeControl*)$group->mChildren.mpFirst->mpValue)"
current="((UIParameterControl*)$tool->mpTopForm->mpClientHolder->mChildren.mpFirst->mpNext->mpNext->mpValue)->mpValueControl"
frame="$tool->mpSequencer->mCurrentFrame.mValue >> 16"
unit="((CoordinateUnit*)$tool->mpSequencer->mpTrackArray[0].mpObject)"
track="$tool->mpTrackForm->mTracks.mpData[0]"
lane="$track->mLanes.mpData[0]"
keys="((SequencerLane*)((SequencerTrack*)$tool->mpResource->mTrackList.mList.mpFirst->mpValue)->mLaneList.mList.mpFirst->mpValue)->mKeyList.mList"
# open_tool: "Tool", "SequencerTool", "Ok".
open_tool() {
  desktop_menu 5
  windows_open 1
  dialog_enter UIPlaneObjectDialog SequencerTool
  windows_open 1
  expect_state "$(text_of "$tool->mTitle")" '"Sequencer Tool"' contains
}
# expect_position X Y: what the Position control shows, the unit's value.
expect_position() {
  wait_for_state "$unit->mPosition.x.mValue >> 16" "$1"
  wait_for_state "$unit->mPosition.y.mValue >> 16" "$2"
}

open_tool
expect_state "$tool->mSize" '{width = 512, height = 512}'
expect_state "$tool->mpResource->mTrackList.mList.mSize" 0

# "Track" > "Add Track": "Select Object", CoordinateUnit.
main_menu 2 0
windows_open 2
expect_state "$(text_of "$(front UIObjectDialog)->mTitle")" '"Select Object"' contains
dialog_enter UIObjectDialog CoordinateUnit
windows_open 1
wait_for_state "$tool->mpTrackForm->mTracks.mSize" 1
# The track's row selected, "Lane" > "Add Lane": "Select Control", Position.
click_in "$track->mpInfo" 85 20
wait_for_state "(int)($tool->mpSelectTrack != 0)" 1
main_menu 3 0
windows_open 2
expect_state "$(text_of "$(front UIControlDialog)->mTitle")" '"Select Control"' contains
dialog_enter UIControlDialog Position
windows_open 1
wait_for_state "$track->mLanes.mSize" 1

# Frame 0: the lane selected, (0, 0) typed, "Key" > "Add Key".
click_in "$lane->mpInfo" 60 12
wait_for_state "(int)($tool->mpSelectLane != 0)" 1
set_field "$position->mpFields[0]" 0
set_field "$position->mpFields[1]" 0
main_menu 4 0
wait_for_state "(int)($tool->mpSelectKey != 0)" 1
expect_state "$tool->mpSelectKey->mFrame" 0
# A drag along the ruler scrubs to frame 60; (100, 50) keyed there.
r=($(region_of "$tool->mpTrackForm->mpSequenceForm->mAbsRegion"))
drag_from_to $((r[0] + 5)) $((r[1] + 16)) $((r[0] + 60)) $((r[1] + 16))
wait_for_state "$frame" 60
set_field "$position->mpFields[0]" 100
set_field "$position->mpFields[1]" 50
main_menu 4 0
wait_for_state "$tool->mpSelectKey->mFrame" 60
wait_for_state "$keys.mSize" 2
# "Current" 30: half way on the straight line from (0, 0) to (100, 50).
set_field "$current" 30
wait_for_state "$frame" 30
expect_position 50 25
sleep 0.3
screenshot "$shots-keyed.png"

# "File" > "Save as", a new name: the file is written; "Exit" asks nothing.
save_as walktest "$saved"
written=$(md5sum <"$saved")
main_menu 0 4
windows_open 0

# Opened again by "Open": the same track, lane and keys; frames 60 and 30
# show the keyed and the interpolated values.
open_tool
main_menu 0 0
windows_open 2
expect_state "$(text_of "$(front UIFileDialog)->mTitle")" '"Load"' contains
dialog_enter UIFileDialog walktest.seq.xml
windows_open 1
wait_for_state "$tool->mpTrackForm->mTracks.mSize" 1
expect_state "$track->mLanes.mSize" 1
expect_state "$keys.mSize" 2
set_field "$current" 60
wait_for_state "$frame" 60
expect_position 100 50
set_field "$current" 30
wait_for_state "$frame" 30
expect_position 50 25
sleep 0.3
screenshot "$shots-reopened.png"

# A key added at 30 and Alt+F4: "Causion" with "Yes", "No" and "Cancel".
# "Cancel" keeps the tool; "No" closes it and leaves the file as saved.
click_in "$lane->mpInfo" 60 12
main_menu 4 0
wait_for_state "$keys.mSize" 3
type_keys alt+F4
windows_open 2
question=$(front UIMessageDialog)
expect_state "$(text_of "$question->mTitle")" '"Causion"' contains
expect_state "(int)($question->mpYesButton != 0 && $question->mpNoButton != 0 && $question->mpCancelButton != 0)" 1
sleep 0.3
screenshot "$shots-causion.png"
click_in "$question->mpCancelButton" 10 8
windows_open 1
type_keys alt+F4
windows_open 2
click_in "$(front UIMessageDialog)->mpNoButton" 10 8
windows_open 0
[ "$(md5sum <"$saved")" = "$written" ] || fail "the file changed without a save"

close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "exit status $EXIT_STATUS"; }
echo "PASS: a track, a lane and two keys made with the mouse, the interpolated value, saved, opened again with the same keys, the question on close"
