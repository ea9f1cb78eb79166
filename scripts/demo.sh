#!/usr/bin/env bash
# Installs what is missing, builds, exports examples/shop.json and shows what was generated.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"

"$root/scripts/install_deps.sh"
# Only the command-line program and the plug-ins it loads: the tests, the desktop program and
# the benchmark are left to scripts/test.sh, which builds them into the same folder.
"$root/scripts/build.sh" tavrel TavrelCppExport TavrelSqlExport

tavrel="$build/bin/tavrel"
demo="$build/demo"
rm -rf "$demo"
mkdir -p "$demo"
# The export needs the directory of a Lumor installation; the demo uses an empty stand-in
# unless LUMOR_DIR names a real one.
lumor="${LUMOR_DIR:-$demo/lumor}"
mkdir -p "$lumor"

echo "== tavrel import"
"$tavrel" import "$root/examples/shop.json" "$demo/shop.tavrel"
echo
echo "== tavrel plugins"
"$tavrel" plugins
echo "== tavrel check"
"$tavrel" check "$demo/shop.tavrel" || true
echo
echo "== tavrel export"
"$tavrel" export "$demo/shop.tavrel" --lumor-path "$lumor" --yes \
  --TavrelCppExport_path="$demo/out" --TavrelCppExport_generate_custom_files=1
echo
echo "== generated tree ($demo/out)"
(cd "$demo/out" && find . -type f | sort)
echo
header="$(cd "$demo/out/include" && ls shop_*Status*.gen.h 2>/dev/null | head -n 1 || true)"
[ -n "$header" ] || header="$(cd "$demo/out/include" && ls *.gen.h | head -n 1)"
echo "== include/$header"
cat "$demo/out/include/$header"
