#!/usr/bin/env bash
# Every public header compiles by itself, under C++17 and C++20, and includes no header of a
# dependency but libxml2's. usage: public_headers.sh SOURCE_FOLDER LIBXML2_HEADERS
set -euo pipefail
source=$1
export libxml2=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
includes=()
for layer in common support preprocessor; do includes+=("-I$source/src/$layer/include"); done

find "$source"/src/*/include -name '*.h' -printf '%P\n' | sort >"$work/headers"
if (cd "$source" && grep -nE '#include <(re2|sqlite3|nlohmann|CLI)' src/*/include -r); then
  echo "FAILED: a public header includes a dependency's header" >&2
  exit 1
fi
check() {
  printf '#include <%s>\nint main() {}\n' "$1" >"$2.cpp"
  g++ -std="$3" -Wall -Wextra -Wpedantic -Werror -fsyntax-only -isystem "$libxml2" \
    "${@:4}" "$2.cpp" || { printf 'FAILED: %s under %s\n' "$1" "$3" >&2; return 1; }
}
export -f check
for standard in c++17 c++20; do
  awk -v work="$work" '{ print $1; print work "/" NR }' "$work/headers" |
    xargs -P 2 -n 2 bash -c 'check "$1" "$2" '"$standard"' '"${includes[*]}" _
done
echo "$(wc -l <"$work/headers") headers"
