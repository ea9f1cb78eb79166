#!/usr/bin/env bash
# Usage: run_cmake_consumer.sh BUILD_DIR SOURCE_DIR WORK_DIR
# Installs the build, moves the tree, and builds tests/install/consumer against it with
# find_package(Tavrel) and tavrel_export_cpp(): the first build exports and compiles, a second
# one does nothing, touching the model recompiles nothing, and a change of one entity
# regenerates and recompiles that entity's files only.
set -euo pipefail
build="$1"; src="$2"; work="$3"
fail() { echo "FAILED: $*" >&2; exit 1; }

rm -rf "$work"; mkdir -p "$work"
cmake --install "$build" --prefix "$work/staged" >/dev/null
mv "$work/staged" "$work/moved"
ls "$work"/moved/lib*/cmake/Tavrel/TavrelConfig.cmake >/dev/null 2>&1 || fail "no TavrelConfig.cmake installed"
ls "$work"/moved/lib*/cmake/Tavrel/TavrelConfigVersion.cmake >/dev/null 2>&1 || fail "no version file installed"

cp -r "$src/tests/install/consumer" "$work/project"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" QT_QPA_PLATFORM=offscreen
unset LUMOR_DIR
b="$work/project/build"
cmake -S "$work/project" -B "$b" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_BUILD_TYPE= \
      -DCMAKE_CXX_FLAGS=-O0 -DLUMOR_FIXTURE="$src/tests/compile_check/lumor" >"$work/configure.log" 2>&1 \
  || { cat "$work/configure.log" >&2; fail "configure"; }
gen="$work/project/build/generated"
# Configure listed the outputs without writing them.
[ ! -e "$gen" ] || fail "configure wrote into the export directory"

cmake --build "$b" >"$work/build1.log" 2>&1 || { cat "$work/build1.log" >&2; fail "first build"; }
for f in include/greenhouse_Seedling.gen.h src/greenhouse_Seedling.gen.cpp src/greenhouse_Tray.gen.cpp; do
  [ -f "$gen/$f" ] || fail "the build did not generate $f"
done

# The stamps of the generated files and the objects, to the nanosecond.
stamps() { find "$gen" "$b/CMakeFiles/greenhouse_model.dir" -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.o' \) \
             -printf '%P %T@\n' | sort; }
objects_of() { find "$b/CMakeFiles/greenhouse_model.dir" -name "$1*.o" -printf '%T@\n'; }
grep -q "greenhouse_Tray.gen.cpp.o" <(find "$b/CMakeFiles/greenhouse_model.dir" -name '*.o') || fail "Tray's source was not compiled"

before="$(stamps)"
plan="$(ninja -C "$b" -n)"
grep -q "no work to do" <<<"$plan" || fail "a second build would run: $plan"
cmake --build "$b" >"$work/build2.log" 2>&1 || fail "second build"
[ "$before" = "$(stamps)" ] || fail "the second build changed files"

# A touched model exports again (its files are left as they are) and compiles nothing.
touch "$work/project/greenhouse.json"
cmake --build "$b" >"$work/build3.log" 2>&1 || { cat "$work/build3.log" >&2; fail "build after touch"; }
grep -q "Exporting greenhouse.json" "$work/build3.log" || fail "touching the model did not run the export"
[ "$before" = "$(stamps)" ] || fail "an unchanged model rewrote or recompiled: $(diff <(echo "$before") <(stamps))"

# One entity changes: only its files and its object are new.
tray_obj="$(objects_of greenhouse_Tray.gen.cpp)"
seed_obj="$(objects_of greenhouse_Seedling.gen.cpp)"
seed_h="$(stat -c %.9Y "$gen/include/greenhouse_Seedling.gen.h")"
tray_h="$(stat -c %.9Y "$gen/include/greenhouse_Tray.gen.h")"
sed -i 's/{"name": "slots", "type": "int"}/{"name": "slots", "type": "int"}, {"name": "shelf", "type": "QString"}/' \
    "$work/project/greenhouse.json"
grep -q '"shelf"' "$work/project/greenhouse.json" || fail "the model edit did not apply"
cmake --build "$b" >"$work/build4.log" 2>&1 || { cat "$work/build4.log" >&2; fail "build after the change"; }
grep -q "shelf" "$gen/include/greenhouse_Tray.gen.h" || fail "Tray's header lacks the new property"
[ "$(stat -c %.9Y "$gen/include/greenhouse_Tray.gen.h")" != "$tray_h" ] || fail "Tray's header was not rewritten"
[ "$(stat -c %.9Y "$gen/include/greenhouse_Seedling.gen.h")" = "$seed_h" ] || fail "Seedling's header was rewritten"
[ "$(objects_of greenhouse_Tray.gen.cpp)" != "$tray_obj" ] || fail "Tray's source was not recompiled"
[ "$(objects_of greenhouse_Seedling.gen.cpp)" = "$seed_obj" ] || fail "Seedling's source was recompiled"
grep -q "no work to do" <<<"$(ninja -C "$b" -n)" || fail "the build after the change is not complete"

# The user script is an input too: its change reaches only the file it writes.
grep -q "tray note: first" "$gen/include/greenhouse_Tray.gen.h" || fail "the script did not run"
tray_obj="$(objects_of greenhouse_Tray.gen.cpp)"
seed_obj="$(objects_of greenhouse_Seedling.gen.cpp)"
sed -i 's/tray note: first/tray note: second/' "$work/project/tray_note.js"
cmake --build "$b" >"$work/build5.log" 2>&1 || { cat "$work/build5.log" >&2; fail "build after the script change"; }
grep -q "tray note: second" "$gen/include/greenhouse_Tray.gen.h" || fail "a script change did not run the export"
[ "$(objects_of greenhouse_Tray.gen.cpp)" != "$tray_obj" ] || fail "Tray's source was not recompiled after the script change"
[ "$(objects_of greenhouse_Seedling.gen.cpp)" = "$seed_obj" ] || fail "Seedling's source was recompiled after the script change"

# A model the import refuses stops configure with the import's reason.
cp -r "$src/tests/install/consumer" "$work/broken"
sed -i 's/"slots", "type": "int"/"slots", "type": 12/' "$work/broken/greenhouse.json"
if cmake -S "$work/broken" -B "$work/broken/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" \
         -DLUMOR_FIXTURE="$src/tests/compile_check/lumor" >"$work/broken.log" 2>&1; then
  fail "configure took a broken model"
fi
grep -q "tavrel_export_cpp: cannot read the model" "$work/broken.log" || fail "no clear message: $(cat "$work/broken.log")"
grep -q "expected a string" "$work/broken.log" || fail "the import's reason is not shown: $(cat "$work/broken.log")"
echo "consumer project: exported at build time, rebuilt only what the model change touched"
