#!/usr/bin/env bash
# Configures and builds the project into build/ (or $TAVREL_BUILD_DIR): everything, or only the
# targets given as arguments (scripts/build.sh tavrel). Both use the same configuration, so a
# partial build is completed by a later full one in the same folder.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"
source "$root/scripts/compiler_cache.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" "${TAVREL_LAUNCHER[@]}" >/dev/null
if [ "$#" -gt 0 ]; then
  targets=()
  for t in "$@"; do targets+=(--target "$t"); done
  cmake --build "$build" -j "$(nproc)" "${targets[@]}"
else
  cmake --build "$build" -j "$(nproc)"
fi
