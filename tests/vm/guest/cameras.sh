# Sourced by the cases: the machine's three kinds of cameras, and a few words to write checks with. Needs VM_TESTS.
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

# Ends the case as skipped.
skip() {
    echo "skipped: $*"
    exit 77
}

# Two cameras with a plain picture: an HDMI input (any size, 60 frames a second), no text and nothing moving in the
# colour bars, and BT.601 colours as webcams have them. Options of the module can be added or replaced.
load_vivid() {
    modprobe vivid n_devs=2 node_types=0x1,0x1 num_inputs=1,1 input_types=0x3,0x3 no_error_inj=0 "$@" || exit 1
    local node
    for node in /dev/video*; do
        v4l2-ctl -d "$node" -c test_pattern=1,osd_text_mode=2,colorspace=0 || exit 1
    done
}

unload_vivid() {
    modprobe -r vivid
}

# moving_pictures SIZE RATE - ffmpeg's arguments for a source with known colours: the left quarter light grey (192), the
# rest pure red, green and blue from top to bottom, and a white mark that moves along the lower edge.
moving_pictures() {
    local picture="color=0xc0c0c0:size=$1:rate=$2,format=rgb24" stripe=0 color mark
    for color in 0xff0000 0x00ff00 0x0000ff; do
        picture="$picture,drawbox=x=iw/4:y=ih*$stripe/3:w=iw*3/4:h=ih/3:color=$color:t=fill"
        stripe=$((stripe + 1))
    done
    mark="color=white:size=32x16:rate=$2"
    echo -f lavfi -i "$picture[picture];$mark[mark];[picture][mark]overlay=x=mod(n*32\\,W):y=H-16:format=rgb"
}

# make_pictures DIR - motion JPEG for the webcam. No two pictures that follow each other are the same.
make_pictures() {
    local size
    mkdir -p "$1"
    for size in 320x240 640x480 1280x720; do
        ffmpeg -v error $(moving_pictures $size 30) -frames:v 8 -pix_fmt yuvj420p -q:v 3 "$1/$size-%d.jpg" || exit 1
    done
}

# plug_webcam [OPTION...] - the emulated USB webcam; options are uvc_device.py's.
plug_webcam() {
    modprobe -a vhci-hcd uvcvideo || exit 1
    [ -d /tmp/pictures ] || make_pictures /tmp/pictures
    mkfifo /tmp/webcam-orders
    python3 "$VM_TESTS/uvc_device.py" "$@" /tmp/pictures/*.jpg </tmp/webcam-orders >/tmp/webcam-log &
    webcam_pid=$!
    exec 7>/tmp/webcam-orders
    wait_until 20 test -c /dev/video0 || { echo "the webcam did not appear"; exit 1; }
}

# tell_webcam WORD... - one command of uvc_device.py; returns when it was obeyed.
tell_webcam() {
    local before
    before=$(grep -c . /tmp/webcam-log)
    echo "$*" >&7
    wait_until 10 sh -c "[ \$(grep -c . /tmp/webcam-log) -gt $before ]" || { echo "the webcam does not obey: $*"; exit 1; }
}

unplug_webcam() {
    exec 7>&-
    wait "$webcam_pid"
    rm /tmp/webcam-orders
}

# v4l2loopback is built by setup.sh, which goes on without it where it does not build.
have_loopback() {
    modinfo v4l2loopback >/dev/null 2>&1
}

# A loopback camera ($LOOPBACK) that ffmpeg feeds with moving pictures as motion JPEG.
start_loopback() {
    LOOPBACK=/dev/video9
    modprobe v4l2loopback video_nr=9 card_label=Loopback exclusive_caps=1 || exit 1
    ffmpeg -v error -re $(moving_pictures 640x480 15) -c:v mjpeg -pix_fmt yuvj420p -q:v 3 -f v4l2 "$LOOPBACK" </dev/null &
    loopback_pid=$!
    # With exclusive_caps the node is a camera only while somebody feeds it.
    wait_until 20 sh -c "v4l2-ctl -d $LOOPBACK --get-fmt-video | grep -q MJPG" || { echo "nobody feeds $LOOPBACK"; exit 1; }
}

stop_loopback() {
    kill "$loopback_pid"
    wait "$loopback_pid" 2>/dev/null
    modprobe -r v4l2loopback
}
