#!/usr/bin/env bash
# usage: comparing_stories.sh VORNA SOURCES BLOCKS MODULES
# The two stories of docs/comparing.md: the commands do what the page says.
set -euo pipefail
vorna=$1 sources=$2 blocks=$3 modules=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
PATH=$(dirname "$vorna"):$PATH
cd "$work"
fail() { echo "$*"; exit 1; }

# The images are the golden ones; then one recording draws something else.
mkdir recordings expected
for name in crystals quilt shapes; do
    cp "$sources/recordings/$name.json" recordings
    cp "$sources/tests/golden/$name.color.png" "expected/$name.png"
done
bash -e "$blocks/ci_job.sh" >said || fail "the job fails with golden images: $(cat said)"
grep -q '^3 images: 3 same$' said || fail "expected three images the same, found: $(cat said)"
vorna replay "$sources/recordings/shapes.json" --record recordings/shapes.json --until 3
status=0
bash -e "$blocks/ci_job.sh" >said || status=$?
[ $status = 1 ] || fail "expected status 1, found $status: $(cat said)"
grep -q '^shapes.png: different: ' said || fail "expected the changed image, found: $(cat said)"
grep -q '<testsuites name="vorna compare" tests="3" failures="1" errors="0"' report.xml || fail "report.xml: $(cat report.xml)"
accept=$(sed -n "s/^<pre>\(cp .*\)<\/pre>$/\1/p" report.html | sed "s/&#39;/'/g")
[ "$accept" ] || fail "report.html has no command that accepts"
sh -c "$accept"
bash -e "$blocks/ci_job.sh" >said || fail "the accepted image differs: $(cat said)"

# A module that leaves out wide lines.
cp "$modules/drops_wide_lines.vrd" mine.vrd
[ ! -e "$modules/spoilings.so" ] || cp "$modules/spoilings.so" .
cp "$sources/recordings/gallery.json" .
bash -e "$blocks/reduced_fault.sh" >said || fail "the reduction fails: $(cat said)"
grep -q '^gallery.json: from 73 calls, .* to 2 calls, 2 points, ' said || fail "expected two calls, found: $(cat said)"
grep -q '"width": 1, "height": 1,.*$' small.json && grep -q '"weight": 5' small.json || fail "expected a wide line, found: $(cat small.json)"
