#!/usr/bin/env bash
# Runs the rule files of an installation through the CLIPS interpreter: each alone behind the
# templates, then all together on the facts of a cluster in order, which must give nothing, and
# of a faulty one, which must give exactly what data/clips/faulty.expected says.
# usage: clips_rules.sh ROOT       status 1 and a line for each fault
set -u
export LC_ALL=C
facts=$(cd "$(dirname "$0")" && pwd)/data/clips
cd "${1:?usage: clips_rules.sh ROOT}/kb" || exit 1
command -v clips >/dev/null || { echo "clips is not installed"; exit 1; }
faults=0
fault() { echo "$*"; faults=$((faults + 1)); }

# The interpreter never ends by itself, exits 0 whatever happens and answers each command after
# a prompt; so: commands in, exit last, a TRUE wanted for each.
answers() { printf '%s\n' "$@" '(exit)' | timeout 60 clips 2>&1 | sed -n 's/^\(CLIPS> \)*//; /./p' | tail -n +2; }

loads_files() { grep -q '^(\(batch\|load\)' "$1"; }
load_command() { if loads_files "$1"; then echo "(batch* \"$1\")"; else echo "(load* \"$1\")"; fi; }

# What batch* does not see: a parenthesis that stays open, outside strings and comments.
open_parentheses() {
  perl -0777 -ne 's/"(\\.|[^"\\])*"|;[^\n]*//gs; print tr/(// - tr/)//' "$1"
}

mapfile -t files < <(find rules -name '*.clp' | sort)
[ "${#files[@]}" -gt 0 ] || fault "kb/rules holds no rule file"
for file in templates.clp "${files[@]}"; do
  [ "$(open_parentheses "$file")" = 0 ] || fault "$file: parentheses are not balanced"
  while read -r loaded; do
    [ -f "$loaded" ] || fault "$file: loads $loaded, which does not exist"
  done < <(sed -n 's/^(\(batch\|load\)\*\{0,1\} *\([^ )]*\).*/\2/p' "$file")
  case $file in
    templates.clp | rules/diagnosis.clp | rules/shared_diagnosis.clp) ;;
    *) if ! loads_files "$file"; then
         names=$(sed -n 's/^(defrule \([^ ]*\).*/\1/p' "$file")
         [ "$names" = "$(basename "$file" .clp)" ] || fault "$file: not one rule of this name, but: $names"
       fi ;;
  esac
  commands=('(load* "templates.clp")')
  [ "$file" = templates.clp ] || commands+=("$(load_command "$file")")
  said=$(answers "${commands[@]}")
  [ "$said" = "$(printf 'TRUE\n%.0s' "${commands[@]}")" ] || fault "$file: $said"
done

# All files in one interpreter, on the facts of one file; gives what the rules assert.
findings() {
  local commands=('(load* "templates.clp")') file
  for file in "${files[@]}"; do loads_files "$file" || commands+=("(load* \"$file\")"); done
  commands+=('(reset)' "(load-facts \"$1\")" '(assert (phase (stage compare)))' '(run)'
    '(progn (do-for-all-facts ((?s sign)) TRUE (printout t "sign " ?s:id " " ?s:node_id crlf)) TRUE)'
    '(progn (do-for-all-facts ((?d diagnosis)) TRUE (printout t "diagnosis " ?d:id " " ?d:node_id crlf)) TRUE)')
  answers "${commands[@]}" | grep -v '^TRUE$\|^<Fact-' | sed 's/ *$//' | sort
}

[ "$faults" = 0 ] || exit 1

healthy=$(findings "$facts/healthy.fct")
[ -z "$healthy" ] || fault "a cluster in order gives: $healthy"
difference=$(diff "$facts/faulty.expected" <(findings "$facts/faulty.fct")) ||
  fault "a faulty cluster gives something else (< expected, > given): $difference"
emitted=$(sed -n 's/.*(\(id\|bind ?id\) "\([^"]*\)").*/\2/p' "${files[@]}" | sort -u)
for id in $emitted; do
  grep -q " $id\( \|$\)" "$facts/faulty.expected" || fault "data/clips/faulty.fct has no case of $id"
done

[ "$faults" = 0 ] && echo "${#files[@]} rule files in order"
[ "$faults" = 0 ]
