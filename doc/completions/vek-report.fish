# Completion of vek-report for fish.
complete -c vek-report -F
complete -c vek-report -s c -l compare -r -F -d 'compare with another run'
complete -c vek-report -l csv -d 'write CSV'
complete -c vek-report -s d -l document -x -d 'show the scores of one document'
complete -c vek-report -l files -x -a '(__fish_complete_directories)' -d 'directory of the texts'
complete -c vek-report -s h -l help -d 'show help'
complete -c vek-report -l html -r -F -d 'write a page'
complete -c vek-report -s j -l json -d 'write JSON'
complete -c vek-report -s n -l lines -x -d 'lines of a table'
complete -c vek-report -s r -l reverse -d 'sort the other way round'
complete -c vek-report -s s -l sort -x -a 'class support correct missed wrong precision recall f1 accuracy' -d 'sort classes by a column'
complete -c vek-report -s t -l table -x -a 'summary classes pairs documents test' -d 'show one table'
complete -c vek-report -s V -l version -d 'show version'
