#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through CTest; then the same
# suite built with AddressSanitizer + UndefinedBehaviorSanitizer, then bounded fuzz runs.
# The plain CTest run comes last, so its closing lines end the output. Any failure of any stage
# stops the script with a non-zero exit code.
#
#   TAVREL_SKIP_SANITIZE=1     skip the sanitizer build and its test run
#   TAVREL_SKIP_TSAN=1         skip the ThreadSanitizer build of the export tests and their run
#   TAVREL_SKIP_FUZZ=1         skip the fuzz build and its runs
#   TAVREL_FUZZ_SECONDS=N      seconds each fuzz target runs (default 30)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TAVREL_BUILD_DIR:-$root/build}"
build_asan="${TAVREL_ASAN_BUILD_DIR:-$root/build-asan}"
build_fuzz="${TAVREL_FUZZ_BUILD_DIR:-$root/build-fuzz}"
build_tsan="${TAVREL_TSAN_BUILD_DIR:-$root/build-tsan}"
jobs="$(nproc)"
export QT_QPA_PLATFORM=offscreen

summary=()
stage_start=0
begin() { echo "==> $1" >&2; stage_start=$SECONDS; }
finish() { summary+=("$(printf '%-44s %4ds' "$1" $((SECONDS - stage_start)))"); }

begin "dependencies"
"$root/scripts/install_deps.sh"
finish "dependencies"
source "$root/scripts/compiler_cache.sh"

begin "build"
"$root/scripts/build.sh"
finish "build"

begin "Debian package"
(cd "$build" && cpack -G DEB >/dev/null)
"$root/scripts/check_package.sh"
finish "Debian package"

if [ "${TAVREL_SKIP_SANITIZE:-0}" != "1" ]; then
  begin "sanitizer build (ASan + UBSan)"
  # Unoptimised with line tables only: builds four times faster than -O2 -g, and the stack
  # traces still name file and line. NDEBUG stays, so the plug-in is the release one.
  cmake -S "$root" -B "$build_asan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O0 -g1 -DNDEBUG" -DTAVREL_SANITIZE=ON -DTAVREL_BUILD_BENCH=OFF "${TAVREL_LAUNCHER[@]}" >/dev/null
  cmake --build "$build_asan" -j "$jobs"
  finish "sanitizer build (ASan + UBSan)"

  begin "test suite under ASan + UBSan"
  # Leak checking stays off: the hosts never unload their plug-ins, so a script engine created
  # by an export is still alive at exit, and LeakSanitizer can't scan its heap (mapped by the
  # engine itself), which it then reports as leaked. The test programs alone are leak-free.
  (cd "$build_asan" &&
   ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
   ctest --output-on-failure -j "$jobs")
  finish "test suite under ASan + UBSan"
fi

if [ "${TAVREL_SKIP_TSAN:-0}" != "1" ]; then
  # The C++ export runs its items on several threads: its tests once more under ThreadSanitizer,
  # only the export's test program (the libraries it links are built for it, Qt is not).
  begin "ThreadSanitizer build (export tests)"
  cmake -S "$root" -B "$build_tsan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" -DCMAKE_CXX_FLAGS="-fsanitize=thread" \
        -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=thread" \
        -DCMAKE_MODULE_LINKER_FLAGS="-fsanitize=thread" -DTAVREL_BUILD_BENCH=OFF "${TAVREL_LAUNCHER[@]}" >/dev/null
  cmake --build "$build_tsan" -j "$jobs" --target test_cpp_export
  finish "ThreadSanitizer build (export tests)"

  begin "export tests under ThreadSanitizer"
  TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    "$build_tsan/bin/test_cpp_export" --gtest_filter='ExportThreads.*:WriteGuard.*:Builder.*:Expansion.*'
  finish "export tests under ThreadSanitizer"
fi

if [ "${TAVREL_SKIP_FUZZ:-0}" != "1" ]; then
  begin "fuzz build (clang, libFuzzer)"
  cmake -S "$root" -B "$build_fuzz" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" \
        -DTAVREL_BUILD_FUZZERS=ON -DTAVREL_BUILD_TESTS=OFF -DTAVREL_BUILD_BENCH=OFF -DTAVREL_FUZZ_SECONDS="${TAVREL_FUZZ_SECONDS:-30}" "${TAVREL_LAUNCHER[@]}" >/dev/null
  cmake --build "$build_fuzz" -j "$jobs" --target tavrel_fuzzers
  finish "fuzz build (clang, libFuzzer)"

  begin "bounded fuzz runs"
  (cd "$build_fuzz" && ctest --output-on-failure -L fuzz -j "$jobs")
  finish "bounded fuzz runs"
fi

echo "Stage durations:" >&2
printf '  %s\n' "${summary[@]}" >&2

cd "$build"
ctest --output-on-failure -j "$jobs"
