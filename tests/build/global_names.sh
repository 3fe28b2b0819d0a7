#!/bin/sh
# usage: global_names.sh COMPILER FOLDER
#
# The headers below a folder declare nothing outside of namespace vorna, and define no macro, but under the host's names and those of
# the C interface.
set -eu
compiler=$1
folder=$(cd "$2" && pwd)
headers=$(find "$folder" -name '*.h' | sort)
[ -n "$headers" ] || { echo "$folder: no headers" >&2; exit 1; }

printf '#include "%s"\n' $headers | $compiler -std=c++20 -x c++ -E -dD "-I$folder" - | awk -v folder="$folder/" '
    function check(kind, name) {
        ++count
        if (name !~ /^(V[TD]_[A-Za-z0-9_]+|vorna_[a-z0-9_]+|VORNA(_[A-Z_]+)?|SHARED|Action_Slot|Buffer_Format|Frame_Buffer(_Mask)?)$/) {
            print kind ": " name
            failed = 1
        }
    }

    # The declared name is the last word before arguments, value or bases.
    function check_declaration(text,    depth, plain, i, c) {
        gsub(/__attribute__ *\(\([a-z]*\(\)\)\)|alignas *\([^)]*\)/, "", text)
        depth = 0
        plain = ""
        for (i = 1; i <= length(text); ++i) {
            c = substr(text, i, 1)
            if (c == "<") ++depth
            if (depth == 0) plain = plain c
            if (c == ">") --depth
        }
        gsub(/::/, "__", plain)
        sub(/[(=:].*/, "", plain)
        sub(/ *\[.*/, "", plain)
        gsub(/ final *$|[ *&]+$/, "", plain)
        sub(/.*[^A-Za-z0-9_]/, "", plain)
        if (plain != "" && plain != "static_assert" && plain != "extern" && plain != "enum") check("global name", plain)
    }

    /^# [0-9]+ "/ {
        split($0, parts, "\"")
        is_ours = index(parts[2], folder) == 1
        next
    }
    is_ours && /^#define / {
        sub(/\(.*/, "", $2)
        check("macro", $2)
    }
    !is_ours || /^#/ { next }
    {
        gsub(/"[^"]*"/, "")
        gsub(/\047[^\047]*\047/, "")
        for (i = 1; i <= length($0); ++i) {
            c = substr($0, i, 1)
            if (c == "{") {
                if (depth == 0 && statement ~ /^ *extern *$/) {
                    statement = ""
                    continue
                }
                if (depth++ == 0 && statement !~ /^ *namespace vorna(::[a-z_]+)* *$/) check_declaration(statement)
                statement = ""
            } else if (c == "}") {
                if (depth > 0) --depth
                statement = ""
            } else if (depth == 0 && c == ";") {
                check_declaration(statement)
                statement = ""
            } else if (depth == 0) {
                statement = statement c
            }
        }
        statement = statement " "
    }
    END {
        if (count < 3) {
            print "only " count + 0 " names found"
            failed = 1
        }
        exit failed
    }'
