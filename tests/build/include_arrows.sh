#!/bin/sh
# usage: include_arrows.sh TABLE FOLDER
#
# Files below FOLDER include headers of other folders only as TABLE allows, by their paths from FOLDER. Exceptions that nothing needs
# are errors too.
set -eu
table=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
cd "$2"
tops=$(sed -n 's/^\([a-z_]*\)[a-z_/]*:.*/\1/p' "$table" | sort -u)
existing=
for top in $tops; do
    [ ! -d "$top" ] || existing="$existing $top"
done
[ -n "$existing" ] || { echo "$2: none of the table's folders" >&2; exit 1; }

find $existing -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.inl' -o -name '*.inc' -o -name '*.in' \) | sort |
    xargs grep -H '^[ 	]*#[ 	]*include[ 	]*[<"]' /dev/null | awk -v table="$table" '
    function fail(message) {
        print message
        failed = 1
    }

    # The longest name of the table that the path begins with.
    function room_of(path) {
        while (!(path in allowed)) {
            if (path !~ "/") return ""
            sub("/[^/]*$", "", path)
        }
        return path
    }

    # Whether the path lies in one of the folders of the list.
    function is_in(path, list,    folders, count, i) {
        count = split(list, folders, " ")
        for (i = 1; i <= count; ++i) if (index(path, folders[i] "/") == 1) return folders[i]
        return ""
    }

    function find_circle(room, way,    next_room) {
        if (state[room] == "open") fail("circle in the table:" way " " room)
        if (state[room] != "") return
        state[room] = "open"
        for (next_room in allowed) if (next_room != room && is_in(next_room "/", allowed[room])) find_circle(next_room, way " " room)
        state[room] = "done"
    }

    BEGIN {
        while ((getline line < table) > 0) {
            if (line ~ /^(#|$)/) continue
            colon = index(line, ":")
            name = substr(line, 1, colon - 1)
            if (sub(/^except /, "", name)) exceptions[name] = substr(line, colon + 1)
            else allowed[name] = substr(line, colon + 1)
        }
        for (name in allowed) tops[name ~ "/" ? substr(name, 1, index(name, "/") - 1) : name] = 1
        for (name in allowed) find_circle(name, "")
    }

    {
        file = substr($0, 1, index($0, ":") - 1)
        header = $0
        sub(/^[^<"]*[<"]/, "", header)
        sub(/[>"].*/, "", header)
        if (header ~ /(^|\/)\.\.?\//) fail(file ": includes " header ", which is no path from the root")
        top = header
        sub("/.*", "", top)
        if (!(top in tops) || header !~ "/") next
        ++count
        room = room_of(file)
        if (room == "") {
            fail(file ": its folder is not in the table")
        } else if (room_of(header) != room && !is_in(header, allowed[room])) {
            found = file in exceptions ? is_in(header, exceptions[file]) : ""
            if (found == "") fail(file ": may not include " header)
            else needed[file " " found] = 1
        }
    }

    END {
        if (count == 0) fail("no includes found")
        for (name in exceptions) {
            size = split(exceptions[name], folders, " ")
            for (i = 1; i <= size; ++i)
                if (!((name " " folders[i]) in needed)) fail("exception that nothing needs: " name ": " folders[i])
        }
        exit failed
    }'
