#compdef vek-tune
# Completion of vek-tune for zsh.

_arguments \
  {-b,--budget}'[so many times the usual work]:number:' \
  {-f,--force}'[replace the file if it is there]' \
  '(- *)'{-h,--help}'[show help]' \
  {-o,--output}'[resource file to write]:resource file:_files -g "*.rc"' \
  {-r,--resource}'[resource file to begin with]:resource file:_files -g "*.rc"' \
  '(- *)'{-V,--version}'[show version]' \
  ':examples directory:_files -/'
