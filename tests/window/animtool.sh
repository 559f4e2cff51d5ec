# The animation editor as a user drives it: "Tool select" opens the AnimTool
# on a new animation; the sample sprite sheet is chosen as "Texture"; "Add
# Track" with an AnimCell and "Add All Lane"; a drag in the texture view picks
# the cell's rectangle; the cell is dragged in the animation view and keyed
# at frames 0 and 30; played, and seen half way at frame 15; "Save as"
# writes the file; a list of animations naming it at index 0 (written here,
# as a game would have it) is chosen as the "AnimationList" of an
# AnimationUnit made in the unit window, which then plays the same motion in
# game view 1. Screenshots in build/artifacts/animtool-*.png.
HARBOR="$1"
BUILD="${2:?build folder}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
shots="$ARTIFACTS/animtool"
fresh_data "$BUILD"
saved="$ROOT/animwalktest.asq.xml"
list="$ROOT/animwalktest.aml.xml"
rm -f "$saved" "$list"
export WM_CLOSE_KEY=super+F4 # Alt+F4 closes windows inside the program
start_harbor "$HARBOR" animtool
trap 'restore_data; rm -f "$saved" "$list"' EXIT

tool=$(front AnimTool)
sequencer="((AnimSequencer*)$tool->mpSequencer)"
cell="((AnimCell*)$sequencer->mpTrackArray[0].mpObject)"
frame="$tool->mpSequencer->mCurrentFrame.mValue >> 16"
track="$tool->mpTrackForm->mTracks.mpData[0]"
position_lane="$track->mLanes.mpData[0]"
texture_view="$tool->mpTextureForm->mpView"
animation_view="$tool->mpAnimationForm->mpView"
top="$tool->mpTopForm->mpClientHolder->mChildren.mpFirst"
end="((UIParameterControl*)$top->mpNext->mpValue)->mpValueControl"
current="((UIParameterControl*)$top->mpNext->mpNext->mpValue)->mpValueControl"
fps="((UIParameterControl*)$top->mpNext->mpNext->mpNext->mpValue)->mpValueControl"
keys="$position_lane->mpLane->mKeyList.mList"
unit="((AnimationUnit*)UnitSystem::mpInstance->mUnitList.mpFirst->mpValue)"
game="$unit->mSequencers.mpData[0]"
game_cell="((AnimCell*)$game->mpTrackArray[0].mpObject)"
# set_field_at X Y TEXT: set_field at a window place.
set_field_at() {
  click_at "$1" "$2"
  type_keys End shift+Home
  type_text "$3"
  type_keys Return
}
# until_state EXPRESSION VALUE STEP...: the step again (up to three times)
# while the state is not yet reached: a loaded machine may lose a key.
until_state() {
  local expression="$1" value="$2"
  shift 2
  for _ in 1 2; do
    "$@"
    for _ in $(seq 6); do [ "$(debugger_print "$expression")" = "$value" ] && return 0; sleep 0.5; done
  done
  "$@"
  wait_for_state "$expression" "$value"
}

# class_of EXPRESSION: the class the debugger finds for the object pointed at.
class_of() {
  timeout 30 gdb -p "$APP_PID" -batch -ex "set print object on" -ex "print $1" 2>/dev/null \
    | sed -n 's/^\$1 = (\(class \)\{0,1\}\([A-Za-z_]*\) \*).*/\2/p' || true
}
# pick_row FOLDER NAME EXTENSION...: the file dialog's row of NAME clicked.
pick_row() {
  local folder="$1" name="$2"
  shift 2
  dialog_click 40 "$(dialog_row_y "$(row_of "$name" "$folder" "$@")")"
  wait_for_state "$(text_of "$(front UIFileDialog)->mText")" "\"$name\"" contains
}
# enter_folder NAME: its row in the file dialog, then Return.
enter_folder() {
  dialog_click 40 "$(dialog_row_y "$(row_of "$1" "$ROOT")")"
  type_keys Return
  wait_for_state "$(text_of "$(front UIFileDialog)->mCaption")" "\"intermediate/$1/\"" contains
}
# white_at FILE X Y / not_white_at FILE X Y: the sheet's white texels there or not.
white_at() { expect_pixel "$1" "$2" "$3" 255,255,255; }
not_white_at() {
  [ "$(pixel "$1" "$2" "$3")" != 255,255,255 ] || fail "pixel ($2, $3) of $1 is white"
}

# 1. "Tool", "AnimTool", "Ok": a new animation, which the player takes as an
# animation.
desktop_menu 5
windows_open 1
dialog_enter UIPlaneObjectDialog AnimTool
windows_open 1
expect_state "$(text_of "$tool->mTitle")" '"Animation Tool"' contains
expect_state "$tool->mSize" '{width = 512, height = 512}'
wait_for_state "(int)($tool->mpResource != 0)" 1
[ "$(class_of "$tool->mpResource")" = AnimResource ] || fail "the tool edits no AnimResource"
[ "$(class_of "$tool->mpSequencer")" = AnimSequencer ] || fail "the tool plays no AnimSequencer"
expect_state "(int)($sequencer->mpResource == (SequencerResource*)$tool->mpResource)" 1

# 2. "Texture" > "..": the sheet chosen in anim/; the player draws with it.
click_in "$tool->mpTextureForm->mpTextureControl->mpOpenButton" 8 6
windows_open 2
expect_state "$(text_of "$(front UIFileDialog)->mTitle")" '"Resource open"' contains
enter_folder anim
pick_row "$ROOT/anim" walk_sheet.tga tex tga bmp
dialog_click 280 202
windows_open 1
wait_for_state "$(text_of "((AnimResource*)$tool->mpResource)->mpTexture->mPath")" 'anim/walk_sheet.tga"' contains
wait_for_state "$(text_of "$sequencer->mpTexture->mPath")" 'anim/walk_sheet' contains
expect_state "$sequencer->mpTexture->mpTexture._M_b._M_p->mWidth" 64
# The sequence ends at 30 and plays at 15 frames a second: two seconds.
until_state "$tool->mpResource->mEndFrame" 30 set_field "$end" 30
until_state "$tool->mpResource->mFPS" 15 set_field "$fps" 15

# 3. "Track" > "Add Track", AnimCell; the track selected, "Lane" > "Add All Lane".
main_menu 2 0
windows_open 2
expect_state "$(text_of "$(front UIObjectDialog)->mTitle")" '"Select Object"' contains
dialog_click 40 "$(dialog_row_y 3)"
wait_for_state "$(text_of "$(front UIObjectDialog)->mText")" '"AnimCell"' contains
dialog_click 280 202
windows_open 1
wait_for_state "$tool->mpTrackForm->mTracks.mSize" 1
[ "$(class_of "$sequencer->mpTrackArray[0].mpObject")" = AnimCell ] || fail "the track's object is no AnimCell"
click_in "$track->mpInfo" 85 20
wait_for_state "(int)($tool->mpSelectTrack != 0)" 1
main_menu 3 3
wait_for_state "$track->mLanes.mSize" 6
expect_state "$(text_of "$position_lane->mpLane->mControlName")" '"Position"' contains

# 4. A drag from (16, 16) to (48, 40) in the texture view at zoom 1.
expect_state "($texture_view->mFlags >> 4) & 15" 1
r=($(region_of "$texture_view->mAbsRegion"))
drag_from_to $((r[0] + 16)) $((r[1] + 16)) $((r[0] + 48)) $((r[1] + 40))
wait_for_state "$cell->mUV" '{x = 16, y = 16}'
expect_state "$cell->mSize" '{width = 32, height = 24}'

# 5. The cell dragged 20 pixels right from the animation's origin, keyed on
# all lanes at 0; the ruler dragged to 30, the cell 20 further, a Position key.
r=($(region_of "$animation_view->mAbsRegion"))
cx=$((r[0] + 512))
cy=$((r[1] + 512))
drag_from_to $cx $cy $((cx + 20)) $cy
wait_for_state "$cell->mPosition" '{x = 20, y = 0}'
main_menu 4 3
wait_for_state "$keys.mSize" 1
expect_state "$cell->mPosition" '{x = 20, y = 0}'
r=($(region_of "$tool->mpTrackForm->mpSequenceForm->mAbsRegion"))
drag_from_to $((r[0] + 5)) $((r[1] + 16)) $((r[0] + 30)) $((r[1] + 16))
wait_for_state "$frame" 30
expect_state "$cell->mSize" '{width = 32, height = 24}'
drag_from_to $((cx + 20)) $cy $((cx + 40)) $cy
wait_for_state "$cell->mPosition" '{x = 40, y = 0}'
click_in "$position_lane->mpInfo" 60 12
wait_for_state "(int)($tool->mpSelectLane == $position_lane->mpLane)" 1
main_menu 4 0
wait_for_state "$keys.mSize" 2
expect_state "$tool->mpSelectKey->mFrame" 30
sleep 0.3
screenshot "$shots-keyed.png"

# 6. "Transport" > "Seek Start", "Play/Stop": it plays to the end and stops
# there; "Current" 15 shows the cell half way. The eye of the sheet (white,
# 8 by 8) is the top left of the cell; its middle is at (x - 12, -8).
main_menu 5 1
wait_for_state "$frame" 0
expect_state "$cell->mPosition" '{x = 20, y = 0}'
sleep 0.3
screenshot "$shots-frame0.png"
white_at "$shots-frame0.png" $((cx + 8)) $((cy - 8))
not_white_at "$shots-frame0.png" $((cx + 28)) $((cy - 8))
main_menu 5 0
wait_for_state "$frame" 30
wait_for_state "(int)$tool->mpSequencer->mPlaying" 0
expect_state "$cell->mPosition" '{x = 40, y = 0}'
sleep 0.3
screenshot "$shots-frame30.png"
white_at "$shots-frame30.png" $((cx + 28)) $((cy - 8))
not_white_at "$shots-frame30.png" $((cx + 8)) $((cy - 8))
until_state "$frame" 15 set_field "$current" 15
expect_state "$cell->mPosition" '{x = 30, y = 0}'
sleep 0.3
screenshot "$shots-frame15.png"
white_at "$shots-frame15.png" $((cx + 18)) $((cy - 8))
not_white_at "$shots-frame15.png" $((cx + 8)) $((cy - 8))
not_white_at "$shots-frame15.png" $((cx + 28)) $((cy - 8))

# 7. "File" > "Save as", a new name; "Exit".
save_as animwalktest "$saved"
main_menu 0 4
windows_open 0

# A game's list of animations names the file at index 0.
sed -e 's|path="anim/idle"|path="animwalktest"|' -e 's|<element3 index="3" typeinfo="AnimResource" path="anim/walk" />|<element3 index="3" />|' \
  "$ROOT/anim/character.aml.xml" >"$list"

# Ctrl+Alt+U, "Edit" > "New", CoordinateUnit > AnimationUnit, "Ok"; its
# viewer by a double click on its row, made taller to show all fields.
type_keys ctrl+alt+u
windows_open 1
units=$(front UnitInfoWindow)
menu_bar 20 0
windows_open 2
expect_state "$(text_of "$(front UIObjectDialog)->mTitle")" '"Unit"' contains
dialog_click 40 "$(dialog_row_y 1)"
type_keys Return
dialog_click 40 "$(dialog_row_y 1)"
wait_for_state "$(text_of "$(front UIObjectDialog)->mText")" '"AnimationUnit"' contains
dialog_click 280 202
windows_open 1
wait_for_state "$units->mpList->mRowCount" 1
[ "$(class_of "UnitSystem::mpInstance->mUnitList.mpFirst->mpValue")" = AnimationUnit ] || fail "no AnimationUnit"
for _ in 1 2 3; do
  double_click_in "$units->mpList" 40 $((17 + 8))
  [ "$(debugger_print 'UISystem::mpInstance->mWindowList.mList.mSize')" = 2 ] && break
done
windows_open 2
viewer=$(front UnitViewerWindow)
expect_state "$(text_of "$viewer->mTitle")" '"AnimationUnit"' contains
expect_state "$viewer->mPosition" '{x = 16, y = 16}'
drag_from_to 265 265 300 620
wait_for_state "$viewer->mSize" '{width = 291, height = 611}'
sleep 0.3
# "AnimationList" > "..": the list file; "CurrentAnimation" 0 plays it.
click_at 100 156
windows_open 3
expect_state "$(text_of "$(front UIFileDialog)->mTitle")" '"Resource open"' contains
pick_row "$ROOT" animwalktest.aml.xml aml aml.xml
dialog_click 280 202
windows_open 2
wait_for_state "(int)($unit->mpAnimationList != 0)" 1
until_state "$unit->mCurrentAnimation" 0 set_field_at 60 254 0
wait_for_state "(int)$game->mPlaying" 0
expect_state "$game->mCurrentFrame.mValue >> 16" 30
expect_state "$game_cell->mPosition" '{x = 40, y = 0}'
sleep 0.3
screenshot "$shots-game30.png"
white_at "$shots-game30.png" $((512 + 30)) $((384 - 10))
not_white_at "$shots-game30.png" $((512 + 10)) $((384 - 10))
# "CurrentFrame" 0 plays it again from the start: caught on its way, the
# debugger holding the program while the screenshot is taken.
set_field_at 160 254 0
read -r at x < <(timeout 30 gdb -p "$APP_PID" -batch -ex "print $game->mCurrentFrame.mValue >> 16" \
  -ex "print $game_cell->mPosition.x" -ex "shell import -window $WID $shots-game-moving.png" 2>/dev/null \
  | sed -n 's/^\$[0-9]* = //p' | tr '\n' ' '; echo) || true
[ -n "$at" ] && [ -n "$x" ] || fail "no frame read"
echo "game view: frame $at, cell at x = $x"
[ "$x" -eq $((20 + 20 * at / 30)) ] || [ "$x" -eq $((20 + (20 * at + 29) / 30)) ] || fail "cell at $x at frame $at"
white_at "$shots-game-moving.png" $((512 + x - 10)) $((384 - 10))

close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "exit status $EXIT_STATUS"; }
echo "PASS: a new animation, the sheet as its texture, a cell picked, dragged and keyed at 0 and 30, played and seen half way at 15, saved, and played by an AnimationUnit in game view 1"
