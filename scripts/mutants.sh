#!/usr/bin/env bash
# usage: scripts/mutants.sh [TEXT...]
# Plants the one-line faults of tests/mutants.txt, one at a time, and tells which of them the fast tests notice: vorna_tests and the
# golden pictures. With TEXTs only the faults whose lines hold one of them. Status 1 when a fault that is not marked as equivalent
# survives, does not build or is not found any more, or when a marked one is caught.
#
# Works in a copy of the files, build/mutants/tree; with ccache much is compiled already. Faults in kernels (*.inl) are compiled into the
# kernel sets portable and, on x86-64, baseline only, which are forced in turn: compiling kernels takes longest. Results go to standard
# output and build/mutants/results.
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD
folder=$source/build/mutants
tree=$folder/tree
build=$tree/build/gcc-release # where ccache finds the same relative names as in other trees
targets=(krb vorna vorna15 vorna_tests drawing_tests)
kernel_sets=(portable)
[ "$(uname -m)" != x86_64 ] || kernel_sets+=(baseline)
# These compare kernel sets with each other, and would find every fault that some sets hold and others do not.
left_out='Triangle_Kernels.*:Kernel_Lists.*'

fail() {
    echo "mutants.sh: $1" >&2
    exit 2
}

mkdir -p "$tree"
# Only files that differ, so that the last run's objects serve again.
git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' file; do
    [ -f "$file" ] || continue
    cmp -s "$file" "$tree/$file" || {
        mkdir -p "$tree/$(dirname "$file")"
        cp "$file" "$tree/$file"
    }
done
export VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-1}
log=$folder/log

compile() {
    cmake --build "$build" -j "$(nproc)" --target "$@" >"$log" 2>&1
}

pids=() # of the tests that run
stop_tests() {
    [ ${#pids[@]} = 0 ] || { kill "${pids[@]}" && wait "${pids[@]}"; } 2>/dev/null || true
    pids=()
}

# usage: all_pass [KERNEL-SET]. Runs the tests side by side, all sets or one; puts the first one that fails into `noticed`.
all_pass() {
    local i ended status=0
    [ $# = 0 ] || local -x KRB_KERNELS=$1
    for i in 0 1; do
        GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=$i timeout 600 "$build/bin/vorna_tests" --gtest_fail_fast --gtest_brief=1 \
            --gtest_filter="-$left_out" >"$log.$i" 2>&1 &
        pids+=($!)
    done
    timeout 600 "$build/bin/drawing_tests" --gtest_fail_fast --gtest_brief=1 --gtest_filter='pictures/Golden.*' >"$log.2" 2>&1 &
    pids+=($!)
    while [ ${#pids[@]} -gt 0 ] && [ "$status" = 0 ]; do
        wait -n -p ended "${pids[@]}" || status=$?
        for i in "${!pids[@]}"; do
            [ "${pids[i]}" != "$ended" ] || unset "pids[i]"
        done
    done
    [ "$status" != 0 ] || return 0
    stop_tests
    noticed=$(grep -ahoP -m 1 '^\[  FAILED  \] \K[^ ,]+' "$log".? | head -n 1)
    noticed=${noticed:-a program that ends with status $status}
    return 1
}

# Gives a file with kernels its text from standard input and its old time, so that only the sets whose objects go are compiled again.
write_kernels() {
    touch -r "$tree/$1" "$folder/time"
    cat >"$tree/$1"
    touch -r "$folder/time" "$tree/$1"
    local set
    for set in "${kernel_sets[@]}"; do
        find "$build/renderer/CMakeFiles/krb_kernels_$set.dir" -name '*.o' -delete
    done
    # Dots, markers and outlines are compiled from the same files.
    find "$build/renderer/CMakeFiles/krb_objects.dir/primitives" -name '*.o' -delete
}

if ! [ -f "$build/build.ninja" ]; then
    command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    cmake --preset gcc-release -S "$tree" -B "$build" >"$log" 2>&1 || fail "cannot configure; see $log"
fi
compile "${targets[@]}" || fail "without a fault the tree does not build; see $log"
all_pass || fail "without a fault $noticed fails; see $log.*"

mutated=
restore() {
    stop_tests
    case $mutated in
    '') ;;
    *.inl) write_kernels "$mutated" <"$source/$mutated" ;;
    *) cp "$source/$mutated" "$tree/$mutated" ;;
    esac
    mutated=
}
trap restore EXIT
trap 'exit 130' INT TERM

# Puts the outcome of one fault into `outcome`.
plant() {
    local file=$1 old=$2 new=$3 text rest
    outcome='NOT FOUND'
    [ -f "$tree/$file" ] || return 0
    text=$(<"$tree/$file")
    rest=${text#*"$old"}
    [ "$rest" != "$text" ] || return 0
    outcome='NOT UNIQUE'
    [ "${rest#*"$old"}" = "$rest" ] || return 0
    mutated=$file
    text=${text/"$old"/"$new"}
    local forced=('')
    if [[ $file == *.inl ]]; then
        forced=("${kernel_sets[@]}")
        write_kernels "$file" <<<"$text"
    else
        printf '%s\n' "$text" >"$tree/$file"
    fi
    outcome='DOES NOT BUILD'
    compile "${targets[@]}" || return 0
    outcome=SURVIVED
    local set
    for set in "${forced[@]}"; do
        all_pass ${set:+"$set"} || {
            outcome="caught by $noticed"
            return 0
        }
    done
}

results=$folder/results
: >"$results"
caught=0 equivalent=0 bad=0 count=0 line_number=0
while IFS= read -r line; do
    line_number=$((line_number + 1))
    [[ -n $line && $line != '#'* ]] || continue
    chosen=$(($# == 0))
    for text in "$@"; do
        [[ $line != *"$text"* ]] || chosen=1
    done
    [ "$chosen" = 1 ] || continue
    IFS=$'\x1f' read -r file old new what reason <<<"${line//' @@ '/$'\x1f'}"
    [ -n "$what" ] || fail "tests/mutants.txt, line $line_number: expected file @@ old text @@ new text @@ what it changes"
    count=$((count + 1))
    plant "$file" "$old" "$new"
    restore
    case "$outcome${reason:+ EQUIVALENT}" in
    caught*EQUIVALENT)
        outcome+=", although marked: $reason"
        bad=$((bad + 1))
        ;;
    caught*) caught=$((caught + 1)) ;;
    'SURVIVED EQUIVALENT')
        outcome="survived: $reason"
        equivalent=$((equivalent + 1))
        ;;
    *) bad=$((bad + 1)) ;;
    esac
    printf '%s: %s: %s\n' "$file" "$what" "$outcome" | tee -a "$results"
done <tests/mutants.txt
printf '%d faults: %d caught, %d equivalent, %d not as they should be\n' "$count" "$caught" "$equivalent" "$bad" | tee -a "$results"
[ "$bad" = 0 ]
