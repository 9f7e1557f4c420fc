#!/bin/bash
# setup.sh - makes the parts of the test machine ready in a cache folder: Debian's stock kernel with its modules,
# the v4l2loopback module built for it, and pictures for its cameras. Nothing of it is installed on this system. A second run finds everything
# in place and returns at once; a new kernel in Debian is fetched by itself.
#
# Exit status: 0 ready; 77 not possible here, with a line that says why.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/common.sh"

# Programs that the machine and its tests use, with the package of each.
TOOLS="apt-get:apt apt-cache:apt dpkg-deb:dpkg flock:util-linux qemu-system-x86_64:qemu-system-x86 busybox:busybox-static
       modprobe:kmod /lib/systemd/systemd-udevd:udev cpio:cpio xz:xz-utils v4l2-ctl:v4l-utils python3:python3 ffmpeg:ffmpeg"

require_tools() {
    local entry missing=
    for entry in $TOOLS; do
        command -v "${entry%%:*}" >/dev/null || missing="$missing ${entry##*:}"
    done
    # A dynamically linked busybox has no libraries in the initial file system.
    if command -v busybox >/dev/null && ldd "$(command -v busybox)" >/dev/null 2>&1; then
        missing="$missing busybox-static"
    fi
    [ -z "$missing" ] || vm_unavailable "missing packages:$missing (apt-get install$missing)"
}

# Debian's linux-image-amd64 depends on the image of the version that is current.
current_version() {
    apt-cache depends linux-image-amd64 2>/dev/null | sed -n 's/^ *Depends: linux-image-\([0-9].*\)$/\1/p' | head -1
}

# fetch DIR PACKAGE... - downloads the packages into DIR.
fetch() {
    local dir=$1
    shift
    mkdir -p "$dir"
    (cd "$dir" && apt-get -q download "$@") >"$dir/log" 2>&1 || {
        cat "$dir/log" >&2
        vm_unavailable "apt-get cannot download $*"
    }
}

# unpack DIR TARGET - unpacks the packages in DIR; none of their scripts runs.
unpack() {
    local deb
    for deb in "$1"/*.deb; do
        dpkg-deb --extract "$deb" "$2"
    done
}

# take_elf BZIMAGE ELF - takes the kernel proper out of its self-extracting file: an emulated processor needs
# seconds to unpack it at each boot. Where its parts stand is fixed by the kernel's x86 boot protocol.
take_elf() {
    local sectors offset length
    sectors=$(od -An -tu1 -j $((0x1f1)) -N 1 "$1")
    offset=$(od -An -tu4 -j $((0x248)) -N 4 "$1")
    length=$(od -An -tu4 -j $((0x24c)) -N 4 "$1")
    # The last four bytes of the payload are its unpacked size, which xz does not know.
    tail -c +$(((sectors + 1) * 512 + offset + 1)) "$1" | head -c $((length - 4)) | xz -dc >"$2" 2>/dev/null ||
        cp "$1" "$2" # packed in some other way: it boots as well, only slower
}

# build_loopback VERSION WORKDIR - builds v4l2loopback for the kernel in WORKDIR/kernel and adds it to its modules.
build_loopback() {
    local version=$1 work=$2 headers tree
    command -v make >/dev/null && command -v gcc >/dev/null || {
        echo "no v4l2loopback: missing packages: make gcc"
        return 0
    }
    headers=$(apt-cache depends "linux-headers-$version" | sed -n 's/^ *Depends: \(linux-\(headers\|kbuild\)-.*\)$/\1/p')
    # shellcheck disable=SC2086 # one word for each package
    fetch "$work/build-debs" "linux-headers-$version" $headers v4l2loopback-dkms
    unpack "$work/build-debs" "$work/build"

    tree=$work/build/usr/src/linux-headers-$version
    # The headers name their common part by the place where they would be installed.
    sed -i "s#^include .*/usr/src#include $work/build/usr/src#" "$tree/Makefile"
    mv "$work"/build/usr/src/v4l2loopback-* "$work/build/v4l2loopback"
    if make -s -C "$tree" M="$work/build/v4l2loopback" modules >"$work/build/log" 2>&1; then
        install -D -m 644 "$work/build/v4l2loopback/v4l2loopback.ko" \
            "$work/kernel/lib/modules/$version/updates/v4l2loopback.ko"
    else
        tail -5 "$work/build/log"
        echo "no v4l2loopback: it does not build for $version"
    fi
}

# make_ready VERSION - fills a new folder and puts it in the place of the old one when it is complete.
make_ready() {
    local version=$1 work=$VM_CACHE/new
    rm -rf "$work"
    mkdir -p "$work"
    echo "fetching Debian's kernel $version into $VM_CACHE"
    fetch "$work/image-debs" "linux-image-$version"
    unpack "$work/image-debs" "$work/kernel"
    take_elf "$work/kernel/boot/vmlinuz-$version" "$work/vmlinux"
    build_loopback "$version" "$work"
    depmod -b "$work/kernel" "$version"
    rm -rf "$work/image-debs" "$work/build-debs" "$work/build" "$work/kernel/usr" "$work/kernel/boot"

    rm -rf "$VM_CACHE/version" "$VM_CACHE/kernel" "$VM_CACHE/vmlinux"
    mv "$work/kernel" "$work/vmlinux" "$VM_CACHE/"
    rmdir "$work"
    echo "$version" >"$VM_CACHE/version"
}

# The pictures that the webcam and the loopback camera show, as motion JPEG in three sizes: the left quarter light grey
# (192), the rest pure red, green and blue from top to bottom, and a white mark that moves along the lower edge, so that
# no two pictures that follow each other are the same.
make_pictures() {
    local size picture stripe color mark=color=white:size=32x16
    rm -rf "$VM_CACHE/pictures.new"
    mkdir "$VM_CACHE/pictures.new"
    for size in 320x240 640x480 1280x720; do
        picture="color=0xc0c0c0:size=$size,format=rgb24" stripe=0
        for color in 0xff0000 0x00ff00 0x0000ff; do
            picture="$picture,drawbox=x=iw/4:y=ih*$stripe/3:w=iw*3/4:h=ih/3:color=$color:t=fill"
            stripe=$((stripe + 1))
        done
        ffmpeg -v error -f lavfi \
            -i "$picture[picture];$mark[mark];[picture][mark]overlay=x=mod(n*32\\,W):y=H-16:format=rgb" \
            -frames:v 8 -pix_fmt yuvj420p -q:v 3 "$VM_CACHE/pictures.new/$size-%d.jpg" </dev/null ||
            vm_unavailable "ffmpeg cannot make the pictures"
    done
    rm -rf "$VM_CACHE/pictures"
    mv "$VM_CACHE/pictures.new" "$VM_CACHE/pictures"
}

[ "$(uname -s)" = Linux ] || vm_unavailable "it needs Linux"
[ "$(uname -m)" = x86_64 ] || vm_unavailable "its kernel and emulator are those of x86-64, and this is $(uname -m)"
require_tools
mkdir -p "$VM_CACHE"
exec 9>"$VM_CACHE/lock"
flock 9 # two builds may set up at the same time

wanted=$(current_version)
have=$(vm_kernel_version || true)
if [ -z "$wanted" ] && [ -z "$have" ]; then
    vm_unavailable "apt knows no package linux-image-amd64 (apt-get update?)"
fi
# Without apt's lists an older kernel serves as well.
if [ -n "$wanted" ] && [ "$wanted" != "$have" ]; then
    make_ready "$wanted"
fi
# This script says what they show.
if ! [ "$VM_CACHE/pictures" -nt "$here/setup.sh" ]; then
    make_pictures
fi
