#!/bin/bash
# run-in-vm.sh [options] -- 'shell command'
#
# Runs one command as root in a throw-away virtual machine: Debian's stock kernel under QEMU, whose drivers make
# cameras without hardware. setup.sh has to have run before.
#
# The machine's root is this system's / (read-only) under an overlay in memory: what is installed or built here runs
# there unchanged, at the same path, in the same working directory. What the command writes vanishes, except
# for its output and what it puts into the folder $VM_OUT. Modules are loaded by the command (modprobe vivid).
#
#   -e NAME=VALUE  set a variable for the command (repeatable); no others pass into the machine
#   -o DIR         the folder that is $VM_OUT in the machine
#   -t SECONDS     stop the machine after that time (default 120)
#   -k             print the kernel's log on standard error at the end
#
# Environment: VM_MEMORY (MiB, 2048), VM_PROCESSORS (2), VM_BOOT_LIMIT (seconds, 60)
# Exit status: the command's; 124 out of time; 125 the machine ended without one; 77 no machine, with a reason.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/common.sh"

environment=()
out=
limit=120
show_kernel_log=0
while getopts e:o:t:kh option; do
    case $option in
    e) environment+=("$OPTARG") ;;
    o) out=$(realpath -e "$OPTARG") || exit 2 ;;
    t) limit=$OPTARG ;;
    k) show_kernel_log=1 ;;
    *) sed -n '2,/^set/{/^#/p}' "$0"; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
[ $# -ge 1 ] || vm_usage_error "no command (-h shows the options)"

command -v qemu-system-x86_64 >/dev/null || vm_unavailable "missing package: qemu-system-x86"
version=$(vm_kernel_version) || vm_unavailable "no kernel in $VM_CACHE; run tests/vm/setup.sh"

run=$(mktemp -d "${TMPDIR:-/tmp}/vm-run.XXXXXX")
qemu_pid=
cleanup() {
    [ -z "$qemu_pid" ] || kill "$qemu_pid" 2>/dev/null
    rm -rf "$run"
}
trap cleanup EXIT
trap 'exit 143' TERM INT HUP

# What the machine needs before it can mount this system's root: file names in the order of loading.
early_modules() {
    local module
    for module in virtio_pci 9pnet_virtio 9p overlay; do
        modprobe -d "$VM_CACHE/kernel" -S "$version" --show-depends "$module"
    done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }'
}

# make_initrd FILE - the initial file system: busybox, those modules, and guest/init.sh.
make_initrd() {
    local root=$run/initrd file
    mkdir -p "$root"/{bin,dev,proc,sys,modules,low,upper,new}
    cp "$(command -v busybox)" "$root/bin/busybox"
    early_modules | while read -r file; do
        cp "$file" "$root/modules/"
        echo "${file##*/}"
    done >"$root/modules/order"
    install -m 755 "$here/guest/init.sh" "$root/init"
    (cd "$root" && find . | cpio -o -H newc --quiet) >"$1"
}

# The run folder is shared with the machine: guest/session.sh reads the command from it and writes the results to it.
write_session() {
    local shared=$run/shared variable
    mkdir -p "$shared" "$run/out"
    cp "$here/guest/session.sh" "$shared/session.sh"
    {
        printf 'cd %q || exit 125\n' "$PWD"
        for variable in ${environment[@]+"${environment[@]}"}; do
            printf 'export %q\n' "$variable"
        done
        printf '%s\n' "$*"
    } >"$shared/command.sh"
    echo "$VM_CACHE/kernel/lib/modules" >"$shared/modules-path"
}

# share TAG PATH OPTION - one folder of this system for the machine; QEMU wants commas doubled.
share() {
    shares+=(-virtfs "local,path=${2//,/,,},mount_tag=$1,security_model=none,multidevs=remap$3")
}

# An emulated machine on a busy host may misjudge its clocks and hang at boot, so their rates are given to it: its
# time-stamp counter is this processor's.
clock_arguments() {
    awk '/^cpu MHz/ { khz = int($4 * 1000); print "tsc=reliable tsc_early_khz=" khz " lpj=" khz * 4; exit }' /proc/cpuinfo
}

start_machine() {
    : >"$run/console"
    timeout -k 2 "$limit" qemu-system-x86_64 -M pc -accel tcg,thread=multi -cpu max \
        -smp "${VM_PROCESSORS:-2}" -m "${VM_MEMORY:-2048}" \
        -nodefaults -no-user-config -no-reboot -display none -serial file:"$run/console" "${shares[@]}" \
        -kernel "$VM_CACHE/vmlinux" -initrd "$run/initrd.img" \
        -append "console=ttyS0 quiet loglevel=6 panic=-1 random.trust_cpu=on $(clock_arguments)" \
        </dev/null 2>"$run/qemu-errors" &
    qemu_pid=$!
}

# Whether the machine came as far as guest/init.sh within the time for booting.
booted() {
    local tries=$((${VM_BOOT_LIMIT:-60} * 5))
    while [ "$tries" -gt 0 ]; do
        grep -q VM_STARTED "$run/console" && return 0
        kill -0 "$qemu_pid" 2>/dev/null || return 1
        sleep 0.2
        tries=$((tries - 1))
    done
    echo "the machine did not boot within ${VM_BOOT_LIMIT:-60} s" >&2
    kill "$qemu_pid"
    return 1
}

make_initrd "$run/initrd.img"
write_session "$@"
shares=()
share root / ,readonly=on
share shared "$run/shared" ''
share out "${out:-$run/out}" ''

# A boot that hangs is tried again.
for attempt in 1 2 3; do
    start_machine
    booted && break
    wait "$qemu_pid"
    qemu_pid=
    # A machine that was killed for its hang says so here as well, but with the name of the killer.
    if [ -s "$run/qemu-errors" ] && ! grep -q 'terminating on signal' "$run/qemu-errors"; then
        vm_unavailable "QEMU cannot run: $(head -1 "$run/qemu-errors")"
    fi
done
qemu_status=125
if [ -n "$qemu_pid" ]; then
    wait "$qemu_pid"
    qemu_status=$?
    qemu_pid=
fi

cat "$run/shared/stdout" 2>/dev/null
cat "$run/shared/stderr" >&2 2>/dev/null
[ "$show_kernel_log" = 0 ] || cat "$run/console" >&2
status=$(cat "$run/shared/status" 2>/dev/null)
if [ -z "$status" ]; then
    cat "$run/qemu-errors" >&2
    [ "$show_kernel_log" = 1 ] || tail -20 "$run/console" >&2
    if [ "$qemu_status" = 124 ]; then
        echo "the machine was stopped after $limit s" >&2
        status=124
    else
        echo "the machine ended early" >&2
        status=125
    fi
fi
exit "$status"
