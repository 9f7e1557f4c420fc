# The kernel's driver for USB webcams, with an emulated webcam.
. "$VM_TESTS/guest/cameras.sh"
plug_webcam
"$TEST"
status=$?
unplug_webcam
exit $status
