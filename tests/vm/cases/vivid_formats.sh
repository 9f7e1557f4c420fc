# Every raw format, at every size, from the kernel's driver.
. "$VM_TESTS/guest/cameras.sh"
load_vivid n_devs=1
exec "$TEST" --gtest_filter='-*VividPlanes*:VividFields*'
