#!/usr/bin/env bash
# Builds Harbor and starts the host program. Without a display it starts one
# (Xvfb) and says which, so that screenshots can be taken of it. That server
# runs in a session of its own: Ctrl+C in the terminal reaches the host alone,
# which ends in order, and the server is stopped after it.
# HARBOR_PROGRAM names a host program already built, to run instead of
# building (the window tests run the build under test this way).
set -euo pipefail
cd "$(dirname "$0")"
program="${HARBOR_PROGRAM:-}"
if [ -z "$program" ]; then
  bash scripts/install-deps.sh
  bash scripts/build.sh build
  program=./build/harbor
fi
if [ -z "${DISPLAY:-}" ]; then
  fdfile=$(mktemp)
  if [ -n "${HARBOR_DISPLAY_NUMBER:-}" ]; then
    setsid Xvfb ":$HARBOR_DISPLAY_NUMBER" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    echo "$HARBOR_DISPLAY_NUMBER" >"$fdfile"
  else
    # The server picks a free display number and writes it to fd 9.
    setsid Xvfb -displayfd 9 -screen 0 1280x1024x24 -nolisten tcp 9>"$fdfile" >/dev/null 2>&1 &
  fi
  xvfb=$!
  trap 'kill $xvfb 2>/dev/null || true; rm -f "$fdfile"' EXIT
  for _ in $(seq 100); do [ -s "$fdfile" ] && break; sleep 0.05; done
  export DISPLAY=":$(head -n1 "$fdfile")"
  for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
  echo "Harbor runs on virtual display $DISPLAY (screenshot: DISPLAY=$DISPLAY import -window root shot.png)"
fi
"$program" "$@"
