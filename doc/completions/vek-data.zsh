#compdef vek-data
# Completion of vek-data for zsh.

_arguments \
  '(- *)'{-h,--help}'[show help]' \
  '(- *)'{-V,--version}'[show version]' \
  {-j,--json}'[write JSON]' \
  {-e,--empty}'[only documents without terms]' \
  {-r,--resource}'[resource file]:file:_files' \
  {-d,--data}'[data directory]:directory:_files -/' \
  {-a,--algorithm}'[classifier]:letter:(W R S L)' \
  {-c,--analyser}'[analyser where the model will be used]:command:_files' \
  ':command:(info list verify forget compact copy export pack)' \
  '*:data directory:_files -/'
