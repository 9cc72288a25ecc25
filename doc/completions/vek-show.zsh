#compdef vek-show
# Completion of vek-show for zsh.

_arguments \
  {-a,--algorithm}'[classifier]:letter:(W R S L)' \
  {-C,--directory}'[where vek is called]:directory:_files -/' \
  {-d,--data}'[data directory]:directory:_files -/' \
  '(- *)'{-h,--help}'[show help]' \
  {-j,--json}'[write JSON]' \
  {-n,--lines}'[lines of a table]:number:' \
  {-p,--predictions}'[predictions for what is confused]:place:_files' \
  {-r,--resource}'[resource file]:file:_files -g "*.rc"' \
  {-t,--table}'[show one table]:table:(class terms against confusions term classes pairs document tree)' \
  '--tsv[write tab-separated lines]' \
  '(- *)'{-V,--version}'[show version]' \
  ':command:(class term document tree)' \
  '*:name:'
