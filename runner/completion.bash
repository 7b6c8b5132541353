# bash completion for picturehost. Options and their values come from its --help, the names of
# methods and classes from its list, so that nothing here has to follow the program.

# The options of a command, a line each: names between commas, and what stands for the value.
_picturehost_options() {
  local line
  while IFS= read -r line; do
    [[ $line =~ ^\ \ (-[^\ ]+)(\ ([^\ ]+))? ]] && echo "${BASH_REMATCH[1]} ${BASH_REMATCH[3]}"
  done < <("$1" ${2:+"$2"} --help 2>/dev/null)
}

# What stands for the value of an option, given the lines of _picturehost_options; fails when the
# option takes none.
_picturehost_value() {
  local names value
  while read -r names value; do
    [[ ,$names, == *,"$1",* && -n $value ]] && echo "$value" && return
  done <<<"$2"
  return 1
}

# Everything that an expression can begin with: methods of pictures, global methods, classes. Within
# quotation marks a bracket follows where there are parameters, and they are shown: two offers, so
# that bash doesn't take the first for the whole word and close the quotation.
_picturehost_names() {
  "$1" list 2>/dev/null | awk -v quoted="$2" '
    function offer(text) { if (!seen[text]++) print text }
    /^[^ ]/ { callable = !/^Class / }
    /^Class / { offer($2); if (quoted) offer($2 "(") }
    /^  / && callable {
      sub(/^ +/, ""); sub(/ +\(can be assigned to\)$/, ""); name = $0; sub(/[ (].*/, "", name)
      if (!quoted || $0 !~ /\(/) offer(name)
      else { offer(name "("); sub(/\)[^)]*$/, ")"); offer($0) }
    }'
}

_picturehost_expressions() {
  local quoted=
  [[ $2 == [\"\']* ]] && quoted=1
  local IFS=$'\n'
  _picturehost_words "${2#[\"\']}" "$(_picturehost_names "$1" "$quoted")"
}

_picturehost_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$1")
}

_picturehost_words() {
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$2" -- "$1")
}

_picturehost() {
  local program=${COMP_WORDS[0]} command=${COMP_WORDS[1]} word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _picturehost_words "$word" "run batch list --help --version"
    return
  fi
  local options value
  options=$(_picturehost_options "$program" "$command")

  # How many words that aren't options stand before this one.
  local i position=0 expressions=0 dashes=0
  for ((i = 2; i < COMP_CWORD; ++i)); do
    if ((!dashes)) && [[ ${COMP_WORDS[i]} == -* ]]; then
      [[ ${COMP_WORDS[i]} == -- ]] && dashes=1
      value=$(_picturehost_value "${COMP_WORDS[i]}" "$options") || continue
      [[ ${COMP_WORDS[i]} == -e || ${COMP_WORDS[i]} == --expression ]] && expressions=1
      # bash takes an equals sign for a word of its own.
      [[ ${COMP_WORDS[i + 1]} == = ]] && ((++i))
      ((++i))
      [[ $value == NAME=* && ${COMP_WORDS[i + 1]} == = ]] && ((i += 2))
      if ((i >= COMP_CWORD)); then
        local after_equals=0
        [[ $word == = || ${COMP_WORDS[COMP_CWORD - 1]} == = ]] && after_equals=1
        [[ $word == = ]] && word=
        case $value in
          *:{*}*)
            value=${value#*\{} value=${value%\}*}
            _picturehost_words "$word" "${value//,/ }"
            ;;
          TEXT) _picturehost_expressions "$program" "$word" ;;
          NAME=*) ((after_equals)) && _picturehost_files "$word" ;;
          FILE | PATH | PATTERN) _picturehost_files "$word" ;;
          DIR)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
        esac
        return
      fi
    else
      ((++position))
    fi
  done

  if ((!dashes)) && [[ $word == -* ]]; then
    _picturehost_words "$word" "$(sed 's/ .*//; s/,/ /g' <<<"$options")"
    return
  fi
  case $command in
    run | batch)
      if ((position == 0 && !expressions)); then
        _picturehost_expressions "$program" "$word"
      else
        _picturehost_files "$word"
      fi
      ;;
  esac
}

complete -F _picturehost picturehost
