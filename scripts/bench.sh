#!/usr/bin/env bash
# Measures the renderer beside memory and its peers, and writes the tables into docs/performance.md. Takes ten minutes; the machine
# should have nothing else to do. usage: bench.sh [BENCHMARK-OPTION...]
# --benchmark_filter=REGEX chooses what is measured. With options the tables are only printed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" glmark2-data libbenchmark-dev libcairo2-dev libosmesa6-dev libpixman-1-dev libsdl2-dev pkgconf
step "build"
cmake --preset gcc-release -B build/bench -D VORNA_BUILD_TESTS=OFF -D VORNA_BUILD_COMMAND=ON -D VORNA_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build/bench -j "$(nproc)" --target bench_triangles bench_primitives

# measure NAME ARGUMENT... runs bench_NAME with repetitions of all benchmarks in random order, so that all sides meet the same ups and
# downs of the machine, prints its tables and, without options, puts them between the page's two comments of that name.
page=docs/performance.md
options=("$@")
measure() {
    local name=$1
    shift
    step "measure $name"
    "build/bench/bin/bench_$name" build/bench/bin/krb.vrd "$@" \
        --benchmark_repetitions=15 --benchmark_min_time=0.1 --benchmark_enable_random_interleaving=true \
        --benchmark_report_aggregates_only=true --benchmark_out="out/$name.json" --benchmark_out_format=json "${options[@]}"
    step "medians of $name"
    cat "out/$name.md"
    if [ ${#options[@]} -gt 0 ]; then
        return
    fi
    awk -v table="out/$name.md" -v name="$name" '
        $0 == "<!-- end of " name " -->" { inside = 0 }
        !inside { print }
        $0 == "<!-- " name " -->" { inside = 1; print ""; while ((getline line < table) > 0) print line; print "" }
    ' "$page" >"$page.part"
    mv "$page.part" "$page"
    echo "written to $page, with every repetition's summary in out/$name.json"
}

mkdir -p out
measure triangles /usr/share/glmark2/models/bunny.obj out/triangles.md
measure primitives out/primitives.md
