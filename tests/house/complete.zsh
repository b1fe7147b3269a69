# What zsh lists behind lines, in a session of its own: complete.zsh FOLDER_OF_COMPLETIONS [LINE LAST_WORD]...
# Each list is read up to the word that it must end with.
zmodload zsh/zpty
zpty session zsh -f -i
zpty -w session "PS1= LISTMAX=0 COLUMNS=200 LINES=100; unsetopt listambiguous; fpath=($1 \$fpath)"
zpty -w session 'autoload -Uz compinit; compinit -D -u; print RE"ADY"'
zpty -r session seen '*READY*'
for line last in "${@:2}"; do
  zpty -w -n session "$line"$'\t'
  zpty -r session seen "*$line*$last*"
  print -r -- "${seen##*$line}"
  zpty -w -n session $'\x15'
done
zpty -d session
