#!/usr/bin/env bash
# Without the layer, and no other option, the rest is configured, built and tested.
. "$(dirname "$0")/common.sh"

cmake -S "$source_dir" -B build -DSCRIVEL_BUILD_LAYER=OFF
cmake --build build --parallel 2 --target replay_text crash_killed_process
ctest --test-dir build --output-on-failure --no-tests=error -R '^(Fuzz.text|Crash.KilledProcess)$'
[[ ! -d build/layer ]] || fail "The layer was configured"
