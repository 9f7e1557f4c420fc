# Cameras that the kernel and PipeWire have, both: each in turn in use by a V4L2 program and by another consumer of
# PipeWire's. TEST is the program.
. "$VM_TESTS/guest/cameras.sh"
. "$VM_TESTS/guest/pipewire.sh"
start_udev
start_pipewire

load_vivid n_devs=1
expect "vivid" "$TEST" --gtest_filter='-Consumer.*:*.Unplugged*'
unload_vivid
wait_until 120 test ! -e /dev/video0

plug_webcam
expect "webcam" "$TEST" --gtest_filter='Idle.*:HeldByPipeWire.IsCaptured*:*.Unplugged*'
unplug_webcam
stop_pipewire
finish
