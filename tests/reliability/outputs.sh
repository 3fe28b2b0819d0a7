#!/usr/bin/env bash
# What is written where, whatever names lead there, and how runs end that are stopped. usage: outputs.sh VORNA [NOTED_CALLS]
# NOTED_CALLS: a library that notes calls of fsync and rename.
set -uo pipefail
vorna=$1
noted_calls=${2-}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir out
cases=0
failures=0

# judge WHAT CONDITION...
judge() {
    local what=$1
    shift
    cases=$((cases + 1))
    "$@" && return
    failures=$((failures + 1))
    printf 'FAILED: %s: %s\n' "$what" "$*" >&2
    sed 's/^/  it says: /' errors >&2
}
is() { [ "$1" = "$2" ]; }
says() { [ "$(wc -l <errors)" = 1 ] && grep -Eq "^vorna: $1" errors; }
holds() { cmp -s "$1" "$2"; }
run() {
    timeout -k 5 60 "$@" 2>errors
    status=$?
}

printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >good.obj
printf 'f 1 2 3\n' >bad.obj
draw=("$vorna" render good.obj --size 400x300)
"${draw[@]}" -o plain.png
printf 'kept' | cat - plain.png >appended
large=("$vorna" render many.obj --edges --antialias --size 2000x2000)
awk 'BEGIN { srand(1); for (i = 0; i < 900; ++i) print "v", rand(), rand(), rand(); for (i = 1; i < 900; i += 3) print "f", i, i + 1, i + 2 }' >many.obj
"${large[@]}" -o large.png # more than a pipe holds

# What is open is written where it stands, under whatever name.
ln -s /dev/stdout link
for output in - /dev/stdout /dev/fd/1 /proc/self/fd/1 link; do
    printf 'kept' >file
    run "${draw[@]}" -o $output >>file
    judge "appended through $output" holds file appended
    run "$vorna" render bad.obj -o $output >>file
    judge "nothing drawn into $output" holds file appended
    run "${draw[@]}" -o $output --hash >file
    judge "the digest beside what goes to $output" is "$(wc -l <errors)" 1
done
for output in /dev/fd/7 /proc/self/fd/7 /proc/thread-self/fd/7; do
    printf 'kept' >file
    run "${draw[@]}" -o $output 7>>file
    judge "appended through $output" holds file appended
    run "${draw[@]}" -o $output 7<file
    judge "$output, open for reading" says "$output: cannot be written: Bad file descriptor"
    judge "$output, open for reading" is $status 1
    judge "$output, open for reading" holds file appended
done
printf 'kept' >file
sleep 60 7>>file &
run "${draw[@]}" -o /proc/$!/fd/7
kill $!
judge "appended to what another process has open" holds file appended

# A link that leads to itself is reported as what it is: a file to read or one to write.
ln -s loop loop
run "$vorna" render loop -o out/x.png
judge "a loop to read" says "loop: cannot be read: Too many levels of symbolic links"
run "${draw[@]}" -o loop
judge "a loop to write" says "loop: cannot be written: Too many levels of symbolic links"

# Where everybody may lay links, those of others are not followed, not by the administrator either.
if [ "$(id -u)" = 0 ]; then
    mkdir -m 1777 shared
    for target in precious new; do
        printf 'kept' >precious
        ln -sf ../$target shared/link
        chown -h 65534 shared/link
        run "${draw[@]}" -o shared/link
        judge "a stranger's link" says "shared/link: cannot be written: Permission denied"
        judge "a stranger's link" is "$(cat precious)$(ls new 2>&1 | wc -l)" kept1
    done
    ln -sf ../new shared/link
    run "${draw[@]}" -o shared/link
    judge "a link of one's own" holds new plain.png
fi

# Named pipes: what comes through is whole, and a process that waits can be stopped.
mkfifo pipe
cat pipe >file &
run "${large[@]}" -o pipe
wait $!
judge "through a pipe" holds file large.png
for signal in INT TERM HUP; do
    number=$((128 + $(kill -l $signal)))
    run timeout --preserve-status -s $signal 1 "${draw[@]}" -o pipe
    judge "SIG$signal while nobody opens the pipe" is $status $number
    sleep 60 <pipe &
    run timeout --preserve-status -s $signal 2 "${large[@]}" -o pipe
    judge "SIG$signal while nobody reads" is $status $number
    kill $!
    judge "SIG$signal: no message" [ ! -s errors ]
done

# A file whose beginning is written last is refused before anything is read.
for device in pipe /dev/null; do
    run "$vorna" render bad.obj -o $device --output-format tif
    judge "TIFF into $device" says "-o $device: expected a file or standard output for TIFF, found a device or a pipe"
    judge "TIFF into $device" is $status 2
done

# Frames and recordings that cannot be written are refused before anything is drawn.
mkdir out/frame-2.png
for more in --dry-run ""; do
    run "${draw[@]}" -o out/frame-%d.png --turntable 3 --zoom 0.5 $more
    judge "a frame that is a folder $more" says "out/frame-2.png: cannot be written: Is a directory"
    judge "a frame that is a folder $more" is "$status $(ls out)" "1 frame-2.png"
done
rmdir out/frame-2.png

# Many files: a signal ends the command while files are read, and leaves no file.
mkfifo first.obj second.obj
sleep 60 >first.obj &
writers=$!
sleep 60 >second.obj &
writers="$writers $!"
run timeout --preserve-status -s TERM 1 "$vorna" render first.obj second.obj --output-folder out --threads 2
judge "SIGTERM while files are read" is $status 143
judge "SIGTERM while files are read" is "$(cat errors; ls out)" ""
kill $writers

# Of an image and a recording none appears when the other one cannot be written.
for outputs in "-o /dev/full --record out/all.json" "-o out/all.png --record -" "-o - --record out/all.json" "-o out/all.png --hash"; do
    run "${draw[@]}" $outputs >/dev/full
    judge "one of two outputs fails: $outputs" says "(standard output|/dev/full): cannot be written: No space left on device"
    judge "one of two outputs fails: $outputs" is "$status$(ls out)" 1
done

# Nobody reads: the end of a program that writes, without a word, and nothing half done.
picture='{"picture":1,"window":{"width":2000,"height":900},"calls":[]}'
printf '%s' "$picture" >picture.json
for command in "replay picture.json --color-raw - --depth out/depth.png" "render good.obj -o - --record out/picture.json" \
    "render good.obj -o /dev/stdout" "check --list" "info picture.json" "help render"; do
    # The reader is gone before anything is written.
    { sleep 0.3; run "$vorna" $command; echo $status >status; } | true
    judge "nobody reads: $command" is "$(cat status)" 141
    judge "nobody reads: $command" [ ! -s errors ]
    judge "nobody reads: $command" is "$(ls out | grep -c unfinished)" 0
    rm -f out/*
done
(
    trap '' PIPE
    { sleep 0.3; run "$vorna" replay picture.json --color-raw -; echo $status >status; } | true
)
judge "who starts it does not want the signal" is "$(cat status)" 1
judge "who starts it does not want the signal" says "standard output: cannot be written: Broken pipe"

# Killed without warning: what is left can be told by its name, and disturbs nobody.
run timeout -s KILL 0.6 "$vorna" render good.obj -o out/poster.png --size 60000x60000 --edges --antialias 2>/dev/null
judge "killed" is "$(ls out | sed 's/[0-9a-f]\{8\}$/X/')" poster.png.vorna-unfinished-X
run "${draw[@]}" -o out/poster.png
judge "after a killed one" holds out/poster.png plain.png
rm -f out/*

# Checks leave no file, whatever becomes of them, and no process.
modules=$(dirname "$vorna")/faulty
if [ -e "$modules/hangs.vrd" ]; then
    cp "$modules/hangs.vrd" unmistakable.vrd
    cp "$modules"/*.so . 2>/dev/null
    mkdir temporary
    running() { grep -lzx "[.]/unmistakable.vrd" /proc/[0-9]*/cmdline 2>/dev/null | wc -l; }
    for signal in TERM KILL; do
        TMPDIR=$folder/temporary "$vorna" check ./unmistakable.vrd --profile krb --only drawing --seed 1 >passed 2>errors &
        for ((i = 0; i < 200 && $(running) < 2; ++i)); do sleep 0.05; done
        sleep 0.5
        judge "a check runs in two processes" is "$(running)" 2
        kill -$signal $!
        wait $! 2>/dev/null
        for ((i = 0; i < 40 && $(running) > 0; ++i)); do sleep 0.05; done
        judge "a check after SIG$signal" is "$(running)" 0
        judge "a check after SIG$signal" is "$(ls temporary)" ""
    done
fi

# On the disk before it takes its place there, and its place after that.
if [ "$noted_calls" ]; then
    LD_PRELOAD=$noted_calls NOTED_CALLS=$folder/calls run "${draw[@]}" -o out/picture.png
    sed 's/vorna-unfinished-[0-9a-f]*/X/g' calls >errors
    printf 'fsync %s\n' "$PWD/out/picture.png.X" >expected
    printf 'rename out/picture.png.X out/picture.png\nfsync %s\n' "$PWD/out" >>expected
    judge "synchronised" holds errors expected
fi

echo "$cases cases, $failures failures"
[ $failures = 0 ]
