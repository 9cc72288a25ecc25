#compdef vek-data
# Completion of vek-data for zsh.

_arguments \
  '(- *)'{-h,--help}'[show help]' \
  '(- *)'{-V,--version}'[show version]' \
  {-j,--json}'[write JSON]' \
  {-e,--empty}'[only documents without terms]' \
  ':command:(info list verify forget compact copy export)' \
  '*:data directory:_files -/'
