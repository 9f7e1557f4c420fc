# Sourced by the cases: a few words to write checks with.
failures=0

# expect TEXT COMMAND... - one check: the command has to succeed.
expect() {
    local text=$1 log
    shift
    if log=$("$@" 2>&1); then
        echo "ok: $text"
    else
        failures=$((failures + 1))
        printf 'FAILED: %s\n  %s\n%s\n' "$text" "$*" "$log"
    fi
}

# wait_until SECONDS COMMAND... - waits for the command to succeed; the bound is only there to end a hang.
wait_until() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.05
    done
}

# Ends the case with its result.
finish() {
    [ "$failures" = 0 ] || echo "$failures checks failed"
    exit $((failures > 0))
}

# is SEEN WANTED - for expect.
is() {
    [ "$1" = "$2" ] || { echo "'$1' instead of '$2'"; return 1; }
}
