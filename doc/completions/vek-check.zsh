#compdef vek-check
# Completion of vek-check for zsh.

_arguments \
  '(- *)'{-h,--help}'[show help]' \
  {-r,--resource}'[specify resource file]:resource file:_files -g "*.rc"' \
  '(- *)'{-V,--version}'[show version]' \
  ':examples directory:_files -/'
