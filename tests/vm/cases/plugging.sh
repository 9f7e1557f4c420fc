# Cameras that come and go: on a machine without udev, in a container, and with udev. TEST is the program.
. "$VM_TESTS/guest/cameras.sh"
run() {
    expect "$1 $2" "$TEST" --gtest_filter="$2.*"
}

load_vivid n_devs=1
run "without udev:" VividPlugging
unload_vivid

plug_webcam
run "without udev:" WebcamPlugging
expect "ContainerPlugging" in_own_dev /dev/video0 "$TEST" --gtest_filter='ContainerPlugging.*'

start_udev
run "with udev:" WebcamPlugging
unplug_webcam
wait_until 120 sh -c '! ls /dev/video*' 2>/dev/null
load_vivid n_devs=1
run "with udev:" VividPlugging
finish
