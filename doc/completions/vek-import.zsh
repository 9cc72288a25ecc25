#compdef vek-import
# Completion of vek-import for zsh.

_vek_import_encodings() {
  local -a encodings
  encodings=(${${(f)"$(iconv -l)"}%%/*})
  _describe encoding encodings
}

_arguments \
  {-c,--class}'[field or header with the class]:field:' \
  {-e,--encoding}'[encoding of the texts]:encoding:_vek_import_encodings' \
  {-f,--form}'[form of all files]:form:(text html mail mbox csv tsv jsonl fasttext)' \
  '*'{-F,--filter}'[program that makes text of files]:[EXT=]COMMAND:' \
  {-g,--group}'[field of what stays in one list]:field:' \
  '(- *)'{-h,--help}'[show help]' \
  {-i,--id}'[field that tells documents apart]:field:' \
  '--no-header[the first row is a document]' \
  '--no-quotes[a quote is a character like others]' \
  {-p,--path}'[divides a class into fathers and sons]:string:' \
  {-q,--quiet}'[no progress, no summary]' \
  {-s,--separator}'[divides a field into classes]:string:' \
  {-t,--text}'[fields with the text]:fields:' \
  {-T,--test}'[share or number of test documents]:share or number:' \
  '(- *)'{-V,--version}'[show version]' \
  '*:source or examples directory:_files'
