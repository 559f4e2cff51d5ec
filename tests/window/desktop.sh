# The desktop and its windows under a real mouse and keyboard: the start menu
# of a right click, hovering and closing it, a menu that would leave the
# window, two windows brought to the front by a click, dragged by the title
# bar, sized by the grip, a close button that fires only when released on
# itself, Alt+F4 and the system menu. Screenshots in build/artifacts/.
source "$(dirname "$0")/lib/xsession.sh"
source "$(dirname "$0")/lib/host.sh"
start_desktop_probe "${2:?build folder}" desktop
shots="$ARTIFACTS/desktop"

# The start menu: 120 by 120 at the pointer, in the menu colour.
click_at 300 200 3
wait_for_state 'UISystem::mpInstance->mpMenu->mSize' '{width = 120, height = 120}'
expect_state 'UISystem::mpInstance->mpMenu->mPosition' '{x = 300, y = 200}'
expect_state 'UISystem::mpInstance->mpMenu->mItems.mSize' '8'
screenshot "$shots-menu.png"
expect_pixel "$shots-menu.png" 410 203 224,224,224
# Hovering the second row paints it in the select colour, beside its text.
point_at 330 225
sleep 0.3
screenshot "$shots-menu-hover.png"
expect_pixel "$shots-menu-hover.png" 410 225 32,32,255
expect_pixel "$shots-menu-hover.png" 410 240 224,224,224
type_keys Escape
wait_for_state 'UISystem::mpInstance->mpMenu' '(class UIMenu *) 0x0'
# Too near the bottom right corner: left of and above the pointer.
click_at 1020 760 3
wait_for_state 'UISystem::mpInstance->mpMenu->mPosition' '{x = 900, y = 640}'
type_keys Escape
wait_for_state 'UISystem::mpInstance->mpMenu' '(class UIMenu *) 0x0'

# Clicking the back window brings it to the front, active; the other turns
# inactive.
click_at 520 300
wait_for_state 'UISystem::mpInstance->mpActiveWindow->mTitle.mpBuffer->mpData' 'Back' contains
sleep 0.2
screenshot "$shots-active.png"
expect_pixel "$shots-active.png" 700 260 0,0,128
expect_pixel "$shots-active.png" 830 360 0,0,64

# Dragged by the title bar to the top of the window: it stops at y 16.
drag_from_to 700 260 700 0
wait_for_state 'UISystem::mpInstance->mpActiveWindow->mPosition' '{x = 500, y = 16}'
# Sized below 64 by 64 it stops there, then follows the pointer back out.
press_at 792 208
move_to 520 50
wait_for_state 'UISystem::mpInstance->mpActiveWindow->mSize' '{width = 64, height = 64}'
move_to 800 220
wait_for_state 'UISystem::mpInstance->mpActiveWindow->mSize' '{width = 308, height = 212}'
release_at 800 220
screenshot "$shots-sized.png"

# The close button: pressed, slid off and released, nothing closes.
close_x=$((500 + 308 - 16 + 7)); close_y=$((16 + 3 + 7))
press_at "$close_x" "$close_y"
move_to 600 100
release_at 600 100
sleep 0.3
expect_state 'UISystem::mpInstance->mWindowList.mList.mSize' '2'
click_at "$close_x" "$close_y"
wait_for_state 'UISystem::mpInstance->mWindowList.mList.mSize' '1'

# A right click on the title bar: the 72 by 64 system menu.
click_at 700 360 3
wait_for_state 'UISystem::mpInstance->mpMenu->mSize' '{width = 72, height = 64}'
type_keys Escape
# Alt+F4 closes the active window (the window manager leaves the keys to it).
click_at 700 450
type_keys alt+F4
wait_for_state 'UISystem::mpInstance->mWindowList.mList.mSize' '0'

close_and_wait "$WID"
[ "$EXIT_STATUS" -eq 0 ] || { cat "$HOST_LOG" >&2; fail "exit status $EXIT_STATUS"; }
expect_traces_in_order "$HOST_LOG" "${HOST_TRACES[@]}"
echo "PASS: start menu, hover, ESC, edge placement, activation, move, size, close button, system menu and Alt+F4"
