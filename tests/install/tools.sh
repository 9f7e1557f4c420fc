#!/bin/bash
# The installed tools find the library beside them, wherever the tree stands, and bring manual pages and completions in
# which each of their options stands.
source "$(dirname "$0")/common.sh"
version=$(head -n 1 "$SOURCE/VERSION")

cp -a "$TREE" "$work/moved"
unset LD_LIBRARY_PATH
export PATH="$work/moved/bin:$PATH"
output=$(ostrel-camera --version)
[[ "$output" == *"$version"* ]] || fail "ostrel-camera --version said: $output"

# The options at the start of the lines of a text, one a line.
options() {
    grep -oE '^ *(-[[:alnum:]-]+,? ?)+' | grep -oE -e '-[[:alnum:]-]+' | sort -u
}
# What bash offers for the words, the last of which is being typed.
offered() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    "_${1//-/_}"
    printf '%s\n' "${COMPREPLY[@]}" | sort -u
}
same() { # WHAT EXPECTED FOUND
    [ "$2" = "$3" ] || fail "$1: $(diff <(echo "$2") <(echo "$3") | grep '^[<>]' | tr '\n' ' ')"
}

set +u
for tool in ostrel-camera ostrel-viewer; do
    source "$work/moved/share/bash-completion/completions/$tool"
    commands=$([ $tool = ostrel-viewer ] || "$tool" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
    all=
    for command in '' $commands; do
        known=$("$tool" $command --help | options)
        all+=$'\n'$known
        same "$tool $command -" "$known" "$(offered "$tool" $command -)"
    done
    page=$(sed 's/\\f[BIR]//g; s/\\-/-/g' "$work/moved/share/man/man1/$tool.1")
    same "$tool.1" "$(echo "$all" | sed 1d | sort -u)" "$(sed 's/^FILE, //; s/\(-[a-z-]*\) [A-Z]*, /\1, /' <<<"$page" | options)"
    if [ -n "$commands" ]; then
        same "$tool ''" "$(sort <<<"$commands")" "$(offered "$tool" '')"
    fi
done
same "record --scale" "$(printf 'hd\nld\nsd')" "$(offered ostrel-camera record --scale '')"
same "record --frames" "" "$(offered ostrel-camera record --frames '')"
