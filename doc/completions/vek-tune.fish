# Completion of vek-tune for fish.
complete -c vek-tune -f -a '(__fish_complete_directories)'
complete -c vek-tune -s b -l budget -x -d 'so many times the usual work'
complete -c vek-tune -s f -l force -d 'replace the file if it is there'
complete -c vek-tune -s h -l help -d 'show help'
complete -c vek-tune -s o -l output -r -F -d 'resource file to write'
complete -c vek-tune -s r -l resource -r -F -d 'resource file to begin with'
complete -c vek-tune -s V -l version -d 'show version'
