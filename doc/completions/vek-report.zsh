#compdef vek-report
# Completion of vek-report for zsh.

_arguments \
  {-c,--compare}'[compare with another run]:run:_files' \
  '--csv[write CSV]' \
  {-d,--document}'[show the scores of one document]:name:' \
  '--files[directory of the texts]:directory:_files -/' \
  '(- *)'{-h,--help}'[show help]' \
  '--html[write a page]:file:_files' \
  {-j,--json}'[write JSON]' \
  {-n,--lines}'[lines of a table]:number:' \
  {-r,--reverse}'[sort the other way round]' \
  {-s,--sort}'[sort classes by a column]:column:(class support correct missed wrong precision recall f1 accuracy)' \
  {-t,--table}'[show one table]:table:(summary classes pairs documents test)' \
  '(- *)'{-V,--version}'[show version]' \
  ':run:_files'
