#!/usr/bin/env bash
# Checks the Debian package built by scripts/package.sh without installing it system-wide: its
# file list and dependencies, then the demo flow from the package unpacked into a scratch root.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"
deb="$(ls "$build"/tavrel_*_amd64.deb | head -n 1)"
fail() { echo "package check FAILED: $*" >&2; exit 1; }

list="$(dpkg-deb -c "$deb")"
for f in ./usr/bin/tavrel ./usr/bin/tavrel-gui ./usr/share/applications/tavrel-gui.desktop \
         ./usr/share/man/man1/tavrel.1 ./usr/share/doc/tavrel/user_guide.html \
         ./usr/share/tavrel/examples/shop.json ./usr/share/tavrel/tavrel-model.schema.json \
         ./usr/share/bash-completion/completions/tavrel ./usr/lib/cmake/Tavrel/TavrelConfig.cmake; do
  grep -qF " $f" <<<"$list" || fail "$f missing from $deb"
done
grep -q '/tavrel/plugins/libTavrelCppExport.so' <<<"$list" || fail "plug-in missing from $deb"

# Every dependency is a real Debian package (installed here, since the build needs them all).
depends="$(dpkg-deb -f "$deb" Depends)"
for dep in $(tr ',' '\n' <<<"$depends" | sed 's/(.*)//; s/ //g'); do
  dpkg-query -W -f='${Status}' "$dep" 2>/dev/null | grep -q "install ok installed" || fail "dependency $dep is not a known package"
done

# apt resolves the package as `apt install ./tavrel_*.deb` would (simulated: nothing installed).
apt-get install -s "$deb" >/dev/null 2>&1 || fail "apt cannot resolve the dependencies of $deb"

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
dpkg-deb -x "$deb" "$scratch/root"
mkdir -p "$scratch/work" "$scratch/lumor"
cd "$scratch/work"
run() { env -i HOME="$scratch" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen "$@"; }
run "$scratch/root/usr/bin/tavrel" import "$scratch/root/usr/share/tavrel/examples/shop.json" shop.tavrel >/dev/null
run "$scratch/root/usr/bin/tavrel" export shop.tavrel --lumor-path "$scratch/lumor" --yes --TavrelCppExport_path=out 2>/dev/null
[ -f out/CMakeLists.txt ] || fail "export from the unpacked package wrote nothing"
echo "package $(basename "$deb"): $(grep -c . <<<"$list") entries, depends: $depends; demo flow from the unpacked package passed"
