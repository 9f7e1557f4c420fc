#!/bin/bash
# The suppressions that are installed keep a client's leak checker quiet about what the library keeps on purpose, with
# the names that are left of a stripped library; and about nothing else.
source "$(dirname "$0")/common.sh"
suppressions=$TREE/share/ostrelvideounix

mkdir "$work/lib"
strip -o "$work/lib/libostrelvideounix.so.1" "$TREE/$LIBDIR/libostrelvideounix.so.1"
export LD_LIBRARY_PATH=$work/lib
read -ra flags <<<"$(pkg-config --cflags --libs ostrelvideounix)"
client() { # client NAME FLAG...: builds the program
    local name=$1
    shift
    "$CXX" -std=$standard -g "$@" "$SOURCE/tests/install/leaks_client.cpp" -o "$work/$name" "${flags[@]}"
}

client sanitized -fsanitize=address
export ASAN_OPTIONS=fast_unwind_on_malloc=0
! "$work/sanitized" 2>"$work/log" || fail "the library keeps nothing any more: the suppressions can go"
export LSAN_OPTIONS=suppressions=$suppressions/leaks.supp
"$work/sanitized" 2>"$work/log" || { cat "$work/log"; fail "leaks.supp leaves something of the library"; }
! "$work/sanitized" lose 2>"$work/log" || fail "leaks.supp hides the client's own leak"
grep -q ' 4321 byte(s) leaked in 1 ' "$work/log" || { cat "$work/log"; fail "not the client's own leak"; }

command -v valgrind >/dev/null || fail "valgrind is not installed (scripts/setup test)"
client plain
check=(valgrind -q --leak-check=full --error-exitcode=9 "--suppressions=$suppressions/valgrind.supp")
"${check[@]}" "$work/plain" >"$work/log" 2>&1 || { cat "$work/log"; fail "valgrind.supp leaves something"; }
! "${check[@]}" "$work/plain" lose >"$work/log" 2>&1 || fail "valgrind.supp hides the client's own leak"
grep -q '4,321 bytes' "$work/log" || { cat "$work/log"; fail "valgrind reports something else"; }
