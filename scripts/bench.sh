#!/usr/bin/env bash
# Measures the renderer beside memset and llvmpipe, and writes the tables into docs/performance.md. Takes a few minutes; the machine
# should have nothing else to do. usage: bench.sh [BENCHMARK-OPTION...]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" glmark2-data libbenchmark-dev libosmesa6-dev
step "build"
cmake --preset gcc-release -B build/bench -D VORNA_BUILD_TESTS=OFF -D VORNA_BUILD_COMMAND=ON -D VORNA_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build/bench -j "$(nproc)" --target bench_triangles

# Repetitions of all benchmarks in random order, so that both sides meet the same ups and downs of the machine.
step "measure"
mkdir -p out
build/bench/bin/bench_triangles build/bench/bin/krb.vrd /usr/share/glmark2/models/bunny.obj out/bench.md \
    --benchmark_repetitions=15 --benchmark_min_time=0.1 --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true --benchmark_out=out/bench.json --benchmark_out_format=json "$@"

step "medians"
cat out/bench.md
page=docs/performance.md
awk -v table=out/bench.md '
    /<!-- end of measurements -->/ { inside = 0 }
    !inside { print }
    /<!-- measurements -->/ { inside = 1; print ""; while ((getline line < table) > 0) print line; print "" }
' "$page" >"$page.part"
mv "$page.part" "$page"
echo "written to $page, with every repetition's summary in out/bench.json"
