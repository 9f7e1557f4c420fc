#!/bin/bash
# clang-tidy.sh BUILD FOLDER - clang-tidy over the C++ sources of one folder, not those below it, that BUILD compiles. Objective-C++ is left
# out: clang-tidy 14 cannot parse what gcc's flags say of it.
set -euo pipefail
build=$1 folder=$2
command -v clang-tidy >/dev/null || { echo "skipped: clang-tidy is not installed"; exit 77; }

mapfile -t files < <(sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$build/compile_commands.json" |
    grep "^$PWD/$folder/[^/]*\.cpp$" | sort -u)
[ ${#files[@]} -gt 0 ] || { echo "skipped: this configuration builds nothing in $folder"; exit 77; }
echo "${#files[@]} files"
# What clang-tidy counts in headers of others is no news.
clang-tidy -p "$build" --quiet "${files[@]}" 2> >(grep -v 'warnings generated\|Suppressed\|^Use -' >&2)
