# SPDX-License-Identifier: MIT
# Completion of vxmcd in bash. The program itself lists its commands and options.

_vxmcd()
{
  local program=${COMP_WORDS[0]/#\~\//$HOME/} word=$2 previous=$3
  local table command= owner names argument wanted= candidates= index
  COMPREPLY=()
  table=$("$program" --option-table 2>/dev/null) || return 0
  # A command may have commands of its own: "trace print".
  for ((index = 1; index < COMP_CWORD; ++index)); do
    [[ ${COMP_WORDS[index]} == -* ]] && continue
    [[ $'\n'$table == *$'\n'"${command:+$command }${COMP_WORDS[index]}"$'\t'* ]] || break
    command+=${command:+ }${COMP_WORDS[index]}
  done
  # --trigger=external is three words of the line.
  [[ $word == = ]] && word= previous=${COMP_WORDS[COMP_CWORD - 1]}
  [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}

  # A tab is white space, so that empty fields would be lost: another sign stands in its place.
  while IFS=$'\x1f' read -r owner names argument _; do
    if [[ -z $names ]]; then
      [[ $owner == "${command:+$command }"?* && ${owner#"${command:+$command }"} != *" "* ]] &&
        candidates+=" ${owner#"${command:+$command }"}"
    elif [[ $owner == "$command" ]]; then
      [[ $names == -* ]] && candidates+=" ${names//,/ }"
      [[ ,$names, == *,"$previous",* && -n $argument ]] && wanted=$argument
      [[ $names != -* && -z $wanted && $word != -* ]] && wanted=$argument
    fi
  done <<<"${table//$'\t'/$'\x1f'}"

  [[ $word == -* && $wanted == \[* ]] && wanted= # it may be left out
  case $wanted in
    "") mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word") ;;
    \{*|\[*\|*) mapfile -t COMPREPLY < <(compgen -W "${wanted//[^[:lower:][:digit:]-]/ }" -- "$word") ;;
    *FILE*) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *DIRECTORY*) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
  esac
}
complete -F _vxmcd vxmcd
