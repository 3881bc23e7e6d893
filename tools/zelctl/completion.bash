# Bash completion for zelctl. The command itself lists the candidates, so they match the installed version.
_zelctl() {
  local words=() each joins='' begun head=''
  # The shell splits words at "=".
  for each in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    if [ ${#words[@]} -gt 0 ] && { [ "$each" = = ] || [ -n "$joins" ]; }; then
      words[-1]+=$each
      joins=''
      [ "$each" = = ] && joins=yes
    else
      words+=("$each")
    fi
  done
  begun=${words[-1]}
  [[ $begun = *=* && $COMP_WORDBREAKS = *=* ]] && head=${begun%%=*}=
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" help --words -- "${words[@]}" 2>/dev/null)
  case "${COMPREPLY[*]-}" in
    '<file>') mapfile -t COMPREPLY < <(compgen -f -- "$begun") ;;
    '<directory>') mapfile -t COMPREPLY < <(compgen -d -- "$begun") ;;
    *)
      [[ ${COMPREPLY[*]-} = *= ]] && { compopt -o nospace 2>/dev/null || :; }
      mapfile -t COMPREPLY < <(compgen -W "${COMPREPLY[*]-}" -- "$begun")
      COMPREPLY=("${COMPREPLY[@]#"$head"}")
      return
      ;;
  esac
  compopt -o filenames 2>/dev/null || :
}
complete -F _zelctl zelctl
