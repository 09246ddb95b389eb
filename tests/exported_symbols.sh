#!/usr/bin/env bash
# The library exports what tests/exported_symbols.txt lists and nothing else, beside what the
# compiler makes of inline code. With UPDATE=1 the list is written instead.
# usage: exported_symbols.sh LIBRARY
set -euo pipefail
library=$1
list=$(dirname "$0")/exported_symbols.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C
nm -D --defined-only "$library" | awk '$2 ~ /^[TDBR]$/ { print $3 }' | c++filt |
  sed 's/std::__cxx11::/std::/g; s/basic_string<char, std::char_traits<char>, std::allocator<char> >/string/g' |
  sort -u >"$work/exported"
if [[ ${UPDATE:-} == 1 ]]; then
  cp "$work/exported" "$list"
fi
if ! diff "$list" "$work/exported" >"$work/difference"; then
  cat "$work/difference" >&2
  echo "FAILED: < is missing, > is private, or new and not in the list" >&2
  exit 1
fi
if nm -D --defined-only --demangle "$library" | cut -d' ' -f3- |
  grep -vE '^(qorn::|(typeinfo|typeinfo name|vtable|VTT) for qorn::|(non-)?virtual thunk to qorn::)'; then
  echo "FAILED: the symbols above are no public interface" >&2
  exit 1
fi
readelf -d "$library" | grep -q 'SONAME.*libpreprocessor.so.2\]' ||
  { echo "FAILED: no SONAME" >&2; exit 1; }
echo "$(wc -l <"$work/exported") symbols"
