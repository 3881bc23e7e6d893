# Completion of zelctl for bash. The words come from the command itself, so they are those of the installed version.
_zelctl() {
  local word=${COMP_WORDS[COMP_CWORD]} path=() each
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $each in
      -* | *[!a-z0-9]*) ;;
      *) path+=("$each") ;;
    esac
  done
  [ "${path[0]-}" = help ] && path=("${path[@]:1}")
  mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" help --words "${path[@]}" 2>/dev/null)" -- "$word")
}
# Where no word fits, the names of files.
complete -o default -F _zelctl zelctl
