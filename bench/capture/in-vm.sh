# What run.sh runs in the virtual machine of tests/vm: the peers on the kernel's own cameras. An emulated processor tells
# nothing about times, and only roughly about their ratios: vector instructions cost it far more than others.
. "$VM_TESTS/guest/cameras.sh"

# on_kernel_camera NAME LAYOUT WIDTH HEIGHT RATE
on_kernel_camera() {
    local peer
    for peer in library library_waiting library_waiting_bgr opencv opencv_bgra gstreamer ffmpeg; do
        [ -x "$PROGRAMS/bench_peer_$peer" ] || continue
        timeout 90 "$PROGRAMS/bench_peer_$peer" /dev/video0 "$3" "$4" "$2" "$5" 30 2>/tmp/errors |
            sed "s/^{/{\"where\": \"$1\", /" || true
        [ "${PIPESTATUS[0]}" = 0 ] || { echo "$peer on $1:" >&2; tail -3 /tmp/errors >&2; }
    done
}

# A camera that has only what is asked of it would be fairest; vivid has all formats, of which the library takes its own.
modprobe vivid n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0 || exit 1
on_kernel_camera vivid YUYV 640 480 10
modprobe -r vivid
plug_webcam
on_kernel_camera uvcvideo MJPG 640 480 10
unplug_webcam
