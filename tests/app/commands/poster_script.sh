#!/usr/bin/env bash
# The script for parts on one machine makes the very file that one command makes, and draws again only what is missing.
# usage: poster_script.sh VORNA
set -euo pipefail
script=$(cd "$(dirname "$0")/../../../scripts" && pwd)/poster.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
printf 'v -1 -1 0\nv 1 -0.9 0.1\nv 0.3 1 -0.2\nv -0.1 0.2 1\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n' >"model of 'four'.obj"
options=("model of 'four'.obj" --size 700x500 --edges --antialias)
"$1" render "${options[@]}" -o whole.png
VORNA=$1 "$script" joined.png 7 "${options[@]}"
cmp whole.png joined.png
if [ "$(ls | wc -l)" -ne 3 ]; then
    echo "expected no parts beside the image, found $(ls)" >&2
    exit 1
fi

# Two parts are there; the second one is damaged. The first one is not drawn again.
"$1" render "${options[@]}" --threads=1 -o joined.png --plan 7 --plan-lines | head -n 2 | sh
truncate -s -1 joined.part-1.png
"$1" render "${options[@]}" -o joined.png --plan 7 --plan-lines >plan
if [ "$(wc -l <plan)" -ne 7 ] || grep -q -e --tile=0 plan; then
    echo "expected six parts and the command that joins them, found:" >&2
    cat plan >&2
    exit 1
fi
rm joined.png
VORNA=$1 "$script" joined.png 7 "${options[@]}"
cmp whole.png joined.png

if VORNA=$1 "$script" none.png 6 missing.obj 2>/dev/null || [ -e none.png ]; then
    echo "a missing model was not noticed" >&2
    exit 1
fi

# Jobs for Slurm: an array of the parts that are missing and, after it, the join; the join alone when all parts are there.
mkdir bin
printf '#!/bin/sh\necho "$*" >>submitted\necho 17\n' >bin/sbatch
chmod +x bin/sbatch
submit() {
    "$1" render "${options[@]}" -o joined.png --plan 3 --plan-lines >plan
    rm -f submitted
    PATH=$PWD/bin:$PATH sh "${script%.sh}.slurm" plan --nice >jobs
}
submit "$1"
slurm=${script%.sh}.slurm
printf '%s\n' "--parsable --array=1-3 --nice $slurm plan" "--parsable --dependency=afterok:17 --nice $slurm plan" | diff - submitted
head -n -1 plan | sh
submit "$1"
echo "--parsable --nice $slurm plan" | diff - submitted
for line in 1 ''; do # a task of the array, and the join
    SLURM_JOB_ID=1 SLURM_ARRAY_TASK_ID=$line sh "$slurm" plan
done
cmp whole.png joined.png

# The parts of Snakemake's rule have the names of the plan's, whatever dots are in the folder's name.
for image in poster.png a.b/poster a.b/poster.c.png; do
    expected=$("$1" render "${options[@]}" -o "$image" --plan 1 --plan-lines | tail -n 1 | grep -o '[^ ]*\.part-0\.png')
    found=$(image=$image python3 -c '
import os, re
rule = re.search(r"temp\((.*)\)\n", open("'"${script%.sh}.smk"'").read()).group(1)
print(eval(rule, {"os": os, "image": os.environ["image"]}).replace("{number}", "0"))')
    if [ "$found" != "$expected" ]; then
        echo "expected the part $expected of $image in the rule of poster.smk, found $found" >&2
        exit 1
    fi
done
