#compdef zelctl
# Zsh completion for zelctl. The command itself lists the candidates, so they match the installed version.
local -a offered
offered=("${(@f)$("$words[1]" help --words -- "${(@)words[2,CURRENT]}" 2>/dev/null)}")
case "$offered" in
  '<file>') _files ;;
  '<directory>') _files -/ ;;
  *=) compadd -S '' -a offered ;;
  *) compadd -a offered ;;
esac
