# The desktop as an inspector, as a user drives it: Ctrl+Alt+S shows the
# Systems' orders; Ctrl+Alt+U creates a CoordinateUnit through "New", a click
# selects it and its handles show in game view 1, the square drags it, a
# double click opens its viewer, "Delete" empties the viewer and keeps its
# title; Ctrl+Alt+R lists the wallpaper, whose viewer and texture viewer
# open by double clicks, the wheel zooming; "Tool" opens a ResourceViewer
# whose "Open" shows a texture, survives a damaged file and stays usable.
# Screenshots in build/artifacts/tools-*.png.
HARBOR="$1"
BUILD="${2:?build folder}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
shots="$ARTIFACTS/tools"
fresh_data "$BUILD"
export WM_CLOSE_KEY=super+F4 # Alt+F4 closes windows inside the program
start_harbor "$HARBOR" tools
trap restore_data EXIT
unit='((CoordinateUnit*)UnitSystem::mpInstance->mUnitList.mpFirst->mpValue)'

# Ctrl+Alt+S: "SystemInformation", 256 by 256 at (16, 16), its four lists
# as long as the host's computed orders.
type_keys ctrl+alt+s
windows_open 1
info=$(front SystemInfoWindow)
expect_state "$(text_of "$info->mTitle")" '"SystemInformation"' contains
expect_state "$info->mPosition" '{x = 16, y = 16}'
expect_state "$info->mSize" '{width = 256, height = 256}'
i=0
for order in mPreprocessOrder mUpdateOrder mPostprocessOrder mDestroyOrder; do
  expect_state "$info->mpLists[$i]->mRowCount" "$(debugger_print "SystemManager::mpInstance->$order.mSize")"
  i=$((i + 1))
done
sleep 0.3
screenshot "$shots-systems.png"
click_in "$info->mpCloseButton" 7 7
windows_open 0

# Ctrl+Alt+U, "Edit" > "New", "CoordinateUnit", "Ok": one unit, one row.
type_keys ctrl+alt+u
windows_open 1
units=$(front UnitInfoWindow)
expect_state "$(text_of "$units->mTitle")" '"UnitInformation"' contains
menu_bar 20 0
windows_open 2
dialog=$(front UIObjectDialog)
expect_state "$(text_of "$dialog->mTitle")" '"Unit"' contains
dialog_click 40 "$(dialog_row_y 1)"
wait_for_state "$(text_of "$dialog->mText")" '"CoordinateUnit"' contains
dialog_click 280 202
windows_open 1
wait_for_state 'UnitSystem::mpInstance->mUnitList.mSize' 1
wait_for_state "$units->mpList->mRowCount" 1

# A click on its row selects it: the name, the red and green arrows and the
# grey square show at world (0, 0), the middle of game view 1 (1:1).
expect_state 'ViewSystem::mpInstance->mViews[1].mEnable' 'true'
click_in "$units->mpList" 40 $((17 + 8))
wait_for_state "(int)(($unit->mSystemStatus & 0x10000) != 0)" 1
wait_for_state "(int)($unit->mpPositionControl != 0)" 1
sleep 0.5
screenshot "$shots-selected.png"
expect_pixel "$shots-selected.png" 512 384 191,191,191
expect_pixel "$shots-selected.png" 512 354 255,0,0
expect_pixel "$shots-selected.png" 542 384 0,255,0
# The square dragged 40 pixels right: the view's scale is 1 (projection and
# viewport as wide), so Position x grows by 40.
scale=$(debugger_print '(ViewSystem::mpInstance->mViews[1].mProjection.right - ViewSystem::mpInstance->mViews[1].mProjection.left) / (ViewSystem::mpInstance->mViews[1].mViewport.right - ViewSystem::mpInstance->mViews[1].mViewport.left)')
drag_from_to 512 384 552 384
wait_for_state "$unit->mPosition.x.mValue >> 16" $((40 * scale))
expect_state "$unit->mPosition.y.mValue" 0

# A double click on the row: the unit's viewer, titled with its class.
double_click_in "$units->mpList" 40 $((17 + 8))
windows_open 2
viewer=$(front UnitViewerWindow)
expect_state "$(text_of "$viewer->mTitle")" '"CoordinateUnit"' contains
expect_state "(int)($viewer->mpClientHolder->mChildren.mSize > 0)" 1
sleep 0.3
screenshot "$shots-viewer.png"
# "Delete" from the unit window's menu: the viewer empties, its title stays.
click_at 400 25
wait_for_state '(int)(UISystem::mpInstance->mpActiveWindow == (UIWindow*)UISystem::mpInstance->mWindowList.mList.mpFirst->mpValue)' 1
wait_for_state "$(text_of "$(front UIWindow)->mTitle")" '"UnitInformation"' contains
menu_bar 20 1
wait_for_state 'UnitSystem::mpInstance->mUnitList.mSize' 0
viewer=$(echo "$viewer" | sed 's/mpFirst/mpFirst->mpNext/')
wait_for_state "$viewer->mpClientHolder->mChildren.mSize" 0
expect_state "$(text_of "$viewer->mTitle")" '"CoordinateUnit"' contains
sleep 0.3
screenshot "$shots-deleted.png"
type_keys alt+F4
windows_open 1
type_keys alt+F4
windows_open 0

# A wallpaper, then Ctrl+Alt+R: one resource; its row opens its viewer, the
# viewer's preview opens the texture viewer, and the wheel zooms it.
desktop_menu 7
windows_open 1
dialog_double_click 40 "$(dialog_row_y "$(row_of wallpapers "$ROOT")")"
wait_for_state "$(text_of "$(front UIFileDialog)->mCaption")" '"intermediate/wallpapers/"' contains
dialog_double_click 40 "$(dialog_row_y "$(row_of dusk.tga "$WALLPAPERS" tex bmp tga)")"
windows_open 0
type_keys ctrl+alt+r
windows_open 1
resources=$(front ResourceInfoWindow)
expect_state "$(text_of "$resources->mTitle")" '"ResrourceInformation"' contains
wait_for_state "$resources->mResourceNum" 1
sleep 0.3
screenshot "$shots-resources.png"
double_click_in "$resources->mpList" 40 $((17 + 8))
windows_open 2
viewer=$(front ResourceViewerWindow)
expect_state "$(text_of "$viewer->mTitle")" '"dusk.tga"' contains
preview="((UIBase*)$viewer->mpClientHolder->mChildren.mpLast->mpValue)"
double_click_in "$preview" 20 30
windows_open 3
texture=$(front TextureViewerWindow)
expect_state "$(text_of "$texture->mTitle")" '"TextureViewer"' contains
expect_state "$texture->mSize" '{width = 512, height = 256}'
expect_state "$texture->mpUITexture->mSize" '{width = 256, height = 192}'
click_in "$texture->mpUITexture" 30 30 4
wait_for_state "$texture->mpUITexture->mZoom" 1
expect_state "$texture->mpUITexture->mSize" '{width = 512, height = 384}'
sleep 0.3
screenshot "$shots-texture.png"
for n in 3 2 1; do type_keys alt+F4; windows_open $((n - 1)); done

# "Tool", "ResourceViewerWindow", "Ok": the viewer with its "File" menu;
# "Open" shows a sample texture; a damaged file leaves it empty, with a
# trace, and it opens the next file as before.
desktop_menu 5
windows_open 1
expect_state "$(text_of "$(front UIPlaneObjectDialog)->mTitle")" '"Tool select"' contains
dialog_click 100 202
type_text ResourceViewerWindow
dialog_click 280 202
windows_open 1
viewer=$(front ResourceViewerWindow)
expect_state "$(text_of "$viewer->mTitle")" '"ResourceViewer"' contains
open_file() { # open_file FOLDER NAME
  menu_bar 20 0
  windows_open 2
  expect_state "$(text_of "$(front UIFileDialog)->mTitle")" '"Load"' contains
  dialog_double_click 40 "$(dialog_row_y "$(row_of "$1" "$ROOT")")"
  dialog_click 100 202
  type_text "$2"
  dialog_click 280 202
  windows_open 1
}
open_file samples tga32_top.tga
wait_for_state "$(text_of "$viewer->mTitle")" '"tga32_top.tga"' contains
sleep 0.3
screenshot "$shots-open.png"
open_file wallpapers broken.tga
wait_for_trace 'broken\.tga loading fail\.'
wait_for_state "$(text_of "$viewer->mTitle")" '"ResourceViewer"' contains
open_file samples tga32_bottom.tga
wait_for_state "$(text_of "$viewer->mTitle")" '"tga32_bottom.tga"' contains

close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "exit status $EXIT_STATUS"; }
echo "PASS: system orders, a unit created, selected, dragged, viewed and deleted, the wallpaper's resource, viewer, texture viewer and zoom, the resource viewer's Open with a damaged file"
