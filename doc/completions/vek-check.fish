# Completion of vek-check for fish.
complete -c vek-check -f -a '(__fish_complete_directories)'
complete -c vek-check -s h -l help -d 'show help'
complete -c vek-check -s r -l resource -r -F -d 'specify resource file'
complete -c vek-check -s V -l version -d 'show version'
