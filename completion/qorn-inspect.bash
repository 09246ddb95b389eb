# Completion of qorn-inspect for bash. Names are those that "qorn-inspect list" answers for the
# root on the command line, so for QORN_ROOT or the program's own without one.

_qorn_inspect_names() {
  local i root=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --) break ;;
      --root) root=(--root "${COMP_WORDS[i + 1]}") ;;
    esac
  done
  "$1" list "$2" "${root[@]}" "${@:3}" 2>/dev/null
}

# Offers the lines on standard input that begin with what was typed; nothing in them is expanded.
_qorn_inspect_offer() {
  local line
  while IFS= read -r line; do
    if [[ $line == "$1"* ]]; then
      COMPREPLY+=("$(printf '%q' "$line")")
    fi
  done
}

_qorn_inspect_files() {
  compopt -o filenames 2>/dev/null
  while IFS= read -r file; do
    COMPREPLY+=("$file")
  done < <(compgen -f -- "$1")
}

# The node file behind "--", for the names of nodes.
_qorn_inspect_run() {
  local i behind=
  for ((i = 1; i < ${#COMP_WORDS[@]}; ++i)); do
    if [[ ${COMP_WORDS[i]} == -- ]]; then
      behind=1
    elif [[ -n $behind && ${COMP_WORDS[i]} == -f && -n ${COMP_WORDS[i + 1]} ]]; then
      printf '%s\n' -- -f "${COMP_WORDS[i + 1]}"
      return
    fi
  done
}

_qorn_inspect() {
  local program=$1 current=$2 previous=$3 command=${COMP_WORDS[1]} file i run
  COMPREPLY=()
  for ((i = 2; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} == -- ]]; then
      case $previous in
        -F | --fwd | --framework-definition)
          _qorn_inspect_offer "$current" < <(_qorn_inspect_names "$program" frameworks) ;;
        --) _qorn_inspect_offer "$current" < <(printf '%s\n' collect analyze -f -F -g -c -l -D) ;;
        -l | --level | --log-level)
          _qorn_inspect_offer "$current" \
            < <(printf '%s\n' alert critical error warning notice info debug) ;;
        *) _qorn_inspect_files "$current" ;;
      esac
      return
    fi
  done
  if ((COMP_CWORD == 1)); then
    _qorn_inspect_offer "$current" \
      < <(printf '%s\n' check show why list diff graph nodes -h --help --version)
    return
  fi
  case $previous in
    --color) _qorn_inspect_offer "$current" < <(printf '%s\n' auto always never); return ;;
    --format) _qorn_inspect_offer "$current" < <(printf '%s\n' text json); return ;;
    --from)
      _qorn_inspect_offer "$current" < <(_qorn_inspect_names "$program" frameworks)
      return ;;
    --root) compopt -o filenames; COMPREPLY=($(compgen -d -- "$current")); return ;;
    -f | -g | --nodefile | --groupfile) _qorn_inspect_files "$current"; return ;;
  esac
  if [[ $current == -* ]]; then
    local options="-h --help --root --color"
    case $command in
      check) options+=" -f --nodefile -g --groupfile --strict -v --verbose --format" ;;
      show) options+=" --origin --format --" ;;
      why | list | diff) options+=" --" ;;
      graph) options+=" --from --depth --reverse --providers" ;;
      nodes) options+=" --fold --expand --count -g --groupfile" ;;
    esac
    _qorn_inspect_offer "$current" < <(printf '%s\n' $options)
    return
  fi
  case $command in
    check | diff) _qorn_inspect_files "$current" ;;
    list)
      _qorn_inspect_offer "$current" < <(printf '%s\n' frameworks providers groups nodes files) ;;
    nodes)
      _qorn_inspect_offer "$current" \
        < <(_qorn_inspect_names "$program" groups | sed 's/^/@/') ;;
    why)
      if [[ $previous == why ]]; then
        mapfile -t run < <(_qorn_inspect_run)
        _qorn_inspect_offer "$current" < <(_qorn_inspect_names "$program" nodes "${run[@]}")
      else
        _qorn_inspect_offer "$current" < <(_qorn_inspect_names "$program" frameworks)
      fi ;;
  esac
}
complete -F _qorn_inspect qorn-inspect
