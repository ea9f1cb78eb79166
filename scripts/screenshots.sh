#!/bin/sh
# Makes the pictures of the documentation: docs/images/main_window.png (the desktop host after
# an export of examples/shop.json, shop::sales::Order selected), docs/images/diagram_view.png (the
# same window with the Diagram tab in front), docs/images/property_editor.png (the property editor
# open on the order's customer relation, over the window), docs/images/settings_dialog.png
# (the plug-in's settings dialog) and docs/images/script_debugger.png (the debugger window after
# an export with examples/user_script.js). Builds tavrel-gui if needed and runs it on a virtual X
# display (Debian package xvfb).
#   scripts/screenshots.sh [BUILD_DIR]      (default: build-gui)
set -eu

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=${1:-$ROOT/build-gui}
case "$BUILD" in /*) ;; *) BUILD=$(pwd)/$BUILD ;; esac
OUT=$ROOT/docs/images

command -v xvfb-run >/dev/null 2>&1 || { echo "screenshots.sh: xvfb-run not found (install the package xvfb)" >&2; exit 1; }
if [ ! -f "$BUILD/build.ninja" ] && [ ! -f "$BUILD/Makefile" ]; then
   cmake -S "$ROOT" -B "$BUILD" -G Ninja
fi
cmake --build "$BUILD" --target tavrel-gui TavrelCppExport -- -j2

# A fixed place, so that the paths shown in the pictures stay the same from run to run.
WORK=${TMPDIR:-/tmp}/tavrel-screenshots
rm -rf "$WORK"
mkdir -p "$WORK/shop" "$WORK/lumor" "$WORK/runtime" "$OUT"
chmod 700 "$WORK/runtime"
cp "$ROOT/examples/shop.json" "$ROOT/examples/user_script.js" "$WORK/shop/"

# Fresh user settings, never the ones of whoever runs the script.
export XDG_CONFIG_HOME="$WORK/config"
export XDG_RUNTIME_DIR="$WORK/runtime"
export QT_QPA_PLATFORM=xcb
unset LUMOR_DIR || true

# --screenshots exports (the plug-in parameters give the settings of this first export), saves
# the main window, opens the plug-in's settings dialog and saves it, exports again under the
# script debugger and saves its window, then quits.
xvfb-run -a -s "-screen 0 1400x900x24" \
   "$BUILD/bin/tavrel-gui" "$WORK/shop/shop.json" --lumor-path "$WORK/lumor" \
   --select shop::sales::Order --screenshots "$OUT" \
   --TavrelCppExport_path=out --TavrelCppExport_template_type=1 --TavrelCppExport_generate_custom_files=1 \
   --TavrelCppExport_custom_javacript=user_script.js

ls -l "$OUT/main_window.png" "$OUT/diagram_view.png" "$OUT/property_editor.png" "$OUT/settings_dialog.png" "$OUT/script_debugger.png"
