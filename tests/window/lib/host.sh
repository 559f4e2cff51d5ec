# Sourced by the window tests after xsession.sh: the steps of a user at the
# running host. start_host runs a program and finds its window; the other
# helpers move, click and type at window places, take screenshots and read
# pixels, read the program's state with the debugger, and check traces.
# Places are window content coordinates, which are the UI's coordinates.

# start_host PROGRAM TITLE LOG: sets APP_PID and WID; waits until the program
# has traced "probe ready" when it is a probe host, or its window is up.
start_host() {
  "$1" </dev/null 2>"$3" &
  APP_PID=$!
  WID=$(find_window "$2")
  HOST_LOG="$3"
  activate "$WID"
  for _ in $(seq 200); do grep -q '^probe ready' "$3" && break; sleep 0.05; done
}

# start_widget_probe BUILD LOGNAME: the host with test widgets
# (tests/widgetprobe) from the build folder, once its window is active.
start_widget_probe() {
  local probe="$1/tests/widgetprobe/widgetprobe"
  [ -x "$probe" ] || fail "no probe program at $probe"
  start_x_session
  start_host "$probe" "Harbor Widget Probe" "$ARTIFACTS/$2.stderr"
  wait_for_trace ' probe Active '
}

# start_desktop_probe BUILD LOGNAME: the host with two windows open
# (tests/desktopprobe), under a window manager that leaves Alt+F4 to it.
start_desktop_probe() {
  local probe="$1/tests/desktopprobe/desktopprobe"
  [ -x "$probe" ] || fail "no probe program at $probe"
  export WM_CLOSE_KEY=super+F4
  start_x_session
  start_host "$probe" "Harbor Desktop Probe" "$ARTIFACTS/$2.stderr"
}

# expect_state EXPRESSION VALUE [contains]: what the debugger prints for it
# in the running host is VALUE (or holds it).
expect_state() {
  local got
  got=$(debugger_print "$1")
  if [ "${3:-}" = contains ]; then [[ "$got" == *"$2"* ]] && return 0
  else [ "$got" = "$2" ] && return 0
  fi
  cat "$HOST_LOG" >&2
  fail "$1 is '$got', wanted '$2'"
}
# wait_for_state EXPRESSION VALUE [contains]: the same, waiting up to 10 s.
wait_for_state() {
  local got
  for _ in $(seq 20); do
    got=$(debugger_print "$1")
    if [ "${3:-}" = contains ]; then [[ "$got" == *"$2"* ]] && return 0
    else [ "$got" = "$2" ] && return 0
    fi
    sleep 0.5
  done
  cat "$HOST_LOG" >&2
  fail "$1 stays '$got', wanted '$2'"
}

# wait_for_trace PATTERN [SECONDS]: until the log has a line matching the
# extended regular expression, or fails.
wait_for_trace() {
  local tries=$(( ${2:-5} * 20 ))
  for _ in $(seq "$tries"); do grep -qE "$1" "$HOST_LOG" && return 0; sleep 0.05; done
  cat "$HOST_LOG" >&2
  fail "no trace matching '$1'"
}

# Each step holds long enough for several frames even on a loaded machine.
point_at() { xdotool mousemove --window "$WID" "$1" "$2"; sleep 0.15; }
# click_at X Y [BUTTON]: X buttons, 1 left, 2 middle, 3 right.
click_at() {
  point_at "$1" "$2"
  xdotool mousedown "${3:-1}"; sleep 0.15
  xdotool mouseup "${3:-1}"; sleep 0.15
}
# Two presses well within the toolkit's 250 ms, each held over a frame: a
# press and release between two frames would go unseen.
double_click_at() {
  point_at "$1" "$2"
  # One xdotool run: starting a process per step could pass the 250 ms.
  xdotool mousedown "${3:-1}" sleep 0.06 mouseup "${3:-1}" sleep 0.06 \
    mousedown "${3:-1}" sleep 0.06 mouseup "${3:-1}"
  sleep 0.2
}
# Pressing, moving and releasing apart, each held over a few frames.
press_at() { point_at "$1" "$2"; xdotool mousedown "${3:-1}"; sleep 0.15; }
move_to() { point_at "$1" "$2"; }
release_at() { point_at "$1" "$2"; xdotool mouseup "${3:-1}"; sleep 0.15; }
drag_from_to() { press_at "$1" "$2"; move_to "$3" "$4"; release_at "$3" "$4"; }
# type_keys KEY...: xdotool key names, each held over a few frames.
type_keys() {
  for k in "$@"; do xdotool keydown "$k"; sleep 0.1; xdotool keyup "$k"; sleep 0.1; done
}

# screenshot FILE: the window's content as PNG.
screenshot() { import -window "$WID" "$1" || fail "no screenshot"; }
# pixel FILE X Y: "r,g,b" of a screenshot.
pixel() {
  convert "$1" -format "%[fx:int(255*p{$2,$3}.r)],%[fx:int(255*p{$2,$3}.g)],%[fx:int(255*p{$2,$3}.b)]" info:
}
# expect_pixel FILE X Y R,G,B: the colour within 2 per channel.
expect_pixel() {
  local got
  got=$(pixel "$1" "$2" "$3")
  python3 -c "import sys; a=[int(v) for v in sys.argv[1].split(',')]; b=[int(v) for v in sys.argv[2].split(',')]; sys.exit(0 if all(abs(x-y)<=2 for x,y in zip(a,b)) else 1)" "$got" "$4" \
    || fail "pixel ($2, $3) of $1 is $got, wanted $4"
}

# debugger_print EXPRESSION: the value gdb prints for it in the running host.
debugger_print() {
  timeout 30 gdb -p "$APP_PID" -batch -ex "print $1" 2>/dev/null | sed -n 's/^\$1 = //p' || true
}
# debugger_do COMMAND: runs a gdb command ("set var ...", "call ...") in the host.
debugger_do() {
  timeout 30 gdb -p "$APP_PID" -batch -ex "$1" >/dev/null 2>&1 || true
}

# expect_traces_in_order LOG TEXT...: each text on a later line than the one before.
expect_traces_in_order() {
  local log="$1" line=0 found
  shift
  for text in "$@"; do
    found=$(tail -n +"$((line + 1))" "$log" | grep -n -F -m1 -- "$text" | cut -d: -f1 || true)
    [ -n "$found" ] || { cat "$log" >&2; fail "trace '$text' missing or out of order"; }
    line=$((line + found))
  done
}

# The host's start and end traces, in the order of its Systems.
HOST_TRACES=(
  "Application : start."
  "Root path = "
  "MemoryManager : start."
  "SystemManager : start."
  "HarborApp start."
  "JobSystem : start."
  "ResourceSystem : start."
  "RenderSystem : start."
  "UnitSystem : start."
  "MouseSystem : start."
  "KeyboardSystem : start."
  "HIDSystem : start."
  "ViewSystem : start."
  "UISystem : start."
  "ToolSystem : start."
  "Application : execute."
  "HarborApp end."
  "JobSystem : end."
  "UnitSystem : end."
  "ViewSystem : end."
  "UISystem : end."
  "ToolSystem : end."
  "ResourceSystem : end."
  "MouseSystem : end."
  "RenderSystem : end."
  "KeyboardSystem : end."
  "HIDSystem : end."
  "SystemManager : end."
  "MemoryManager : end."
  "Application : end."
)

# -- The editor's places, for the scenarios that drive the real host.

# start_harbor HARBOR LOGNAME: the host program under a new X session.
start_harbor() {
  start_x_session
  start_host "$1" "Harbor Application" "$ARTIFACTS/$2.stderr"
  wait_for_trace 'Application : execute\.'
}
# front TYPE: the debugger's expression of the front window as a TYPE.
front() { echo "((${1}*)UISystem::mpInstance->mWindowList.mList.mpFirst->mpValue)"; }
# windows_open N: waits until N windows are open.
windows_open() { wait_for_state 'UISystem::mpInstance->mWindowList.mList.mSize' "$1"; }
# text_of EXPRESSION: the debugger's form of an AutoString's text.
text_of() { echo "$1.mpBuffer->mpData"; }
# desktop_menu ROW: the start menu opened at (300, 200), then its row
# (0 "SystemManager" ... 5 "Tool", 7 "Change Wallpaper"; separators count).
desktop_menu() {
  click_at 300 200 3
  wait_for_state 'UISystem::mpInstance->mpMenu->mSize' '{width = 120, height = 120}'
  click_at 330 $((200 + 4 + 14 * $1 + 7))
}
# The dialogs of 320 by 240 stand in the middle of the 1024 by 768 view.
DIALOG_X=352
DIALOG_Y=264
# dialog_at X Y: a place inside such a dialog, given relative to it.
dialog_click() { click_at $((DIALOG_X + $1)) $((DIALOG_Y + $2)) "${3:-1}"; }
dialog_double_click() { double_click_at $((DIALOG_X + $1)) $((DIALOG_Y + $2)); }
# dialog_row N: the list's row N (rows of 16 below the 17-pixel header).
dialog_row_y() { echo $((64 + 17 + 16 * $1 + 8)); }
# region_of EXPRESSION: "left top right bottom" of an sRect the debugger reads.
region_of() {
  debugger_print "$1" | sed -n 's/.*left = \(-\{0,1\}[0-9]*\), top = \(-\{0,1\}[0-9]*\), right = \(-\{0,1\}[0-9]*\), bottom = \(-\{0,1\}[0-9]*\).*/\1 \2 \3 \4/p'
}
# click_in EXPRESSION DX DY [BUTTON]: a click at (DX, DY) inside the widget
# the expression names, placed by its absolute region.
click_in() {
  local r
  r=($(region_of "$1->mAbsRegion"))
  [ "${#r[@]}" = 4 ] || fail "no region for $1"
  click_at $((r[0] + $2)) $((r[1] + $3)) "${4:-1}"
}
double_click_in() {
  local r
  r=($(region_of "$1->mAbsRegion"))
  [ "${#r[@]}" = 4 ] || fail "no region for $1"
  double_click_at $((r[0] + $2)) $((r[1] + $3))
}
# menu_bar ITEM_X ROW: the active window's menu bar at the top of the view:
# the item at x, then the row of its pull-down.
menu_bar() {
  click_at "$1" 8
  click_at $(( $1 + 10 )) $((16 + 4 + 14 * $2 + 7))
}
# main_menu ITEM ROW: the same, the item found by its index in the bar.
main_menu() {
  local r
  r=($(region_of "UISystem::mpInstance->mpMainMenu->mItems.mpData[$1]->mRegion"))
  [ "${#r[@]}" = 4 ] || fail "no main menu item $1"
  menu_bar $((r[0] + 6)) "$2"
}
# set_field EXPRESSION TEXT: a click in the field, its text selected and
# typed over, Return to end the edit.
set_field() {
  click_in "$1" 12 8
  type_keys End shift+Home
  type_text "$2"
  type_keys Return
}
# dialog_enter CLASS TEXT: the front dialog's name field typed in and "Ok".
dialog_enter() {
  sleep 0.3
  dialog_click 100 202
  type_text "$2"
  wait_for_state "$(text_of "$(front "$1")->mpTextControl->mText")" "\"$2\"" contains
  dialog_click 280 202
}
# save_as NAME FILE: the front tool's "File" > "Save as", NAME typed into
# the "Save" dialog and "Ok"; waits until FILE is written.
save_as() {
  main_menu 0 2
  windows_open 2
  expect_state "$(text_of "$(front UIFileDialog)->mTitle")" '"Save"' contains
  dialog_enter UIFileDialog "$1"
  windows_open 1
  for _ in $(seq 50); do [ -s "$2" ] && break; sleep 0.1; done
  [ -s "$2" ] || fail "no file $2"
  sleep 0.5
}
# type_text TEXT: typed as a user would, capitals with Shift. The toolkit's
# fields take "_" from Shift and the backslash key, as its key map has it.
type_text() {
  local rest="$1" part
  while :; do
    part="${rest%%_*}"
    [ -n "$part" ] && xdotool type --delay 120 "$part"
    [ "$part" = "$rest" ] && break
    xdotool key --delay 120 shift+backslash
    rest="${rest#*_}"
  done
  sleep 0.2
}
# row_of NAME FOLDER [EXTENSION...]: the row a file dialog shows NAME in for
# FOLDER: folders first, then the files of those extensions (all without
# any), each by name in byte order, hidden ones left out.
row_of() {
  local name="$1" folder="$2"
  shift 2
  local entries=() e
  while IFS= read -r e; do entries+=("$e"); done < <(cd "$folder" && find . -mindepth 1 -maxdepth 1 -type d ! -name '.*' -printf '%f\n' | LC_ALL=C sort)
  while IFS= read -r e; do
    if [ $# -eq 0 ]; then entries+=("$e"); continue; fi
    for x in "$@"; do [ "${e#*.}" = "$x" ] && entries+=("$e"); done
  done < <(cd "$folder" && find . -mindepth 1 -maxdepth 1 ! -type d ! -name '.*' -printf '%f\n' | LC_ALL=C sort)
  local i
  for i in "${!entries[@]}"; do [ "${entries[$i]}" = "$name" ] && { echo "$i"; return 0; }; done
  fail "no row for $name in $folder"
}
# fresh_data BUILD: the build's data as a scenario wants it: no settings file
# (the build's own is put back by restore_data) and a damaged picture,
# "wallpapers/broken.tga", a Targa header of 64 by 64 with far too few bytes.
# Sets ROOT, WALLPAPERS and SETTINGS.
fresh_data() {
  ROOT="$1/resources/intermediate"
  WALLPAPERS="$ROOT/wallpapers"
  SETTINGS="$ROOT/harbor.xml"
  SAVED_SETTINGS=$(mktemp)
  HAD_SETTINGS=0
  if [ -e "$SETTINGS" ]; then cp "$SETTINGS" "$SAVED_SETTINGS"; HAD_SETTINGS=1; fi
  rm -f "$SETTINGS"
  { printf '\x00\x00\x02\x00\x00\x00\x00\x00\x00\x00\x00\x00\x40\x00\x40\x00\x20\x28'; head -c 100 /dev/zero; } \
    >"$WALLPAPERS/broken.tga"
}
# restore_data: ends the X session and puts the build's data back.
restore_data() {
  stop_x_session
  if [ "$HAD_SETTINGS" = 1 ]; then cp "$SAVED_SETTINGS" "$SETTINGS"; else rm -f "$SETTINGS"; fi
  rm -f "$SAVED_SETTINGS" "$WALLPAPERS/broken.tga"
}
