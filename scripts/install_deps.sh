#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need, when they are missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-declarative-dev libqt6sql6-sqlite qt6-tools-dev qt6-tools-dev-tools
  libgl-dev libgtest-dev libgmock-dev googletest
  xvfb xauth
  python3 python3-jsonschema git man-db ccache
  clang libclang-rt-14-dev
  postgresql mariadb-server libqt6sql6-psql libqt6sql6-mysql
  graphviz libgraphviz-dev libxxhash-dev libsqlite3-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "Installing missing packages: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -q
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
