#compdef vek-analyse
# Completion of vek-analyse for zsh.

# The program lists its languages when it is asked for one that it has not.
_vek_analyse_languages() {
  local -a languages
  languages=(${${(f)"$($words[1] -l '?' 2>&1)"}[2,-1]%% *})
  _describe language languages
}

_arguments \
  '-l[language, by name or code]:language:_vek_analyse_languages' \
  '-t[what to write]:terms:(words pairs both)' \
  '-s[further words to leave out]:file:_files' \
  '-n[what becomes of numbers]:numbers:(drop class keep)' \
  '--to[write each answer to a file in a directory]:directory:_files -/' \
  '--from[name it by all of the path behind a directory]:directory:_files -/' \
  '--progress[tell how far it is]' \
  '(- *)'{-h,--help}'[show help]' \
  '(- *)'{-V,--version}'[show version]'
