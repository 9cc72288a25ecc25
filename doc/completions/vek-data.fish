# Completion of vek-data for fish.
complete -c vek-data -f
complete -c vek-data -n __fish_use_subcommand -a 'info list verify forget compact copy export pack'
complete -c vek-data -n 'not __fish_use_subcommand' -a '(__fish_complete_directories)'
complete -c vek-data -s h -l help -d 'show help'
complete -c vek-data -n __fish_use_subcommand -s V -l version -d 'show version'
complete -c vek-data -n '__fish_seen_subcommand_from info list export' -s j -l json -d 'write JSON'
complete -c vek-data -n '__fish_seen_subcommand_from list' -s e -l empty -d 'only documents without terms'
complete -c vek-data -n '__fish_seen_subcommand_from pack' -s r -l resource -rF -d 'resource file'
complete -c vek-data -n '__fish_seen_subcommand_from pack' -s d -l data -xa '(__fish_complete_directories)' -d 'data directory'
complete -c vek-data -n '__fish_seen_subcommand_from pack' -s a -l algorithm -xa 'W R S L' -d 'classifier'
complete -c vek-data -n '__fish_seen_subcommand_from pack' -s c -l analyser -rF -d 'analyser where the model will be used'
