# Sourced by setup.sh, run-in-vm.sh and run-case.sh: where the machine's parts are kept, and how to say that
# there is no machine.

# Holds the unpacked kernel; may be deleted at any time, setup.sh makes it again.
VM_CACHE=${XDG_CACHE_HOME:-$HOME/.cache}/ostrelvideounix-vm

# depmod and modprobe live here, which is not in every user's PATH.
PATH=$PATH:/usr/sbin:/sbin

# The status by which ctest knows a skipped test.
VM_UNAVAILABLE=77

# Ends the script with one line that says why no virtual machine can be had here.
vm_unavailable() {
    echo "virtual machine not available: $*"
    exit "$VM_UNAVAILABLE"
}

# Ends the script with a line about wrong use.
vm_usage_error() {
    echo "${0##*/}: $*" >&2
    exit 2
}

# The version of the kernel that setup.sh made ready, or nothing.
vm_kernel_version() {
    cat "$VM_CACHE/version" 2>/dev/null
}
