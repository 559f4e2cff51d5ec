# The timeline editor as a user drives it.
HARBOR="$1"
BUILD="${2:?build folder}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
shots="$ARTIFACTS/sequencer"
fresh_data "$BUILD"
export WM_CLOSE_KEY=super+F4
start_harbor "$HARBOR" sequencer
trap restore_data EXIT

desktop_menu 5
windows_open 1
dialog_click 100 202
type_text SequencerTool
dialog_click 280 202
windows_open 1
tool=$(front SequencerTool)
expect_state "$(text_of "$tool->mTitle")" '"Sequencer Tool"' contains
debugger_print "$tool->mAbsRegion"
for i in 0 1 2 3 4 5; do debugger_print "UISystem::mpInstance->mpMainMenu->mItems.mpData[$i]->mRegion"; done
debugger_print "UISystem::mpInstance->mpMainMenu->mAbsRegion"
sleep 0.5
screenshot "$shots-open.png"
main_menu 2 0
windows_open 2
dialog=$(front UIObjectDialog)
expect_state "$(text_of "$dialog->mTitle")" '"Select Object"' contains
dialog_click 100 202
type_text CoordinateUnit
dialog_click 280 202
windows_open 1
wait_for_state "$tool->mpResource->mTrackList.mSize" 1
track="$tool->mpTrackForm->mTracks.mpData[0]"
debugger_print "$track->mpInfo->mAbsRegion"
click_in "$track->mpInfo" 85 20
wait_for_state "(int)($tool->mpSelectTrack != 0)" 1
main_menu 3 0
windows_open 2
dialog=$(front UIControlDialog)
expect_state "$(text_of "$dialog->mTitle")" '"Select Control"' contains
dialog_click 100 202
type_text Position
dialog_click 280 202
windows_open 1
sleep 0.5
screenshot "$shots-lane.png"
debugger_print "$track->mLanes.mSize"
debugger_print "*$tool->mpControlForm"
