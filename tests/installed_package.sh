#!/usr/bin/env bash
# Installs a build, links an engine against it in both ways, moves it, packs it, and runs what
# came out. usage: installed_package.sh BUILD_FOLDER SOURCE_FOLDER
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset QORN_ROOT QORN_RECORD
export HOME=$work/home
mkdir "$HOME"
printf 'node[1-3]\n' >"$work/nodes"

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
run() { "$@" >"$work/out" 2>"$work/err" || { cat "$work/out" "$work/err"; fail "$*"; }; }
# A run of the program $1 must find the root $2 by itself.
check_run() {
  (cd / && QORN_RECORD=$work/record.json run "$1" -f "$work/nodes" -D "$work/x.db")
  grep -q "\"root\": \"$2\"" "$work/record.json" || fail "$1 did not find its root $2"
}

prefix=$work/prefix
run cmake --install "$build" --prefix "$prefix"
check_run "$prefix/bin/qorn-collect" "$prefix"
[ -d "$prefix/lib" ] && [ ! -e "$prefix/lib64" ] || fail "the library is not in lib"

run cmake -S "$prefix/share/doc/qorn/examples/engine" -B "$work/by-cmake" \
  -DCMAKE_PREFIX_PATH="$prefix"
run cmake --build "$work/by-cmake"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# shellcheck disable=SC2046
run g++ -std=c++17 "$source/examples/engine/main.cpp" -o "$work/by-pkg-config" \
  $(pkg-config --cflags --libs qorn-preprocessor)
for engine in "$work/by-cmake/engine" "$work/by-pkg-config"; do
  run "$engine" -f "$work/nodes" -F cpu -D "$work/x.db"
  grep -q '^  lscpu: ' "$work/out" && grep -q 'on node2' "$work/out" || fail "$engine's output"
done

mv "$prefix" "$work/moved"
check_run "$work/moved/bin/qorn-collect" "$work/moved"
ln -s "$work/moved/bin/qorn-collect" "$work/qorn-collect"
check_run "$work/qorn-collect" "$work/moved"

(cd "$work" && run cpack --config "$build/CPackConfig.cmake" -B "$work/packages")
runtime=("$work"/packages/qorn_*.deb) development=("$work"/packages/qorn-dev_*.deb)
for package in "${runtime[0]}" "${development[0]}"; do
  [ -f "$package" ] || fail "no package $package"
  dpkg-deb -x "$package" "$work/scratch"
done
dpkg-deb -f "${runtime[0]}" Depends | grep -q libxml2 || fail "the package needs no libxml2"
dpkg-deb -I "${runtime[0]}" conffiles | grep -qx /opt/qorn/etc/qorn.xml || fail "no conffile"
while read -r conffile; do
  [ -f "$work/scratch$conffile" ] || fail "$conffile is not in the package"
done < <(dpkg-deb -I "${runtime[0]}" conffiles)
[ "$(readlink "$work/scratch/usr/bin/qorn-collect")" = /opt/qorn/bin/qorn-collect ] ||
  fail "no /usr/bin/qorn-collect"
check_run "$work/scratch/opt/qorn/bin/qorn-collect" "$work/scratch/opt/qorn"
echo "installed, linked, moved, packed"
