#!/usr/bin/env bash
# Builds the packages into out/: Debian packages and an archive for Linux, a zip archive for Windows. Everything in them has the
# date of the commit, so that packing again gives the same files. try-packages.sh tries them.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${windows_packages[@]}" dpkg-dev file pybind11-dev python3-dev python3-numpy
if [ -z "${SOURCE_DATE_EPOCH-}" ]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || date +%s)
fi
export SOURCE_DATE_EPOCH
rm -f out/{lib,}vorna*.deb out/vorna-*.tar.gz out/vorna-*.zip
# usage: package PRESET [CMAKE-OPTION...]
package() {
    local preset=$1
    shift
    step "$preset"
    cmake --preset "$preset" -B "build/package-$preset" -D VORNA_BUILD_TESTS=OFF "$@" >/dev/null
    cmake --build "build/package-$preset" -j "$(nproc)"
    cpack --config "build/package-$preset/CPackConfig.cmake" -B out
    rm -rf out/_CPack_Packages
}
package gcc-release -D CMAKE_INSTALL_PREFIX=/usr
package windows-mingw

step "packages"
ls -l out/*.deb out/*.tar.gz out/*.zip
