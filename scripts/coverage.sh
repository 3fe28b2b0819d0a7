#!/usr/bin/env bash
# usage: scripts/coverage.sh [FOLDER...]
# Builds the tests with counters (preset gcc-coverage), runs them, and prints how many lines and branches of each folder they reach.
# With FOLDERs, such as drawing/map, it also lists the branches in these folders that no test takes, by line. Takes half an hour on
# two processors; the tests must pass.
#
# Branches of exceptions that the compiler adds to calls are left out. Processes that end by _exit or by a signal write no counters:
# the process that reads foreign models, and the copies of the process in which tests let commands fail.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
install_packages "${build_packages[@]}" "${python_packages[@]}" "${test_packages[@]}" gcovr
for folder in "$@"; do
    [ -d "$folder" ] || {
        echo "usage: scripts/coverage.sh [FOLDER...]; found '$folder'" >&2
        exit 2
    }
done

# Objects from a compiler cache count into the files of the build that they were made for.
export CCACHE_DISABLE=1
build=build/gcc-coverage
jobs=$(nproc)
step "gcc-coverage"
cmake --preset gcc-coverage >/dev/null
cmake --build "$build" -j "$jobs"
find "$build" -name '*.gcda' -delete
ctest --preset gcc-coverage -j "$jobs"

step "counters"
# Of a member of a template each instance has branches of its own.
gcovr --root . --object-directory "$build" --filter '(host|renderer|vorna|drawing|c|python|app)/' --exclude-throw-branches \
    --exclude-unreachable-branches --json "$build/coverage.json" -j "$jobs" "$build"
python3 scripts/coverage_table.py "$build/coverage.json" "$@"
