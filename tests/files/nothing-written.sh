#!/bin/bash
# nothing-written.sh CLIENT - that a process which uses the library writes and creates nothing: not in the user's
# home, not anywhere else. Every system call that could is watched.
set -euo pipefail
client=$1

fail() { echo "$*" >&2; exit 1; }
command -v strace >/dev/null || fail "strace is not installed (Debian: package strace)"
if ! strace -o /dev/null true 2>/dev/null; then
    echo "skipped: this system lets nobody trace a process"
    exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home" "$work/runtime" "$work/tmp"

run() { # run NAME ENVIRONMENT...: the client, watched, in that environment
    local name=$1
    shift
    (cd "$work" && env -i PATH="$PATH" TMPDIR="$work/tmp" XDG_RUNTIME_DIR="$work/runtime" "$@" \
        strace -f -z -e trace=%file,ftruncate,fchmod,fchown,memfd_create,bind,connect -o "$work/$name.trace" \
        "$client" >"$work/$name.out" 2>"$work/$name.err") || {
        cat "$work/$name.out" "$work/$name.err" >&2
        fail "the client failed with $*"
    }
    grep -q '^done$' "$work/$name.out" || fail "the client did not come to its end"
    grep -q 'Error opening camera: ' "$work/$name.err" || fail "nothing was written to the framework's log"
    grep -q 'openat' "$work/$name.trace" || fail "nothing was traced"
    # Devices may be opened for writing: a camera is asked for its formats that way.
    if grep -E 'open(at|at2)?\(.*(O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND)' "$work/$name.trace" |
        grep -vE '"/dev/(null|tty|pts/[0-9]+|video[0-9]+)"'; then
        fail "files were opened for writing, with $*"
    fi
    if grep -E '^[0-9]+ +(creat|mkdir|rename|link|symlink|unlink|rmdir|mknod|chmod|chown|fchmod|fchown|lchown|truncate|ftruncate|utime|setxattr|bind)[a-z0-9]*\(' \
        "$work/$name.trace"; then
        fail "the file system was changed, with $*"
    fi
    [ -z "$(ls -A "$work/home" "$work/runtime" "$work/tmp" | grep -v ':$' || true)" ] || {
        find "$work/home" "$work/runtime" "$work/tmp" >&2
        fail "files were left behind, with $*"
    }
}

run empty_home HOME="$work/home"
run no_home HOME="$work/none"
[ ! -e "$work/none" ] || fail "the home that did not exist was created"
run without_home
echo "nothing was written"
