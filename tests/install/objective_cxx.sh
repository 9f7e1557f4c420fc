#!/bin/bash
# An Objective-C++ client builds against capture_session.h and the framework headers that are installed beside it, and
# gets a session object from the library.
source "$(dirname "$0")/common.sh"

cat >"$work/client.mm" <<'CLIENT'
#include <ostrel/capture_session.h>
#include <cstdio>

int main()
{
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    VideoCaptureThreadObj* session = [[VideoCaptureThreadObj alloc] init];
    [session setCamera:"no-such-camera" withWidth:320 withHeigth:240];
    char buffer[16];
    int64_t size = sizeof buffer;
    [session videoFrame:buffer withSize:&size];
    std::printf("%lld bytes, %u frames\n", static_cast<long long>(size), session->m_capturedFrameCounter);
    [session release];
    [pool release];
    return 0;
}
CLIENT

flags="-fexceptions -fobjc-exceptions -fno-strict-aliasing -fconstant-string-class=NSConstantString
    -fobjc-call-cxx-cdtors -pthread"
libraries=$(g++ -print-file-name=libobjc.so)
if [ "$(pkg-config --variable=foundation ostrelvideounix)" = gnustep ]; then
    flags+=" -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNU_RUNTIME=1 -D_NATIVE_OBJC_EXCEPTIONS -isystem /usr/include/GNUstep"
    libraries+=" -lgnustep-base"
fi
# cc1objplus belongs to g++; another compiler, if the library was built with one, cannot use gcc's Objective-C runtime.
g++ -std=gnu++17 -Wall -Werror $flags -I"$TREE/include" -I"$TREE/include/ostrel/framework" -o "$work/client" "$work/client.mm" \
    -L"$TREE/$LIBDIR" -lostrelvideounix $libraries
output=$(LD_LIBRARY_PATH="$TREE/$LIBDIR" "$work/client")
[[ "$output" == *"0 bytes, 0 frames"* ]] || fail "the client said: $output"
