# What webcams have not: planes in memory of their own, the fields of analog pictures, and an HDMI source that changes.
. "$VM_TESTS/guest/cameras.sh"
load_vivid n_devs=1 multiplanar=2
expect "planes in memory of their own" "$TEST" --gtest_filter='*VividPlanes*'
unload_vivid
load_vivid n_devs=1 input_types=0x2
expect "fields one after the other" "$TEST" --gtest_filter='VividFields*'
unload_vivid
load_vivid n_devs=1 ccs_cap_mode=0
expect "a source that changes" "$SOURCE_TEST"
finish
