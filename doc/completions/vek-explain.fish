# Completion of vek-explain for fish.
complete -c vek-explain -F
complete -c vek-explain -s a -l algorithm -x -a 'W R S L' -d 'classifier'
complete -c vek-explain -s C -l directory -x -a '(__fish_complete_directories)' -d 'where vek is called'
complete -c vek-explain -s d -l data -x -a '(__fish_complete_directories)' -d 'data directory'
complete -c vek-explain -s h -l help -d 'show help'
complete -c vek-explain -l html -r -F -d 'write a page with the marked text'
complete -c vek-explain -s j -l json -d 'write JSON'
complete -c vek-explain -s r -l resource -r -F -d 'resource file'
complete -c vek-explain -s t -l terms -x -d 'terms for and against each'
complete -c vek-explain -l tsv -d 'write tab-separated lines'
complete -c vek-explain -s V -l version -d 'show version'
complete -c vek-explain -s x -l exact -d 'show all digits'
