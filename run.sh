#!/usr/bin/env bash
# Builds Harbor and starts the host program. Without a display it starts one
# (Xvfb) and says which, so that screenshots can be taken of it.
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/install-deps.sh
bash scripts/build.sh build
if [ -z "${DISPLAY:-}" ]; then
  display=":${HARBOR_DISPLAY_NUMBER:-99}"
  Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
  xvfb=$!
  trap 'kill $xvfb 2>/dev/null || true' EXIT
  export DISPLAY="$display"
  for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
  echo "Harbor runs on virtual display $DISPLAY (screenshot: DISPLAY=$DISPLAY import -window root shot.png)"
fi
./build/harbor "$@"
