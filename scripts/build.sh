#!/usr/bin/env bash
# Configures and builds the project into build/ (or $TAVREL_BUILD_DIR).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"
source "$root/scripts/compiler_cache.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" "${TAVREL_LAUNCHER[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
