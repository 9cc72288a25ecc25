#compdef vek-sort
# Completion of vek-sort for zsh.

_arguments \
  '(--move --link)--copy[copy the texts]' \
  '(- *)'{-h,--help}'[show help]' \
  {-i,--id}'[field that the answer repeats]:field:' \
  '--learn[learn what people have put right]:directory:_files -/' \
  '(--move --copy)--link[link the texts]' \
  '--log[file for the log]:file:_files' \
  '(--copy --link)--move[move the texts]' \
  {-q,--quiet}'[no progress, no summary]' \
  '--settle[seconds after which a text is complete]:seconds:' \
  '--stream[answer JSON lines]' \
  {-t,--text}'[fields with the text]:fields:' \
  '--to[directory with the folders]:directory:_files -/' \
  '(- *)'{-V,--version}'[show version]' \
  '--wait[seconds to wait for other processes]:seconds:' \
  '--watch[sort texts as they come in]' \
  '1:model:_files -/' \
  '2:incoming directory:_files -/'
