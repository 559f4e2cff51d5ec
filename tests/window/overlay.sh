# The host's overlay in a real window: a screenshot of the running program
# shows white glyphs at x = 832 (window width - 192) on the lines y = 16 and
# 28, then one line per heap every 12 pixels from y = 52, and the grey clear
# colour everywhere else. The screenshot stays in $ARTIFACTS.
HARBOR="$1"
source "$(dirname "$0")/lib/xsession.sh"
start_x_session

log="$ARTIFACTS/overlay.stderr"
shot="$ARTIFACTS/overlay.png"
"$HARBOR" </dev/null 2>"$log" &
APP_PID=$!
wid=$(find_window "Harbor Application")
sleep 1.5

heaps=$(gdb -p "$APP_PID" -batch -ex 'print MemoryManager::mpInstance->mAllocators.mSize' 2>/dev/null \
  | sed -n 's/^\$1 = \([0-9]*\).*/\1/p')
[ -n "$heaps" ] || fail "could not read the number of heaps"
import -window "$wid" "$shot" || fail "no screenshot"
kill -TERM "$APP_PID"
status=0
wait "$APP_PID" || status=$?
APP_PID=""
[ "$status" -eq 0 ] || fail "exit status $status after SIGTERM"

size=$(identify -format '%wx%h' "$shot")
[ "$size" = "1024x768" ] || fail "screenshot of $size"
convert "$shot" -depth 8 rgb:"$ARTIFACTS/overlay.rgb"
python3 - "$ARTIFACTS/overlay.rgb" "$heaps" <<'PY' || fail "overlay not as expected (see $shot)"
import sys

data = open(sys.argv[1], 'rb').read()
heaps = int(sys.argv[2])
width, height = 1024, 768
band_left = width - 192

def pixel(x, y):
    i = (y * width + x) * 3
    return data[i], data[i + 1], data[i + 2]

def is_white(p):
    return min(p) >= 250

def is_grey(p):
    return all(75 <= c <= 78 for c in p) and max(p) - min(p) <= 1

lines = [16, 28] + [52 + 12 * i for i in range(heaps)]
errors = []
# Every pixel is the grey clear or, inside a text line of the band, white.
inked_rows = set()
for y in range(height):
    line = next((top for top in lines if top <= y < top + 12), None)
    for x in range(width):
        p = pixel(x, y)
        if is_white(p):
            if line is None or x < band_left:
                errors.append('white at (%d, %d) outside the text lines' % (x, y))
            else:
                inked_rows.add(line)
        elif not is_grey(p):
            errors.append('(%d, %d) is %s, neither grey nor white' % (x, y, p))
        if len(errors) > 20:
            break
    if len(errors) > 20:
        break
missing = [top for top in lines if top not in inked_rows]
if missing:
    errors.append('no glyphs on the lines at y = %s' % missing)
# The text starts at the band's left edge ("F", "F", and the heap names' first letters).
first = min((x for y in range(16, 28) for x in range(band_left, width) if is_white(pixel(x, y))), default=None)
if first != band_left:
    errors.append('the first line starts at x = %s, not %d' % (first, band_left))
if errors:
    print('\n'.join(errors[:20]), file=sys.stderr)
    sys.exit(1)
print('%d text lines (%d heaps) at x = %d, grey elsewhere' % (len(lines), heaps, band_left))
PY
rm -f "$ARTIFACTS/overlay.rgb"
echo "PASS: overlay with $heaps heap lines, screenshot in $shot"
