# Sourced by the scripts beside it.

# Installs the Debian packages that are not there yet; says what to do when it may not.
install_packages() {
    local package missing=()
    for package in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    if [ "$(id -u)" -ne 0 ]; then
        echo "$0: not root, install these packages first: ${missing[*]}" >&2
        return 1
    fi
    echo "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get -o DPkg::Lock::Timeout=300 update -qq
    apt-get -o DPkg::Lock::Timeout=300 install -qq --yes --no-install-recommends "${missing[@]}" </dev/null >/dev/null
}

# What every build of the project needs.
build_packages=(g++ cmake ninja-build libassimp-dev libcli11-dev libdeflate-dev libfreetype-dev libjpeg62-turbo-dev libpng-dev libproj-dev libsdl2-dev libseccomp-dev libsqlite3-dev libssl-dev libstb-dev libtiff-dev libwebp-dev libzstd-dev nlohmann-json3-dev zlib1g-dev)

# What the tests of a native build need besides.
test_packages=(binutils chromium clang-format fish fonts-dejavu-core gdal-bin glmark2-data imagemagick libfontconfig1 libfribidi0 libgdal32 libgmock-dev libgtest-dev libharfbuzz0b libtiff-tools mandoc pkgconf poppler-utils python3-pil qemu-user xvfb zsh)

# What the Python package and its tests need.
python_packages=(jupyter-nbconvert mypy pybind11-dev python3-dev python3-ipykernel python3-matplotlib python3-distributed python3-numpy python3-pytest python3-setuptools python3-venv python3-wheel)

# What is needed besides to cross-build for Windows, and to test what was built.
windows_packages=(binutils-mingw-w64-x86-64 g++-mingw-w64-x86-64-posix libstb-dev libz-mingw-w64-dev)
windows_test_packages=(googletest wine64)

# What is needed besides to cross-build for other processors, and to test what was built. apt's keyring verifies the source of zlib.
foreign_packages=(debian-archive-keyring g++-aarch64-linux-gnu g++-arm-linux-gnueabihf g++-riscv64-linux-gnu g++-s390x-linux-gnu glmark2-data googletest libstb-dev make qemu-user)

# What is needed besides to build for browsers, and to test what was built.
web_packages=(cmake debian-archive-keyring emscripten libstb-dev make ninja-build nlohmann-json3-dev nodejs)
web_test_packages=(chromium)

# Compilers whose results are compared, with the linkers' part of optimisation at link time.
compiler_packages=(g++-12 clang-14 clang-19 glmark2-data llvm-14-linker-tools)

# What draws parts of images on several machines, and the recipes of docs/scaling.md.
cluster_packages=(munge openssh-server parallel slurm-wlm snakemake)

# Developers who have ccache build faster.
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

step() {
    printf '\n==== %s (%d s)\n' "$*" "$SECONDS"
}
