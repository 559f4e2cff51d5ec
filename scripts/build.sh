#!/usr/bin/env bash
# Configures and builds one build folder: build.sh <folder> [sanitizer] [compiler]
# The compiler is the system's default (GCC) or "clang".
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
folder="$1"
sanitize="${2:-}"
compiler=()
if [ "${3:-}" = clang ]; then
  compiler=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)
fi
launcher=()
# Rebuilds of several build folders and work trees share one compiler cache.
if command -v ccache >/dev/null 2>&1; then
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$(dirname "$root")}"
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$root/$folder" -G Ninja -DHARBOR_SANITIZE="$sanitize" "${compiler[@]}" "${launcher[@]}" >/dev/null
cmake --build "$root/$folder" -j "$(nproc)"
