#!/usr/bin/env bash
# Usage: run_git_textconv.sh TAVREL WORK_DIR
# A repository that commits a project file and diffs it through 'tavrel dump' as text
# conversion sees the changed model lines; without it git sees only a binary change. The dump of
# an extensionless copy (as git may hand over) matches, and leaves the file as it was.
set -euo pipefail
tavrel="$1"; work="$2"
fail() { echo "FAILED: $*" >&2; exit 1; }

rm -rf "$work"; mkdir -p "$work/repo" "$work/home"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" QT_QPA_PLATFORM=offscreen
export GIT_CONFIG_NOSYSTEM=1 GIT_AUTHOR_NAME=t GIT_AUTHOR_EMAIL=t@example.invalid GIT_COMMITTER_NAME=t GIT_COMMITTER_EMAIL=t@example.invalid
cd "$work/repo"
git init -q .
echo '*.tavrel diff=tavrel' > .gitattributes

cat > "$work/v1.json" <<'JSON'
{"name": "Apiary", "entities": [{"name": "Hive", "table": "t_hive",
  "properties": [{"name": "id", "type": "long", "primary_key": true}, {"name": "colony", "type": "QString"}]}]}
JSON
sed 's/"colony", "type": "QString"/"colony", "type": "QString"}, {"name": "queen_marked", "type": "bool"/' "$work/v1.json" > "$work/v2.json"
grep -q queen_marked "$work/v2.json" || fail "the second model version was not made"

"$tavrel" import "$work/v1.json" apiary.tavrel >/dev/null
git add .gitattributes apiary.tavrel && git commit -qm "first model"
"$tavrel" import "$work/v2.json" apiary.tavrel >/dev/null
git add apiary.tavrel && git commit -qm "second model"

plain="$(git diff HEAD~1 HEAD -- apiary.tavrel)"
grep -q "^Binary files" <<<"$plain" || fail "without the text conversion git should see a binary change: $plain"

git config diff.tavrel.textconv "$tavrel dump"
text="$(git diff HEAD~1 HEAD -- apiary.tavrel)"
grep -q '^+.*"queen_marked"' <<<"$text" || fail "the diff lacks the added property: $text"
grep -q '^ .*"primary_key"' <<<"$text" || fail "the diff lacks the unchanged key as context: $text"
! grep -q "^Binary files" <<<"$text" || fail "the text conversion was not used"

# git may hand over a temporary copy without the extension.
cp apiary.tavrel "$work/blob"
cp apiary.tavrel "$work/blob.orig"
"$tavrel" dump "$work/blob" > "$work/blob.txt" || fail "dump of an extensionless copy"
"$tavrel" dump apiary.tavrel > "$work/named.txt"
cmp -s "$work/blob.txt" "$work/named.txt" || fail "the dump of the copy differs from the dump of the file"
cmp -s "$work/blob" "$work/blob.orig" || fail "dump changed the file it read"
printf 'not a model' > "$work/junk"
if "$tavrel" dump "$work/junk" >/dev/null 2>"$work/junk.err"; then fail "dump took a file that is no model"; fi
grep -q "neither a project file nor a JSON model" "$work/junk.err" || fail "unclear message: $(cat "$work/junk.err")"
echo "git diff through tavrel dump shows the model change"
