#!/usr/bin/env bash
# Validates each XML example of the documentation against the schema that its block names, follows
# the README's step by step example, compares the output that it shows, and looks for the keys
# of a record in its description.
# usage: documentation_examples.sh SOURCES FOLDER_OF_PROGRAMS
set -euo pipefail
shopt -s nullglob
sources=$1 programs=$2
world=$(mktemp -d)
trap 'rm -rf "$world"' EXIT
failures=0
unset QORN_CONFIG_XSD QORN_RECORD

fail() {
  printf '%s\n' "$*"
  failures=$((failures + 1))
}

# Each fenced block becomes a file NUMBER.text, less its own indentation, its info string NUMBER.info.
blocks() {
  awk -v to="$1/" '
    /^ *```/ {
      open = !open
      if (open) { n++; indent = index($0, "`"); print substr($0, indent + 3) > (to n ".info"); printf "" > (to n ".text") }
      next
    }
    open { print substr($0, indent) > (to n ".text") }' "$2"
}

# attribute NAME INFO_STRING
attribute() { sed -n "s/.* $1=\([^ ]*\).*/\1/p" <<<"$2"; }

cp -r "$sources/installation" "$world/root"
for document in "$sources/README.md" "$sources"/docs/*.md; do
  found=$world/$(basename "$document")
  mkdir "$found"
  blocks "$found" "$document"
  for info in "$found"/*.info; do
    words=$(<"$info") text=${info%.info}.text
    if [[ $words == xml* ]]; then
      schema=$(attribute schema "$words")
      echo "$schema" >>"$world/schemas"
      xmllint --noout --schema "$sources/installation/$schema" "$text" 2>"$world/errors" ||
        fail "$document, block '$words': $(<"$world/errors")"
    fi
    file=$(attribute file "$words")
    if [[ -n $file ]]; then
      mkdir -p "$(dirname "$world/root/$file")"
      cp "$text" "$world/root/$file"
    fi
  done
done

while read -r schema; do
  grep -qxF "$schema" "$world/schemas" || fail "no example for $schema"
done < <(cd "$sources/installation" && find . -name '*.xsd' | cut -c3-)

# shows RUN ROOT SHOWN_ROOT PROGRAM ARGUMENT... : each line of the block run=RUN that isn't cut is
# a line of what the program prints.
shows() {
  local run=$1 root=$2 shown=$3 block line
  (cd "$sources" && COLUMNS=80 QORN_ROOT=$root "$programs/$4" "${@:5}") >"$world/output" ||
    fail "$4 ${*:5}: status $?"
  sed -i "s|$root|$shown|g; s|$world|/tmp|g" "$world/output"
  block=$(grep -l " run=$run$" "$world"/README.md/*.info) || fail "no block run=$run"
  while IFS= read -r line; do
    [[ $line == *…* ]] || grep -qxF -- "$line" "$world/output" ||
      fail "README, block run=$run: '$line' is not printed"
  done <"${block%.info}.text"
}

nodes=installation/etc/examples/nodes
installed=$sources/installation shown=/home/me/qorn/installation
shows demo "$installed" $shown qorn-collect -f $nodes -F health_base -D "$world/results.db"
shows list "$installed" $shown qorn -X list
shows time "$installed" $shown qorn -X time
shows scratch "$world/root" /home/me/qorn-site qorn-collect -f $nodes -F scratch -D "$world/results.db"
grep -q 'Passed over' "$world/output" && fail "the README's example passes something over"
QORN_ROOT=$world/root "$programs/qorn-analyze" -F scratch -D "$world/results.db" >"$world/output" ||
  fail "the README's example can't be analyzed"

# Each key of a record is described.
QORN_ROOT=$installed QORN_RECORD=$world/record.json "$programs/qorn-collect" -f "$sources/$nodes" \
  -F cpu -D "$world/results.db" >"$world/output" || fail "no record is written"
while IFS='"' read -r _ key _; do
  grep -q "\`$key\`" "$sources/docs/record.md" || fail "docs/record.md lacks the key $key"
done < <(grep '^  "' "$world/record.json")
exit "$((failures > 0))"
