# A camera that hands on what another program feeds it. With exclusive_caps the node says that it is a camera only while
# somebody feeds it; without, which is the default, it says so always.
. "$VM_TESTS/guest/cameras.sh"
have_loopback || skip "no v4l2loopback (tests/vm/setup.sh says why)"
status=0
for kind in exclusive_caps=0 exclusive_caps=1; do
    load_loopback $kind
    "$TEST" --gtest_filter='UnfedLoopback.*' || status=1
    feed_loopback
    "$TEST" --gtest_filter='-UnfedLoopback.*' || status=1
    stop_loopback
done
exit $status
