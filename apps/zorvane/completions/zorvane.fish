# Completion of zorvane's arguments for fish.
complete -c zorvane -f
complete -c zorvane -n __fish_use_subcommand -a record -d "Record a display"
complete -c zorvane -n __fish_use_subcommand -a info -d "Tell what is in a bundle"
complete -c zorvane -n __fish_use_subcommand -l version -d "Show the version"
complete -c zorvane -s h -l help -d "Show help"

set -l record "__fish_seen_subcommand_from record"
complete -c zorvane -n $record -l display -x -a main -d "Display to record: main, or its id"
complete -c zorvane -n $record -l color-space -x -a "sRGB displayP3" -d "Colours"
complete -c zorvane -n $record -l no-cursor -d "Leave the mouse pointer out"
complete -c zorvane -n $record -l seconds -x -d "Stop after so many seconds"
complete -c zorvane -n $record -s o -l output -x -a "(__fish_complete_directories)" -d "Bundle directory to make"
complete -c zorvane -n $record -l platform -x -a "linux virtual" -d "Desktop to record"
complete -c zorvane -n $record -l json -d "Print one JSON object at the end"
complete -c zorvane -n $record -s q -l quiet -d "Say nothing but errors and the path"
complete -c zorvane -n $record -l log-level -x -a "trace debug info warning error critical" -d "Show log lines"

set -l info "__fish_seen_subcommand_from info"
complete -c zorvane -n $info -l json -d "Print one JSON object"
complete -c zorvane -n $info -a "(__fish_complete_directories)" -d "Bundle"
