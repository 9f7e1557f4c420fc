# The command line with two of the kernel's cameras. CAMERA is the program.
. "$VM_TESTS/guest/cameras.sh"
load_vivid
cd /tmp
# Nothing is fast in here: a limit that is not the point of a check only ends a hang.
patient="--timeout 120"

# fails STATUS TEXT COMMAND... - the command ends with that status, and one line on standard error that has the text.
fails() {
    local wanted=$1 text=$2 status=0
    shift 2
    "$@" >/dev/null 2>errors || status=$?
    [ "$status" = "$wanted" ] && [ "$(wc -l <errors)" = 1 ] && grep -qF -- "$text" errors && return
    echo "status $status instead of $wanted; said:"
    cat errors
    return 1
}

identifiers() {
    "$CAMERA" list --json | tee "$1" | sed -n 's/^ *"id": "\(.*\)",\{0,1\}$/\1/p'
}

ids=$(identifiers "$VM_OUT/list.json")
set -- $ids
expect "list --json has two cameras" is $# 2
expect "their identifiers differ" test "$1" != "$2"
"$CAMERA" list >table
expect "the table has both" grep -qF -e "$1" table
expect "the table has both" grep -qF -e "$2" table
second=$2

for size in 320x240 640x480 1280x720; do
    expect "snapshot $size" "$CAMERA" snapshot $patient --camera "$second" --size $size -o "$VM_OUT/$size.png"
done
expect "record 12 frames" "$CAMERA" record $patient --camera "$second" --size sd --frames 12 --rate 30 -o "$VM_OUT/clip.y4m"

expect "no such camera" fails 4 "no-such-camera" "$CAMERA" snapshot --camera no-such-camera
v4l2-ctl -d /dev/video1 -c percentage_of_dropped_buffers=100
expect "no frame" fails 6 "" "$CAMERA" snapshot --camera "$second" --timeout 1
v4l2-ctl -d /dev/video1 -c percentage_of_dropped_buffers=0

v4l2-ctl -d /dev/video1 --stream-mmap >held 2>&1 &
holder=$!
expect "another program streams" wait_until 120 test -s held
expect "a camera in use" fails 5 "in use" "$CAMERA" snapshot $patient --camera "$second"
kill $holder
wait $holder 2>/dev/null

"$CAMERA" watch $patient --camera "$second" --reconnect 120 >figures 2>said &
watcher=$!
expect "watch has frames" wait_until 120 grep -q 'taken [1-9]' figures
echo vivid.0 >/sys/bus/platform/drivers/vivid/unbind
expect "watch waits for its camera" wait_until 120 grep -qF 'waiting up to 120 s' said
echo vivid.0 >/sys/bus/platform/drivers/vivid/bind
expect "watch goes on with it" wait_until 120 grep -qF 'is back after' said
kill -TERM $watcher
wait $watcher
expect "watch ends well" is $? 0

unload_vivid
expect "no camera" fails 3 "" "$CAMERA" snapshot
expect "an empty list" is "$(identifiers empty.json)$(tr -d ' \n' <empty.json)" "[]"
finish
