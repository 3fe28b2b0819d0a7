#!/usr/bin/env bash
# Gives the command files and outputs that are against it. Every time it must say what is wrong in one line, end with the right
# status, leave no file, and get along with little time and memory. usage: hostile_input.sh VORNA PICTURES [FIGURES]
# FIGURES: a file for processor time and resident memory of what asks for much, by GNU time.
set -uo pipefail
vorna=$(realpath "$1")
recordings=$(cd "$2" && pwd)
figures=${3:+$(realpath "$3")}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir out
cases=0
failures=0

# Kilobytes of addresses that it may use. AddressSanitizer takes terabytes: there what is resident is limited, its own memory too.
memory=2000000
if grep -q __asan_init "$vorna"; then
    memory=unlimited
    export ASAN_OPTIONS=hard_rss_limit_mb=3000:quarantine_size_mb=64
fi
watch=()
# Seconds of processor time that a run may take, where it is limited.
seconds=unlimited

fail() {
    failures=$((failures + 1))
    printf 'FAILED: %s\n  command: %s\n' "$1" "$2" >&2
    sed 's/^/  it says: /' "$folder/errors" >&2
}

# run COMMAND...: its status in `status`, what it says in the file errors. Whoever is killed by the limit of time has status 124.
run() {
    (
        ulimit -v "$memory"
        ulimit -t "$seconds"
        exec timeout 60 "${watch[@]}" "$@"
    ) 2>"$folder/errors"
    status=$?
}

# expect STATUS PATTERN COMMAND...: PATTERN is a regular expression for the only line of the message.
expect() {
    local wanted=$1 pattern=$2
    shift 2
    run "$@"
    judge "$wanted" "$pattern" "$*"
}

judge() {
    local wanted=$1 pattern=$2 command=$3
    cases=$((cases + 1))
    [ "$status" = "$wanted" ] || fail "status $status, expected $wanted" "$command"
    [ "$(wc -l <errors)" = 1 ] || fail "expected one line" "$command"
    grep -Eq "^vorna: $pattern" errors || fail "expected: $pattern" "$command"
    [ -z "$(ls -A out)" ] || fail "left behind: $(ls -A out)" "$command"
    rm -rf out/*
}

render() { expect "$1" "$2" "$vorna" render "$3" -o out/picture.png; }

# cut FILE SHARE: the file without its end, beside it under the same suffix.
cut_off() { head -c $(($(wc -c <"$1") * $2 / 100)) "$1" >"cut.${1#*.}"; }

nested() { head -c "$1" /dev/zero | tr '\0' '['; }

triangle='v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n'
printf "$triangle" >good.obj
small='{"picture":1,"window":{"width":8,"height":8},"calls":[]}'
printf '%s' "$small" >good.json

# Nothing in it, and no file at all.
for suffix in obj ply stl json dxf gltf 3ds; do
    : >"empty.$suffix"
    mkdir "folder.$suffix"
    render 2 "empty.$suffix:" "empty.$suffix"
    render 2 "folder.$suffix: cannot be read: Is a directory" "folder.$suffix"
    render 2 "none.$suffix: cannot be read: No such file" "none.$suffix"
done
for suffix in off gltf 3ds; do
    expect 2 "standard input: expected a model file, found an empty one" "$vorna" render - --input-format $suffix -o out/picture.png </dev/null
done
for command in "replay" "info" "compare good.png" "assemble -o out/picture.png" "check"; do
    for file in empty.json folder.obj none.png; do
        expect 2 "(good.png|$file): (cannot be read|expected|parse error|not loadable|no )" "$vorna" $command "$file"
    done
done
expect 2 "standard input: cannot be read: Is a directory" "$vorna" replay - <folder.obj
expect 2 "standard input: cannot be read: Bad file descriptor" "$vorna" replay - <&-
expect 2 "/proc/self/mem: cannot be read: Input/output error" "$vorna" info /proc/self/mem

# Not ours: tried by somebody else when this is the administrator, who may read and write everything.
chmod 755 "$folder"
user=()
[ "$(id -u)" != 0 ] || user=(setpriv --reuid=65534 --clear-groups)
if "${user[@]}" test -x "$vorna" 2>/dev/null; then
    if [ ${#user[@]} != 0 ]; then
        # The search for leaks needs a thread of its own.
        ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0 run bash -c 'ulimit -u 2; exec "$@"' bash "${user[@]}" "$vorna" render good.obj -o /dev/null --threads 8
        [ $status = 0 ] || fail "where there are no threads to be had" "--threads 8"
    fi
    mkdir locked
    for file in locked.obj locked.ply locked.gltf locked.geojson locked.dxf locked.json; do
        cp good.obj $file
        chmod 0 $file
        reader=(render "$file" -o /dev/null)
        [ $file != locked.json ] || reader=(replay "$file")
        expect 2 "$file: cannot be read: Permission denied" "${user[@]}" "$vorna" "${reader[@]}"
    done
    cp good.obj locked/kept.png
    chown 65534 locked locked/kept.png 2>/dev/null
    chmod 444 locked/kept.png
    expect 1 "locked/kept.png: cannot be written: Permission denied" "${user[@]}" "$vorna" render good.obj -o locked/kept.png
    cmp good.obj locked/kept.png || fail "a file was replaced that its owner has protected" locked/kept.png
    chmod 555 locked
    expect 1 "locked/picture.png: cannot be written: Permission denied" "${user[@]}" "$vorna" render good.obj -o locked/picture.png
fi

# Cut off in the middle.
{
    printf 'ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n'
    printf 'element face 1\nproperty list uchar int vertex_indices\nend_header\n'
    printf '\0\0\0\0\0\0\0\0\0\0\0\0\0\0\200\077\0\0\0\0\0\0\0\0\0\0\0\0\0\0\200\077\0\0\0\0\3\0\0\0\0\1\0\0\0\2\0\0\0'
} >model.ply
{
    head -c 80 /dev/zero
    printf '\1\0\0\0'
    head -c 12 /dev/zero
    printf '\0\0\0\0\0\0\0\0\0\0\0\0\0\0\200\077\0\0\0\0\0\0\0\0\0\0\0\0\0\0\200\077\0\0\0\0\0\0'
} >model.stl
printf '{"type":"Feature","geometry":{"type":"Point","coordinates":[1,2]},"properties":null}' >map.geojson
printf '0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDSEC\n0\nEOF\n' >plan.dxf
for file in model.ply model.stl map.geojson plan.dxf; do
    "$vorna" render "$file" -o whole.png || fail "a good file was refused" "$file"
    cut_off "$file" 80
    render 2 "cut.${file#*.}:.*(found the end of the file|parse error|expected)" "cut.${file#*.}"
done
"$vorna" render good.obj -o whole.png --size 64x64 --record whole.json.gz
for part in 0 1; do
    "$vorna" render good.obj -o part$part.png --size 64x64 --tiles-of 2x1 --tile $part
done
for share in 10 60 99; do
    cut_off whole.png "$share"
    expect 2 "cut.png: expected a PNG file" "$vorna" compare cut.png whole.png
    cut_off part0.png "$share"
    expect 2 "cut.png: expected a part drawn with --tiles-of, found" "$vorna" assemble cut.png part1.png -o out/picture.png
    cut_off whole.json.gz "$share"
    expect 2 "cut.json.gz: compressed data" "$vorna" replay cut.json.gz --color out/picture.png
done

module=$(dirname "$vorna")/krb.vrd
if [ -e "$module" ]; then
    for share in 1 30 60; do
        cp "$module" whole.vrd
        cut_off whole.vrd "$share"
        expect 1 "\./cut.vrd: not loadable as a renderer module: the file is cut off" "$vorna" "--module=./cut.vrd" replay good.json
    done
fi

# Lists of one length by their attributes and of another by their positions; a header that ends within a word; old line ends.
xyz='property float x\nproperty float y\nproperty float z\n'
printf "ply\nformat ascii 1.0\nelement vertex 1\n${xyz}property uchar red\nproperty uchar green\nproperty uchar blue\nelement vertex 1\n${xyz}end_header\n0 0 0 1 2 3\n0 1 0\n" >twice.ply
render 2 "twice.ply:[0-9]*: expected a single element 'vertex', found 'element'" twice.ply
printf "ply\nformat binary_little_endian 1.0\nelement vertex 1\n${xyz}element edge 1\nproperty i" >word.ply
expect 2 "word.ply:8: expected a property type, found 'i'" timeout 2 "$vorna" render word.ply -o out/picture.png
printf "$triangle" | tr '\n' '\r' >old.obj
cases=$((cases + 1))
{ "$vorna" render old.obj -o old.png && "$vorna" render good.obj -o new.png && cmp -s old.png new.png; } || fail "another image" "render old.obj"
{
    printf '0\nSECTION\n2\nENTITIES\n'
    printf '0\n3DFACE\n10\n0\n20\n0\n30\n0\n11\n1\n21\n0\n31\n0\n12\n0\n22\n1\n32\n0\n13\n0\n23\n1\n33\n0\n'
    printf '0\n3DFACE\n10\n'
} >faces.dxf
render 2 "faces.dxf:[0-9]*: expected a value after its code, found the end of the file" faces.dxf

# Sizes that no file has.
for count in 2147483648 4294967295 4611686018427387904 9223372036854775807; do
    printf 'ply\nformat ascii 1.0\nelement vertex %s\nproperty float x\nproperty float y\nproperty float z\nend_header\n0 0 0\n' $count >huge.ply
    render 2 "huge.ply:9: expected a vertex coordinate, found the end of the file" huge.ply
    printf 'ply\nformat ascii 1.0\nelement vertex 1\nproperty int x\nelement face 1\nproperty list int int vertex_indices\nend_header\n0\n%s 0 0 0\n' $count >huge.ply
    render 2 "huge.ply:[0-9]*: expected a vertex index" huge.ply
done
{
    head -c 80 /dev/zero
    printf '\377\377\377\377'
    head -c 50 /dev/zero
} >huge.stl
render 2 "huge.stl: byte 134: expected 4294967295 facets" huge.stl
truncate -s 100G huge.obj
render 2 "huge.obj: expected at most 4096 MiB" huge.obj
truncate -s 100G huge.json
render 2 "huge.json: expected at most 4096 MiB" huge.json
expect 2 "huge.json: expected at most 256 MiB, found more" "$vorna" replay huge.json
rm huge.obj huge.json
printf '\211PNG\r\n\032\n\0\0\0\rIHDR\177\377\377\377\177\377\377\377\10\6\0\0\0\0\0\0\0' >huge.png
expect 2 "huge.png: expected a PNG file" "$vorna" compare huge.png huge.png
for window in '"width":2147483647' '"height":16385' '"width":-1' '"origin":[2147483647,0]'; do
    printf '{"picture":1,"window":{%s},"calls":[]}' "$window" >huge.json
    expect 2 "huge.json: window" "$vorna" replay huge.json --color out/picture.png
done
buffer='"buffers":[{"byteLength":1099511627776,"uri":"data:application/octet-stream;base64,AAAA"}]'
views='"bufferViews":[{"buffer":0,"byteLength":1099511627776}],"accessors":[{"bufferView":0,"componentType":5126,"count":2147483648,"type":"VEC3"}]'
mesh='"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"nodes":[{"mesh":0}],"scenes":[{"nodes":[0]}],"scene":0'
printf '{"asset":{"version":"2.0"},%s,%s,%s}' "$buffer" "$views" "$mesh" >huge.gltf
render 2 "huge.gltf: expected a model file: " huge.gltf
gzip -c < <(head -c 300000000 /dev/zero) >bomb.json.gz
expect 2 "bomb.json.gz: expected at most 256 MiB when unpacked, found more" "$vorna" info bomb.json.gz --max-memory 8G

# What is no number, or none that fits.
for number in nan inf -inf 1e39; do
    printf "v 0 0 $number\n$triangle" >odd.obj
    render 2 "odd.obj:1: expected a vertex coordinate, found '$number'" odd.obj
    printf 'solid\nfacet normal 0 0 1\nouter loop\nvertex 0 %s 0\n' "$number" >odd.stl
    render 2 "odd.stl:4: expected a vertex coordinate, found '$number'" odd.stl
done
for number in nan inf 1e999; do
    sed "s/^1\$/$number/" plan.dxf >odd.dxf
    render 2 "odd.dxf:[0-9]*: expected a number, found '$number'" odd.dxf
    sed "s/\[1,/[$number,/" map.geojson >odd.geojson
    render 2 "odd.geojson: (parse error|number overflow)" odd.geojson
    printf '{"picture":1,"calls":[{"call":"draw_2d_polyline","points":[[0,%s]]}]}' $number >odd.json
    expect 2 "odd.json: " "$vorna" replay odd.json --color out/picture.png
done
sed 's/\[1,/[1e300,/' map.geojson >odd.geojson
render 2 "odd.geojson: shape 0: expected coordinates up to 1e100, found 1e\+300" odd.geojson
sed 's/\[1,/[1e99,/' map.geojson >odd.geojson
expect 2 "odd.geojson: shape 0: expected degrees, found 1e\+99" "$vorna" render odd.geojson -o out/picture.png --projection equirectangular
sed 's/\[1,/[1e300,/' map.geojson >odd.geojson
expect 2 "odd.geojson: shape 0: expected coordinates up to 1e100" "$vorna" render odd.geojson -o out/picture.png --projection plane
{
    head -c 96 model.stl
    printf '\0\0\300\177'
    tail -c +101 model.stl
} >odd.stl
render 2 "odd.stl: byte 96: expected three finite coordinates" odd.stl

expect 2 "--zoom: expected a number from" "$vorna" render good.obj -o out/picture.png --zoom nan
expect 2 "--opacity: expected a number from" "$vorna" render map.geojson -o out/picture.png --opacity nan
expect 2 "--timeout: expected a number from" "$vorna" check --timeout nan

if [ -e "$(dirname "$vorna")/vorna-window.so" ]; then
    printf 'drag left 0,0 2147483647,-2147483648\n' >far.script
    SDL_VIDEODRIVER=dummy expect 2 "far.script:1: expected X,Y up to 32767" "$vorna" view good.obj --script far.script
fi

# Infinite where two finite numbers meet; a shape to clip to is looked at before all others.
printf '{"type":"Topology","transform":{"scale":[1e308,1],"translate":[0,0]},"arcs":[[[0,0],[1e300,0],[-2e300,1]]],"objects":{"a":{"type":"Polygon","arcs":[[0]]}}}' >odd.json
expect 2 "odd.json: shape 0: expected coordinates up to 1e100, found inf, 0" "$vorna" render odd.json -o out/picture.png --clip-to 0
printf '0\nSECTION\n2\nENTITIES\n0\nCIRCLE\n10\n1e308\n20\n0\n40\n1e308\n0\nENDSEC\n0\nEOF\n' >odd.dxf
render 2 "odd.dxf: shape 0: expected coordinates up to 1e100, found inf" odd.dxf

# Short files that ask for much: two seconds, and a gigabyte that they may not reach.
if [ "$memory" != unlimited ]; then
    memory=1700000 # with libraries and room for allocators
    seconds=4      # of busy machines
fi
[ -z "$figures" ] || watch=(/usr/bin/time -a -o "$figures" -f '%U + %S s, %M KiB: %C')
refused="expected what can be read (within 1024M of memory|in [0-9]* million steps)"
big_endian() { for number; do printf '%b' "$(printf '\\x%02x\\x%02x\\x%02x\\x%02x' $((number >> 24)) $((number >> 16 & 255)) $((number >> 8 & 255)) $((number & 255)))"; done; }
# chunk TYPE: of a PNG file, with its content from standard input.
chunk() {
    { printf '%s' "$1"; cat; } >chunk
    big_endian $(($(wc -c <chunk) - 4))
    cat chunk
    gzip -c chunk | tail -c 8 | head -c 4 | od -An -tx1 | awk '{ printf "\\x%s\\x%s\\x%s\\x%s", $4, $3, $2, $1 }' | { read -r sum; printf '%b' "$sum"; }
}
# png WIDTH HEIGHT [NUMBER...]: without pixels, and as a part with these numbers.
png() {
    printf '\211PNG\r\n\032\n'
    { big_endian "$1" "$2"; printf '\10\6\0\0\0'; } | chunk IHDR
    [ $# = 2 ] || big_endian "${@:3}" | chunk vtIL
    printf '' | chunk IDAT
}
png 8 8 1048576 1048576 131072 131072 0 >bomb.png
expect 2 "assemble: expected all parts, found no part 1 of 131072x131072" "$vorna" assemble bomb.png -o out/picture.png
png 1048576 1048576 1048576 1048576 1 1 0 >bomb.png
expect 2 "bomb.png: expected a part drawn with --tiles-of, found a file that is too short for its rows" "$vorna" assemble bomb.png -o out/picture.png
png 16384 16384 >bomb.png
expect 2 "bomb.png: expected a PNG file: it is too short" "$vorna" compare bomb.png bomb.png
expect 2 "bomb.png: expected a PNG file: it is too short" "$vorna" render good.obj --palette bomb.png -o out/picture.png
"$vorna" render good.obj -o tile.png --size 4096x4096
printf "vt 0 0\nmtllib tiles.mtl\n$triangle" >bomb.obj
for ((i = 0; i < 40; ++i)); do
    ln tile.png tile$i.png
    printf 'newmtl m%d\nmap_Kd tile%d.png\n' $i $i >>tiles.mtl
    printf 'usemtl m%d\nf 1/1 2/1 3/1\n' $i >>bomb.obj
done
expect 2 "tile[0-9]*.png: $refused" "$vorna" render bomb.obj --shading textured -o out/picture.png
awk -v size="$(wc -c <tile.png)" 'BEGIN {
    printf "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}]"
    printf ",\"buffers\":[{\"byteLength\":%d,\"uri\":\"tile.png\"},{\"byteLength\":36,\"uri\":\"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA\"}]", size
    printf ",\"bufferViews\":[{\"buffer\":0,\"byteLength\":%d},{\"buffer\":1,\"byteLength\":36}]", size
    printf ",\"accessors\":[{\"bufferView\":1,\"componentType\":5126,\"count\":3,\"type\":\"VEC3\"}],\"images\":["
    for (i = 0; i < 200; ++i) printf "%s{\"bufferView\":0,\"mimeType\":\"image/png\"}", i ? "," : ""
    printf "],\"textures\":["
    for (i = 0; i < 200; ++i) printf "%s{\"source\":%d}", i ? "," : "", i
    printf "],\"materials\":["
    for (i = 0; i < 200; ++i) printf "%s{\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":%d}}}", i ? "," : "", i
    printf "],\"meshes\":[{\"primitives\":["
    for (i = 0; i < 200; ++i) printf "%s{\"attributes\":{\"POSITION\":0},\"material\":%d}", i ? "," : "", i
    printf "]}]}"
}' >bomb.gltf
run "$vorna" render bomb.gltf --shading textured -o out/picture.png
cases=$((cases + 1))
[ $status = 0 ] || fail "images that share their bytes are one: status $status" bomb.gltf
rm -f out/picture.png
if "$vorna" render map.geojson --labels -o out/picture.png 2>/dev/null; then
    for letter in W $'\xCC\x81'; do
        { printf '{"type":"Feature","geometry":{"type":"Point","coordinates":[1,2]},"properties":{"name":"'; head -c 4000000 /dev/zero | sed "s/\x00/$letter/g"; printf '"}}'; } >bomb.json
        run "$vorna" render bomb.json --labels -o out/picture.png
        [ $status = 0 ] || fail "status $status" "a long label of $letter"
        rm -f out/picture.png
    done
fi
topology() { # DX, DY: of 10,000 steps of an arc; COUNT: how often it is named
    awk -v dx="$1" -v dy="$2" -v count="$3" 'BEGIN {
        printf "{\"type\":\"Topology\",\"transform\":{\"scale\":[1,1],\"translate\":[0,0]},\"arcs\":[[[0,0]"
        for (i = 0; i < 10000; ++i) printf ",[%g,%g]", i % 2 ? -dx : dx, i % 2 ? -dy : dy
        printf "]],\"objects\":{\"a\":{\"type\":\"MultiLineString\",\"arcs\":[[0"
        for (i = 0; i < count; ++i) printf ",%d", i % 2 ? 0 : -1
        printf "]]}}}"
    }'
}
topology 1 1 20000 >bomb.json
render 2 "bomb.json: $refused" bomb.json
topology 179 89 300 >bomb.json
expect 2 "bomb.json: $refused" "$vorna" render bomb.json -o out/picture.png --projection mercator
# East and east again: a turn around the globe with every two steps.
awk 'BEGIN { printf "{\"type\":\"LineString\",\"coordinates\":[[0,0]"; for (i = 1; i < 60000; ++i) printf ",[%d,0]", i % 3 * 120 - 120; printf "]}" }' >bomb.json
render 2 "bomb.json: $refused" bomb.json
drawing() { # GROUPS: that an entity of a block has beside its place
    printf '0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nb\n0\nPOINT\n10\n0\n20\n0\n'
    for ((i = 0; i < $1; ++i)); do printf '1000\nsomething\n'; done
    printf '0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nINSERT\n2\nb\n10\n0\n20\n0\n70\n%d\n71\n1000\n44\n1\n45\n1\n0\nENDSEC\n0\nEOF\n' "$2"
}
drawing 4000 3000 >bomb.dxf
render 2 "bomb.dxf: $refused" bomb.dxf
drawing 0 1000000 >bomb.dxf
render 2 "bomb.dxf: $refused" bomb.dxf
head -c 300000000 /dev/zero | gzip -c >bomb.obj.gz
render 2 "bomb.obj.gz: $refused" bomb.obj.gz
{ printf '{"picture":1,"calls":[0'; head -c 60000000 /dev/zero | sed 's/\x00/,0/g'; printf ']}'; } | gzip -c >bomb.json.gz
expect 2 "bomb.json.gz: $refused" "$vorna" replay bomb.json.gz
expect 2 "good.obj: expected what can be read within 64 bytes of memory, found more; --max-memory" "$vorna" render good.obj -o out/picture.png --max-memory 64
rm -f bomb.* tile*.png
watch=()
if [ "$memory" != unlimited ]; then
    memory=2000000
    seconds=unlimited
fi

# Files that models name, outside of the models' folders, also through links.
mkdir inside
printf 'newmtl a\nKd 1 0 0\n' >outside.mtl
ln -s ../outside.mtl inside/link.mtl
for name in ../outside.mtl "$folder/outside.mtl" link.mtl ../inside/../outside.mtl; do
    printf "mtllib $name\n$triangle" >inside/model.obj
    model=(render inside/model.obj --size 300x300 -o out/picture.png)
    expect 2 ".*(outside|link).mtl: lies outside the model's folder and is not read; --allow-outside reads it" "$vorna" "${model[@]}" --strict
    run "$vorna" "${model[@]}"
    [ $status = 0 ] && grep -q "warning: .*--allow-outside reads it" errors || fail "expected a warning" "$name"
    run "$vorna" "${model[@]}" --allow-outside
    [ $status = 0 ] && [ ! -s errors ] || fail "expected it to be read" "$name"
    rm -f out/picture.png
done
printf 'newmtl a\nmap_Kd ../whole.png\n' >inside/model.mtl
printf "mtllib model.mtl\nusemtl a\n$triangle" >inside/model.obj
expect 2 "1 of 1 texture is left out: whole.png: lies outside" "$vorna" "${model[@]}" --strict --shading textured
printf '{"asset":{"version":"2.0"},"buffers":[{"byteLength":36,"uri":"../good.obj"}],%s,%s}' \
    '"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}]' "$mesh" >inside/model.gltf
expect 2 ".*(--allow-outside|reads no others)" "$vorna" render inside/model.gltf -o out/picture.png

# What names itself, and what nests.
printf 'mtllib self.obj\n%b' "$triangle" >self.obj
run "$vorna" render self.obj -o whole.png
[ $status = 0 ] || fail "a library that is no library costs more than the materials" self.obj
printf '0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nb\n0\nINSERT\n2\nb\n10\n0\n20\n0\n0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nINSERT\n2\nb\n10\n0\n20\n0\n0\nENDSEC\n0\nEOF\n' >self.dxf
render 2 "self.dxf:10: expected blocks at most 16 deep" self.dxf
printf '{"asset":{"version":"2.0"},"nodes":[{"children":[0]}],"scenes":[{"nodes":[0]}],"scene":0}' >self.gltf
render 2 "self.gltf: expected a model file: " self.gltf
# What a model reads besides: files, in its folder.
mkfifo pipe.bin
mkdir models
printf 'bytes' >outside.bin
ln -s ../outside.bin models/link.bin
views='"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}]'
# buffered MODEL BUFFER
buffered() { printf '{"asset":{"version":"2.0"},"buffers":[{"byteLength":36,"uri":"%s"}],%s,%s}' "$2" "$views" "$mesh" >"$1"; }
buffered model.gltf pipe.bin
render 2 "model.gltf: expected a regular file, found .*pipe.bin" model.gltf
buffered models/model.gltf link.bin
render 2 ".*folder" models/model.gltf
for buffer in models/../../outside.bin "$folder/../outside.bin"; do
    buffered model.gltf "$buffer"
    render 2 ".*folder" model.gltf
done

nested 1000000 >deep.json
render 2 "deep.json: nested too deeply" deep.json
expect 2 "deep.json: (\[0\])*: nested too deeply" "$vorna" replay deep.json
{
    printf '{"type":"Feature","properties":{"v":'
    head -c 200000 /dev/zero | tr '\0' '['
    head -c 200000 /dev/zero | tr '\0' ']'
    printf '},"geometry":{"type":"Point","coordinates":[1,2]}}'
} >deep.geojson
render 2 "deep.geojson: nested too deeply" deep.geojson
expect 2 "deep.geojson: nested too deeply" "$vorna" render map.geojson -o out/picture.png --style deep.geojson
{
    printf '{"type":'
    nested 1000000
    nested 1000000 | tr '[' ']'
    printf '}'
} >deep.json
render 2 "deep.json: nested too deeply" deep.json
{
    printf '{"type":"FeatureCollection","features":['
    for ((i = 0; i < 100; ++i)); do printf '{"type":"GeometryCollection","geometries":['; done
} >deep.json
render 2 "deep.json: parse error" deep.json
printf '{"asset":%s' "$(nested 100000)" >deep.gltf
render 2 "deep.gltf: expected a model file: " deep.gltf

# Where nothing can be written.
model=(render good.obj --size 300x300)
for output in out out/none/picture.png; do
    expect 1 "$output: cannot be written: (Is a directory|No such file)" "$vorna" "${model[@]}" -o "$output"
    expect 1 "$output: cannot be written: (Is a directory|No such file)" "$vorna" replay good.json --color out/good.png --depth "$output"
done
if [ -e /dev/full ]; then
    full="cannot be written: No space left on device"
    expect 1 "/dev/full: $full" "$vorna" "${model[@]}" -o /dev/full
    expect 1 "/dev/full: $full" "$vorna" "${model[@]}" -o out/picture.png --record /dev/full
    expect 1 "/dev/full: $full" "$vorna" replay good.json --color out/picture.png --report /dev/full
    expect 1 "/dev/full: $full" "$vorna" render map.geojson -o /dev/full
    expect 1 "/dev/full: $full" "$vorna" assemble part0.png part1.png -o /dev/full
    expect 2 "/dev/full: $full" "$vorna" compare whole.png whole.png --diff /dev/full
    expect 1 "standard output: $full" "$vorna" info good.json >/dev/full
    expect 1 "standard output: $full" "$vorna" --help >/dev/full
    expect 1 "standard output: $full" "$vorna" replay good.json --report - >/dev/full
    expect 1 "standard output: $full" "$vorna" "${model[@]}" -o /dev/null --hash >/dev/full
fi
# shellcheck disable=SC2016
for arguments in "${model[*]} -o out/picture.png" "replay $recordings/gallery.json --depth out/picture.png --color-raw out/picture.raw" \
    "render map.geojson -o out/picture.png --size 900x900 --output-format ppm" "replay $recordings/boat.json --record out/picture.json"; do
    expect 1 "out/picture.[a-z]*: cannot be written: File too large" bash -c 'ulimit -f 1; exec "$@"' bash "$vorna" $arguments
done
closed="standard output: cannot be written: Bad file descriptor"
expect 1 "$closed" "$vorna" info good.json >&-
"$vorna" "${model[@]}" -o whole.png
run "$vorna" "${model[@]}" -o closed.png --hash >&-
judge 1 "$closed" "--hash without standard output"
[ ! -e closed.png ] || fail "an image is there whose digest could not be printed" "--hash"

# Outputs that take the place of what is read, or of one another, whatever they are called.
cp good.json kept.json
ln kept.json hard.json
ln -s kept.json soft.json
ln -s out/picture.png soft.png
for output in kept.json ./kept.json hard.json soft.json; do
    expect 2 "$output: expected another file to write than those to read" "$vorna" replay kept.json --color out/picture.png --record "$output"
done
ln map.geojson map
expect 2 "map: expected another file to write than those to read" "$vorna" render map.geojson --overlay map.geojson -o map
expect 2 "part1.png: expected another file to write than those to read" "$vorna" assemble part0.png part1.png -o part1.png
expect 2 "part1.png: expected another file to write than those to read" "$vorna" compare part0.png part1.png --diff part1.png
printf 'newmtl a\nmap_Kd whole.png\n' >wood.mtl
printf 'mtllib wood.mtl\nusemtl a\n%b' "$triangle" >wood.obj
expect 2 "\./whole.png: expected another file to write than those to read" "$vorna" render wood.obj -o ./whole.png
printf 'newmtl a\nmap_Kd turn-1.png\n' >wood.mtl
expect 2 "turn-1.png: expected another file to write than those to read" "$vorna" render wood.obj -o turn-%d.png --turntable 2
expect 2 "assemble: expected files with names, found standard input" "$vorna" assemble part0.png - -o out/picture.png
expect 2 "--palette -: expected a file, found standard input" "$vorna" render - --palette - -o out/picture.png <wood.obj
for output in out/picture.png ./out/picture.png soft.png; do
    expect 2 "$output: expected a file of its own for each output" "$vorna" replay good.json --color out/picture.png --color-raw "$output"
done
cmp good.json kept.json || fail "an input was replaced" kept.json

# Links lead to what is written, permissions stay, and names are as long as the system takes them.
"$vorna" render good.obj -o soft.png && [ -L soft.png ] && [ -s out/picture.png ] || fail "a link to a file that is not there yet" soft.png
rm -f out/picture.png
ln -s circle circle
expect 1 "circle: cannot be written: Too many levels" "$vorna" render good.obj -o circle
chmod 600 whole.png
"$vorna" render good.obj -o whole.png && [ "$(stat -c %a whole.png)" = 600 ] || fail "a private file became public" whole.png
name=$(printf 'n%.0s' {1..251}).png
"$vorna" render good.obj -o "$name" && [ -s "$name" ] || fail "a long name" "$name"

# What terminals obey. Names in files get into messages.
escape=$'\e[31m\xC2\x9B31m'
printf 'mtllib odd%s.mtl\n%b' "$escape" "$triangle" >escape.obj
expect 2 "odd \[31m" "$vorna" "${model[@]/good.obj/escape.obj}" --strict -o out/picture.png
run "$vorna" "${model[@]/good.obj/escape.obj}" -o out/picture.png
rm -f out/picture.png
controls=$'[\x01-\x09\x0B-\x1F]\|\xC2\x9B\|[^\x80-\xFF]\x9B'
[ -s errors ] && ! LC_ALL=C grep -q "$controls" errors || fail "a control character" escape.obj
name=$'odd\e[31m\xC2\x9B31m \x9B31m'
cp whole.png "$name.png"
printf 'newmtl a\nmap_Kd %s.png\n' "$name" >escape.mtl
printf "vt 0 0\nmtllib escape.mtl\nusemtl a\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1/1 2/1 3/1\n" >"$name.obj"
sed "s/1,2/1,2/" map.geojson >"$name.geojson"
cp good.json "$name.json"
for command in "render $name.obj --dry-run -o out/picture.png" "render $name.obj --stats --shading textured -o out/picture.png" \
    "render $name.geojson --dry-run -o out/picture.png" "info $name.json" "info --json $name.json" "replay $name.json"; do
    read -r -a words <<<"${command//$name/NAME}"
    "$vorna" "${words[@]//NAME/$name}" >said 2>&1 || fail "status $?" "$command"
    [ -s said ] && ! LC_ALL=C grep -q "$controls" said || fail "a control character: $(od -c said | head -5)" "$command"
    rm -f out/picture.png
done

# Libraries that would say something of their own.
if "$vorna" render map.geojson -o /dev/null --projection robinson 2>/dev/null; then
    expect 2 "--projection: PROJ cannot use 'EPSG:3857'" env PROJ_DATA=/none PROJ_LIB=/none "$vorna" render map.geojson -o /dev/null --projection EPSG:3857
fi

# Stopped, at moments when there may be an unfinished file. The shell gives 128 and the signal's number.
interrupted() {
    local signal=$1 delay=$2
    shift 2
    timeout --preserve-status -s "$signal" "$delay" "$@" 2>errors >/dev/null
    status=$?
    cases=$((cases + 1))
    [ $status = $((128 + $(kill -l "$signal"))) ] || fail "status $status after SIG$signal" "$*"
    [ ! -s errors ] || fail "expected no message after SIG$signal" "$*"
    [ -z "$(ls -A out)" ] || fail "left behind after SIG$signal: $(ls -A out)" "$*"
    rm -rf out/*
}
printf '{"picture":1,"window":{"width":16384,"height":16384},"calls":[{"call":"draw_2d_polyline","points":[[0,0],[16000,9000]]}]}' >large.json
for signal in INT TERM HUP; do
    interrupted $signal 0.4 "$vorna" render good.obj -o out/poster.png --size 60000x60000 --edges --antialias
    interrupted $signal 0.8 "$vorna" replay large.json --color out/color.png --depth out/depth.png --color-raw out/color.raw
done

echo "$cases cases, $failures failures"
[ $failures = 0 ]
