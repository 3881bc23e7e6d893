#compdef zelctl
# Completion of zelctl for zsh. The words come from the command itself, so they are those of the installed version.
local -a offered
offered=("${(@f)$("$words[1]" help --words -- "${(@)words[2,CURRENT]}" 2>/dev/null)}")
case "$offered" in
  '<file>') _files ;;
  '<directory>') _files -/ ;;
  *=) compadd -S '' -a offered ;;
  *) compadd -a offered ;;
esac
