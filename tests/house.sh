#!/usr/bin/env bash
# The rules of the house that no compiler sees: the arrows between the layers, and the length of
# sources. usage: house.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
failed=0
fail() {
  echo "FAILED: $*" >&2
  failed=1
}

# What a layer may include of others: public headers, and those that are private to the library.
declare -A public=([common]=common [support]="common support" \
  [preprocessor]="common support preprocessor" [frontend]="common support preprocessor" \
  [inspect]="common support preprocessor")
declare -A private=([common]=common [support]="common support" \
  [preprocessor]="common support preprocessor" [frontend]="" [inspect]="")

for layer in common support preprocessor frontend inspect; do
  folders=()
  for other in ${public[$layer]}; do folders+=("src/$other/include"); done
  for other in ${private[$layer]}; do folders+=("src/$other/private"); done
  while read -r header; do
    found=no
    for folder in "${folders[@]}"; do [[ -e $folder/$header ]] && found=yes; done
    [[ $found == yes ]] || fail "src/$layer includes <$header>, which is none of its layers'"
  done < <(grep -rhoE '#include <qorn/[^>]+' "src/$layer" --include='*.h' --include='*.cpp' |
    sed 's/#include <//' | sort -u)
done
if grep -rnE '#include "[^"]*/' src --include='*.h' --include='*.cpp'; then
  fail "a header of another folder is included by its path"
fi
if grep -rnE '#include "(front_end|json_stream|output_file)\.h"' src/inspect; then
  fail "of the front-ends qorn-inspect sees the plan and the record alone"
fi

# Longer than this a source holds more than one thing, unless a reason stands here.
declare -A reason=(
  [tests/node_group_test.cpp]="cases as data: documents and the groups that come of them"
)
while read -r lines file; do
  if ((lines > 400)) && [[ -z ${reason[$file]:-} ]]; then
    fail "$file has $lines lines, 400 are the most"
  elif ((lines <= 400)) && [[ -n ${reason[$file]:-} ]]; then
    fail "$file has $lines lines and needs no reason any more"
  fi
done < <(find src tests benchmarks fuzz \( -name '*.cpp' -o -name '*.h' \) -exec wc -l {} + |
  awk '$2 != "total" { print $1, $2 }')
exit $failed
