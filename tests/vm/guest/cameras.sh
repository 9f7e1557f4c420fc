# Sourced by the cases: the machine's three kinds of cameras. Needs VM_TESTS (this folder's parent) and VM_PICTURES (the
# motion JPEG pictures that setup.sh made).
. "$VM_TESTS/checks.sh"

# Ends the case as skipped.
skip() {
    echo "skipped: $*"
    exit 77
}

# vivid's cameras with an HDMI input (any size, 60 frames a second) and a plain picture. Without more options, two.
load_vivid() {
    modprobe vivid n_devs=2 node_types=0x1,0x1 num_inputs=1,1 input_types=0x3,0x3 no_error_inj=0 "$@" || exit 1
    set_vivid_picture
}

# 75 % colour bars without text on them, in the colours that webcams have (sRGB primaries, BT.601 matrix).
set_vivid_picture() {
    local node
    for node in /dev/video*; do
        v4l2-ctl -d "$node" -c test_pattern=0,osd_text_mode=2,colorspace=2 || exit 1
    done
}

unload_vivid() {
    modprobe -r vivid
}

# plug_webcam [OPTION...] - the emulated USB webcam; options are uvc_device.py's.
plug_webcam() {
    modprobe -a vhci-hcd uvcvideo || exit 1
    mkfifo /tmp/webcam-orders
    python3 "$VM_TESTS/uvc_device.py" "$@" "$VM_PICTURES"/*.jpg </tmp/webcam-orders >/tmp/webcam-log &
    webcam_pid=$!
    exec 7>/tmp/webcam-orders # held open: the end of its input would unplug it
    wait_until 120 test -c /dev/video0 || { echo "the webcam did not appear"; exit 1; }
}

# tell_webcam WORD... - one command of uvc_device.py; returns when it was obeyed.
tell_webcam() {
    local before
    before=$(grep -c . /tmp/webcam-log)
    echo "$*" >/tmp/webcam-orders
    wait_until 120 sh -c "[ \$(grep -c . /tmp/webcam-log) -gt $before ]" || { echo "the webcam does not obey: $*"; exit 1; }
}

unplug_webcam() {
    exec 7>&-
    wait "$webcam_pid"
    rm /tmp/webcam-orders
}

# Without the descriptor that the webcam takes for its cable.
start_udev() {
    /lib/systemd/systemd-udevd --daemon 7>&-
    wait_until 120 test -S /run/udev/control || { echo "udev does not start"; exit 1; }
}

# in_own_dev NODES COMMAND... - runs it where /dev holds nothing but these nodes and what every program needs, as in a
# container.
in_own_dev() {
    # shellcheck disable=SC2016 # expanded in there
    OWN_DEV="/dev/null /dev/zero /dev/random /dev/urandom $1" unshare -m sh -c '
        mkdir -p /tmp/dev && mount -t tmpfs none /tmp/dev && cp -a $OWN_DEV /tmp/dev && mount --bind /tmp/dev /dev &&
        exec "$@"' "$@"
}

# v4l2loopback is built by setup.sh, which goes on without it where it does not build.
have_loopback() {
    modinfo v4l2loopback >/dev/null 2>&1
}

# load_loopback OPTION... - a loopback device ($LOOPBACK) that nobody feeds yet; options are v4l2loopback's.
load_loopback() {
    LOOPBACK=/dev/video9
    modprobe v4l2loopback video_nr=9 card_label=Loopback "$@" || exit 1
}

# ffmpeg feeds it with moving pictures as motion JPEG.
feed_loopback() {
    ffmpeg -v error -re -stream_loop -1 -framerate 15 -i "$VM_PICTURES/640x480-%d.jpg" -c:v copy -f v4l2 "$LOOPBACK" \
        </dev/null &
    loopback_pid=$!
    wait_until 120 sh -c "v4l2-ctl -d $LOOPBACK --get-fmt-video | grep -q MJPG" || { echo "nobody feeds $LOOPBACK"; exit 1; }
}

stop_loopback() {
    kill "$loopback_pid"
    wait "$loopback_pid" 2>/dev/null
    modprobe -r v4l2loopback
}
