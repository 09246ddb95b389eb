#!/usr/bin/env bash
# Drives bash's completion as a shell does.
# usage: completion.sh FOLDER_OF_COMPLETIONS FOLDER_OF_PROGRAMS
set -u
completions=$1 programs=$2 failures=0
bash -n "$completions/qorn.bash" || exit 1
if command -v zsh >/dev/null; then
  zsh -n "$completions/_qorn" || exit 1
fi
# shellcheck source=completion/qorn.bash
. "$completions/qorn.bash"

world=$(mktemp -d)
trap 'rm -rf "$world"' EXIT
mkdir -p "$world/root/etc/fwd" "$world/moved/etc/fwd" "$world/moved/bin" "$world/desk/documents"
# shellcheck disable=SC2016
touch "$world"/root/etc/fwd/{cpu,cpu_load,memory,'two words','$(touch ran)'}.xml \
  "$world"/moved/etc/{qorn,fwd/moved}.xml "$world"/desk/{nodes,'node list'} "$world/moved/bin/qorn"
chmod +x "$world/moved/bin/qorn"
cd "$world/desk" || exit 1
export QORN_ROOT=$world/root

# replies WORD... : what completion offers, sorted, when the last word is being typed.
replies() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  _qorn "$1"
  printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd '|'
}

# expect REPLIES WORD...
expect() {
  local wanted=$1 got
  got=$(replies "${@:2}")
  if [[ $got != "$wanted" ]]; then
    printf 'after "%s": expected "%s", got "%s"\n' "${*:2}" "$wanted" "$got"
    failures=$((failures + 1))
  fi
}

expect 'generate_rules' qorn g
expect '' qorn-collect g
expect 'node list|nodes' qorn generate_rules no
expect '' qorn generate_rules nodes ''
expect 'node list|nodes' qorn-collect -f no
expect 'documents' qorn-analyze --groupfile = doc
expect 'node list|nodes' qorn-collect -Cf no
expect 'cpu|cpu_load' qorn-collect -F c
expect 'cpu|cpu_load' qorn --framework-definition = c
expect 'two\ words' qorn -F tw
expect '\$\(touch\ ran\)' qorn -F '\$'
expect 'list' qorn -X l
expect 'node list|nodes' qorn -F no
expect 'debug' qorn -l d
expect 'critical' qorn-analyze -z c
expect 'id|node|severity' qorn-analyze --sort-desc ''
expect 'all' qorn-collect -r ''
expect '' qorn -t ''
expect '--sort-asc|--sort-desc' qorn --sort
expect '' qorn-collect --sort
expect '' qorn-analyze --perm
unset QORN_ROOT
expect 'moved' "$world/moved/bin/qorn" -F m
[[ -e $world/desk/ran ]] && echo 'a name was run' && failures=$((failures + 1))

# The letters offered are those of the usage text.
for program in qorn qorn-collect qorn-analyze; do
  offered=$(replies "$program" - | tr '|' '\n' | grep -x -- '-[A-Za-z]' | LC_ALL=C sort)
  used=$("$programs/$program" --help | grep -o -- '-[A-Za-z],--' | cut -c1-2 | grep -v -- -A | LC_ALL=C sort -u)
  if [[ -z $used || $offered != "$used" ]]; then
    printf '%s offers %s and has %s\n' "$program" "$offered" "$used"
    failures=$((failures + 1))
  fi
done
exit "$((failures > 0))"
