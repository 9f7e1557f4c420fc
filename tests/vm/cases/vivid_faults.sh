# The faults that the kernel's driver can be made to have.
. "$VM_TESTS/guest/cameras.sh"
load_vivid n_devs=1
exec "$TEST"
