# SPDX-License-Identifier: MIT
# fish completion for sorvik
function __sorvik_providers
    sorvik providers --json 2>/dev/null | string match -rag '"identification":"[^"]*[.](?:Win)?Provider([^"]*)"' |
        string lower
end
function __sorvik_fields
    set -l before (string match -r '.*,' -- (commandline -ct))
    sorvik fields --tsv 2>/dev/null | tail -n +2 | cut -f 1,2 | string replace -r '^' "$before"
end
# The keys of the path, which is the second word after the command.
function __sorvik_keys
    set -l words (commandline -opc | string match -v -- '-*')
    if test (count $words) -ge 3
        set -l path (string unescape -- $words[3])
        sorvik ls "$path" --tsv --fields Name 2>/dev/null | tail -n +2
    end
end
function __sorvik_after_path
    test (count (commandline -opc | string match -v -- '-*')) -ge 3
end
set -l commands ls who entry files places owner thumb sheet check cards join catalog providers fields meta help
set -l keyed entry files thumb join
set -l first "not __fish_seen_subcommand_from $commands"
complete -c sorvik -n $first -a ls -d 'list the entries of a path'
complete -c sorvik -n $first -a who -d 'list the providers that support a path'
complete -c sorvik -n $first -a entry -d 'show one entry with its fields'
complete -c sorvik -n $first -a files -d 'list the files that belong to the clips'
complete -c sorvik -n $first -a places -d 'list the entries that can be browsed further'
complete -c sorvik -n $first -a owner -d 'show the entry that a file belongs to'
complete -c sorvik -n $first -a thumb -d 'write the picture of an entry as PNG'
complete -c sorvik -n $first -a sheet -d 'write a contact sheet as one HTML file'
complete -c sorvik -n $first -a check -d 'check whether a card is complete'
complete -c sorvik -n $first -a cards -d 'find the cards at, around and below a path'
complete -c sorvik -n $first -a join -d 'write a list that joins the files of a clip'
complete -c sorvik -n $first -a catalog -d 'write cards, clips and files as lines of JSON'
complete -c sorvik -n $first -a providers -d 'list the registered providers'
complete -c sorvik -n $first -a fields -d 'list fields with label, type and meaning'
complete -c sorvik -n $first -a meta -d 'show the metadata of a file'
complete -c sorvik -n $first -a help -d 'show the help of a command'
complete -c sorvik -n '__fish_seen_subcommand_from help' -f -a "$commands"
complete -c sorvik -n '__fish_seen_subcommand_from fields' -f -a '(__sorvik_providers)'
complete -c sorvik -n "__fish_seen_subcommand_from $keyed; and __sorvik_after_path" -f -a '(__sorvik_keys)'
complete -c sorvik -l json -d 'print one JSON document instead of a table'
complete -c sorvik -l ndjson -d 'print one JSON document per line'
complete -c sorvik -l tsv -d 'print complete values separated by tabs'
complete -c sorvik -l csv -d 'print complete values as CSV'
complete -c sorvik -l provider -x -a '(__sorvik_providers)' -d 'use this provider'
complete -c sorvik -l fields -x -a '(__sorvik_fields)' -d 'these fields'
complete -c sorvik -l all -d 'all fields'
complete -c sorvik -l thumbs -d 'show pictures'
complete -c sorvik -l size -x -d 'maximum picture size as WxH'
complete -c sorvik -l icon -d 'the icon of the structure instead of a picture of the clip'
complete -c sorvik -l cache -d 'keep pictures in $XDG_CACHE_HOME/thumbnails'
complete -c sorvik -l files -d 'list all files with their roles, too'
complete -c sorvik -l quick -d 'check names and sizes only, without opening media files'
complete -c sorvik -l against -r -d 'compare the files of the card with a copy of it'
complete -c sorvik -l hash -d 'with --against: compare contents, too'
complete -c sorvik -l format -x -a 'ffconcat otio ale edl fcpxml csv' -d 'format of the list'
complete -c sorvik -l allow-gaps -d 'write the list even if a part is missing'
complete -c sorvik -l dirs -d 'list the empty folders that the card needs, too'
complete -c sorvik -l all-cards -d 'list parts of the clips on other cards, too'
complete -c sorvik -l relative -d 'print paths relative to PATH, for rsync --files-from'
complete -c sorvik -l catalog -r -d 'answer from a catalogue, without access to PATH'
complete -c sorvik -l only -x -a 'card clip file problem' -d 'only these kinds of lines'
complete -c sorvik -l here -d 'only cards whose root is PATH'
complete -c sorvik -l jobs -x -d 'read the cards of N folders at the same time'
complete -c sorvik -l timeout-per-card -x -d 'leave out cards that take longer, in seconds'
complete -c sorvik -l shard -x -d 'only the cards of shard I/N'
complete -c sorvik -l since -r -d 'copy the lines of unchanged cards from this catalogue'
complete -c sorvik -l sqlite -r -d 'write to the tables of an SQLite database'
complete -c sorvik -l force -d 'replace a file of a card'
complete -c sorvik -l clips-only -d 'search the main file of each clip only'
complete -c sorvik -l folder -d 'the picture for a folder'
complete -c sorvik -l packet -d 'read an XMP packet from standard input'
complete -c sorvik -l sources -d 'show the source of each value'
complete -c sorvik -l core -d 'without the providers of newer cards'
complete -c sorvik -s o -r -d 'output file'
complete -c sorvik -s 0 -d 'end each path with a NUL byte'
complete -c sorvik -s h -l help -d help
complete -c sorvik -s V -l version -d version
