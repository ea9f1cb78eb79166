#!/usr/bin/env bash
# Builds the Debian package build/tavrel_<version>_amd64.deb (installs what is missing, builds).
#   apt install ./build/tavrel_*_amd64.deb
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"
"$root/scripts/install_deps.sh"
"$root/scripts/build.sh"
(cd "$build" && cpack -G DEB >/dev/null)
ls "$build"/tavrel_*_amd64.deb
