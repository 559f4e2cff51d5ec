#!/usr/bin/env bash
# Builds Harbor and runs every test: the normal build (unit, window and
# benchmark programs), then the unit tests again under AddressSanitizer with
# UndefinedBehaviorSanitizer, and under ThreadSanitizer. First of all, no
# file may include a header of a folder above its own.
set -euo pipefail
cd "$(dirname "$0")"
python3 scripts/check_layers.py
bash scripts/install-deps.sh

bash scripts/build.sh build
(cd build && ctest --output-on-failure)

bash scripts/build.sh build-asan address
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -L unit)

bash scripts/build.sh build-tsan thread
(cd build-tsan && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -L unit)
