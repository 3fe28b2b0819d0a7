#!/usr/bin/env bash
# usage: scripts/fuzz.sh [NAME...] [--minutes N]
# Builds the fuzzers (tests/fuzz, Clang, AddressSanitizer and UndefinedBehaviorSanitizer) and runs the named ones, or all, in turn, for N
# minutes of processor time each (default: 30). They start with the inputs in tests/fuzz/corpus and those that earlier runs collected in
# build/clang-fuzz/fuzz/NAME. A finding ends the script; its input is in build/clang-fuzz/fuzz/NAME-findings. build/clang-fuzz/fuzz/results
# has a line for each run.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=30
names=()
while [ $# -gt 0 ]; do
    case $1 in
    --minutes)
        minutes=${2:?--minutes: expected a number}
        shift
        ;;
    -*)
        echo "usage: scripts/fuzz.sh [NAME...] [--minutes N]; found '$1'" >&2
        exit 2
        ;;
    *) names+=("$1") ;;
    esac
    shift
done
all=(recordings models maps drawings images renderers commands)
[ ${#names[@]} -gt 0 ] || names=("${all[@]}")
for name in "${names[@]}"; do
    [[ " ${all[*]} " == *" $name "* ]] || {
        echo "fuzz.sh: expected one of ${all[*]}, found '$name'" >&2
        exit 2
    }
done

build=build/clang-fuzz
cmake --preset clang-fuzz >/dev/null
cmake --build "$build" --target "${names[@]/#/fuzz_}" -j "$(nproc)"
folder=$build/fuzz
mkdir -p "$folder"

# Sets `seconds` to the processor time of all commands run so far. Not in a subshell, which has times of its own.
take_time() {
    times >"$folder/times"
    seconds=$(awk 'NR == 2 { split($1, u, /[ms]/); split($2, s, /[ms]/); print int(u[1] * 60 + u[2] + s[1] * 60 + s[2]) }' "$folder/times")
}

for name in "${names[@]}"; do
    mkdir -p "$folder/$name" "$folder/$name-findings"
    seconds_each=120 megabytes=2048
    # A short drawing may ask for 50 million positions.
    [ "$name" != drawings ] || seconds_each=300 megabytes=4096
    options=(-max_len=16384 -timeout=$seconds_each -rss_limit_mb=$megabytes -print_final_stats=1 -artifact_prefix="$folder/$name-findings/")
    [ ! -e "tests/fuzz/$name.dict" ] || options+=(-dict="tests/fuzz/$name.dict")
    # Without the messages of the commands in the log.
    [ "$name" != commands ] || options+=(-close_fd_mask=3)
    seeds=("tests/fuzz/corpus/$name")
    [ "$name" != recordings ] || seeds+=(recordings)
    take_time
    start=$seconds used=0 executions=0
    while [ "$used" -lt $((minutes * 60)) ]; do
        log=$folder/$name.log
        "$build/bin/fuzz_$name" "${options[@]}" -max_total_time=$((minutes * 60 - used)) "$folder/$name" "${seeds[@]}" >"$log" 2>&1 || {
            tail -n 40 "$log" >&2
            exit 1
        }
        executions=$((executions + $(awk '/stat::number_of_executed_units/ { print $2 }' "$log")))
        take_time
        used=$((seconds - start))
    done
    coverage=$(grep -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -n 1)
    printf '%s %s: %d executions in %d seconds of processor time, %s, no finding\n' \
        "$(git describe --always --dirty)" "$name" "$executions" "$used" "$coverage" | tee -a "$folder/results"
done
