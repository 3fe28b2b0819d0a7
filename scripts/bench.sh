#!/usr/bin/env bash
# Measures the renderer beside memory and its peers, then image files, digests and whole processes, writes the tables into
# docs/performance.md and draws the plots of cost against size. Takes a quarter of an hour; the machine should have nothing else to do. usage: bench.sh [BENCH-OPTION...]
# --only REGEX chooses what is measured, --rounds N how often. With options the table is only printed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" glmark2-data libagg-dev libcairo2-dev libosmesa6-dev libpixman-1-dev libsdl2-dev pkgconf python3
step "build"
cmake --preset gcc-release -B build/bench -D VORNA_BUILD_TESTS=OFF -D VORNA_BUILD_COMMAND=ON -D VORNA_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build/bench -j "$(nproc)" --target bench --target vorna

mkdir -p out
run_bench() {
    build/bench/bin/bench build/bench/bin/krb.vrd /usr/share/glmark2/models/bunny.obj "$@"
}
step "measure"
run_bench --rounds 15 --vary 2 --table out/bench.md --json out/bench.json "$@"
step "table"
cat out/bench.md
if [ $# -gt 0 ]; then
    exit
fi
step "measure cost against size"
run_bench --sizes out/sizes.json
scripts/plot-sizes.py out/sizes.json docs/images
page=docs/performance.md
awk -v table=out/bench.md '
    $0 == "<!-- end of table -->" { inside = 0 }
    !inside { print }
    $0 == "<!-- table -->" { inside = 1; print ""; while ((getline line < table) > 0) print line; print "" }
' "$page" >"$page.part"
mv "$page.part" "$page"
step "measure files and processes"
scripts/bench-files.py build/bench/bin/vorna /usr/share/glmark2/models/bunny.obj "$page"
echo "written to $page and docs/images, with all times in out/bench.json and out/sizes.json"
