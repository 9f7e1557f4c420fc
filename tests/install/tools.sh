#!/bin/bash
# The installed command line finds the library beside it, wherever the tree stands, and brings its manual page and its
# completion.
source "$(dirname "$0")/common.sh"
version=$(head -n 1 "$SOURCE/VERSION")

cp -a "$TREE" "$work/moved"
unset LD_LIBRARY_PATH
output=$("$work/moved/bin/ostrel-camera" --version)
[[ "$output" == *"$version"* ]] || fail "ostrel-camera --version said: $output"
for tool in "$work"/moved/bin/*; do
    name=$(basename "$tool")
    [ -s "$work/moved/share/man/man1/$name.1" ] || fail "no manual page of $name"
done
[ -s "$work/moved/share/bash-completion/completions/ostrel-camera" ] || fail "no completion"
