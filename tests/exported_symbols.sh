#!/usr/bin/env bash
# The library exports the public interface and nothing else. usage: exported_symbols.sh LIBRARY
set -euo pipefail
library=$1
nm -D --defined-only --demangle "$library" | cut -d' ' -f3- | sort -u >/tmp/symbols.$$
trap 'rm -f /tmp/symbols.$$' EXIT
for name in 'qorn::preproc::Preprocessor::Run(' 'qorn::xml::open_and_validate(' \
  'qorn::release_frameworks(' 'typeinfo for qorn::log::OutputLog'; do
  grep -qF "$name" /tmp/symbols.$$ || { echo "FAILED: $name is not exported" >&2; exit 1; }
done
if grep -vE '^(qorn::|(typeinfo|typeinfo name|vtable|VTT) for qorn::|(non-)?virtual thunk to qorn::)' /tmp/symbols.$$; then
  echo "FAILED: the symbols above are no public interface" >&2
  exit 1
fi
readelf -d "$library" | grep -q 'SONAME.*libpreprocessor.so.1\]' ||
  { echo "FAILED: no SONAME" >&2; exit 1; }
echo "$(wc -l </tmp/symbols.$$) symbols"
