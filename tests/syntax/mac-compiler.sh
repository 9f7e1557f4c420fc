#!/bin/bash
# mac-compiler.sh BUILD FOLDER - whether a Mac's compiler takes the sources that are compiled on a Mac: for both of its
# processors, over libc++, with the frameworks as tests/support/avfoundation/declarations and mac/ beside this file
# declare them. Warnings count. No SDK is at hand, so headers of libc are this machine's, but for what is known to differ.
# The objects go to BUILD FOLDER/mac-objects: what they define and use is compared with mac-symbols.txt.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
self=tests/syntax/mac-compiler.sh
folder=$1/mac-objects
clang=$(command -v clang++-14 || command -v clang++ || true)
nm=$(command -v llvm-nm-14 || command -v llvm-nm || true)
[ -n "$clang" ] && [ -n "$nm" ] || { echo "skipped: clang++ or llvm-nm is not installed (Debian: clang)"; exit 77; }

# libc++-14-dev cannot be installed beside the packages that the benchmarks need, so it is only unpacked.
libcxx=$1/libcxx/usr/lib/llvm-14/include/c++/v1
if [ ! -e "$libcxx/memory" ]; then
    mkdir -p "$1/libcxx"
    (cd "$1/libcxx" && apt-get download libc++-14-dev >/dev/null 2>&1 && dpkg -x libc++-14-dev_*.deb .) ||
        { echo "skipped: libc++-14-dev cannot be downloaded"; exit 77; }
fi
qt=/usr/include/$(dpkg-architecture -q DEB_HOST_MULTIARCH)/qt6
[ -e "$qt/QtCore/QString" ] || { echo "skipped: Qt 6 is not installed"; exit 77; }

# __nonnull is clang's own word for Darwin, and a macro of glibc's.
common=(-fno-objc-arc -fexceptions -fobjc-exceptions -fPIC -fvisibility=hidden -fvisibility-inlines-hidden
    -Wall -Wextra -Wshadow -Wconversion -Werror -Wno-unused-command-line-argument
    -U__nonnull -U__nullable -D_GNU_SOURCE -DOSTREL_VERSION='"0"' -nostdinc++ -isystem "$libcxx" -isystem "$folder/absent" -isystem tests/syntax/mac
    -isystem "/usr/include/$(dpkg-architecture -q DEB_HOST_MULTIARCH)" -isystem /usr/include
    -isystem "$qt" -isystem "$qt/QtCore" -isystem "$qt/QtGui" -isystem "$qt/QtWidgets"
    -Itests/support/avfoundation/declarations -Itests/syntax/mac -Iplatform/QTKit/include -Iplatform/CoreVideo/include
    -Iinclude -iquote .)

# Conversions are checked in C++ alone, as in the build.
compile() { # ARCHITECTURE SOURCE [SWITCH...]
    local language=(-x c++ -std=c++17)
    case $2 in
    capture/*.mm | devices/*.mm) language=(-x objective-c++ -std=c++11 -Wno-conversion) ;; # as with old Qt
    *.mm) language=(-x objective-c++ -std=c++17 -Wno-conversion) ;;
    *.m) language=(-x objective-c -Wno-conversion) ;;
    esac
    "$clang" -target "$1-apple-macos11" "${language[@]}" "${common[@]}" "${@:3}" "$2" || { echo "refused for $1: $2"; return 1; }
}
objectOf() { # ARCHITECTURE SOURCE
    echo "$folder/$1/$(echo "$2" | tr / .).o"
}

case ${2:-} in # called by xargs below
--object)
    compile "$3" "$4" -c -o "$(objectOf "$3" "$4")"
    exit
    ;;
--syntax)
    compile "$3" "$4" -fsyntax-only
    exit
    ;;
esac

shopt -s nullglob
# What touches a framework is compiled for both processors, the rest for one.
framework=(capture/*.mm devices/*.mm platform/QTKit/*.mm platform/QTKit/*.cpp platform/CoreVideo/pixel_memory.cpp
    platform/cameras/avfoundation/*.{mm,m,cpp})
rest=(capture/{capture_driver,capture_interface,diagnostics,native_frame,next_frame}.cpp devices/*.cpp base/*.cpp
    processing/*.cpp platform/machine.cpp platform/cameras/*.cpp platform/cameras/{pixels,virtual}/*.cpp
    apps/common/*.cpp apps/camera/*.cpp apps/camera/*/*.cpp apps/viewer/*.cpp)
[ ${#framework[@]} -ge 25 ] && [ ${#rest[@]} -ge 120 ] || { echo "the sources are not where this test looks" >&2; exit 1; }
# Others are compiled in the place of these.
elsewhere='^(base/wake_eventfd|platform/QTKit/late_picture|apps/camera/doctor/(analog_input|machine_nodes|machine_usb))[.]cpp$'
elsewhere+='|^platform/cameras/(descriptor_set_epoll|ticker_timerfd)[.]cpp$'
# What V4L2 and PipeWire have in common.
elsewhere+='|^platform/cameras/(buffer_frame|device_texts|fallback_backend|folder_events|start_attempts|unusable_formats|wished_candidates|pixels/pixel_format)[.]cpp$'
rm -rf "$folder" && mkdir -p "$folder/arm64" "$folder/x86_64"
for header in linux/videodev2.h libudev.h sys/{epoll,eventfd,inotify,signalfd,sysmacros,timerfd}.h; do
    mkdir -p "$(dirname "$folder/absent/$header")"
    echo "#error Linux has <$header>, macOS has not" >"$folder/absent/$header"
done
for architecture in arm64 x86_64; do
    printf '%s\n' "${framework[@]}" | grep -vE "$elsewhere" | xargs -P 2 -n 1 "$self" "$1" --object "$architecture"
done
printf '%s\n' "${rest[@]}" | grep -vE "$elsewhere" | xargs -P 2 -n 1 "$self" "$1" --syntax arm64
# With the system's own QTKit, whose names are the same.
for source in capture/session_handle.mm capture/no_next_frame.cpp devices/no_*.cpp; do
    compile x86_64 "$source" -DOSTREL_SYSTEM_QTKIT -fsyntax-only
done
echo "accepted: ${#framework[@]} sources for both processors, ${#rest[@]} for one"

# The classes that leave the library, and the names of frameworks that come into it. Hidden symbols are "private external".
for architecture in arm64 x86_64; do
    found=$folder/$architecture.txt
    {
        "$nm" -m --defined-only "$folder/$architecture"/*.o 2>/dev/null | grep -v private |
            sed -n 's/.*external _OBJC_CLASS_\$_\(.*\)/exports class \1/p'
        "$nm" -u "$folder/$architecture"/*.o 2>/dev/null | sed 's/^ *U *//' |
            sed -n 's/^_OBJC_CLASS_\$_\(.*\)/uses class \1/p; s/^_\(\(kCV\|kCM\|CV\|CM\|CF\|kCF\|AV\|dispatch_\|NS\)[A-Za-z_]*\)$/uses \1/p'
    } | grep -v 'uses class \(QTCapture\|VideoCapture\|Ostrel\)' | sort -u >"$found"
    diff tests/syntax/mac-symbols.txt "$found" || {
        echo "the classes and framework names of the $architecture objects differ from tests/syntax/mac-symbols.txt" >&2
        exit 1
    }
done

# A file of another case must not come in a system header's place, on a file system that does not tell them apart.
for root in include platform/QTKit/include; do
    for name in "$root"/*; do
        [ ! -e "$libcxx/$(basename "$name" | tr '[:upper:]' '[:lower:]')" ] || { echo "$name hides a header of libc++" >&2; exit 1; }
    done
done

# The check itself: something that only GNUstep knows has to be refused, and what only Linux has.
cat >"$folder/probe.mm" <<'PROBE'
#import <Foundation/Foundation.h>
void probe() { GSPrintf(0, @"text"); }
PROBE
for probe in "$folder/probe.mm" base/wake_eventfd.cpp; do
    if compile x86_64 "$probe" -fsyntax-only >/dev/null 2>&1; then
        echo "a call that no Mac knows was accepted: $probe" >&2
        exit 1
    fi
done
