# Completion of vek for fish. An option of one dash and two letters is an old
# style long option here.
complete -c vek -f -a '(__fish_complete_directories)'
complete -c vek -s h -l help -d 'show help'
complete -c vek -s d -l data -x -a '(__fish_complete_directories)' -d 'specify data directory'
complete -c vek -s i -l input -x -a '(__fish_complete_directories)' -d 'specify input directory'
complete -c vek -s p -l poll -d 'poll input directory for documents'
complete -c vek -s r -l resource -r -F -d 'specify resource file'
complete -c vek -s v -l verbose -d 'be verbose'
complete -c vek -s V -l Version -d 'show version'
complete -c vek -s a -l algorithm -x -a 'W\tWinnow R\tRocchio S\tSBC L\tLinear' -d 'specify training algorithm'
complete -c vek -o xl -l xlearning -d 'exclude learning phase'
complete -c vek -o xt -l xtesting -d 'exclude testing phase'
