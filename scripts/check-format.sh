#!/usr/bin/env bash
# Fails when clang-format would change a source. usage: check-format.sh [CLANG-FORMAT [FILE...]]; without files, the whole tree.
set -euo pipefail
cd "$(dirname "$0")/.."
clang_format=${1:-clang-format}
shift || true
if [ $# -eq 0 ]; then
    mapfile -t files < <(find host renderer vorna drawing c app python tests bench web -name '*.h' -o -name '*.cpp' -o -name '*.inl' -o -name '*.c' | sort)
    set -- "${files[@]}"
fi
"$clang_format" --dry-run -Werror --style=file "$@"
echo "$# files are formatted"
