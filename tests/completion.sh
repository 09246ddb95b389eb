#!/usr/bin/env bash
# Drives bash's completion as a shell does.
# usage: completion.sh FOLDER_OF_COMPLETIONS FOLDER_OF_PROGRAMS
set -u
completions=$1 programs=$2 failures=0
if command -v zsh >/dev/null; then
  zsh -n "$completions/_qorn" && zsh -n "$completions/_qorn-inspect" || exit 1
fi
# shellcheck source=completion/qorn.bash
. "$completions/qorn.bash" || exit 1
# shellcheck source=completion/qorn-inspect.bash
. "$completions/qorn-inspect.bash" || exit 1

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
  case ${1##*/} in
    qorn-inspect) _qorn_inspect "$1" "${*: -1}" "${*: -2:1}" ;;
    *) _qorn "$1" ;;
  esac
  printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd '|'
}

fail() {
  printf '%s\n' "$*"
  failures=$((failures + 1))
}

# expect REPLIES WORD...
expect() {
  local wanted=$1 got
  got=$(replies "${@:2}")
  [[ $got == "$wanted" ]] || fail "after \"${*:2}\": expected \"$wanted\", got \"$got\""
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
[[ -e $world/desk/ran ]] && fail 'a name was run'

# The letters offered are those of the usage text.
for program in qorn qorn-collect qorn-analyze; do
  offered=$(replies "$program" - | tr '|' '\n' | grep -x -- '-[A-Za-z]' | LC_ALL=C sort)
  used=$("$programs/$program" --help | grep -o -- '-[A-Za-z],--' | cut -c1-2 | grep -v -- -A | LC_ALL=C sort -u)
  [[ -n $used && $offered == "$used" ]] || fail "$program offers $offered and has $used"
done

# What qorn-inspect offers are the commands, options and words of its usage texts.
inspect=$programs/qorn-inspect zsh=$completions/_qorn-inspect
sorted() { LC_ALL=C sort | paste -sd '|'; }
commands=$("$inspect" --help | sed -n '/^Subcommands/,$ s/^  \([a-z]*\) .*/\1/p')
expect "$({ echo "$commands"; printf '%s\n' -h --help --version; } | sorted)" "$inspect" ''
for command in $commands; do
  usage=$("$inspect" "$command" --help)
  flags=$(sed -n 's/^  \(-[^ ]*\).*/\1/p' <<<"$usage" | tr , '\n')
  behind=$(grep -o -- '(-- ARG' <<<"$usage" | cut -c2-3)
  expect "$(sorted <<<"$flags${behind:+$'\n'--}")" "$inspect" "$command" -

  lines=$(awk "/^  common=|^    $command\\)/ { on = 1 } on || /'$command\\[/; /'\\)\$|;;/ { on = 0 }" "$zsh")
  # shellcheck disable=SC2016
  [[ $lines == *'$format'* ]] && lines+=$(grep '^  format=' "$zsh")
  offered=$(grep -oP "(?<=['{,*])--?[a-z]+(?=['},[])" <<<"$lines" | sorted)
  [[ $lines == *"'${command}["* && $offered == "$(sorted <<<"$flags")" ]] ||
    fail "$zsh has for $command $offered"
  while read -r name words; do
    [[ $name == -* ]] || name=
    expect "$(tr , '\n' <<<"$words" | sorted)" "$inspect" "$command" ${name:+"$name"} ''
    [[ $lines == *":(${words//,/ })"* ]] || fail "$zsh lacks the words $words of $command"
  done < <(sed -n 's/^  \([^ ]*\) TEXT:{\([a-z,]*\)}.*/\1 \2/p' <<<"$usage")
done
export QORN_ROOT=$world/root
expect 'cpu|cpu_load' "$inspect" graph --from c
expect 'documents|node list|nodes' "$inspect" check -f ''
exit "$((failures > 0))"
