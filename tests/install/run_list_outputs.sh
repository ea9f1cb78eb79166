#!/usr/bin/env bash
# Usage: run_list_outputs.sh TAVREL SOURCE_DIR WORK_DIR
# 'tavrel export --list-outputs' prints the absolute paths of exactly the files the export then
# writes, one per line, and writes nothing itself, not even the export directory.
set -euo pipefail
tavrel="$1"; src="$2"; work="$3"
fail() { echo "FAILED: $*" >&2; exit 1; }

rm -rf "$work"; mkdir -p "$work/home" "$work/lumor"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" QT_QPA_PLATFORM=offscreen
cd "$work"
"$tavrel" import "$src/examples/library.json" library.tavrel >/dev/null
params=(--lumor-path "$work/lumor" --yes --TavrelCppExport_path="$work/out/nested" --TavrelCppExport_generate_custom_files=1)

"$tavrel" export library.tavrel --list-outputs "${params[@]}" > listed.txt 2>list.err || { cat list.err >&2; fail "--list-outputs"; }
[ ! -e "$work/out" ] || fail "--list-outputs created the export directory"
[ -s listed.txt ] || fail "nothing listed"
grep -v "^$work/out/nested/" listed.txt && fail "a listed path is not an absolute path inside the export directory"
grep -q "/include/.*\.gen\.h$" listed.txt || fail "no generated header listed"
grep -q "/custom/" listed.txt || fail "no custom file listed"

"$tavrel" export library.tavrel "${params[@]}" >/dev/null 2>export.err || { cat export.err >&2; fail "export"; }
find "$work/out/nested" -type f | sort > written.txt
sort listed.txt > listed.sorted
diff -u listed.sorted written.txt || fail "the listing differs from the files the export wrote"

# The same listing once the files exist, and the tree left as it was.
before="$(find "$work/out" -type f -printf '%P %T@ %s\n' | sort)"
"$tavrel" export library.tavrel --list-outputs "${params[@]}" 2>/dev/null | sort > relisted.txt
diff -u listed.sorted relisted.txt || fail "the listing changed once the files exist"
[ "$before" = "$(find "$work/out" -type f -printf '%P %T@ %s\n' | sort)" ] || fail "--list-outputs touched the export"
# The lock a dry run holds while it reads an existing tree is gone again.
[ -z "$(find "$work/out" -name "*.lock*")" ] || fail "a lock file was left behind"

for other in --dry-run --check --diff --watch; do
  if "$tavrel" export library.tavrel --list-outputs "$other" "${params[@]}" >/dev/null 2>&1; then fail "--list-outputs with $other accepted"; fi
done
echo "--list-outputs: $(wc -l < listed.txt) files listed, the same the export wrote"
