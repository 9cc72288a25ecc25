#compdef vek
# Completion of vek for zsh.

_arguments \
  '(- *)'{-h,--help}'[show help]' \
  {-d,--data}'[specify data directory]:data directory:_files -/' \
  {-i,--input}'[specify input directory]:input directory:_files -/' \
  {-p,--poll}'[poll input directory for documents]' \
  {-r,--resource}'[specify resource file]:resource file:_files -g "*.rc"' \
  '*'{-v,--verbose}'[be verbose]' \
  '(- *)'{-V,--Version}'[show version]' \
  {-a,--algorithm}'[specify training algorithm]:algorithm:((W\:Winnow R\:Rocchio S\:SBC L\:Linear))' \
  {-xl,--xlearning}'[exclude learning phase]' \
  {-xt,--xtesting}'[exclude testing phase]' \
  ':examples directory:_files -/'
