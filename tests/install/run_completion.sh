#!/usr/bin/env bash
# Usage: run_completion.sh TAVREL COMPLETION_SCRIPT WORK_DIR
# Runs the bash completion function as bash would (COMP_WORDS, COMP_CWORD) and checks what it
# offers: commands, options, files by extension, plug-in names and parameters, the last two
# read from the real program.
set -euo pipefail
tavrel="$1"; script="$2"; work="$3"
fail() { echo "FAILED: $*" >&2; exit 1; }

rm -rf "$work"; mkdir -p "$work/dir/sub" "$work/home"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" QT_QPA_PLATFORM=offscreen
cd "$work/dir"
touch model.json project.tavrel notes.txt
# shellcheck source=/dev/null
source "$script"
complete -p tavrel | grep -q -- "-F _tavrel" || fail "the script does not register _tavrel for tavrel"

# offers WORDS...: the completions of the command line WORDS (the last one being completed).
offers() {
  COMP_WORDS=("$tavrel" "${@:2}")
  COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 ))
  COMPREPLY=()
  _tavrel tavrel "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}" 2>/dev/null
  printf '%s\n' "${COMPREPLY[@]}" | sort
}
has() { grep -qxF -- "$2" <<<"$1" || fail "$3: '$2' not offered, got: $(echo $1)"; }
lacks() { ! grep -qxF -- "$2" <<<"$1" || fail "$3: '$2' offered"; }

r="$(offers tavrel '')"
for c in import dump check import-db diagram migrate plugins export; do has "$r" "$c" "commands"; done
lacks "$r" "--plugin" "commands"
[ "$(offers tavrel ex)" = "export" ] || fail "'ex' completes to $(offers tavrel ex)"

r="$(offers tavrel export --li)"
[ "$r" = "--list-outputs" ] || fail "'export --li' completes to $r"
r="$(offers tavrel export '')"
has "$r" "model.json" "export files"; has "$r" "project.tavrel" "export files"; has "$r" "sub" "export files"
lacks "$r" "notes.txt" "export files"

r="$(offers tavrel export --plugin '')"
has "$r" "TavrelCppExport" "plug-in names"; has "$r" "TavrelSqlExport" "plug-in names"
r="$(offers tavrel export model.json --TavrelCppExport_)"
has "$r" "--TavrelCppExport_path=" "C++ parameters"; has "$r" "--TavrelCppExport_generate_pimpl=" "C++ parameters"
lacks "$r" "--TavrelSqlExport_dialect=" "C++ parameters"
# bash splits "--Plugin_parameter=value" at "=": the value is any file or folder.
r="$(offers tavrel export model.json --TavrelCppExport_path = '')"
has "$r" "sub" "parameter value"; has "$r" "notes.txt" "parameter value"
r="$(offers tavrel export model.json --TavrelSql)"
has "$r" "--TavrelSqlExport_dialect=" "SQL parameters"

r="$(offers tavrel check '')"
has "$r" "project.tavrel" "check files"; lacks "$r" "notes.txt" "check files"
[ "$(offers tavrel check model.json --Tav)" = "--TavrelCppExport_generate_pimpl=" ] || fail "check offers $(offers tavrel check model.json --Tav)"
[ "$(offers tavrel diagram model.json --format m)" = "mermaid" ] || fail "diagram --format"
[ "$(offers tavrel migrate a.json b.json --dialect ma)" = "mariadb" ] || fail "migrate --dialect"
[ "$(offers tavrel import-db --class-names p)" = "pascal" ] || fail "import-db --class-names"
[ "$(offers tavrel import-db --ddl x.sql --dialect po)" = "postgresql" ] || fail "import-db --dialect"
r="$(offers tavrel import '')"
has "$r" "model.json" "import files"; lacks "$r" "notes.txt" "import files"
echo "completion: commands, options, files and plug-in parameters offered"
