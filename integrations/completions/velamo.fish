# fish completion for velamo

# Offers the files with one of the extensions, in any case, and folders.
function __velamo_files
    set -l pattern '\\.('(string join '|' -- (string escape --style=regex -- $argv))')$'
    for file in (__fish_complete_path (commandline -ct))
        string match -riq -- "$pattern|/\$" (string split -f1 \t -- $file)
        and echo $file
    end
end

# Whether the line is about the command, or about what a command is to do, as in "desktop refresh".
function __velamo_is
    set -l words (commandline -opc)
    set -l rest $words[2..]
    string match -q -- "$argv *" "$rest "
end

set -l readable dst exp jef jef+ jpx ksm pcd pcq pcs pec pes sew vp3

complete -c velamo -f
complete -c velamo -s h -l help -d "Print help"
complete -c velamo -n __fish_use_subcommand -l version -d "Print the version"
complete -c velamo -n __fish_use_subcommand -a info -d "Describe designs"
complete -c velamo -n __fish_use_subcommand -a index -d "Bring the catalogue of designs up to date"
complete -c velamo -n __fish_use_subcommand -a search -d "Find designs in the catalogue"
complete -c velamo -n __fish_use_subcommand -a forget -d "Remove folders from the catalogue"
complete -c velamo -n __fish_use_subcommand -a dump -d "Print a whole design as one JSON object"
complete -c velamo -n __fish_use_subcommand -a convert -d "Write designs for other machines"
complete -c velamo -n __fish_use_subcommand -a edit -d "Carry out edit commands on a design"
complete -c velamo -n __fish_use_subcommand -a render -d "Draw a picture of a design"
complete -c velamo -n __fish_use_subcommand -a palettes -d "List the thread palettes"
complete -c velamo -n __fish_use_subcommand -a hoops -d "List the embroidery hoops"
complete -c velamo -n __fish_use_subcommand -a desktop -d "Tell the searches of the desktops of designs"
complete -c velamo -n __fish_use_subcommand -a format-length -d "Write a length in the measurement unit"
complete -c velamo -n __fish_use_subcommand -a parse-length -d "Read a length"
complete -c velamo -n "__velamo_is desktop; and not __velamo_is desktop refresh" -a refresh -d "Have them look again at designs"

complete -c velamo -n "__velamo_is info" -l json -d "Print JSON"
complete -c velamo -n "__velamo_is info" -l picture -d "Show a small picture"
complete -c velamo -n "__velamo_is info" -l plugin -d "Show what the indexer gets from the plug-in"

complete -c velamo -n "__velamo_is index" -l jobs -x -d "How many files to read at a time"
complete -c velamo -n "__velamo_is index" -l catalogue -r -F -d "The catalogue"

complete -c velamo -n "__velamo_is search" -l width -x -d "In millimetres, 50..100"
complete -c velamo -n "__velamo_is search" -l height -x -d "In millimetres, 50..100"
complete -c velamo -n "__velamo_is search" -l stitches -x -d "Number of stitches"
complete -c velamo -n "__velamo_is search" -l colors -x -d "Number of different colors"
complete -c velamo -n "__velamo_is search" -l blocks -x -d "Number of color blocks"
complete -c velamo -n "__velamo_is search" -l format -x -a "$readable" -d "Files of this format"
complete -c velamo -n "__velamo_is search" -l hoop -x -d "What fits into it, 100x100"
complete -c velamo -n "__velamo_is search" -l has -x -a "black grey white brown beige gold yellow orange red pink magenta purple blue turquoise green olive" -d "With a thread of this color"
complete -c velamo -n "__velamo_is search" -l sort -x -a "name width height stitches colors date" -d "Order"
complete -c velamo -n "__velamo_is search" -l reverse -d "Turn the order round"
complete -c velamo -n "__velamo_is search" -l limit -x -d "Print at most so many"
complete -c velamo -n "__velamo_is search" -l offset -x -d "Leave out so many before them"
complete -c velamo -n "__velamo_is search" -l folder -x -a "(__fish_complete_directories)" -d "Only designs below it"
complete -c velamo -n "__velamo_is search" -l broken -d "List the files that could not be read"
complete -c velamo -n "__velamo_is search" -l json -d "Print JSON"
complete -c velamo -n "__velamo_is search" -l print0 -d "Print paths, each followed by a zero byte"
complete -c velamo -n "__velamo_is search" -l catalogue -r -F -d "The catalogue"

complete -c velamo -n "__velamo_is forget" -l catalogue -r -F -d "The catalogue"

complete -c velamo -n "__velamo_is convert" -l all -x -a "(__fish_complete_directories)" -d "Convert every design below"
complete -c velamo -n "__velamo_is convert" -l to -x -a "dst exp jef pcs pec pes" -d "Extension of the new files"
complete -c velamo -n "__velamo_is convert" -l out -x -a "(__fish_complete_directories)" -d "Where the new files go"
complete -c velamo -n "__velamo_is convert" -l jobs -x -d "How many designs at a time"
complete -c velamo -n "__velamo_is convert" -l date -x -d "Date in a JEF file"
complete -c velamo -n "__velamo_is convert" -l dump -d "Print the design afterwards"

complete -c velamo -n "__velamo_is edit" -s e -x -d "An edit command"
complete -c velamo -n "__velamo_is edit" -s f -r -F -d "A script of edit commands"
complete -c velamo -n "__velamo_is edit" -s o -r -F -d "Write the design"
complete -c velamo -n "__velamo_is edit" -l dump -d "Print the design, too"

complete -c velamo -n "__velamo_is render" -l scale -x -d "Pixels for each tenth of a millimetre"
complete -c velamo -n "__velamo_is render" -l size -x -d "Pixels of the longer side"
complete -c velamo -n "__velamo_is render" -l 3d -d "Make threads look round"
complete -c velamo -n "__velamo_is render" -l jumps -d "Dash jumps"
complete -c velamo -n "__velamo_is render" -l structure -d "Draw thin lines and dots"
complete -c velamo -n "__velamo_is render" -l thread -x -d "Draw one thread alone"
complete -c velamo -n "__velamo_is render" -s e -x -d "An edit command"

complete -c velamo -n "__velamo_is palettes" -l json -d "Print JSON"

complete -c velamo -n "__velamo_is hoops" -l vendor -x -a "Janome Pfaff" -d "Only those of a vendor"
complete -c velamo -n "__velamo_is hoops" -l json -d "Print JSON"

complete -c velamo -n "__velamo_is desktop refresh" -l folder -x -a "(__fish_complete_directories)" -d "Only designs below it"
complete -c velamo -n "__velamo_is desktop refresh" -l json -d "Print JSON"
complete -c velamo -n "__velamo_is desktop refresh" -l catalogue -r -F -d "The catalogue"

complete -c velamo -n "__velamo_is format-length" -l unit -x -a "0 1 2" -d "Millimetres, decimal or fractional inches"

complete -c velamo -n "__velamo_is parse-length" -l unit -x -a "0 1 2" -d "Millimetres, decimal or fractional inches"

for command in info index dump convert edit render
    complete -c velamo -n "__velamo_is $command" -l confined-only -d "Read nothing where the system cannot confine it"
end
for command in info index forget dump convert edit
    complete -c velamo -n "__velamo_is $command" -a "(__velamo_files $readable)"
end
complete -c velamo -n "__velamo_is render" -a "(__velamo_files $readable png svg pdf)"
