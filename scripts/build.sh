#!/usr/bin/env bash
# Configures and builds one build folder: build.sh <folder> [sanitizer]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
folder="$1"
sanitize="${2:-}"
cmake -S "$root" -B "$root/$folder" -G Ninja -DHARBOR_SANITIZE="$sanitize" >/dev/null
cmake --build "$root/$folder" -j "$(nproc)"
