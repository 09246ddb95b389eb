# Completion of qorn, qorn-collect and qorn-analyze for bash. It reads names of files and
# directories and runs no program of the suite; nothing that a document says is looked at.

# The installation root that the program would take: QORN_ROOT, else the directory above the
# program's, else the usual prefix.
_qorn_root() {
  local program above
  if [[ -n ${QORN_ROOT-} ]]; then
    printf '%s' "$QORN_ROOT"
    return
  fi
  program=$(readlink -f -- "$(type -P -- "$1")") 2>/dev/null
  above=${program%/*/*}
  if [[ -n $above && -f $above/etc/qorn.xml ]]; then
    printf '%s' "$above"
  else
    printf '/opt/qorn'
  fi
}

# Offers those of the given words that begin with what was typed. The words are quoted for the
# shell and never expanded.
_qorn_offer() {
  local cur=$1 word quoted
  shift
  for word; do
    printf -v quoted '%q' "$word"
    if [[ $quoted == "$cur"* || $word == "$cur"* ]]; then
      COMPREPLY+=("$quoted")
    fi
  done
}

# Offers file names; what the typed quotes hide from compgen, readline completes by itself.
_qorn_offer_files() {
  local file
  while IFS= read -r file; do
    COMPREPLY+=("$file")
  done < <(compgen -f -- "$1")
  compopt -o filenames -o default 2>/dev/null
}

# Offers the names of the installed framework definitions and the given words; a path when no
# name fits.
_qorn_offer_frameworks() {
  local cur=$1 program=$2 file
  local -a names=()
  for file in "$(_qorn_root "$program")"/etc/fwd/*.xml; do
    if [[ -f $file ]]; then
      file=${file##*/}
      names+=("${file%.xml}")
    fi
  done
  _qorn_offer "$cur" "${@:3}" "${names[@]}"
  if [[ ${#COMPREPLY[@]} -eq 0 ]]; then
    _qorn_offer_files "$cur"
  fi
}

# The long name of the option whose value is being typed: of a letter the one that the usage text
# has, of letters in one word that of the last. Empty when the word before takes no value.
_qorn_option_of() {
  local word=$1 letter
  if [[ $word == --* ]]; then
    printf '%s' "$word"
    return
  fi
  [[ $word == -?* ]] || return
  letter=${word:1}
  while [[ ${letter:0:1} == [aCehSv] ]]; do
    letter=${letter:1}
  done
  case $letter in
    c) printf -- --config ;;
    D) printf -- --db ;;
    f) printf -- --nodefile ;;
    F) printf -- --fwd ;;
    g) printf -- --groupfile ;;
    l) printf -- --log-level ;;
    n) printf -- --node-include ;;
    o) printf -- --logfile ;;
    r) printf -- --permutations ;;
    t) printf -- --threshold-too-old ;;
    x) printf -- --min-severity ;;
    X) printf -- --FWD_description ;;
    z) printf -- --fail-level ;;
  esac
}

_qorn_offer_options() {
  local cur=$1 program=${2##*/}
  local -a options=(-c --config -D --db -f --nodefile --machinefile --nodelist
    -F --fwd --framework-definition -h --help -l --log-level --level -v --version
    -X --FWD_description)
  local -a collect=(-C --re-collect-data -e --environment-propagation-off -r --permutations
    -S --ignore-subclusters)
  local -a analyze=(-g --groupfile --grouplist --nodegroup -n --node-include -o --logfile
    --sort-asc --sort-desc -t --threshold-too-old -z --fail-level)
  [[ $program == qorn-analyze ]] || options+=("${collect[@]}")
  [[ $program == qorn-collect ]] || options+=("${analyze[@]}")
  _qorn_offer "$cur" "${options[@]}"
}

_qorn() {
  local cur=${COMP_WORDS[COMP_CWORD]-} before=${COMP_WORDS[COMP_CWORD - 1]-}
  local program=$1
  COMPREPLY=()
  # "--option=value" comes as three words.
  if [[ $cur == = ]]; then
    cur=
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]-}
  fi
  if [[ ${program##*/} == qorn && ${COMP_WORDS[1]-} == generate_rules && $COMP_CWORD -gt 1 ]]; then
    if [[ $COMP_CWORD -eq 2 ]]; then
      _qorn_offer_files "$cur"
    fi
    return
  fi
  if [[ $COMP_CWORD -gt 1 ]]; then
    case $(_qorn_option_of "$before") in
      --config | --db | --nodefile | --nodelist | --machinefile | --groupfile | --grouplist | \
        --nodegroup | --logfile)
        _qorn_offer_files "$cur"
        return
        ;;
      --fwd | --framework-definition)
        _qorn_offer_frameworks "$cur" "$program"
        return
        ;;
      --FWD_description)
        _qorn_offer_frameworks "$cur" "$program" list
        return
        ;;
      --log-level | --level)
        _qorn_offer "$cur" alert critical error warning notice info debug
        return
        ;;
      --fail-level)
        _qorn_offer "$cur" informational warning critical
        return
        ;;
      --sort-asc | --sort-desc)
        _qorn_offer "$cur" id node severity
        return
        ;;
      --permutations)
        _qorn_offer "$cur" all
        return
        ;;
      --node-include)
        local -a hosts=()
        mapfile -t hosts < <(compgen -A hostname -- "$cur")
        _qorn_offer "$cur" "${hosts[@]}"
        return
        ;;
      --threshold-too-old | --min-severity)
        return
        ;;
    esac
  fi
  if [[ $COMP_CWORD -eq 1 && ${program##*/} == qorn ]]; then
    _qorn_offer "$cur" generate_rules
  fi
  _qorn_offer_options "$cur" "$program"
}

complete -F _qorn qorn qorn-collect qorn-analyze
