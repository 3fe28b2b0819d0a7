# usage: fish completion.fish SHARE
# What fish offers for command lines.
source $argv[1]/fish/vendor_completions.d/vorna.fish
set -g failures 0

function expect
    set -l found (complete -C $argv[2] | string replace -r '\t.*' '' | sort | string join ' ')
    if test "$found" != "$argv[1]"
        echo "$argv[2]: expected '$argv[1]', found '$found'"
        set failures (math $failures + 1)
    end
end

set work (mktemp -d)
cd $work
mkdir models
touch bunny.obj bunny.png bunny.json.gz
expect 'reduce render replay report' 'vorna re'
expect '--view' 'vorna render --vi'
expect 'back bottom' 'vorna render --view b'
expect '--edges=all --edges=feature' 'vorna render --edges='
expect 'bunny.obj' 'vorna render bunny.'
expect 'bunny.png models/' 'vorna render bunny.obj -o '
expect 'models/' 'vorna view bunny.obj --screenshots m'
expect 'bunny.json.gz' 'vorna replay bun'
cd /
rm -r $work
exit $failures
