# The machine's own cameras work, as seen without the library: when this fails, the other cases cannot tell anything.
. "$VM_TESTS/guest/cameras.sh"

load_vivid
expect "vivid makes two cameras" test -c /dev/video0 -a -c /dev/video1
expect "vivid streams" v4l2-ctl -d /dev/video0 --stream-mmap --stream-count=5
expect "vivid's faults can be injected" v4l2-ctl -d /dev/video0 -c inject_v4l2_buf_flag_error=1
unload_vivid

plug_webcam
expect "uvcvideo names the emulated webcam" grep -q 'Emulated UVC Camera' /sys/class/video4linux/video0/name
expect "uvcvideo streams motion JPEG" \
    v4l2-ctl -d /dev/video0 --set-fmt-video=width=640,height=480,pixelformat=MJPG --stream-mmap --stream-count=10
tell_webcam unplug
expect "the nodes vanish with the cable" wait_until 120 test ! -e /dev/video0
tell_webcam plug
expect "the nodes come back" wait_until 120 test -c /dev/video0
unplug_webcam

if have_loopback; then
    load_loopback exclusive_caps=1
    feed_loopback
    expect "v4l2loopback hands on motion JPEG" v4l2-ctl -d "$LOOPBACK" --stream-mmap --stream-count=5
    stop_loopback
fi
finish
