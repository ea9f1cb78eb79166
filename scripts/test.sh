#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through CTest.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"

"$root/scripts/install_deps.sh"
"$root/scripts/build.sh"

cd "$build"
export QT_QPA_PLATFORM=offscreen
ctest --output-on-failure -j "$(nproc)"
