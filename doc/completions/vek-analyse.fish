# Completion of vek-analyse for fish.

# The program lists its languages when it is asked for one that it has not.
function __vek_analyse_languages
    vek-analyse -l '?' 2>&1 | string match -r '^[a-z]+(?= \(|$)'
end

complete -c vek-analyse -f
complete -c vek-analyse -s l -x -a '(__vek_analyse_languages)' -d 'language, by name or code'
complete -c vek-analyse -s t -x -a 'words pairs both' -d 'what to write'
complete -c vek-analyse -s s -r -F -d 'further words to leave out'
complete -c vek-analyse -s n -x -a 'drop class keep' -d 'what becomes of numbers'
complete -c vek-analyse -l to -x -a '(__fish_complete_directories)' -d 'write each answer to a file in a directory'
complete -c vek-analyse -l from -x -a '(__fish_complete_directories)' -d 'name it by all of the path behind a directory'
complete -c vek-analyse -l progress -d 'tell how far it is'
complete -c vek-analyse -s h -l help -d 'show help'
complete -c vek-analyse -s V -l version -d 'show version'
