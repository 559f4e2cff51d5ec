# The wallpaper chosen from the desktop's menu, as a user does it: the file
# dialog "Texture open" with its buttons, columns and filters; the Targa
# filter shows only folders and .tga files; typing in the file-name field;
# ESC cancels; a double click on a sample sets it, stretched over the whole
# window; a damaged file leaves the old wallpaper; after a restart the
# wallpaper is back. Screenshots in build/artifacts/wallpaper-*.png.
HARBOR="$1"
BUILD="${2:?build folder}"
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
shots="$ARTIFACTS/wallpaper"
fresh_data "$BUILD"
start_harbor "$HARBOR" wallpaper.first
trap restore_data EXIT
dialog=$(front UIFileDialog)
files="$dialog->mRows.mList.mSize"

# Right click, "Change Wallpaper": the file dialog at the intermediate root.
desktop_menu 7
windows_open 1
expect_state "$(text_of "$dialog->mTitle")" '"Texture open"' contains
expect_state "$(text_of "$dialog->mCaption")" '"intermediate/"' contains
expect_state "$dialog->mFilterIndex" 3
expect_state "$dialog->mFilters.mSize" 3
screenshot "$shots-dialog.png"
# "All Texture" (the last filter entry) over the folders of the root.
expect_state "$files" "$(find "$ROOT" -mindepth 1 -maxdepth 1 -type d ! -name '.*' | wc -l)"

# The filter pull-down: "Targa(*.tga)" is its third row.
dialog_click 100 222
wait_for_state "$dialog->mpFilterControl->mpPulldownList->mStatus & 8" 8
screenshot "$shots-filters.png"
dialog_click 100 $((214 + 16 + 1 + 2 * 16 + 8))
wait_for_state "$dialog->mFilterIndex" 2
# Into samples: only its two .tga files, no .bmp, no .seq.
dialog_double_click 40 "$(dialog_row_y "$(row_of samples "$ROOT")")"
wait_for_state "$(text_of "$dialog->mCaption")" '"intermediate/samples/"' contains
expect_state "$files" 2
# A click on a file puts its name into the field.
dialog_click 40 "$(dialog_row_y 1)"
wait_for_state "$(text_of "$dialog->mText")" '"tga32_top.tga"' contains
screenshot "$shots-targa.png"
# Up, then into wallpapers: broken.tga, dusk.tga and sea.tga; meadow.bmp
# stays hidden.
dialog_click 200 48
wait_for_state "$(text_of "$dialog->mCaption")" '"intermediate/"' contains
dialog_double_click 40 "$(dialog_row_y "$(row_of wallpapers "$ROOT")")"
wait_for_state "$(text_of "$dialog->mCaption")" '"intermediate/wallpapers/"' contains
expect_state "$files" 3

# The file-name field: letters lower case, Shift+letter upper case; ESC,
# which the field does not use, reaches the dialog and cancels it.
dialog_click 100 202
type_keys a shift+b 1 period t g a
wait_for_state "$(text_of "$dialog->mpTextControl->mText")" '"aB1.tga"' contains
type_keys Escape
windows_open 0
expect_state 'UISystem::mpInstance->mpDesktop->mpWallpaper' '(class ResourceBase *) 0x0'

# The damaged file: a trace, no wallpaper, no crash.
desktop_menu 7
windows_open 1
dialog_double_click 40 "$(dialog_row_y "$(row_of wallpapers "$ROOT")")"
wait_for_state "$(text_of "$dialog->mCaption")" '"intermediate/wallpapers/"' contains
dialog_double_click 40 "$(dialog_row_y "$(row_of broken.tga "$WALLPAPERS" tex bmp tga)")"
windows_open 0
wait_for_trace 'broken\.tga loading fail\.'
expect_state 'UISystem::mpInstance->mpDesktop->mpWallpaper' '(class ResourceBase *) 0x0'

# A double click on sea.tga: the wallpaper fills the window.
desktop_menu 7
windows_open 1
dialog_double_click 40 "$(dialog_row_y "$(row_of wallpapers "$ROOT")")"
wait_for_state "$(text_of "$dialog->mCaption")" '"intermediate/wallpapers/"' contains
dialog_double_click 40 "$(dialog_row_y "$(row_of sea.tga "$WALLPAPERS" tex bmp tga)")"
windows_open 0
wait_for_state '(int)(UISystem::mpInstance->mpDesktop->mpWallpaper != 0)' 1
sleep 0.5
screenshot "$shots-set.png"
python3 "$(dirname "$0")/lib/compare_image.py" "$shots-set.png" "$WALLPAPERS/sea.tga" \
  || fail "the wallpaper does not fill the window"

# Closed and started again: the wallpaper is read back from the settings.
close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "exit status $EXIT_STATUS"; }
grep -q 'wallpapers/sea' "$SETTINGS" || { cat "$SETTINGS" >&2; fail "the wallpaper was not saved"; }
start_host "$HARBOR" "Harbor Application" "$ARTIFACTS/wallpaper.second.stderr"
wait_for_trace 'Application : execute\.'
sleep 1
screenshot "$shots-restart.png"
python3 "$(dirname "$0")/lib/compare_image.py" "$shots-restart.png" "$WALLPAPERS/sea.tga" \
  || fail "the wallpaper is not back after a restart"
close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "second run ended with status $EXIT_STATUS"; }
echo "PASS: Texture open, the Targa filter, typing and ESC, a damaged file, the wallpaper set, kept over a restart"
