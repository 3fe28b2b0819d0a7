# usage: bash completion.bash SHARE
# Completes command lines as bash does: the last word is the one to complete.
set -u
source "$1/bash-completion/completions/vorna"
failures=0

# usage: expect "CANDIDATES" WORD...
expect() {
    local wanted=$1
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _vorna
    local found
    found=$(printf '%s\n' "${COMPREPLY[@]+"${COMPREPLY[@]}"}" | LC_ALL=C sort | paste -sd ' ')
    if [ "$found" != "$wanted" ]; then
        echo "$*: expected '$wanted', found '$found'"
        failures=$((failures + 1))
    fi
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
mkdir models
touch bunny.obj BUNNY.PLY bunny.png bunny.json.gz mine.vrd 'a b.stl'

expect "reduce render replay report" vorna re
expect "reduce render replay report" vorna help re
expect "--version" vorna --v
expect "render" vorna --module replay ren
expect "--view" vorna render --vi
expect "back bottom" vorna render --view b
expect "front" vorna render --view = f
expect "--edge-color --edges --edges=" vorna render --edge
expect "feature" vorna render --edges = f
expect "bunny.obj" vorna render --edges b
expect "black blue brown" vorna render x.obj --color b
expect "dash-dot dash-dot-dot dashed" vorna render map.json --border da
expect "BUNNY.PLY a b.stl bunny.obj models" vorna render ''
expect "bunny.png models" vorna render bunny.obj -o ''
expect "cube" vorna render bunny.obj --palette cu
expect "models" vorna view bunny.obj --screenshots ''
expect "" vorna render bunny.obj --size ''
expect "bunny.json.gz" vorna replay bun
expect "bunny.json.gz bunny.png" vorna compare bunny.png bun
expect "mine.vrd models" vorna --module ''
expect "call" vorna replay x.json --timing --sort ca
exit $((failures > 0))
