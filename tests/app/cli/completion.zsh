# usage: zsh completion.zsh SHARE
# The script is zsh's, and _arguments gets one text an option. What zsh offers can only be seen on a terminal.
emulate zsh
source_file=$1/zsh/vendor-completions/_vorna
zsh -n $source_file || exit 1
failures=0
_describe() { :; }
_arguments() {
    local argument
    for argument; do
        [[ $argument == (-C|(\*|)((\([^\)]##\)|)-[a-zA-Z-]##(=|=-|+|)\[*\]|[0-9\*]#:)*) ]] && continue
        print -r -- "unexpected: $argument"
        failures=$((failures + 1))
    done
    state=arguments
    return 1
}
setopt extendedglob
pages=($1/man/man1/vorna-*.1.gz)
for page in $pages; do
    line=(${${page:t}#vorna-})
    line=(${line%.1.gz})
    source $source_file
done
exit $((failures > 0))
