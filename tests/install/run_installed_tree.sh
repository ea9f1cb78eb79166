#!/usr/bin/env bash
# Usage: run_installed_tree.sh BUILD_DIR SOURCE_DIR WORK_DIR [plain|instrumented]
# Installs the build into WORK_DIR, moves the installed tree elsewhere (so nothing can rely on
# where it was installed) and runs import, check and export of the shop example from it, with an
# environment that points nowhere near the build tree.
set -euo pipefail
build="$1"; src="$2"; work="$3"; kind="${4:-plain}"
fail() { echo "FAILED: $*" >&2; exit 1; }

rm -rf "$work"; mkdir -p "$work"
cmake --install "$build" --prefix "$work/staged" --strip >/dev/null
mv "$work/staged" "$work/moved"
p="$work/moved"

for f in bin/tavrel bin/tavrel-gui share/doc/tavrel/user_guide.html share/tavrel/samples/custom_script.js \
         share/tavrel/examples/shop.json share/applications/tavrel-gui.desktop \
         share/icons/hicolor/scalable/apps/tavrel.svg share/man/man1/tavrel.1 \
         share/tavrel/tavrel-model.schema.json share/bash-completion/completions/tavrel; do
  [ -f "$p/$f" ] || fail "missing $f"
done
ls "$p"/lib*/tavrel/plugins/*TavrelCppExport* >/dev/null 2>&1 || fail "plug-in not installed"
ls "$p"/lib*/libtavrelcore.so.* >/dev/null 2>&1 || fail "core library not installed"
ls "$p"/lib*/cmake/Tavrel/TavrelConfig.cmake >/dev/null 2>&1 || fail "CMake package not installed"
ls "$p"/lib*/libtavrelgui.so.* >/dev/null 2>&1 || fail "GUI library not installed"

# No installed file may name the build or the source tree. A sanitizer build keeps the source
# file names in its instrumentation data, so only a plain build is held to it (the package is one).
if [ "$kind" = plain ] && grep -rlaF -e "$build" -e "$src" "$p" >/dev/null; then
  fail "installed files refer to the build or source tree: $(grep -rlaF -e "$build" -e "$src" "$p" | tr '\n' ' ')"
fi

run() { env -i HOME="$work/home" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen "$@"; }
mkdir -p "$work/home" "$work/demo" "$work/lumor"
cd "$work/demo"
run "$p/bin/tavrel" --version | grep -q "^tavrel " || fail "--version"
run "$p/bin/tavrel" plugins > plugins.txt || fail "plugins"
grep -q "Name : TavrelCppExport" plugins.txt || fail "plug-in not found by the installed host"
run "$p/bin/tavrel" import "$p/share/tavrel/examples/shop.json" shop.tavrel >/dev/null || fail "import"
run "$p/bin/tavrel" check shop.tavrel >/dev/null || fail "check"
run "$p/bin/tavrel" export shop.tavrel --lumor-path "$work/lumor" --yes --TavrelCppExport_path=out 2>export.log \
  || { cat export.log >&2; fail "export"; }
n=$(find out/include -name '*.gen.h' | wc -l)
[ "$n" -gt 0 ] || fail "export wrote no header"
[ -f out/CMakeLists.txt ] || fail "export wrote no CMakeLists.txt"

# The man page renders, and documents every option and command of --help.
man -l "$p/share/man/man1/tavrel.1" >/dev/null 2>&1 || fail "man page does not render"
page=$(MANWIDTH=200 man -l "$p/share/man/man1/tavrel.1" 2>/dev/null)
for opt in $(run "$p/bin/tavrel" --help | grep -oE '(^| )--[a-z][a-z-]*' | sort -u); do
  grep -qF -- "$opt" <<<"$page" || fail "man page lacks $opt"
done
for cmd in import dump check diagram migrate plugins export; do grep -qw "$cmd" <<<"$page" || fail "man page lacks $cmd"; done
echo "installed tree: $n headers exported, plug-in found, man page complete"
