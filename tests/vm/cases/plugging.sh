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
mkdir /tmp/dev
mount -t tmpfs none /tmp/dev
cp -a /dev/null /dev/random /dev/urandom /dev/video0 /tmp/dev
expect "ContainerPlugging" unshare -m sh -c 'mount --bind /tmp/dev /dev && "$0" --gtest_filter="ContainerPlugging.*"' "$TEST"

/lib/systemd/systemd-udevd --daemon 7>&- # which the webcam takes for its cable
wait_until 120 test -S /run/udev/control || { echo "udev does not start"; exit 1; }
run "with udev:" WebcamPlugging
unplug_webcam
wait_until 120 sh -c '! ls /dev/video*' 2>/dev/null
load_vivid n_devs=1
run "with udev:" VividPlugging
finish
