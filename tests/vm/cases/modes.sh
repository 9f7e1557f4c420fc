# What the kernel's drivers offer, and what is captured in when it is asked for.
. "$VM_TESTS/guest/cameras.sh"
load_vivid n_devs=1 node_types=0x1 num_inputs=1 input_types=0x0 # as a webcam: sizes and rates one by one
expect "vivid's modes" "$TEST" --gtest_filter='VividModes*:DriverModes*'
unload_vivid
plug_webcam
expect "the webcam's modes" "$TEST" --gtest_filter='WebcamModes*:DriverModes*'
unplug_webcam
finish
