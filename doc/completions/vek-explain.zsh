#compdef vek-explain
# Completion of vek-explain for zsh.

_arguments \
  {-a,--algorithm}'[classifier]:letter:(W R S L)' \
  {-C,--directory}'[where vek is called]:directory:_files -/' \
  {-d,--data}'[data directory]:directory:_files -/' \
  '(- *)'{-h,--help}'[show help]' \
  '--html[write a page with the marked text]:file:_files' \
  {-j,--json}'[write JSON]' \
  {-r,--resource}'[resource file]:file:_files -g "*.rc"' \
  {-t,--terms}'[terms for and against each]:number:' \
  '--tsv[write tab-separated lines]' \
  '(- *)'{-V,--version}'[show version]' \
  {-x,--exact}'[show all digits]' \
  ':document:_files' \
  ':class:'
