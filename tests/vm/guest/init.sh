#!/bin/busybox sh
# The first process of the virtual machine: puts the host's root, read-only, under an overlay in memory, runs
# session.sh in it, and ends the machine. Only busybox is here yet.
echo VM_STARTED >/dev/console # run-in-vm.sh waits for this line

b=/bin/busybox
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8

end_machine() {
    $b sync
    $b reboot -f # QEMU does not start it again
}

fail() {
    echo "init: $*" >/dev/console
    end_machine
}

$b mount -t devtmpfs dev /dev
$b mount -t proc proc /proc
$b mount -t sysfs sys /sys
while read -r module; do
    $b insmod "/modules/$module" || echo "init: insmod $module failed" >/dev/console
done </modules/order

over_virtio=trans=virtio,version=9p2000.L,msize=1048576
$b mount -t 9p -o ro,cache=loose,$over_virtio root /low || fail "cannot mount the host's root"
$b mount -t tmpfs tmpfs /upper
$b mkdir /upper/data /upper/work
$b mount -t overlay -o lowerdir=/low,upperdir=/upper/data,workdir=/upper/work overlay /new || fail "no overlay"

for dir in dev proc sys; do
    $b mount --move /$dir /new/$dir
done
$b mkdir -p /new/dev/pts /new/dev/shm /new/run /new/tmp /new/lib/modules /new/mnt/vm-shared /new/mnt/vm-out
$b mount -t devpts pts /new/dev/pts
$b mount -t tmpfs shm /new/dev/shm
$b mount -t tmpfs run /new/run
# The host reads the results while the machine runs and after it was killed: no caching.
$b mount -t 9p -o cache=none,$over_virtio shared /new/mnt/vm-shared || fail "no shared folder"
$b mount -t 9p -o cache=mmap,$over_virtio out /new/mnt/vm-out || fail "no output folder"

$b chroot /new /bin/bash /mnt/vm-shared/session.sh
end_machine
