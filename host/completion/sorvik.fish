# SPDX-License-Identifier: MIT
# fish completion for sorvik. Commands and options come from its help.

function __sorvik_providers
    sorvik providers --json 2>/dev/null | string match -rag '"identification":"[^"]*[.](?:Win)?Provider([^"]*)"' |
        string lower
end
function __sorvik_fields
    set -l before (string match -r '.*,' -- (commandline -ct))
    sorvik fields --tsv 2>/dev/null | tail -n +2 | cut -f 1,2 | string replace -r '^' "$before"
end
function __sorvik_kinds
    string replace -r '^' (string match -r '.*,' -- (commandline -ct); or echo '') card clip file problem
end

# The words after the program without options and their values.
function __sorvik_typed
    set -l words
    set -l is_value 0
    for word in (commandline -opc)[2..]
        if test $is_value = 1
            set is_value 0
        else if string match -q -- '-*' $word
            contains -- $word $__sorvik_with_value; and set is_value 1
        else
            set -a words (string unescape -- $word)
        end
    end
    test -n "$words"; and printf '%s\n' $words
end
# The command, or ls, and its operands.
function __sorvik_words
    set -l words (__sorvik_typed)
    contains -- "$words[1]" $__sorvik_commands; or set -p words ls
    printf '%s\n' $words
end
function __sorvik_is_first
    test (count (__sorvik_typed)) -eq 0
end
# The value of --provider on the command line.
function __sorvik_provider
    string match -rg -- '--provider[= ](\S+)' (commandline -pc)
end
function __sorvik_keys
    set -l path (__sorvik_words)[2]
    sorvik ls (string replace -r '^~(?=/|$)' ~ -- $path) --provider=(__sorvik_provider) --tsv --fields Name \
        2>/dev/null | tail -n +2
end
# __sorvik_is COMMAND COUNT...: whether the line has this command and so many operands.
function __sorvik_is
    set -l words (__sorvik_words)
    test $words[1] = $argv[1]; and contains -- (math (count $words) - 1) $argv[2..]
end
# __sorvik_accepts OPTION: whether the command of the line has this option.
function __sorvik_accepts
    set -l command (__sorvik_words)[1]
    set -l cache __sorvik_options_of_$command
    set -q $cache; or set -g $cache (sorvik help $command 2>/dev/null | string match -rg '^  (-[-a-z0]+) ')
    contains -- $argv[1] $$cache
end

set -l help (sorvik help 2>/dev/null)
set -g __sorvik_commands
set -g __sorvik_with_value
for line in $help
    if set -l row (string match -rg '^  ([a-z]+) .*  +(.+)$' -- $line)
        set -a __sorvik_commands $row[1]
        complete -c sorvik -n __sorvik_is_first -a $row[1] -d $row[2]
    else if set -l row (string match -rg '^  (-[-a-z0]+) ([^ ]*) +(.+)$' -- $line)
        set -l option -l (string replace -r '^--' '' -- $row[1])
        string match -q -- '--*' $row[1]; or set option -s (string sub -s 2 -- $row[1])
        if test -n "$row[2]"
            set -a __sorvik_with_value $row[1]
            switch $row[1]
                case --provider
                    set -a option -x -a '(__sorvik_providers)'
                case --fields
                    set -a option -x -a '(__sorvik_fields)'
                case --only
                    set -a option -x -a '(__sorvik_kinds)'
                case --format
                    set -a option -x -a 'ffconcat otio ale edl fcpxml csv json'
                case --size --jobs --shard --timeout-per-card
                    set -a option -x
                case '*'
                    set -a option -r
            end
        end
        complete -c sorvik -n "__sorvik_accepts $row[1]" $option -d $row[3]
    end
end
complete -c sorvik -s h -l help -d 'show help'
complete -c sorvik -s V -l version -d 'show the version'
complete -c sorvik -n '__sorvik_is help 0' -f -a "$__sorvik_commands"
complete -c sorvik -n '__sorvik_is fields 0' -f -a '(__sorvik_providers)'
for command in entry files join
    complete -c sorvik -n "__sorvik_is $command 1" -f -a '(__sorvik_keys)'
end
complete -c sorvik -n "__sorvik_is thumb (seq 50)" -f -a '(__sorvik_keys)'
