# A camera that hands on what another program feeds it.
. "$VM_TESTS/guest/cameras.sh"
have_loopback || skip "no v4l2loopback (tests/vm/setup.sh says why)"
start_loopback
"$TEST"
status=$?
stop_loopback
exit $status
