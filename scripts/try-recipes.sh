#!/usr/bin/env bash
# Runs the recipes that draw an image in parts on this machine: GNU parallel and Snakemake; with "all" a cluster of Slurm and hosts
# of ssh too. Each must make the bytes of one command.
# usage: scripts/try-recipes.sh VORNA [all]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
if [ $# -lt 1 ]; then
    sed -n 4p "$0" >&2
    exit 2
fi
vorna=$(realpath "$1")
recipes=$PWD/scripts
model=$PWD/recordings/models/still-life.obj
install_packages "${cluster_packages[@]}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cd "$work"
"$vorna" render "$model" -o whole.png --size 3000x2000 --view front --edges
step "GNU parallel"
VORNA=$vorna "$recipes/poster.sh" parallel.png 7 "$model" --size 3000x2000 --view front --edges
cmp whole.png parallel.png
step "Snakemake"
snakemake --quiet all --snakefile "$recipes/poster.smk" --cores 2 --config vorna="$vorna" model="$model" image=snakemake.png \
    size=3000x2000 parts=7 options="--view=front --edges"
cmp whole.png snakemake.png
if [ "${2-}" = all ]; then
    "$recipes/try-ssh.sh" "$vorna"
    "$recipes/try-slurm.sh" "$vorna"
fi
echo "all recipes make the bytes of one command"
